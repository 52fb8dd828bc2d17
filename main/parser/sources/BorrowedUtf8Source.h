#pragma once

#include <kescorexml/Utf8InputSource.h>

/// A Utf8InputSource that reads the caller's text where it stands. The text must not change or end
/// before the source and the parser buffers made from it.
class BorrowedUtf8Source final : public Utf8InputSource
{
public:
    BorrowedUtf8Source(const std::string& utf8, const TString& id, bool skipLeadingWhitespace)
        : Utf8InputSource(std::shared_ptr<const std::string>(std::shared_ptr<void>(), &utf8), id,
                          skipLeadingWhitespace)
    {
    }
};

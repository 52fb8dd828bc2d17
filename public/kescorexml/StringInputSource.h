#pragma once

#include <kescorexml/InputSourceUtils.h>
#include <kescorexml/Utf8InputSource.h>

/// A document given as text, kept as UTF-8. A half of no surrogate pair becomes three bytes that
/// are no UTF-8, and a parser refuses them.
/// Different objects may be used from different threads.
class KESCOREXML_EXPORT StringInputSource : public Utf8InputSource
{
public:
    /// See Utf8InputSource for `skipLeadingWhitespace`. Size counts UTF-8 bytes.
    StringInputSource(const TString& text, const TString& id, bool skipLeadingWhitespace);
    /// The same for bytes, which are kept as they are.
    template <OtherText::Utf8 T>
    StringInputSource(const T& utf8, const TString& id, bool skipLeadingWhitespace)
        : StringInputSource(FromUtf8(), std::string(OtherText::View(utf8)), id,
                            skipLeadingWhitespace)
    {
    }
    ~StringInputSource() override;

private:
    friend std::unique_ptr<InputSource>
    InputSourceUtils::InputSourceFromFileName(const TString& fileName, bool skipLeadingWhitespace);

    struct FromUtf8
    {
    };

    /// The same for a text that stands in UTF-8 already.
    StringInputSource(FromUtf8, std::string&& utf8, const TString& id, bool skipLeadingWhitespace);
};

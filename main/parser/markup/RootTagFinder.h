#pragma once

#include "markup/ConstructScanner.h"

#include <kescorexml/XMLUtils.h>

#include <cstddef>
#include <optional>
#include <string>

/// Looks for the root element's start tag in a text that arrives in pieces. After each piece the
/// answer is that of XmlUtils::FindRootTag for all of the text so far; the time that all calls take
/// together is linear in the length of the text, however small the pieces.
/// Different objects may be used from different threads.
class RootTagFinder
{
public:
    /// `headSoFar` is the text from its very beginning, at least as long as in the call before.
    /// Once a range is found, it is the answer to every later call.
    XmlUtils::StringRange Feed(const std::string& headSoFar) noexcept;

private:
    XmlUtils::StringRange m_rootTag;
    /// Where the search for the next "<" goes on when no construct is open.
    std::size_t m_next = 0;
    std::optional<ConstructScanner> m_construct;
};

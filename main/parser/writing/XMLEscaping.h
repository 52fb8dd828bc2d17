#pragma once

#include "writing/EscapeTable.h"

#include <kesplatform/TString.h>

#include <string_view>

namespace XMLEscaping {

inline constexpr std::u16string_view c_cdataOpen = u"<![CDATA[";
inline constexpr std::u16string_view c_cdataClose = u"]]>";
/// Ends a section in the middle of its "]]>" and begins the next one.
inline constexpr std::u16string_view c_cdataSplitter = u"]]]]><![CDATA[>";
inline constexpr std::u16string_view c_quote = u"&quot;";

/// The position of the first unit that cannot be written as it is, or npos.
std::size_t FindEscape(std::u16string_view text, MappingTableType type) noexcept;

/// The text with every unit that has an entry in the table of `type`, or is no XML character,
/// replaced; the text itself when there is none.
TString EncodeStringWithTable(const TString& text, MappingTableType type);

/// Long content keeps its line breaks, and becomes CDATA when there is a "<" in it; shorter content
/// is escaped like an attribute.
constexpr bool IsLongContent(std::u16string_view text) noexcept
{
    return text.size() >= 32;
}

/// The position of the first "]]>", which would end a CDATA section, or npos.
std::size_t FindCDataClose(std::u16string_view text) noexcept;

/// Hands the pieces of the CDATA form of a text to `append`, in order.
template <typename Append>
void VisitCData(std::u16string_view text, Append&& append)
{
    const bool isQuoted = text.front() == u'"' && text.back() == u'"';
    if (isQuoted) {
        text = text.substr(1, text.size() - 2);
        append(c_quote);
    }
    append(c_cdataOpen);
    for (std::size_t end; (end = FindCDataClose(text)) != std::u16string_view::npos;) {
        append(text.substr(0, end));
        append(c_cdataSplitter);
        text.remove_prefix(end + c_cdataClose.size());
    }
    append(text);
    append(c_cdataClose);
    if (isQuoted)
        append(c_quote);
}

/// The CDATA form of a text as a whole.
TString EncodeCData(std::u16string_view text);

} // namespace XMLEscaping

#pragma once

#include <kescorexml/Export.h>
#include <kesplatform/TString.h>

#include <cstddef>
#include <optional>
#include <string>

/// Scanners that look at XML text without parsing it. Positions and lengths are zero-based and
/// count bytes in `std::string` texts, which hold UTF-8, and UTF-16 code units in `TString` texts.
/// A search that finds nothing gives `std::string::npos`, for both kinds of text.
///
/// No function keeps a reference to its arguments, allocates (but for a returned string) or takes
/// more than time linear in the text it looks at. Safe to use from several threads.
namespace XmlUtils {

/// A piece of a string. A `start` of npos means "none". A plain value.
struct StringRange
{
    /// The first position; npos when there is none.
    std::size_t start = std::string::npos;
    /// The number of positions.
    std::size_t length = 0;

    friend bool operator==(const StringRange&, const StringRange&) noexcept = default;
};

/// Character classes of XML 1.0. A byte is widened as a signed value, so that those from 0x80 on
/// are judged as U+FF80 to U+FFFF: name characters but for the last two, and never white space.
[[nodiscard]] KESCOREXML_EXPORT bool IsWhitespace(char c) noexcept;
[[nodiscard]] KESCOREXML_EXPORT bool IsWhitespace(char16_t c) noexcept;
/// May start a name.
[[nodiscard]] KESCOREXML_EXPORT bool IsFirstNameChar(char c) noexcept;
[[nodiscard]] KESCOREXML_EXPORT bool IsFirstNameChar(char16_t c) noexcept;
/// May continue a name.
[[nodiscard]] KESCOREXML_EXPORT bool IsNameChar(char c) noexcept;
[[nodiscard]] KESCOREXML_EXPORT bool IsNameChar(char16_t c) noexcept;

/// True when `sub` occurs in `s` and starts exactly at `pos`. The empty text occurs at every
/// position up to the length of `s`.
[[nodiscard]] KESCOREXML_EXPORT bool
ContainsSubstringAt(const std::string& s, const std::string& sub, std::size_t pos) noexcept;
[[nodiscard]] KESCOREXML_EXPORT bool ContainsSubstringAt(const TString& s, const TString& sub,
                                                         std::size_t pos) noexcept;

/// The first position not before `pos` that holds `c` or where `sub` starts. An empty `sub` is
/// found at any `pos` up to the length of `s`; nothing is found past the end.
[[nodiscard]] KESCOREXML_EXPORT std::size_t Find(const std::string& s, char c,
                                                 std::size_t pos) noexcept;
[[nodiscard]] KESCOREXML_EXPORT std::size_t Find(const std::string& s, const std::string& sub,
                                                 std::size_t pos) noexcept;
[[nodiscard]] KESCOREXML_EXPORT std::size_t Find(const TString& s, char16_t c,
                                                 std::size_t pos) noexcept;
[[nodiscard]] KESCOREXML_EXPORT std::size_t Find(const TString& s, const TString& sub,
                                                 std::size_t pos) noexcept;

/// The first position in the closed range [`from`, `to`] that holds `c`, or from which on `sub`
/// lies wholly inside that range. Nothing is found when `to` is not above `from` (a range of one
/// character counts as empty) or not below the length of `s`.
[[nodiscard]] KESCOREXML_EXPORT std::size_t FindInRange(const std::string& s, char c,
                                                        std::size_t from, std::size_t to) noexcept;
[[nodiscard]] KESCOREXML_EXPORT std::size_t FindInRange(const std::string& s,
                                                        const std::string& sub, std::size_t from,
                                                        std::size_t to) noexcept;
[[nodiscard]] KESCOREXML_EXPORT std::size_t FindInRange(const TString& s, char16_t c,
                                                        std::size_t from, std::size_t to) noexcept;
[[nodiscard]] KESCOREXML_EXPORT std::size_t FindInRange(const TString& s, const TString& sub,
                                                        std::size_t from, std::size_t to) noexcept;

/// The position of the ">" that closes the construct which opens at `start`, or npos: of a comment
/// that of "-->", of "<![" that of "]]>", of a processing instruction that of "?>", of any other
/// "<!" the next one, and of a tag the next one outside quotes.
/// A character at `start` other than "<" is a logic assertion, unless fewer than three characters
/// are left, which gives npos.
[[nodiscard]] KESCOREXML_EXPORT std::size_t AdvanceFromOpenToCloseBrace(const std::string& xml,
                                                                        std::size_t start);

/// True when every quote that opens in [`from`, `to`] also closes there. The range is closed at
/// both ends and cut at the end of the text. A quote of the other kind inside quotes is text.
[[nodiscard]] KESCOREXML_EXPORT bool
AreQuotesMatchingInRange(const std::string& xml, std::size_t from, std::size_t to) noexcept;

/// The root element's start tag, from its "<" to its ">": the first construct that is no comment,
/// declaration or processing instruction. None when there is no such tag or it is not closed.
[[nodiscard]] KESCOREXML_EXPORT StringRange FindRootTag(const std::string& xml);

/// The value of attribute `name` in the start tag `tag`, exactly as written between its quotes:
/// no reference is decoded and no white space normalised. Empty when the tag has no such attribute.
/// A `tag` that does not lie inside `xml` or does not run from a "<" to a ">" is a logic assertion.
[[nodiscard]] KESCOREXML_EXPORT std::optional<std::string>
FindAttributeValue(const std::string& xml, const std::string& name, StringRange tag);

} // namespace XmlUtils

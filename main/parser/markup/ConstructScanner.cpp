#include "markup/ConstructScanner.h"

#include "base/ByteScan.h"

#include <algorithm>

namespace {

constexpr std::string_view c_openSection = "<![";
constexpr std::string_view c_closeSection = "]]>";
constexpr std::string_view c_closeInstruction = "?>";
constexpr std::string_view c_closeDeclaration = ">";

/// What stands outside quoted runs, of bytes that `Marks`, a pattern, finds and that are no quotes.
template <class Marks>
struct Unquoted : Marks
{
    /// The quote that opened the run in which the search is, or 0.
    char& open;

    bool operator()(const char* p) const noexcept
    {
        if (!Marks::operator()(p))
            return false;
        if (open != '\0') {
            open = *p == open ? '\0' : open;
            return false;
        }
        const bool isQuote = *p == '"' || *p == '\'';
        open = isQuote ? *p : '\0';
        return !isQuote;
    }
};

/// The first of `Others` from `pos` on that stands outside quoted runs, or npos. `open` is the
/// quote that opened the run in which `pos` is, or 0, and says the same of where the search ends.
template <char... Others>
std::size_t FindUnquoted(std::string_view text, std::size_t pos, char& open) noexcept
{
    using Marks = ByteScan::AnyOf<'"', '\'', Others...>;
    // Values are short as a rule: all marks of a stretch are read without searching anew.
    constexpr std::size_t c_stretch = 64;
    while (pos < text.size()) {
        const std::size_t end = std::min(text.size(), pos + c_stretch);
        const std::size_t found =
            ByteScan::FindFirst(text.data(), pos, end, Unquoted<Marks>{{}, open});
        if (found != ByteScan::c_npos)
            return found;
        pos = open != '\0' ? ByteScan::FindByte(text, open, end)
                           : ByteScan::FindFirst(text.data(), end, text.size(), Marks());
    }
    return ByteScan::c_npos;
}

} // namespace

/// What begins with `construct`, of which the first three characters are there at least. Unknown
/// when there are not enough.
inline ConstructScanner::Kind ConstructScanner::FindKind(std::string_view construct) noexcept
{
    if (construct[1] == '?')
        return Kind::Instruction;
    if (construct[1] != '!')
        return Kind::Tag;
    if (construct.starts_with(c_openComment))
        return Kind::Comment;
    // "<!-" may still become a comment.
    if (construct.size() < c_openComment.size() && c_openComment.starts_with(construct))
        return Kind::Unknown;
    return construct.starts_with(c_openSection) ? Kind::Section : Kind::Declaration;
}

inline std::string_view ConstructScanner::GetTerminator(Kind kind) noexcept
{
    switch (kind) {
    case Kind::Comment:
        return c_closeComment;
    case Kind::Section:
        return c_closeSection;
    case Kind::Instruction:
        return c_closeInstruction;
    default:
        return c_closeDeclaration;
    }
}

std::size_t ConstructScanner::FindClose(std::string_view xml) noexcept
{
    // Two characters tell nothing yet.
    if (xml.size() < 3 || m_start > xml.size() - 3)
        return ByteScan::c_npos;
    if (m_kind == Kind::Unknown)
        m_kind = FindKind({xml.data() + m_start, xml.size() - m_start});
    if (m_kind == Kind::Unknown)
        return ByteScan::c_npos;
    if (m_kind == Kind::Tag)
        return FindCloseOfTag(xml);
    const std::string_view terminator = GetTerminator(m_kind);
    const std::size_t found = ByteScan::FindText(xml, terminator, m_next);
    if (found != ByteScan::c_npos)
        return found + terminator.size() - 1;
    // The end of this text may hold the first characters of the terminator.
    m_next = std::max(m_next, xml.size() - (terminator.size() - 1));
    return ByteScan::c_npos;
}

std::size_t ConstructScanner::FindCloseOfTag(std::string_view xml) noexcept
{
    const std::size_t found = FindUnquoted<'>'>(xml, m_next, m_openQuote);
    m_next = found == ByteScan::c_npos ? xml.size() : found;
    return found;
}

void QuoteState::Advance(std::string_view piece) noexcept
{
    FindUnquoted<>(piece, 0, m_open);
}

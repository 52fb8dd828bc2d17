#include "base/ShortText.h"
#include "direct/ByteClasses.h"
#include "direct/DirectScanner.h"

#include <kesplatform/EncodingTable.h>
#include <kesplatform/XmlDeclaration.h>

#include <algorithm>
#include <string_view>

using ByteClasses::SkipWhitespace;
using DirectScanning::Verdict;

namespace {

/// Xerces reads a declaration into a buffer of its own, which a longer one does not fit in.
constexpr std::size_t c_maxDeclaration = 4096;

bool IsPublicIdentifier(std::string_view text)
{
    constexpr std::string_view c_marks = " \r\n-'()+,./:=?;!*#@$_%";
    return std::all_of(text.begin(), text.end(), [&](char c) {
        return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z') ||
               c_marks.find(c) != std::string_view::npos;
    });
}

/// What stands between two quotes that are both in the text, or null without such.
const char* FindClosingQuote(const char* at, const char* end) noexcept
{
    if (*at != '"' && *at != '\'')
        return nullptr;
    const char* const close = std::find(at + 1, end, *at);
    return close == end ? nullptr : close;
}

/// Takes name="value" behind white space off the front of `text`. False, with `text` as it was,
/// when it does not begin so.
bool TakeNamed(std::string_view& text, std::string_view name, std::string_view& value) noexcept
{
    std::string_view rest = text;
    std::string_view found;
    if (text.empty() || XmlDeclaration::c_whitespace.find(text.front()) == std::string_view::npos ||
        !XmlDeclaration::TakePseudoAttribute(rest, found, value) || found != name)
        return false;
    text = rest;
    return true;
}

} // namespace

const char* DirectScanner::ScanProlog(const char* at)
{
    constexpr std::string_view c_start = XmlDeclaration::c_start;
    if (ShortText::StandsAt(at, m_end, c_start) &&
        !ByteClasses::Is(at[c_start.size()], ByteClasses::NamePart)) {
        at = ScanXmlDeclaration(at + c_start.size());
        if (at == nullptr)
            return nullptr;
    }
    at = ScanMisc(at);
    if (at != nullptr && ShortText::StandsAt(at, m_end, "<!DOCTYPE")) {
        at = ScanDocumentType(at + 9);
        if (at != nullptr)
            at = ScanMisc(at);
    }
    if (at != nullptr && *at != '<')
        return Decline(Verdict::Markup);
    return at;
}

/// XmlDeclaration::FindEncoding takes the encoding from whatever looks like a declaration; here it
/// must be one in all its parts, and what counts beside the encoding is where it ends.
const char* DirectScanner::ScanXmlDeclaration(const char* at)
{
    // Of other white space, Xerces overlooks the declaration when it looks for the encoding.
    if (*at != ' ')
        return Decline(Verdict::Declaration);
    constexpr std::string_view c_end = "?>";
    std::string_view text(
        at, std::min(static_cast<std::size_t>(m_end - at), c_maxDeclaration + c_end.size()));
    std::string_view value;
    if (!TakeNamed(text, "version", value) || value != "1.0")
        return Decline(Verdict::Declaration);
    if (TakeNamed(text, "encoding", value) && !EncodingTable::IsName(value))
        return Decline(Verdict::Declaration);
    if (TakeNamed(text, "standalone", value) && value != "yes" && value != "no")
        return Decline(Verdict::Declaration);
    text.remove_prefix(std::min(text.find_first_not_of(XmlDeclaration::c_whitespace), text.size()));
    if (!text.starts_with(c_end))
        return Decline(Verdict::Declaration);
    return text.data() + c_end.size();
}

const char* DirectScanner::ScanMisc(const char* at)
{
    for (;;) {
        at = SkipWhitespace(at);
        if (ShortText::StandsAt(at, m_end, "<?"))
            at = ScanInstruction(at);
        else if (ShortText::StandsAt(at, m_end, "<!--"))
            at = ScanComment(at);
        else
            return at;
        if (at == nullptr)
            return nullptr;
    }
}

/// What it names outside is never read.
const char* DirectScanner::ScanDocumentType(const char* at)
{
    const char* next = SkipWhitespace(at);
    if (next == at)
        return Decline(Verdict::Markup);
    at = ScanName(next);
    if (at == nullptr)
        return nullptr;
    next = SkipWhitespace(at);
    const bool isPublic = ShortText::StandsAt(next, m_end, "PUBLIC");
    if (next > at && (isPublic || ShortText::StandsAt(next, m_end, "SYSTEM"))) {
        at = next + 6;
        next = SkipWhitespace(at);
        const char* close = FindClosingQuote(next, m_end);
        if (next == at || close == nullptr)
            return Decline(Verdict::Markup);
        if (isPublic) {
            if (!IsPublicIdentifier({next + 1, static_cast<std::size_t>(close - next - 1)}))
                return Decline(Verdict::Markup);
            at = close + 1;
            next = SkipWhitespace(at);
            close = FindClosingQuote(next, m_end);
            if (next == at || close == nullptr)
                return Decline(Verdict::Markup);
        }
        // It may hold any character.
        if (SkipTo(next + 1, *next) != close)
            return Decline(Verdict::DocumentType);
        next = SkipWhitespace(close + 1);
    }
    if (*next == '[') {
        next = ScanInternalSubset(next + 1);
        if (next == nullptr)
            return nullptr;
        next = SkipWhitespace(next);
    }
    return *next == '>' ? next + 1 : Decline(Verdict::DocumentType);
}

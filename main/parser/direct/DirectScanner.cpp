#include "direct/DirectScanner.h"

#include "direct/ByteClasses.h"
#include "direct/Utf8Sequence.h"
#include "direct/WideRun.h"
#include "markup/CharacterClasses.h"

#include <kesplatform/EncodingTable.h>
#include <kesplatform/Unicode.h>

#include <algorithm>

using DirectScanning::Verdict;

namespace {

/// More than Xerces decodes ahead of the event that it reports.
constexpr std::ptrdiff_t c_decodedAhead = 0x20000;
/// In bytes.
constexpr std::size_t c_longestCharacter = 4;

} // namespace

Verdict DirectScanner::Scan(const Document& document, ScanSink& sink)
{
    const Return giveBack(*this);
    const char* at = EncodingTable::SkipByteOrderMark(document.bytes).data();
    m_end = document.bytes.data() + document.bytes.size();
    m_isDone = false;
    m_verdict = Verdict::Accepted;
    m_sink = &sink;
    m_passesOn = sink.PassesOn();
    m_open.clear();
    m_table.ForgetIfLarge();
    // What the document spells out itself is less than its bytes.
    m_output = document.bytes.size();
    m_maxOutput = document.maxOutput;
    m_particles = 0;
    m_declared = 0;
    m_maxDeclared = document.maxDeclared;
    m_validated = at;
    m_eventEnd = nullptr;
    m_position.Begin(at, m_end);
    at = m_output > m_maxOutput ? Decline(Verdict::Limit) : ScanProlog(at);
    if (at != nullptr)
        at = ScanElements(at);
    // What stands behind the root element is looked at even if the sink is done with its end.
    if (at != nullptr && m_open.empty()) {
        at = ScanMisc(at);
        if (at != nullptr && at != m_end)
            Decline(Verdict::Markup);
    }
    return m_verdict;
}

/// What an unusual document has made the scanner take.
void DirectScanner::GiveBack() noexcept
{
    constexpr std::size_t c_kept = 1024;
    m_units.Shrink();
    m_declarations.Clear();
    m_names.ForgetUnlessSmall();
    m_table.ForgetWhatIsGone();
    if (m_open.capacity() > c_kept)
        std::vector<OpenTag>().swap(m_open);
    if (m_values.capacity() > c_kept) {
        std::vector<NameTable::Name*>().swap(m_attributes);
        std::vector<Value>().swap(m_values);
        std::vector<const char16_t*>().swap(m_attributeNames);
        std::vector<std::u16string_view>().swap(m_attributeValues);
    }
}

void DirectScanner::GetCurrentLocation(int& line, int& column) noexcept
{
    m_position.MoveTo(m_eventEnd);
    line = m_position.GetLine();
    column = m_position.GetColumn();
}

bool DirectScanner::IsValidAround(const char* at) noexcept
{
    const char* const until = m_end - at > c_decodedAhead ? at + c_decodedAhead : m_end;
    // In large steps, so that the end of one is seldom met.
    if (m_validated >= until) [[likely]]
        return true;
    const char* const goal = m_end - until > c_decodedAhead ? until + c_decodedAhead : m_end;
    const std::string_view ahead(m_validated, static_cast<std::size_t>(goal - m_validated));
    const std::size_t valid = Unicode::findInvalidUtf8(ahead);
    // A step may end within a character, which the next one begins with.
    const bool isCut = goal < m_end && ahead.size() - valid < c_longestCharacter;
    if (valid < ahead.size() && !isCut)
        return Decline(Verdict::Encoding) != nullptr;
    m_validated += valid;
    return true;
}

const char* DirectScanner::ScanElements(const char* at)
{
    at = ScanStartTag(at);
    while (at != nullptr && !m_open.empty() && !m_isDone) {
        at = ScanText(at);
        if (at == nullptr)
            break;
        switch (at[1]) {
        case '/':
            at = ScanEndTag(at);
            break;
        case '!':
            at = ScanMarkupInContent(at);
            break;
        case '?':
            at = ScanInstruction(at);
            break;
        default:
            at = ScanStartTag(at);
        }
    }
    return at;
}

const char* DirectScanner::ScanMarkupInContent(const char* at)
{
    // There is a zero behind the document, so that no comparison passes its end.
    if (at[2] == '-')
        return ScanComment(at);
    if (at[2] == '[')
        return ScanCData(at);
    return Decline(Verdict::Markup);
}

const char* DirectScanner::SkipTo(const char* at, char stop) noexcept
{
    const auto stops = WideRun::Stops<WideRun::Controls::PassTabAndLineFeed>{stop, stop, stop};
    for (;;) {
        at = WideRun::Skip(at, m_end, stops);
        if (*at == stop && at < m_end)
            return at;
        if (*at == '\r') {
            ++at;
        } else if (ByteClasses::IsAscii(*at)) {
            return Decline(Verdict::Markup);
        } else if (Utf8Sequence::Read(at) == Utf8Sequence::c_invalid) {
            return Decline(Verdict::Encoding);
        }
    }
}

const char* DirectScanner::ScanComment(const char* at)
{
    if (at[3] != '-')
        return Decline(Verdict::Markup);
    at += 4;
    for (;;) {
        at = SkipTo(at, '-');
        if (at == nullptr)
            return nullptr;
        ++at;
        if (*at == '-')
            return at[1] == '>' ? at + 2 : Decline(Verdict::Markup);
    }
}

const char* DirectScanner::ScanInstruction(const char* at)
{
    const char* const target = at + 2;
    at = ScanName(target);
    if (at == nullptr)
        return nullptr;
    const auto isLetter = [](char byte, char lower) { return (byte | 0x20) == lower; };
    if (at - target == 3 && isLetter(target[0], 'x') && isLetter(target[1], 'm') &&
        isLetter(target[2], 'l'))
        return Decline(Verdict::Declaration);
    if (*at == '?')
        return at[1] == '>' ? at + 2 : Decline(Verdict::Markup);
    if (!ByteClasses::Is(*at, ByteClasses::Whitespace))
        return Decline(Verdict::Markup);
    for (;;) {
        at = SkipTo(at, '?');
        if (at == nullptr)
            return nullptr;
        ++at;
        if (*at == '>')
            return at + 1;
    }
}

const char* DirectScanner::ScanName(const char* at) noexcept
{
    if (!ByteClasses::Is(*at, ByteClasses::NameStart)) {
        return ByteClasses::IsAscii(*at) ? Decline(Verdict::Markup) : ScanLongName(at);
    }
    const char* const begin = at;
    do
        ++at;
    while (ByteClasses::Is(*at, ByteClasses::NamePart));
    return ByteClasses::IsAscii(*at) ? at : ScanLongName(begin);
}

const char* DirectScanner::ScanLongName(const char* at) noexcept
{
    constexpr char32_t c_endOfNames = 0xF0000;
    bool isFirst = true;
    for (;; isFirst = false) {
        if (ByteClasses::IsAscii(*at)) {
            if (!ByteClasses::Is(*at, isFirst ? ByteClasses::NameStart : ByteClasses::NamePart))
                return isFirst ? Decline(Verdict::Markup) : at;
            ++at;
            continue;
        }
        const char* next = at;
        const char32_t character = Utf8Sequence::Read(next);
        if (character == Utf8Sequence::c_invalid)
            return Decline(Verdict::Encoding);
        bool isPart = character < c_endOfNames;
        if (character < 0x10000) {
            const auto unit = static_cast<char16_t>(character);
            isPart = isFirst ? CharacterClasses::IsFirstNameChar(unit)
                             : CharacterClasses::IsNameChar(unit);
        }
        if (!isPart)
            return isFirst ? Decline(Verdict::Markup) : at;
        at = next;
    }
}

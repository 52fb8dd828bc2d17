#include "base/ShortText.h"
#include "direct/ByteClasses.h"
#include "direct/DirectScanner.h"
#include "direct/Utf8Sequence.h"
#include "direct/WideRun.h"

#include <string_view>

using DirectScanning::Verdict;

namespace {

/// A piece of text that is handed on at once: small enough to stay in the cache.
constexpr std::ptrdiff_t c_piece = 4096;

/// Longer runs of ASCII are copied faster sixteen at a time.
constexpr int c_maxBetweenWords = 4;

constexpr WideRun::Stops<WideRun::Controls::PassTabAndLineFeed> c_textStops{'<', '&', ']'};
constexpr WideRun::Stops<WideRun::Controls::PassTabAndLineFeed> c_cdataStops{']', ']', ']'};

bool IsCharacter(char32_t value) noexcept
{
    if (value < 0x20)
        return value == '\t' || value == '\n' || value == '\r';
    return value < 0xD800 || (value >= 0xE000 && value < 0xFFFE) ||
           (value >= 0x10000 && value <= 0x10FFFF);
}

} // namespace

void DirectScanner::ReserveText()
{
    if (m_to - m_units.Begin() >= c_piece)
        PassText();
    m_to = m_units.Reserve(m_to, c_slack + WideRun::c_step);
}

void DirectScanner::PassText()
{
    const auto length = static_cast<std::size_t>(m_to - m_units.Begin());
    if (length > 0)
        m_sink->AppendText({m_units.Begin(), length});
    m_to = m_units.Begin();
}

const char* DirectScanner::ScanText(const char* at)
{
    if (*at == '<')
        return at;
    m_to = m_units.Begin();
    for (;;) {
        ReserveText();
        at = WideRun::Copy(at, m_end, c_textStops, m_to, m_units.End() - c_slack);
        switch (*at) {
        case '<':
            PassText();
            return at;
        case '&':
            at = ScanReference(at);
            break;
        case ']':
            if (at[1] == ']' && at[2] == '>')
                return Decline(Verdict::Markup);
            *m_to++ = u']';
            ++at;
            break;
        default:
            at = ScanCharacters(at);
        }
        if (at == nullptr)
            return nullptr;
    }
}

const char* DirectScanner::ScanCData(const char* at)
{
    constexpr std::string_view c_start = "<![CDATA[";
    if (!ShortText::StandsAt(at, m_end, c_start))
        return Decline(Verdict::Markup);
    at += c_start.size();
    m_to = m_units.Begin();
    for (;;) {
        ReserveText();
        at = WideRun::Copy(at, m_end, c_cdataStops, m_to, m_units.End() - c_slack);
        if (*at == ']') {
            if (at[1] == ']' && at[2] == '>') {
                PassText();
                return at + 3;
            }
            *m_to++ = u']';
            ++at;
            continue;
        }
        at = ScanCharacters(at);
        if (at == nullptr)
            return nullptr;
    }
}

/// What stops a copy besides markup: a line end to be normalised, or characters beyond ASCII, as
/// many as come at once and there is room for. Nothing when a copy stopped because its room was
/// used up.
const char* DirectScanner::ScanCharacters(const char* at) noexcept
{
    if (*at == '\r') {
        *m_to++ = u'\n';
        return at[1] == '\n' ? at + 2 : at + 1;
    }
    if (ByteClasses::IsAscii(*at)) {
        const bool isPlain = ByteClasses::Is(*at, ByteClasses::Plain);
        return isPlain ? at : Decline(Verdict::Markup);
    }
    const char16_t* const room = m_units.End() - c_slack / 2;
    char16_t* to = m_to;
    do {
        if (static_cast<unsigned char>(*at) >= 0xE0)
            at = Utf8Sequence::CopyThreeBytes(at, m_end, to, room);
        if (to < room && !ByteClasses::IsAscii(*at)) {
            const char32_t character = Utf8Sequence::Read(at);
            if (character == Utf8Sequence::c_invalid)
                return Decline(Verdict::Encoding);
            to = Utf8Sequence::Write(character, to);
        }
        // Words of other scripts stand with blanks and punctuation between them.
        for (int i = 0; i < c_maxBetweenWords && ByteClasses::Is(*at, ByteClasses::Inert); ++i)
            *to++ = static_cast<unsigned char>(*at++);
    } while (to < room && !ByteClasses::IsAscii(*at));
    m_to = to;
    return at;
}

const char* DirectScanner::ScanReference(const char* at) noexcept
{
    struct Predefined
    {
        std::string_view text;
        char16_t unit;
    };
    static constexpr Predefined c_predefined[] = {
        {"lt;", u'<'}, {"gt;", u'>'}, {"amp;", u'&'}, {"quot;", u'"'}, {"apos;", u'\''}};
    ++at;
    if (*at == '#')
        return ScanCharacterReference(at + 1);
    for (const Predefined& entity : c_predefined) {
        // The zero behind the document ends the comparison at the latest.
        std::size_t length = 0;
        while (length < entity.text.size() && at[length] == entity.text[length])
            ++length;
        if (length == entity.text.size()) {
            *m_to++ = entity.unit;
            return at + length;
        }
    }
    return Decline(Verdict::Entity);
}

const char* DirectScanner::ScanCharacterReference(const char* at) noexcept
{
    const bool isHexadecimal = *at == 'x';
    if (isHexadecimal)
        ++at;
    if (*at == ';')
        return Decline(Verdict::Markup);
    char32_t value = 0;
    for (; *at != ';'; ++at) {
        char32_t digit = 0;
        if (*at >= '0' && *at <= '9')
            digit = static_cast<char32_t>(*at - '0');
        else if (isHexadecimal && (*at | 0x20) >= 'a' && (*at | 0x20) <= 'f')
            digit = static_cast<char32_t>((*at | 0x20) - 'a' + 10);
        else
            return Decline(Verdict::Markup);
        value = value * (isHexadecimal ? 16 : 10) + digit;
        if (value > 0x10FFFF)
            return Decline(Verdict::Markup);
    }
    if (!IsCharacter(value))
        return Decline(Verdict::Markup);
    m_to = Utf8Sequence::Write(value, m_to);
    return at + 1;
}

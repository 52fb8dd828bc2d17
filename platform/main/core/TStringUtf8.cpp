#include <kesplatform/TString.h>

#include "Utf8Bytes.h"

#include <kesplatform/Unicode.h>

#include <ostream>

namespace {

using AsciiSteps::c_step;

constexpr char16_t c_replacement = u'\uFFFD';

bool IsHigh(char16_t unit) noexcept
{
    return (unit & 0xFC00) == 0xD800;
}

bool IsLow(char16_t unit) noexcept
{
    return (unit & 0xFC00) == 0xDC00;
}

bool IsSurrogate(char16_t unit) noexcept
{
    return (unit & 0xF800) == 0xD800;
}

/// Writes the units of a character and returns where the next ones go.
char16_t* AppendUnits(char32_t character, char16_t* to) noexcept
{
    if (character < 0x10000) {
        *to++ = static_cast<char16_t>(character);
    } else {
        *to++ = static_cast<char16_t>(0xD7C0 + (character >> 10));
        *to++ = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
    return to;
}

/// Decodes what stands at `at`, which is no ASCII, moves `at` behind it and returns where the next
/// units go.
char16_t* DecodeNext(std::string_view utf8, std::size_t& at, char16_t* to) noexcept
{
    char32_t character = 0;
    const std::size_t length = Utf8Bytes::ReadSequence(utf8.substr(at), character);
    if (length == 0) {
        *to++ = c_replacement;
        ++at;
        return to;
    }
    at += length;
    return AppendUnits(character, to);
}

/// Decodes the whole text into room for as many units as it has bytes, and returns the end.
char16_t* Decode(std::string_view utf8, char16_t* to) noexcept
{
    std::size_t at = 0;
    while (at < utf8.size()) {
        while (at + c_step <= utf8.size() && AsciiSteps::IsAscii(utf8.data() + at)) {
            AsciiSteps::Copy(utf8.data() + at, to);
            at += c_step;
            to += c_step;
        }
        while (at < utf8.size() && static_cast<unsigned char>(utf8[at]) < 0x80)
            *to++ = static_cast<unsigned char>(utf8[at++]);
        // Characters beyond ASCII come in runs.
        while (at < utf8.size() && static_cast<unsigned char>(utf8[at]) >= 0x80)
            to = DecodeNext(utf8, at, to);
    }
    return to;
}

/// How many units Decode makes of a text.
std::size_t CountUnits(std::string_view utf8) noexcept
{
    std::size_t units = 0;
    char32_t character = 0;
    for (std::size_t at = 0; at < utf8.size();) {
        const std::size_t length = Utf8Bytes::ReadSequence(utf8.substr(at), character);
        units += length == 4 ? 2 : 1;
        at += length == 0 ? 1 : length;
    }
    return units;
}

/// How many bytes Encode makes of a text.
std::size_t CountBytes(std::u16string_view units) noexcept
{
    std::size_t bytes = units.size();
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        if (unit < 0x80) {
            while (i + 1 + c_step <= units.size() && AsciiSteps::IsAscii(units.data() + i + 1))
                i += c_step;
            continue;
        }
        bytes += unit >= 0x800 ? 2 : 1;
        // The halves of a pair count three each, but make four together.
        if (IsLow(unit) && i > 0 && IsHigh(units[i - 1]))
            bytes -= 2;
    }
    return bytes;
}

char* EncodeUnit(char32_t character, char* to) noexcept
{
    const auto tail = [character](unsigned shift) {
        return static_cast<char>(0x80 | (character >> shift & 0x3F));
    };
    if (character < 0x80) {
        *to++ = static_cast<char>(character);
    } else if (character < 0x800) {
        *to++ = static_cast<char>(0xC0 | character >> 6);
        *to++ = tail(0);
    } else if (character < 0x10000) {
        *to++ = static_cast<char>(0xE0 | character >> 12);
        *to++ = tail(6);
        *to++ = tail(0);
    } else {
        *to++ = static_cast<char>(0xF0 | character >> 18);
        *to++ = tail(12);
        *to++ = tail(6);
        *to++ = tail(0);
    }
    return to;
}

/// What becomes of a unit that is half of no pair. Either takes three bytes.
enum class LoneHalves
{
    Replaced,
    Kept
};

void Encode(std::u16string_view units, char* to, LoneHalves loneHalves) noexcept
{
    std::size_t at = 0;
    while (at < units.size()) {
        if (units[at] < 0x80) {
            while (at + c_step <= units.size() && AsciiSteps::IsAscii(units.data() + at)) {
                AsciiSteps::Copy(units.data() + at, to);
                at += c_step;
                to += c_step;
            }
            while (at < units.size() && units[at] < 0x80)
                *to++ = static_cast<char>(units[at++]);
            continue;
        }
        char32_t character = units[at++];
        if (IsHigh(units[at - 1]) && at < units.size() && IsLow(units[at])) {
            character = 0x10000 + ((character & 0x3FF) << 10) + (units[at] & 0x3FFU);
            ++at;
        } else if (IsSurrogate(units[at - 1]) && loneHalves == LoneHalves::Replaced) {
            character = c_replacement;
        }
        to = EncodeUnit(character, to);
    }
}

std::string ToUtf8(std::u16string_view units, LoneHalves loneHalves)
{
    std::string utf8(CountBytes(units), '\0');
    Encode(units, utf8.data(), loneHalves);
    return utf8;
}

} // namespace

std::string TString::toStdString() const
{
    return ToUtf8(view(), LoneHalves::Replaced);
}

std::string Unicode::toUtf8KeepingHalves(std::u16string_view units)
{
    return ToUtf8(units, LoneHalves::Kept);
}

TString TString::fromUtf8(std::string_view utf8)
{
    // No text has more units than bytes; only one near the limit is counted to be sure.
    const bool isLong = utf8.size() > static_cast<std::size_t>(c_maxLength);
    const auto room = static_cast<size_type>(isLong ? CountUnits(utf8) : utf8.size());
    TString text;
    char16_t* first = text.resizeForOverwrite(room);
    const size_type length = Decode(utf8, first) - first;
    if (length != room)
        text.ShrinkTo(length);
    return text;
}

TString& TString::append(std::string_view utf8)
{
    // Too long as bytes is not too long as units.
    if (utf8.size() > static_cast<std::size_t>(c_maxLength - length()))
        return append(fromUtf8(utf8));
    if (utf8.empty())
        return *this;
    char16_t* const end = Decode(utf8, GrowBy(static_cast<size_type>(utf8.size())));
    resize(end - m_rep->Units());
    return *this;
}

// Comparing

bool TString::AreEqual(std::u16string_view a, std::string_view utf8) noexcept
{
    // A unit takes one to three bytes.
    return a.size() <= utf8.size() && utf8.size() <= 3 * a.size() && Compare(a, utf8) == 0;
}

std::strong_ordering TString::Compare(std::u16string_view a, std::string_view utf8) noexcept
{
    std::size_t at = 0;
    std::size_t compared = 0;
    while (at < utf8.size()) {
        char16_t units[2];
        const char16_t* end = units + 1;
        if (static_cast<unsigned char>(utf8[at]) < 0x80)
            units[0] = static_cast<unsigned char>(utf8[at++]);
        else
            end = DecodeNext(utf8, at, units);
        for (const char16_t* unit = units; unit != end; ++unit, ++compared) {
            if (compared == a.size())
                return std::strong_ordering::less;
            if (a[compared] != *unit)
                return a[compared] <=> *unit;
        }
    }
    return a.size() <=> compared;
}

std::ostream& operator<<(std::ostream& out, const TString& text)
{
    return out << text.toStdString();
}

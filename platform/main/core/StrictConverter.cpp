#include "StrictConverter.h"

#include "Latin10.h"
#include "Utf7.h"

#include <algorithm>
#include <array>
#include <new>
#include <string>
#include <utility>

#include <unicode/ucnv.h>

namespace {

constexpr std::size_t c_room = 4096;
/// Of the bytes in one call; ICU counts them as an int.
constexpr std::size_t c_maximumStep = std::size_t{1} << 30;

void RequireMemory(UErrorCode status)
{
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
}

bool IsEncodingName(std::string_view name) noexcept
{
    return std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
               c == '.' || c == '_' || c == '-' || c == ':';
    });
}

/// Those of which the converter, with what is checked here besides, tells whatever it cannot read.
bool IsStrict(UConverterType type) noexcept
{
    switch (type) {
    case UCNV_SBCS:
    case UCNV_DBCS:
    case UCNV_MBCS:
    case UCNV_LATIN_1:
    case UCNV_US_ASCII:
    case UCNV_UTF8:
    case UCNV_UTF16_BigEndian:
    case UCNV_UTF16_LittleEndian:
    case UCNV_UTF32_BigEndian:
    case UCNV_UTF32_LittleEndian:
    case UCNV_UTF16:
    case UCNV_UTF32:
    case UCNV_CESU8:
    case UCNV_EBCDIC_STATEFUL:
    case UCNV_ISO_2022:
    case UCNV_HZ:
    case UCNV_UTF7:
        return true;
    default:
        return false;
    }
}

constexpr bool IsHighHalf(char16_t unit) noexcept
{
    return (unit & 0xFC00) == 0xD800;
}

constexpr bool IsLowHalf(char16_t unit) noexcept
{
    return (unit & 0xFC00) == 0xDC00;
}

} // namespace

void StrictConverter::Close::operator()(UConverter* converter) const noexcept
{
    ucnv_close(converter);
}

StrictConverter::StrictConverter(std::string_view encoding)
{
    if (encoding.empty() || !IsEncodingName(encoding))
        return;
    const bool isLatin10 = Latin10::IsName(encoding);
    const std::string name = isLatin10 ? "ISO-8859-1" : std::string(encoding);
    UErrorCode status = U_ZERO_ERROR;
    m_converter.reset(ucnv_open(name.c_str(), &status));
    RequireMemory(status);
    if (m_converter == nullptr)
        return;
    status = U_ZERO_ERROR;
    ucnv_setToUCallBack(m_converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
    if (U_FAILURE(status) || !IsStrict(ucnv_getType(m_converter.get()))) {
        m_converter.reset();
        return;
    }
    if (isLatin10)
        m_upper = Latin10::c_upper;
    FindLineEnds();
    FindUndefined();
}

StrictConverter::~StrictConverter() = default;

bool StrictConverter::IsUtf8() const noexcept
{
    return ucnv_getType(m_converter.get()) == UCNV_UTF8;
}

/// Of the two bytes that may end lines in EBCDIC, 15 and 25, ICU takes one for U+0085.
void StrictConverter::FindLineEnds()
{
    constexpr std::string_view c_lessThan = "\x4C";
    Begin(c_lessThan);
    m_hasTwoLineEnds = Next() == u"<";
}

/// For a byte that a code page leaves undefined ICU gives the control character of that number. It
/// is none where the code page has other characters among them.
void StrictConverter::FindUndefined()
{
    if (ucnv_getType(m_converter.get()) != UCNV_SBCS)
        return;
    std::uint32_t controls = 0;
    for (unsigned i = 0; i < 32; ++i) {
        const char byte = static_cast<char>(0x80 + i);
        const std::string_view bytes(&byte, 1);
        Begin(bytes);
        const std::u16string_view text = Next();
        if (text.size() == 1 && text[0] == 0x80 + i)
            controls |= std::uint32_t{1} << i;
    }
    if (controls != ~std::uint32_t{0})
        m_undefined = controls;
}

bool StrictConverter::KeepsAscii()
{
    const UConverterType type = ucnv_getType(m_converter.get());
    if (type == UCNV_LATIN_1 || type == UCNV_US_ASCII)
        return true;
    if (type != UCNV_SBCS)
        return false;
    std::array<char, 0x80> bytes;
    std::array<char16_t, 0x80> units;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i);
        units[i] = static_cast<char16_t>(i);
    }
    Begin({bytes.data(), bytes.size()});
    return Next() == std::u16string_view(units.data(), units.size());
}

void StrictConverter::Begin(std::string_view bytes)
{
    ucnv_resetToUnicode(m_converter.get());
    m_units.resize(c_room);
    m_offsets.resize(c_room);
    m_bytes = bytes;
    m_at = 0;
    m_isDone = false;
    m_half = 0;
    m_fault.reset();
    m_faultBehind.reset();
    if (ucnv_getType(m_converter.get()) != UCNV_UTF7)
        return;
    const std::size_t surplus = Utf7::FindSurplus(bytes);
    if (surplus == std::string_view::npos)
        return;
    m_faultBehind = Fault{surplus, Utf7::EndsShift(bytes, surplus)};
    m_bytes = bytes.substr(0, surplus);
}

std::u16string_view StrictConverter::Next()
{
    if (m_isDone)
        return {};
    std::size_t count = 0;
    if (m_half != 0) {
        m_units[0] = std::exchange(m_half, u'\0');
        m_offsets[0] = -static_cast<std::int32_t>(m_at - m_halfOffset);
        count = 1;
    }
    do
        count = Convert(count);
    while (count == 0 && !m_isDone);
    if (m_hasTwoLineEnds)
        std::replace(m_units.begin(), m_units.begin() + static_cast<std::ptrdiff_t>(count), u'\x85',
                     u'\n');
    if (!m_isDone && count > 0 && IsHighHalf(m_units[count - 1])) {
        m_half = m_units[--count];
        m_halfOffset = GetOffset(count);
    }
    if (m_upper != nullptr) {
        for (std::size_t i = 0; i < count; ++i) {
            if (m_units[i] >= Latin10::c_firstUpper)
                m_units[i] = m_upper[m_units[i] - Latin10::c_firstUpper];
        }
    }
    count = CountWhole(count);
    return {m_units.data(), count};
}

/// Converts behind the units that are kept, and returns how many there are now.
std::size_t StrictConverter::Convert(std::size_t kept)
{
    UConverter* const converter = m_converter.get();
    const bool isLast = m_bytes.size() - m_at <= c_maximumStep;
    const bool flushes = isLast && ucnv_getType(converter) != UCNV_HZ;
    UErrorCode status = U_ZERO_ERROR;
    char16_t* to = m_units.data() + kept;
    const char* from = m_bytes.data() + m_at;
    ucnv_toUnicode(converter, &to, m_units.data() + m_units.size(), &from,
                   from + std::min(m_bytes.size() - m_at, c_maximumStep), m_offsets.data() + kept,
                   static_cast<UBool>(flushes), &status);
    RequireMemory(status);
    m_from = m_at;
    m_at = static_cast<std::size_t>(from - m_bytes.data());
    m_isDone = status != U_BUFFER_OVERFLOW_ERROR && (isLast || U_FAILURE(status));
    if (U_SUCCESS(status)) {
        if (isLast)
            Finish();
    } else if (m_isDone) {
        std::array<char, 32> bad;
        auto length = static_cast<std::int8_t>(bad.size());
        UErrorCode ignored = U_ZERO_ERROR;
        ucnv_getInvalidChars(converter, bad.data(), &length, &ignored);
        auto badLength = static_cast<std::size_t>(std::max<std::int8_t>(length, 0));
        // Of some encodings of single bytes, ICU does not keep the one that it has passed.
        if (badLength == 0 && ucnv_getType(converter) == UCNV_SBCS)
            badLength = 1;
        m_fault = Fault{m_at - std::min(m_at, badLength), status == U_TRUNCATED_CHAR_FOUND};
    }
    return static_cast<std::size_t>(to - m_units.data());
}

/// All bytes are converted. Of HZ, ICU drops the half of a character or of an escape at the end; a
/// line end that is put behind it does not come out as one.
void StrictConverter::Finish()
{
    m_fault = m_faultBehind;
    if (ucnv_getType(m_converter.get()) != UCNV_HZ)
        return;
    constexpr char c_newline = '\n';
    const char* from = &c_newline;
    std::array<char16_t, 4> units;
    char16_t* to = units.data();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_toUnicode(m_converter.get(), &to, units.data() + units.size(), &from, from + 1, nullptr, 1,
                   &status);
    const bool isWhole = U_SUCCESS(status) && to == units.data() + 1 && units[0] == u'\n';
    if (!isWhole)
        m_fault = Fault{m_bytes.size() - 1, true};
}

std::size_t StrictConverter::GetOffset(std::size_t index) const noexcept
{
    return static_cast<std::size_t>(static_cast<std::ptrdiff_t>(m_from) + m_offsets[index]);
}

/// How many units there are before the first that is no character: half of a pair, to which UTF-7
/// and CESU-8 can decode, or one that stands for an undefined byte.
std::size_t StrictConverter::CountWhole(std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        const char16_t unit = m_units[i];
        const bool isPair = IsHighHalf(unit) && i + 1 < count && IsLowHalf(m_units[i + 1]);
        if (isPair) {
            ++i;
            continue;
        }
        const bool isUndefined =
            unit >= 0x80 && unit < 0xA0 && (m_undefined >> (unit - 0x80) & 1) != 0;
        if (!isUndefined && !IsHighHalf(unit) && !IsLowHalf(unit))
            continue;
        m_fault = Fault{GetOffset(i), false};
        m_isDone = true;
        return i;
    }
    return count;
}

#include "values/Base64Encoding.h"

#include "base/ByteScan.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

/// Two characters for each value of twelve bits.
using EncodeTable = std::array<std::array<char16_t, 2>, 4096>;

constexpr EncodeTable MakeEncodeTable()
{
    EncodeTable table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = {static_cast<char16_t>(Base64Encoding::c_alphabet[i >> 6]),
                    static_cast<char16_t>(Base64Encoding::c_alphabet[i & 63])};
    return table;
}

constexpr EncodeTable c_encode = MakeEncodeTable();

char16_t* PutTwelveBits(char16_t* out, std::uint64_t bits) noexcept
{
    std::memcpy(out, c_encode[bits & 0xFFF].data(), 2 * sizeof(char16_t));
    return out + 2;
}

std::uint64_t LoadBigEndian(const unsigned char* bytes) noexcept
{
    std::uint64_t value = 0;
    for (int i = 0; i < 8; ++i)
        value = value << 8 | bytes[i];
    return value;
}

#if defined(__SSE2__) && defined(__GNUC__)

constexpr std::size_t c_vectorStep = 24;
/// What is read for a step.
constexpr std::size_t c_vectorReach = 28;

/// Each three of twelve bytes in both halves become four numbers of six bits, one a byte.
[[gnu::target("avx2")]] inline __m256i SplitIntoSixBits(__m256i bytes) noexcept
{
    // For a group of bytes a, b and c two units of 16 bits: ab and bc.
    const __m256i places = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    const __m256i units = _mm256_shuffle_epi8(bytes, places);
    // Shifts of different widths side by side are multiplications.
    const __m256i first = _mm256_mulhi_epu16(_mm256_and_si256(units, _mm256_set1_epi32(0x0FC0FC00)),
                                             _mm256_set1_epi32(0x04000040));
    const __m256i second = _mm256_mullo_epi16(
        _mm256_and_si256(units, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(first, second);
}

/// The characters for numbers of six bits.
[[gnu::target("avx2")]] inline __m256i LookUpCharacters(__m256i numbers) noexcept
{
    // What is to be added to a number: 13 stands for capitals, 0 for small letters, 1 to 10 for
    // digits, 11 and 12 for the two others.
    const __m256i distances = _mm256_broadcastsi128_si256(
        _mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                      '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0));
    const __m256i beyondLetters = _mm256_subs_epu8(numbers, _mm256_set1_epi8(51));
    const __m256i areCapitals = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), numbers);
    const __m256i kinds =
        _mm256_or_si256(beyondLetters, _mm256_and_si256(areCapitals, _mm256_set1_epi8(13)));
    return _mm256_add_epi8(numbers, _mm256_shuffle_epi8(distances, kinds));
}

/// As many steps of 24 bytes as there are; returns how many bytes these are.
[[gnu::target("avx2")]] std::size_t EncodeWithAvx2(const unsigned char* bytes, std::size_t count,
                                                   std::size_t readable, char16_t* out) noexcept
{
    std::size_t done = 0;
    for (; count - done >= c_vectorStep && readable - done >= c_vectorReach; done += c_vectorStep) {
        const auto* const in = reinterpret_cast<const __m128i*>(bytes + done);
        const auto* const upper = reinterpret_cast<const __m128i*>(bytes + done + 12);
        const __m256i both = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(in)),
                                                     _mm_loadu_si128(upper), 1);
        const __m256i characters = LookUpCharacters(SplitIntoSixBits(both));
        auto* const to = reinterpret_cast<__m256i*>(out);
        _mm256_storeu_si256(to, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(characters)));
        _mm256_storeu_si256(to + 1, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(characters, 1)));
        out += 32;
    }
    return done;
}

#endif

} // namespace

void Base64Encoding::Encode(const unsigned char* bytes, std::size_t count, std::size_t readable,
                            char16_t* out) noexcept
{
#if defined(__SSE2__) && defined(__GNUC__)
    if (ByteScan::HasAvx2()) {
        const std::size_t done = EncodeWithAvx2(bytes, count, readable, out);
        bytes += done;
        count -= done;
        readable -= done;
        out += done / 3 * 4;
    }
#endif
    EncodePortably(bytes, count, readable, out);
}

void Base64Encoding::EncodePortably(const unsigned char* bytes, std::size_t count,
                                    std::size_t readable, char16_t* out) noexcept
{
    // Eight bytes are read for six that are used.
    const unsigned char* const stepsEnd =
        readable < 8 ? bytes : bytes + std::min(count / 6, (readable - 2) / 6) * 6;
    count -= static_cast<std::size_t>(stepsEnd - bytes);
    for (; bytes != stepsEnd; bytes += 6) {
        const std::uint64_t bits = LoadBigEndian(bytes);
        out = PutTwelveBits(out, bits >> 52);
        out = PutTwelveBits(out, bits >> 40);
        out = PutTwelveBits(out, bits >> 28);
        out = PutTwelveBits(out, bits >> 16);
    }
    for (; count >= 3; bytes += 3, count -= 3) {
        const unsigned int bits =
            static_cast<unsigned int>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]);
        out = PutTwelveBits(out, bits >> 12);
        out = PutTwelveBits(out, bits);
    }
    if (count == 0)
        return;
    const unsigned int bits =
        static_cast<unsigned int>(bytes[0] << 16 | (count == 2 ? bytes[1] << 8 : 0));
    out = PutTwelveBits(out, bits >> 12);
    PutTwelveBits(out, bits);
    out[1] = u'=';
    if (count == 1)
        out[0] = u'=';
}

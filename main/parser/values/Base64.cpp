#include <kescorexml/Base64.h>

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "base/Prefetch.h"
#include "values/Base64Encoding.h"

#include <kesplatform/TCType.h>
#include <kesplatform/detail/TStringBlock.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>

namespace {

constexpr unsigned int c_maxGroups = 0x3FFFFFFF;
constexpr unsigned int c_lineLength = 72;
constexpr unsigned int c_bytesPerLine = c_lineLength / 4 * 3;

// Encoding

/// Lines that are made together share one allocation: one each would cost more than the encoding.
constexpr unsigned int c_linesPerAllocation = 32;

class SharedLines final : public TStringBlock::Owner
{
public:
    void Destroy(TStringBlock* block) noexcept override
    {
        block->~TStringBlock();
        ::operator delete(block);
    }

    /// Appends the full lines of `bytes`, one at least, to `lines`, which has room for them.
    void Append(const unsigned char* bytes, unsigned int lineCount, std::vector<TString>& lines)
    {
        constexpr std::size_t c_slotSize = TStringBlock::SlotSize(c_lineLength);
        // Allocations lie behind one another as a rule, so that this helps the next one, too.
        constexpr std::size_t c_prefetchDistance = 8 * c_slotSize;
        static_assert(sizeof(TStringBlock) % TStringBlock::c_slotAlignment == 0);
        void* const memory = ::operator new(sizeof(TStringBlock) + lineCount * c_slotSize);
        auto* const block = new (memory) TStringBlock(*this);
        // One reference for each line, the maker's for the first.
        block->RetainUnshared(lineCount - 1);
        auto* slot = static_cast<std::byte*>(memory) + sizeof(TStringBlock);
        std::size_t readable = std::size_t{lineCount} * c_bytesPerLine;
        for (unsigned int i = 0; i < lineCount; ++i) {
            char16_t* const units = TStringBlock::UnitsOfSlot(slot);
            PrefetchForWriting(slot + c_prefetchDistance, c_slotSize);
            Base64Encoding::Encode(bytes, c_bytesPerLine, readable, units);
            units[c_lineLength] = u'\0';
            block->FinishSlot(slot, c_lineLength);
            lines.push_back(TStringBlock::AdoptSlot(slot));
            bytes += c_bytesPerLine;
            readable -= c_bytesPerLine;
            slot += c_slotSize;
        }
    }
};

constinit SharedLines s_sharedLines;

/// The encoding of `count` bytes as one text.
TString EncodeLine(const unsigned char* bytes, unsigned int count)
{
    TString line;
    const std::ptrdiff_t groups = count / 3 + (count % 3 != 0 ? 1 : 0);
    Base64Encoding::Encode(bytes, count, count, line.resizeForOverwrite(groups * 4));
    return line;
}

void EncodeLines(const unsigned char* bytes, unsigned int count, std::vector<TString>& lines)
{
    unsigned int lineCount = count / c_bytesPerLine;
    const std::size_t needed = lines.size() + lineCount + 1;
    // Growing by the exact number each time would make many small calls quadratic.
    if (needed > lines.capacity())
        lines.reserve(std::max(needed, 2 * lines.capacity()));
    while (lineCount > 0) {
        const unsigned int part = std::min(lineCount, c_linesPerAllocation);
        s_sharedLines.Append(bytes, part, lines);
        bytes += part * c_bytesPerLine;
        lineCount -= part;
    }
    if (const unsigned int rest = count % c_bytesPerLine; rest != 0)
        lines.push_back(EncodeLine(bytes, rest));
}

// Decoding

constexpr unsigned char c_noValue = 0xFF;

constexpr std::array<unsigned char, 256> MakeValueTable()
{
    std::array<unsigned char, 256> table{};
    table.fill(c_noValue);
    for (std::size_t i = 0; i < Base64Encoding::c_alphabet.size(); ++i)
        table[static_cast<unsigned char>(Base64Encoding::c_alphabet[i])] =
            static_cast<unsigned char>(i);
    return table;
}

constexpr std::array<unsigned char, 256> c_values = MakeValueTable();

/// For the four places of a group: what a character adds to the group's three bytes. The fourth
/// byte is not 0 for a character outside the alphabet.
using GroupTable = std::array<std::array<std::uint32_t, 256>, 4>;

constexpr std::uint32_t MakeGroupEntry(unsigned int bits, unsigned char flag)
{
    return std::bit_cast<std::uint32_t>(std::array<unsigned char, 4>{
        static_cast<unsigned char>(bits >> 16), static_cast<unsigned char>(bits >> 8),
        static_cast<unsigned char>(bits), flag});
}

constexpr GroupTable MakeGroupTable()
{
    GroupTable table{};
    for (unsigned int place = 0; place < 4; ++place) {
        for (std::size_t c = 0; c < 256; ++c) {
            const unsigned int value = c_values[c];
            table[place][c] = value == c_noValue ? MakeGroupEntry(0, 1)
                                                 : MakeGroupEntry(value << (18 - 6 * place), 0);
        }
    }
    return table;
}

constexpr GroupTable c_groups = MakeGroupTable();
constexpr std::uint32_t c_foreignMask = MakeGroupEntry(0, 0xFF);

std::uint32_t LookUpGroup(const char16_t* units) noexcept
{
    return c_groups[0][units[0] & 0xFF] | c_groups[1][units[1] & 0xFF] |
           c_groups[2][units[2] & 0xFF] | c_groups[3][units[3] & 0xFF];
}

std::u16string_view Trim(std::u16string_view text) noexcept
{
    while (!text.empty() && TCType::isSpace(text.back()))
        text.remove_suffix(1);
    while (!text.empty() && TCType::isSpace(text.front()))
        text.remove_prefix(1);
    return text;
}

/// Reads one group that may hold padding and foreign characters, moves `in` behind it and returns
/// the number of bytes put out.
std::size_t DecodeOddGroup(const char16_t*& in, const char16_t* end, unsigned char* out) noexcept
{
    unsigned int bits = 0;
    int collected = 0;
    int padding = 0;
    for (; collected < 4 && in != end; ++in) {
        const unsigned char c = static_cast<unsigned char>(*in & 0xFF);
        if (c_values[c] != c_noValue)
            bits |= static_cast<unsigned int>(c_values[c]) << (18 - 6 * collected++);
        else if (c == '=')
            padding = std::min(padding + 1, 2);
    }
    for (int i = 0; i < 3; ++i)
        out[i] = static_cast<unsigned char>(bits >> (16 - 8 * i));
    return static_cast<std::size_t>(3 - padding);
}

/// Decodes groups from `in` on until the text or the room of `limit` bytes is used up.
unsigned char* DecodeGroups(const char16_t*& in, const char16_t* end, unsigned char* out,
                            const unsigned char* limit) noexcept
{
    while (in != end && limit - out >= 4) {
        const std::ptrdiff_t groups = std::min((end - in) / 4, (limit - out - 1) / 3);
        for (std::ptrdiff_t i = 0; i < groups; ++i) {
            const std::uint32_t group = LookUpGroup(in);
            if ((group & c_foreignMask) != 0)
                break;
            // The fourth byte is overwritten by the next group.
            std::memcpy(out, &group, 4);
            in += 4;
            out += 3;
        }
        if (in != end && limit - out >= 4)
            out += DecodeOddGroup(in, end, out);
    }
    return out;
}

} // namespace

void Base64Encode(const unsigned char* bytes, unsigned int count, std::vector<TString>& lines,
                  bool splitLines)
{
    if (count == 0)
        return;
    if (splitLines) {
        EncodeLines(bytes, count, lines);
        return;
    }
    const unsigned int onethird = count / 3 + (count % 3 != 0 ? 1 : 0);
    if (onethird > c_maxGroups)
        ThrowAssertion(u"Base64", __LINE__, u"onethird <= 0x3FFFFFFF",
                       KesErrorsError::LogicAssert_0xD5E47E3E());
    lines.push_back(EncodeLine(bytes, count));
}

void Base64Decode(const TString& text, std::vector<unsigned char>& bytes)
{
    const std::u16string_view trimmed = Trim(text.view());
    bytes.clear();
    bytes.reserve(trimmed.size());
    // Bytes go through a small buffer, because a vector cannot grow without being zeroed first.
    std::array<unsigned char, 4096> buffer;
    const char16_t* in = trimmed.data();
    const char16_t* const end = in + trimmed.size();
    while (in != end) {
        unsigned char* const last =
            DecodeGroups(in, end, buffer.data(), buffer.data() + buffer.size());
        bytes.insert(bytes.end(), buffer.data(), last);
    }
}

std::vector<unsigned char> Base64Decode(const TString& text)
{
    std::vector<unsigned char> bytes;
    Base64Decode(text, bytes);
    return bytes;
}

bool IsBase64(const TString& text) noexcept
{
    std::u16string_view digits = text.view();
    if (digits.size() % 4 != 0)
        return false;
    for (int padding = 0; padding < 2 && digits.ends_with(u'='); ++padding)
        digits.remove_suffix(1);
    return std::all_of(digits.begin(), digits.end(), [](char16_t unit) {
        return unit < c_values.size() && c_values[unit] != c_noValue;
    });
}

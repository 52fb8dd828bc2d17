#include "base/ByteHash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

std::uint32_t Hash(const ByteHash::Seed& seed, const std::string& text)
{
    return seed.Hash(text.data(), text.size());
}

/// How many of these texts share the slot that most of them share, in a table of twice as many.
std::size_t CountInFullestSlot(const ByteHash::Seed& seed, const std::vector<std::string>& texts)
{
    std::vector<std::size_t> slots(texts.size() * 2);
    for (const std::string& text : texts)
        ++slots[Hash(seed, text) % slots.size()];
    return *std::max_element(slots.begin(), slots.end());
}

} // namespace

TEST(ByteHash, LooksAtEveryByteAndAtTheLength)
{
    const ByteHash::Seed seed(1);
    for (std::size_t length = 0; length < 40; ++length) {
        std::set<std::uint32_t> hashes{Hash(seed, std::string(length, 'a'))};
        for (std::size_t i = 0; i < length; ++i) {
            std::string text(length, 'a');
            text[i] = 'b';
            hashes.insert(Hash(seed, text));
        }
        EXPECT_EQ(hashes.size(), length + 1);
    }
    std::set<std::uint32_t> zeros;
    for (std::size_t length = 0; length < 40; ++length)
        zeros.insert(Hash(seed, std::string(length, '\0')));
    EXPECT_EQ(zeros.size(), 40U);
}

TEST(ByteHash, TellsTextsApartThatDifferInLengthAndInTheirFirstByte)
{
    for (std::uint64_t secret = 0; secret < 100; ++secret) {
        const ByteHash::Seed seed(secret);
        const std::set<std::uint32_t> hashes{
            Hash(seed, "cccc"),    Hash(seed, "bcccc"),        Hash(seed, "accccc"),
            Hash(seed, "`cccccc"), Hash(seed, "nnnnnnnncccc"), Hash(seed, "onnnnnnnccccc")};
        EXPECT_EQ(hashes.size(), 6U) << secret;
    }
}

TEST(ByteHash, DependsOnTheSeed)
{
    EXPECT_NE(Hash(ByteHash::Seed(1), "name"), Hash(ByteHash::Seed(2), "name"));
    EXPECT_EQ(Hash(ByteHash::Seed(1), "name"), Hash(ByteHash::Seed(1), "name"));
}

TEST(ByteHash, SpreadsNamesThatAreMadeOfFewPieces)
{
    // 16 bytes of pairs that simple hashes of sums and products take for the same.
    std::vector<std::string> texts;
    for (unsigned bits = 0; bits < 4096; ++bits) {
        std::string text;
        for (unsigned i = 0; i < 12; ++i)
            text += (bits >> i & 1) != 0 ? "bA" : "ag";
        texts.push_back(text);
    }
    // And names that differ in their last bytes, or in the high bits of a word.
    for (char first = 'a'; first <= 'z'; ++first) {
        for (char last = 'a'; last <= 'z'; ++last)
            texts.push_back({'c', 'o', 'l', 'u', 'm', 'n', first, last});
    }
    for (const std::uint64_t secret : {0U, 1U, 20261122U})
        EXPECT_LT(CountInFullestSlot(ByteHash::Seed(secret), texts), 10U);
}

#include "base/ShortText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(ShortText, ComparesTextsOfEveryLengthUpToTheirLastByte)
{
    for (std::size_t length = 0; length < 40; ++length) {
        std::string a;
        for (std::size_t i = 0; i < length; ++i)
            a += static_cast<char>('a' + i % 26);
        std::string b = a;
        EXPECT_TRUE(ShortText::Equals(a.data(), b.data(), length));
        for (std::size_t i = 0; i < length; ++i) {
            b[i] ^= 1;
            EXPECT_FALSE(ShortText::Equals(a.data(), b.data(), length)) << length << " " << i;
            b[i] ^= 1;
        }
    }
}

TEST(ShortText, CopiesTextsOfEveryLengthAndNothingBeside)
{
    for (std::size_t length = 0; length < 140; ++length) {
        std::u16string from;
        for (std::size_t i = 0; i < length; ++i)
            from += static_cast<char16_t>(u'a' + i);
        std::vector<char16_t> to(length + 2, u'#');
        ShortText::Copy(from.data(), to.data() + 1, length);
        EXPECT_EQ(to.front(), u'#');
        EXPECT_EQ(to.back(), u'#');
        EXPECT_EQ(std::u16string(to.data() + 1, length), from);
    }
}

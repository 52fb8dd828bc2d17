#include "writing/EightUnits.h"

#include "support/EscapingModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

TEST(EightUnits, FindsTheFirstUnitToEscape)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const auto c = static_cast<char16_t>(unit);
        const bool isClean = EscapingModel::EscapeUnit(c, false) == TString(1, c);
        const bool isCleanContent = EscapingModel::EscapeUnit(c, true) == TString(1, c);
        const std::size_t position = unit % EightUnits::c_count;
        std::u16string text(EightUnits::c_count, u'&');
        std::fill_n(text.begin(), position, u'a');
        text[position] = c;
        const auto next = std::min(position + 1, EightUnits::c_count);
        const EightUnits units = EightUnits::Load(text.data());
        ASSERT_EQ(units.FindEscape<MappingTableType::Attribute>(), isClean ? next : position)
            << std::hex << unit;
        ASSERT_EQ(units.FindEscape<MappingTableType::LongContent>(),
                  isCleanContent ? next : position)
            << std::hex << unit;
    }
}

TEST(EightUnits, CopiesTheEndsOfShortTexts)
{
    const std::u16string text = u"01234567";
    for (std::size_t count = 4; count <= 8; ++count) {
        std::u16string copy(10, u'-');
        EightUnits::LoadEnds(text.data(), count).StoreEnds(copy.data() + 1, count);
        EXPECT_EQ(copy, u"-" + text.substr(0, count) + std::u16string(9 - count, u'-'));
    }
}

} // namespace

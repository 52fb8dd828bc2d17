#include <kesplatform/CorePlatformUtils.h>

#include <gtest/gtest.h>

TEST(CorePlatformUtils, KnowsOfEveryUnitWhetherItMayStandInText)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        bool expected = true;
        if (unit < 0x20)
            expected = unit == 0x09 || unit == 0x0A || unit == 0x0D;
        else if (unit == 0xFFFE || unit == 0xFFFF)
            expected = false;
        ASSERT_EQ(CorePlatformUtils::IsValidCharacter(static_cast<char16_t>(unit)), expected)
            << std::hex << unit;
    }
}

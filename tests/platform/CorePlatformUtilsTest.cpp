#include <kesplatform/CorePlatformUtils.h>

#include <gtest/gtest.h>

#include <set>

TEST(CorePlatformUtils, TakesAllUnitsForValidButThese)
{
    std::set<unsigned> invalid{0xFFFE, 0xFFFF};
    for (unsigned unit = 0; unit < 0x20; ++unit)
        invalid.insert(unit);
    invalid.erase('\t');
    invalid.erase('\n');
    invalid.erase('\r');
    EXPECT_EQ(invalid.size(), 31U);
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        ASSERT_EQ(CorePlatformUtils::IsValidCharacter(static_cast<char16_t>(unit)),
                  !invalid.contains(unit))
            << unit;
    }
}

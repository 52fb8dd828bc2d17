#include <kescorexml/InputSourceResetter.h>
#include <kescorexml/StringInputSource.h>

#include <gtest/gtest.h>

#include <stdexcept>

TEST(InputSourceResetter, RewindsAtTheEndOfItsScope)
{
    StringInputSource source(u"  ab", u"id", true);
    std::string out;
    {
        const InputSourceResetter resetter(source);
        EXPECT_TRUE(source.GetBytes(out, 10));
        EXPECT_FALSE(source.GetBytes(out, 10));
    }
    EXPECT_TRUE(source.GetBytes(out, 10));
    EXPECT_EQ(out, "ab");
}

TEST(InputSourceResetter, RewindsWhenAnExceptionPasses)
{
    StringInputSource source(u"ab", u"id", false);
    std::string out;
    try {
        const InputSourceResetter resetter(source);
        source.GetBytes(out, 10);
        throw std::runtime_error("passes");
    } catch (const std::runtime_error&) {
    }
    EXPECT_TRUE(source.GetBytes(out, 10));
}

TEST(InputSourceResetterDeathTest, EndsTheProcessWhenTheSourceCannotBeRewound)
{
    class Unwindable : public InputSource
    {
    public:
        Unwindable() : InputSource(u"id") {}
        bool GetNextLine(std::string&) override { return false; }
        bool GetBytes(std::string&, unsigned int) override { return false; }
        void ResetToStart() override { throw std::runtime_error("cannot be rewound"); }
        std::int64_t Size() const override { return 0; }
    };
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            Unwindable source;
            const InputSourceResetter resetter(source);
        },
        "");
}

#include <kesplatform/TString.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace {

TEST(TStringResize, KeepsTheTextWhenItGrowsAndLeavesTheRestToTheCaller)
{
    TString text(u"abc");
    char16_t* units = text.resize(6);
    std::copy_n(u"def", 3, units + 3);
    EXPECT_EQ(text, TString(u"abcdef"));
    EXPECT_EQ(text.utf16()[6], u'\0');
}

TEST(TStringResize, KeepsTheBeginningWhenItShrinks)
{
    TString text(u"abcdef");
    text.resize(2);
    EXPECT_EQ(text, TString(u"ab"));
    EXPECT_EQ(text.utf16()[2], u'\0');
}

TEST(TStringResize, LeavesSharedTextsAlone)
{
    for (const TString::size_type length : {0, 2, 3, 9}) {
        TString text(u"abc");
        const TString other = text;
        char16_t* units = text.resize(length);
        if (length > 0)
            units[0] = u'X';
        EXPECT_EQ(text.length(), length);
        EXPECT_EQ(other, TString(u"abc")) << length;
    }
}

TEST(TStringResize, GivesWritableTextOfTheSameLength)
{
    TString text(u"abc");
    text.resize(3)[1] = u'X';
    EXPECT_EQ(text, TString(u"aXc"));
}

TEST(TStringResize, OfTheEmptyStringToNothingIsNull)
{
    TString text;
    EXPECT_EQ(text.resize(0), nullptr);
    EXPECT_TRUE(text.IsEmpty());
}

TEST(TStringResize, ShortensInPlaceAndStillGrowsByAppending)
{
    TString text;
    std::u16string model;
    for (TString::size_type length = 1; length < 5000; length = length * 3 + 1) {
        const auto old = static_cast<std::size_t>(text.length());
        std::fill_n(text.resize(length) + old, static_cast<std::size_t>(length) - old, u'x');
        model.resize(static_cast<std::size_t>(length), u'x');
        ASSERT_EQ(text, TString(model));
        const char16_t* before = text.utf16();
        text.resize(length / 2);
        model.resize(static_cast<std::size_t>(length / 2));
        EXPECT_EQ(text.utf16(), before);
        text += u"tail";
        model += u"tail";
        ASSERT_EQ(text, TString(model));
    }
}

TEST(TStringResize, RefusesWhatIsTooLongAndKeepsTheText)
{
    TString text(u"abc");
    EXPECT_THROW(text.resize(TString::c_maxLength + 1), std::length_error);
    EXPECT_EQ(text, TString(u"abc"));
}

TEST(TStringResize, StaysInPlaceUpToTheCapacity)
{
    EXPECT_EQ(TString().capacity(), 0);
    TString text;
    for (TString::size_type length = 1; length < 3000000; length = text.capacity() + 1) {
        text.resize(length);
        ASSERT_GE(text.capacity(), length);
        const char16_t* before = text.utf16();
        const TString::size_type capacity = text.capacity();
        ASSERT_EQ(text.resize(capacity), before);
        EXPECT_EQ(text.capacity(), capacity);
        text.resize(length);
        EXPECT_EQ(text.capacity(), capacity);
        EXPECT_EQ(text.utf16(), before);
    }
}

} // namespace

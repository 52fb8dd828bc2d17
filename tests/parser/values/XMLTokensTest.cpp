#include <kescorexml/XMLTokens.h>

#include <kescorexml/XMLValueParsers.h>

#include <gtest/gtest.h>

#include <string_view>

namespace {

/// The module's own markup as a static object finds it in its constructor.
struct Tokens
{
    std::u16string_view tagTuple = View(XMLTokens::tagTuple);
    std::u16string_view tagValue = View(XMLTokens::tagValue);
    std::u16string_view tagPack = View(XMLTokens::tagPack);
    std::u16string_view attrVersion = View(XMLTokens::attrVersion);
    std::u16string_view valueTrue = View(XMLTokens::valueTrue);
    std::u16string_view valueFalse = View(XMLTokens::valueFalse);
    bool isTrue = XMLValueParsers::ParseBool(u"true");

    static std::u16string_view View(const char16_t* token)
    {
        return token == nullptr ? std::u16string_view() : token;
    }
};

// Before every other object that is not constant.
__attribute__((init_priority(101))) const Tokens s_early;

} // namespace

TEST(XMLTokens, NamesTheModulesOwnMarkup)
{
    for (const Tokens& tokens : {s_early, Tokens()}) {
        EXPECT_EQ(tokens.tagTuple, u"tuple");
        EXPECT_EQ(tokens.tagValue, u"value");
        EXPECT_EQ(tokens.tagPack, u"pack");
        EXPECT_EQ(tokens.attrVersion, u"version");
        EXPECT_EQ(tokens.valueTrue, u"true");
        EXPECT_EQ(tokens.valueFalse, u"false");
        EXPECT_TRUE(tokens.isTrue);
    }
}

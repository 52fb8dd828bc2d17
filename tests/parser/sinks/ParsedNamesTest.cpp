#include "sinks/ParsedNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Names = std::vector<const char16_t*>;

} // namespace

TEST(ParsedNames, HaveOneEntryForEachName)
{
    ParsedNames names;
    ParsedNames::Entry& a = names.Find(u"a");
    EXPECT_EQ(a.name, TString(u"a"));
    EXPECT_EQ(&names.Find(std::u16string(u"a")), &a);
    EXPECT_NE(&names.Find(u"b"), &a);
}

TEST(ParsedNames, LookAtTheNameNotOnlyAtWhereItStands)
{
    ParsedNames names;
    std::u16string text(u"first");
    EXPECT_EQ(names.FindElement(text.c_str()).name, TString(u"first"));
    EXPECT_EQ(&names.FindElement(text.c_str()), &names.Find(u"first"));
    text = u"other";
    EXPECT_EQ(&names.FindElement(text.c_str()), &names.Find(u"other"));
}

TEST(ParsedNames, FindTheAttributeListsThatWereMadeForAnElementLately)
{
    ParsedNames names;
    ParsedNames::Entry& element = names.Find(u"e");
    const std::vector<Names> lists{{u"a"}, {u"a", u"b"}, {u"b", u"a"}, {u"c"}, {u"a", u"b", u"c"}};
    for (const Names& list : lists) {
        EXPECT_EQ(ParsedNames::FindAttributeNames(element, list), nullptr);
        const AttributeNames* const made = names.MakeAttributeNames(element, list);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(ParsedNames::FindAttributeNames(element, list), made);
    }
    // Four are remembered.
    EXPECT_EQ(ParsedNames::FindAttributeNames(element, lists[0]), nullptr);
    for (std::size_t i = 1; i < lists.size(); ++i)
        EXPECT_NE(ParsedNames::FindAttributeNames(element, lists[i]), nullptr) << i;
    EXPECT_EQ(ParsedNames::FindAttributeNames(names.Find(u"f"), lists[4]), nullptr);
}

TEST(ParsedNames, KeepTheAttributeListsThatWereAskedForLast)
{
    ParsedNames names;
    ParsedNames::Entry& element = names.Find(u"e");
    const Names wanted{u"wanted"};
    const AttributeNames* const made = names.MakeAttributeNames(element, wanted);
    for (const char16_t* name : {u"a", u"b", u"c", u"d", u"f", u"g"}) {
        names.MakeAttributeNames(element, Names{name});
        EXPECT_EQ(ParsedNames::FindAttributeNames(element, wanted), made);
    }
}

TEST(ParsedNames, MakeNoListOfNamesOfWhichTwoAreEqual)
{
    ParsedNames names;
    ParsedNames::Entry& element = names.Find(u"e");
    for (const Names& list :
         {Names{u"a", u"a"}, Names{u"a", u"b", u"a"}, Names{u"b", u"a", u"a"}}) {
        EXPECT_EQ(names.MakeAttributeNames(element, list), nullptr);
        EXPECT_EQ(ParsedNames::FindAttributeNames(element, list), nullptr);
    }
}

TEST(ParsedNames, AreForgottenOnlyWhenTheyHaveGrownLarge)
{
    ParsedNames names;
    names.Find(u"a");
    const auto generation = names.GetGeneration();
    names.ForgetIfLarge();
    names.ForgetUnlessSmall();
    EXPECT_FALSE(names.IsLarge());
    EXPECT_EQ(names.GetGeneration(), generation);

    names.Find(std::u16string(100'000, u'n'));
    names.ForgetIfLarge();
    EXPECT_EQ(names.GetGeneration(), generation);
    names.ForgetUnlessSmall();
    EXPECT_NE(names.GetGeneration(), generation);

    const auto again = names.GetGeneration();
    names.Find(std::u16string(1'100'000, u'n'));
    EXPECT_TRUE(names.IsLarge());
    names.ForgetIfLarge();
    EXPECT_NE(names.GetGeneration(), again);
    EXPECT_FALSE(names.IsLarge());
}

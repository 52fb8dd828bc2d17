#include "direct/AttributeDeclarations.h"

#include <gtest/gtest.h>

TEST(AttributeDeclarations, KeepsTheFirstOfEachNameInTheirOrder)
{
    ParsedNames names;
    NameTable table(names);
    AttributeDeclarations declarations;
    EXPECT_TRUE(declarations.IsEmpty());
    const NameTable::Name& element = table.Find("e");
    EXPECT_TRUE(declarations.DeclareAttribute(element, {&table.Find("b"), true, u"1"}));
    EXPECT_TRUE(declarations.DeclareAttribute(element, {&table.Find("a"), false, std::nullopt}));
    EXPECT_FALSE(declarations.DeclareAttribute(element, {&table.Find("b"), false, u"2"}));
    const auto* const found = declarations.Find(element);
    ASSERT_NE(found, nullptr);
    ASSERT_EQ(found->size(), 2U);
    EXPECT_EQ((*found)[0].name, &table.Find("b"));
    EXPECT_EQ((*found)[0].defaultValue, u"1");
    EXPECT_EQ((*found)[1].name, &table.Find("a"));
    EXPECT_EQ(declarations.Find(table.Find("f")), nullptr);
    declarations.Clear();
    EXPECT_TRUE(declarations.IsEmpty());
}

TEST(AttributeDeclarations, NoticesAnElementThatIsDeclaredTwice)
{
    ParsedNames names;
    NameTable table(names);
    AttributeDeclarations declarations;
    EXPECT_TRUE(declarations.DeclareElement(table.Find("e")));
    EXPECT_TRUE(declarations.DeclareElement(table.Find("f")));
    EXPECT_FALSE(declarations.DeclareElement(table.Find("e")));
    declarations.Clear();
    EXPECT_TRUE(declarations.DeclareElement(table.Find("e")));
}

TEST(AttributeDeclarations, CollapsesBlanksAtBothEndsAndBetween)
{
    const auto collapse = [](std::u16string value) {
        AttributeDeclarations::CollapseBlanks(value);
        return value;
    };
    EXPECT_EQ(collapse(u""), u"");
    EXPECT_EQ(collapse(u" "), u"");
    EXPECT_EQ(collapse(u"   "), u"");
    EXPECT_EQ(collapse(u"a"), u"a");
    EXPECT_EQ(collapse(u"  a  b c   "), u"a b c");
    // Only blanks; other white space has become blanks before, unless it came by reference.
    EXPECT_EQ(collapse(u"\n\na\t"), u"\n\na\t");
}

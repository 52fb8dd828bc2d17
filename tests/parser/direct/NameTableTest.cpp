#include "direct/NameTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

TEST(NameTable, FindsOneEntryForEachName)
{
    ParsedNames names;
    NameTable table(names);
    std::vector<NameTable::Name*> found;
    for (int i = 0; i < 3000; ++i)
        found.push_back(&table.Find("name" + std::to_string(i)));
    for (int i = 0; i < 3000; ++i) {
        const std::string name = "name" + std::to_string(i);
        EXPECT_EQ(&table.Find(name), found[static_cast<std::size_t>(i)]);
        EXPECT_EQ(found[static_cast<std::size_t>(i)]->bytes, name);
    }
}

TEST(NameTable, LeadsToTheEntriesOfTheParser)
{
    ParsedNames names;
    NameTable table(names);
    EXPECT_EQ(table.Find("b").entry, &names.Find(u"b"));
    EXPECT_EQ(table.Find("\xC3\xA9t\xC3\xA9").entry, &names.Find(u"\u00E9t\u00E9"));
    EXPECT_EQ(table.Find("\xF0\x90\x80\x80").entry->name, TString(u"\xD800\xDC00"));
}

TEST(NameTable, ForgetsWhatTheParserForgets)
{
    ParsedNames names;
    NameTable table(names);
    table.Find("a").lastTag = 7;
    table.ForgetIfLarge();
    EXPECT_EQ(table.Find("a").lastTag, 7U);
    const std::string longName(600'000, 'x');
    table.Find(longName + "1");
    table.Find(longName + "2");
    table.ForgetIfLarge();
    EXPECT_EQ(table.Find("a").lastTag, 0U);
    EXPECT_EQ(table.Find("a").entry, &names.Find(u"a"));
}

TEST(NameTable, WorksOnAfterATagOfVeryManyNames)
{
    ParsedNames names;
    NameTable table(names);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 50'000; ++i)
            table.Find("n" + std::to_string(i));
        EXPECT_EQ(table.Find("n49999").bytes, "n49999");
        EXPECT_EQ(table.Find("n1").entry, &names.Find(u"n1"));
        table.ForgetIfLarge();
        EXPECT_EQ(table.Find("n1").entry, &names.Find(u"n1"));
    }
}

TEST(NameTable, GuessesTheElementThatFollowedTheLastTime)
{
    ParsedNames names;
    NameTable table(names);
    EXPECT_EQ(table.GuessElement(), nullptr);
    NameTable::Name& list = table.Find("list");
    NameTable::Name& item = table.Find("item");
    NameTable::Name& note = table.Find("note");
    table.NoteElement(list);
    EXPECT_EQ(table.GuessElement(), nullptr);
    table.NoteElement(item);
    table.NoteElement(list);
    EXPECT_EQ(table.GuessElement(), &item);
    table.NoteElement(note);
    table.NoteElement(list);
    EXPECT_EQ(table.GuessElement(), &note);
}

TEST(NameTable, GuessesNothingThatIsForgotten)
{
    ParsedNames names;
    NameTable table(names);
    table.NoteElement(table.Find("a"));
    table.NoteElement(table.Find("a"));
    ASSERT_NE(table.GuessElement(), nullptr);
    const std::string longName(600'000, 'x');
    table.Find(longName + "1");
    table.Find(longName + "2");
    table.ForgetIfLarge();
    EXPECT_EQ(table.GuessElement(), nullptr);
}

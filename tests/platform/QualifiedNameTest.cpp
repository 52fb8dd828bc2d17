#include <kesplatform/QualifiedName.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

TString RandomText(std::mt19937& random, int maxLength)
{
    constexpr std::u16string_view c_units = u"ab.\"\" \u00e4\u6f22";
    TString text;
    for (int length = std::uniform_int_distribution(0, maxLength)(random); length > 0; --length)
        text += c_units[std::uniform_int_distribution<std::size_t>(0, c_units.size() - 1)(random)];
    return text;
}

FieldName Local(const TString& field)
{
    return FieldName(TString(), field);
}

} // namespace

TEST(QualifiedName, IsEmptyWhenBothPartsAre)
{
    EXPECT_TRUE(QualifiedName().IsEmpty());
    EXPECT_FALSE(QualifiedName(u"a", u"").IsEmpty());
    EXPECT_FALSE(QualifiedName(u"", u"a").IsEmpty());
}

TEST(QualifiedName, IsWrittenWithADotBetweenItsParts)
{
    EXPECT_EQ(QualifiedName(u"root", u"field").GetFullValue(), u"root.field");
    EXPECT_EQ(QualifiedName(u"", u"field").GetFullValue(), u"field");
    EXPECT_EQ(QualifiedName(u"root", u"").GetFullValue(), u"root.");
    EXPECT_EQ(QualifiedName().GetFullValue(), u"");
}

TEST(QualifiedName, QuotesPartsWithDotsOrQuotesOnly)
{
    EXPECT_EQ(QualifiedName(u"a.b", u"c").GetFullValue(), u"\"a.b\".c");
    EXPECT_EQ(QualifiedName(u"a", u"b.c").GetFullValue(), u"a.\"b.c\"");
    EXPECT_EQ(QualifiedName(u"a\"b", u"\"").GetFullValue(), u"\"a\"\"b\".\"\"\"\"");
    EXPECT_EQ(QualifiedName(u"", u"a.b").GetFullValue(), u"\"a.b\"");
    EXPECT_EQ(QualifiedName(u"a b", u"[c]:d'").GetFullValue(), u"a b.[c]:d'");
}

TEST(QualifiedName, TakesAnotherRoot)
{
    QualifiedName name(u"a", u"f");
    name.SetRootValue(u"b");
    EXPECT_EQ(name, QualifiedName(u"b", u"f"));
    EXPECT_EQ(name.GetRootValue(), u"b");
    EXPECT_EQ(name.GetFieldValue(), u"f");
}

TEST(QualifiedName, IsOrderedByRootAndThenByField)
{
    const std::vector<QualifiedName> ordered = {{u"", u""},   {u"", u"z"},  {u"a", u""},
                                                {u"a", u"b"}, {u"a", u"c"}, {u"b", u"a"}};
    for (std::size_t i = 0; i < ordered.size(); ++i) {
        for (std::size_t j = 0; j < ordered.size(); ++j) {
            EXPECT_EQ(ordered[i] < ordered[j], i < j);
            EXPECT_EQ(ordered[i] == ordered[j], i == j);
            EXPECT_EQ(FieldName(ordered[i]) < FieldName(ordered[j]), i < j);
        }
    }
}

TEST(FieldName, ParsesGlobalNames)
{
    EXPECT_EQ(FieldName::ParseGlobal(u"root.field"), FieldName(u"root", u"field"));
    EXPECT_EQ(FieldName::ParseGlobal(u"\"a.b\".c"), FieldName(u"a.b", u"c"));
    EXPECT_EQ(FieldName::ParseGlobal(u"a.\"b.\"\"c\"\"\""), FieldName(u"a", u"b.\"c\""));
    EXPECT_EQ(FieldName::ParseGlobal(u""), FieldName());
}

TEST(FieldName, TextWithoutUnquotedDotIsAFieldWithoutRoot)
{
    EXPECT_EQ(FieldName::ParseGlobal(u"field"), Local(u"field"));
    EXPECT_EQ(FieldName::ParseGlobal(u"\"a.b\""), Local(u"a.b"));
    EXPECT_EQ(FieldName::ParseGlobal(u"\"\"\"\""), Local(u"\""));
    EXPECT_EQ(FieldName::ParseGlobal(u"\"\""), Local(u""));
}

TEST(FieldName, FirstUnquotedDotEndsTheRoot)
{
    EXPECT_EQ(FieldName::ParseGlobal(u"a.b.c"), FieldName(u"a", u"b.c"));
    EXPECT_EQ(FieldName::ParseGlobal(u"a."), FieldName(u"a", u""));
    EXPECT_EQ(FieldName::ParseGlobal(u".a"), Local(u"a"));
    EXPECT_EQ(FieldName::ParseGlobal(u"a..b"), FieldName(u"a", u".b"));
}

TEST(FieldName, TextThatIsNotWellQuotedIsTakenAsItStands)
{
    for (const char16_t* text :
         {u"\"", u"\"a.b", u"\"a\"b.c", u"a\"b.c", u"a.b\"c", u"a.\"b", u"a.\"b\"c", u"\"\"\"",
          u"\"a\".\"b\".\"c\"", u"a\"", u"\"a\"\".b"}) {
        EXPECT_EQ(FieldName::ParseGlobal(text), Local(text)) << TString(text);
        EXPECT_EQ(FieldName::ParseLocal(text), Local(text)) << TString(text);
    }
}

TEST(FieldName, ParsesLocalNames)
{
    EXPECT_EQ(FieldName::ParseLocal(u"a.b"), Local(u"a.b"));
    EXPECT_EQ(FieldName::ParseLocal(u"\"a.b\""), Local(u"a.b"));
    EXPECT_EQ(FieldName::ParseLocal(u"\"a\"\"b\""), Local(u"a\"b"));
    EXPECT_EQ(FieldName::ParseLocal(u"field"), Local(u"field"));
    EXPECT_EQ(FieldName::ParseLocal(u""), FieldName());
    EXPECT_EQ(FieldName::ParseLocal(u"\"a\".b"), Local(u"\"a\".b"));
}

TEST(FieldName, WrittenNamesReadBackAsTheyWere)
{
    std::mt19937 random(20240229);
    for (int i = 0; i < 20000; ++i) {
        const FieldName name(RandomText(random, 6), RandomText(random, 6));
        const TString text = name.GetFullValue();
        ASSERT_EQ(FieldName::ParseGlobal(text), name) << text;
        if (name.GetRootValue().IsEmpty()) {
            ASSERT_EQ(FieldName::ParseLocal(text), name) << text;
        }
    }
}

TEST(FieldName, NothingOfAnArbitraryTextIsLost)
{
    std::mt19937 random(42);
    for (int i = 0; i < 20000; ++i) {
        const TString text = RandomText(random, 10);
        const FieldName global = FieldName::ParseGlobal(text);
        ASSERT_EQ(FieldName::ParseGlobal(global.GetFullValue()), global) << text;
        const FieldName local = FieldName::ParseLocal(text);
        ASSERT_EQ(FieldName::ParseLocal(local.GetFullValue()), local) << text;
        if (!text.contains(u'"')) {
            const TString dot = text.contains(u'.') ? u"." : u"";
            ASSERT_EQ(global.GetRootValue() + dot + global.GetFieldValue(), text);
            ASSERT_EQ(local.GetFieldValue(), text);
        }
    }
}

TEST(FieldName, CacheIsFilledAndAskedFirst)
{
    FieldName::Cache cache;
    EXPECT_EQ(FieldName::ParseGlobal(u"a.b", cache), FieldName(u"a", u"b"));
    ASSERT_EQ(cache.size(), 1U);
    EXPECT_EQ(cache.at(u"a.b"), QualifiedName(u"a", u"b"));
    cache[u"a.b"] = QualifiedName(u"other", u"name");
    EXPECT_EQ(FieldName::ParseGlobal(u"a.b", cache), FieldName(u"other", u"name"));
    EXPECT_EQ(cache.size(), 1U);
}

TEST(FieldName, LocalNamesAreCachedToo)
{
    FieldName::Cache cache;
    EXPECT_EQ(FieldName::ParseLocal(u"a.b", cache), Local(u"a.b"));
    ASSERT_EQ(cache.size(), 1U);
    EXPECT_EQ(cache.at(u"a.b"), QualifiedName(u"", u"a.b"));
    cache[u"a.b"] = QualifiedName(u"", u"other");
    EXPECT_EQ(FieldName::ParseLocal(u"a.b", cache), Local(u"other"));
}

TEST(FieldName, CachedParsesGiveWhatUncachedOnesGive)
{
    std::mt19937 random(7);
    FieldName::Cache global;
    FieldName::Cache local;
    for (int i = 0; i < 5000; ++i) {
        const TString text = RandomText(random, 3);
        ASSERT_EQ(FieldName::ParseGlobal(text, global), FieldName::ParseGlobal(text)) << text;
        ASSERT_EQ(FieldName::ParseLocal(text, local), FieldName::ParseLocal(text)) << text;
    }
    EXPECT_EQ(global.size(), local.size());
    EXPECT_LT(global.size(), 5000U);
}

TEST(FieldName, MovesBetweenDataSources)
{
    EXPECT_EQ(MakeGlobalName(u"r", Local(u"f")), FieldName(u"r", u"f"));
    EXPECT_EQ(MakeGlobalName(u"r", FieldName(u"old", u"f")), FieldName(u"r", u"f"));
    EXPECT_EQ(MakeLocalName(FieldName(u"r", u"f.g")), Local(u"f.g"));
}

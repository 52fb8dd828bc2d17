#include "scanner/SkippedEntities.h"

#include "support/ParseOutcome.h"
#include "support/Repeat.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unordered_map>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const std::string c_type = "<!DOCTYPE html PUBLIC '-//W3C//DTD XHTML 1.0 Strict//EN' "
                           "'http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd?a&b;c'>";

std::vector<SkippedEntity> Find(const std::string& bytes)
{
    const auto document = DOMParser().ParseXmlString(bytes, u"id");
    const StandaloneParseResult standalone = StandaloneDOMParser().ParseXmlString(bytes, u"id");
    EXPECT_EQ(document->GetSkippedEntities(), standalone.skippedEntities);
    EXPECT_EQ(document->HasErrors(), !standalone.errors.empty());
    return document->GetSkippedEntities();
}

} // namespace

TEST(SkippedEntities, AreKnownThoughNothingIsSaidOfThem)
{
    const std::string bytes = c_type + "\n<p>10&nbsp;000&euro;</p>";
    const auto document = DOMParser().ParseXmlString(bytes, u"id");
    EXPECT_FALSE(document->HasErrors());
    EXPECT_FALSE(document->HasWarnings());
    EXPECT_EQ(document->GetDocumentRoot()->GetText(), u"10000");
    EXPECT_THAT(document->GetSkippedEntities(),
                ElementsAre(SkippedEntity{u"nbsp", 1, 2, 6}, SkippedEntity{u"euro", 1, 2, 15}));

    Utf8InputSource source(bytes, u"id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
    parser->Parse();
    EXPECT_FALSE(parser->HasErrors() || parser->HasWarnings());
    EXPECT_EQ(parser->GetSkippedEntities(), document->GetSkippedEntities());
    // They are those of the last parse.
    Utf8InputSource plain(std::string("<a/>"), u"id", false);
    parser->Reload(plain, std::make_shared<RecordingSink>());
    parser->Parse();
    EXPECT_THAT(parser->GetSkippedEntities(), IsEmpty());
}

TEST(SkippedEntities, AreCountedByName)
{
    EXPECT_THAT(
        Find(c_type + "<a b='&x;&y;'>&y;\n&x;<c d=\"&z;&x;\"/>\xC3\xA9\xF0\x9F\x98\x80&w;</a>"),
        ElementsAre(SkippedEntity{u"x", 3, 1, static_cast<int>(c_type.size()) + 7},
                    SkippedEntity{u"y", 2, 1, static_cast<int>(c_type.size()) + 10},
                    SkippedEntity{u"z", 1, 2, 10}, SkippedEntity{u"w", 1, 2, 22}));
    EXPECT_THAT(
        Find(c_type + "<a>" + Repeat("&\xC3\xA9;", 10'000) + "</a>"),
        ElementsAre(SkippedEntity{u"\u00E9", 10'000, 1, static_cast<int>(c_type.size()) + 4}));
}

TEST(SkippedEntities, AreNoneOfThoseThatAreRead)
{
    EXPECT_THAT(Find(c_type + "<a b='&lt;&#38;'>&amp;&gt;&quot;&apos;&#x20AC;</a>"), IsEmpty());
    EXPECT_THAT(Find(c_type + "<!--&a;--><a><!--&a;--><?p &a;?><![CDATA[&a;<!--]]></a><?q &a;?>"),
                IsEmpty());
    EXPECT_THAT(Find("<!DOCTYPE a SYSTEM '&s;' [<!ENTITY e '&v; ]>'><!-- ]> ' &c; --><?p ]>&i;?>"
                     "<!ATTLIST a b CDATA 'x'>]><a>&f;</a>"),
                ElementsAre(testing::Field(&SkippedEntity::name, u"f")));
}

TEST(SkippedEntities, AreFoundBehindWhatHoldsNothing)
{
    for (const char* const empty : {"<!---->", "<![CDATA[]]>", "<?p?>"})
        EXPECT_THAT(Find(c_type + "<p>" + empty + "&nbsp;</p>"), SizeIs(1)) << empty;
    EXPECT_THAT(Find("<!DOCTYPE p PUBLIC '' ''><p>&nbsp;</p>"), SizeIs(1));
}

TEST(SkippedEntities, AreNotDeclared)
{
    const std::string bytes = "<!DOCTYPE a SYSTEM 's' [<!ENTITY e 'text'>]><a b='&e;'>&e;&f;</a>";
    Utf8InputSource source(bytes, u"id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
    parser->AllowEntityExpansion_Insecure();
    for (int i = 0; i < 2; ++i) {
        parser->Parse();
        EXPECT_FALSE(parser->HasErrors());
        EXPECT_THAT(parser->GetSkippedEntities(),
                    ElementsAre(testing::Field(&SkippedEntity::name, u"f")));
    }
    // What one document declares, another does not.
    Utf8InputSource other("<!DOCTYPE a SYSTEM 's'><a>&e;</a>", u"id", false);
    parser->Reload(other, std::make_shared<RecordingSink>());
    parser->Parse();
    EXPECT_THAT(parser->GetSkippedEntities(),
                ElementsAre(testing::Field(&SkippedEntity::name, u"e")));
}

TEST(SkippedEntities, AreFoundInTheTextsOfEntities)
{
    const std::string bytes =
        "<!DOCTYPE a SYSTEM 's' [<!ENTITY outer 'x&inner;&v;'><!ENTITY inner '<!--&no;--><b "
        "c=\"&w;\"/>&#38;v;&amp;&#38;lt;'><!ENTITY outer '&second;'><!ENTITY unused '&no;'>]>\n"
        "<a>&u;\n &outer;&inner;&outer;&w;</a>";
    Utf8InputSource source(bytes, u"id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
    parser->AllowEntityExpansion_Insecure();
    parser->Parse();
    EXPECT_FALSE(parser->HasErrors());
    EXPECT_THAT(parser->GetSkippedEntities(),
                ElementsAre(SkippedEntity{u"u", 1, 2, 4}, SkippedEntity{u"v", 2, 3, 2},
                            SkippedEntity{u"w", 2, 3, 2}));
}

TEST(SkippedEntities, AreFoundInEntitiesWithinEntitiesOfAnyDepth)
{
    constexpr int c_depth = 50'000;
    std::unordered_map<TString, TString> declared;
    for (int i = 0; i < c_depth; ++i)
        declared.emplace(u"e" + TString::number(i), u"&e" + TString::number(i + 1) + u";");
    EXPECT_THAT(SkippedEntities::Find("<a>&e0;</a>", declared),
                ElementsAre(SkippedEntity{u"e50000", 1, 1, 4}));
}

TEST(SkippedEntities, AreErrorsWhereNothingElseCanDeclareThem)
{
    for (const char* const bytes : {"<a>&e;</a>", "<!DOCTYPE a><a>&e;</a>",
                                    "<?xml version='1.0' standalone='yes'?><!DOCTYPE a SYSTEM "
                                    "'s'><a>&e;</a>"}) {
        const auto document = DOMParser().ParseXmlString(bytes, u"id");
        EXPECT_THAT(document->GetErrors(), SizeIs(1)) << bytes;
        EXPECT_THAT(document->GetSkippedEntities(), IsEmpty()) << bytes;
    }
}

TEST(SkippedEntities, AreNotLookedForInWhatWasNotRead)
{
    EXPECT_THAT(Find(c_type + "<a>&e;"), IsEmpty());
    EXPECT_THAT(Find(c_type + "<a>&e;</b>"), IsEmpty());
}

TEST(SkippedEntities, AreFoundInEveryEncoding)
{
    const std::string text = c_type + "<a>&e;</a>";
    std::string wide;
    for (const char c : text)
        wide += {c, '\0'};
    for (const std::string& bytes :
         {"\xFF\xFE" + wide, "\xEF\xBB\xBF" + text,
          "<?xml version='1.0' encoding='ISO-8859-1'?>" + c_type + "<a>&e;\xE9</a>"}) {
        const auto document = DOMParser().ParseXmlBytes({bytes.begin(), bytes.end()});
        EXPECT_THAT(document->GetErrors(), IsEmpty());
        EXPECT_THAT(document->GetSkippedEntities(),
                    ElementsAre(testing::Field(&SkippedEntity::name, u"e")));
    }
}

TEST(SkippedEntities, GoWithACopyOfTheDocument)
{
    const auto document = DOMParser().ParseXmlString(c_type + "<a>&e;</a>", u"id");
    DOM copy;
    copy.DeepCopy(*document);
    EXPECT_EQ(copy.GetSkippedEntities(), document->GetSkippedEntities());
    copy.DeepCopy(DOM());
    EXPECT_THAT(copy.GetSkippedEntities(), IsEmpty());
}

TEST(SkippedEntities, TakeTimeInTheLengthOfTheDocument)
{
    std::string text = c_type + "<a>";
    for (int i = 0; i < 100'000; ++i)
        text += "&e" + std::to_string(i) + ";\n";
    const std::vector<SkippedEntity> found = SkippedEntities::Find(text + "</a>", {});
    ASSERT_THAT(found, SizeIs(100'000));
    EXPECT_EQ(found.back(), (SkippedEntity{u"e99999", 1, 100'000, 1}));
}

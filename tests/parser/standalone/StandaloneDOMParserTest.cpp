#include <kescorexml/FileInputSource.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/StringInputSource.h>
#include <kesplatform/CorvinaException.h>
#include <kesplatform/LogicException.h>
#include <kesplatform/Metrics.h>
#include <kesplatform/TFile.h>

#include "support/RecordingMetrics.h"
#include "support/ScriptedInputSource.h"
#include "support/SmallStack.h"
#include "support/TemporaryFile.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int c_deepLevels = 1'000'000;

/// A schema for documents whose only element is a number called n.
constexpr const char* c_schema = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                                 "<xs:element name='n' type='xs:integer'/></xs:schema>";

/// A tree as text: attributes sorted, texts in square brackets.
std::string Describe(const StandaloneDOMElement& element)
{
    std::map<std::string, std::string> attributes;
    for (const auto& [name, value] : element.GetAttributes())
        attributes[name.toStdString()] = value.toStdString();
    std::string description = element.GetName().toStdString();
    for (const auto& [name, value] : attributes)
        description += " " + name + "=" + value;
    description += "(";
    element.WalkNodes(
        [&description](const StandaloneDOMElement& child) { description += Describe(child); },
        [&description](const TString& text) { description += "[" + text.toStdString() + "]"; });
    return description + ")";
}

std::string Describe(const StandaloneParseResult& result)
{
    return Describe(*result.root);
}

StandaloneParseResult ParseKeeping(const TString& xml)
{
    StringInputSource source(xml, u"kept", false);
    return StandaloneDOMParser().ParseXmlInputSource(source, true);
}

std::vector<unsigned char> ToBytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

/// Writes down the flags that scopes of this class open with.
class FlagSink : public Metrics::Sink
{
public:
    void ScopeOpened(std::string_view name, std::uint64_t flags) override
    {
        if (name.starts_with("StandaloneDOMParser_"))
            opened.emplace_back(name, flags);
    }
    void ValueEmitted(std::string_view, std::string_view, std::int64_t) override {}
    void BytesEmitted(std::string_view, std::string_view, std::string_view) override {}
    void ScopeClosed(std::string_view, std::int64_t) override {}

    std::vector<std::pair<std::string, std::uint64_t>> opened;
};

/// A document that says that it is very large.
class HugeInputSource : public StringInputSource
{
public:
    HugeInputSource() : StringInputSource(u"<a/>", u"huge", false) {}
    std::int64_t Size() const override { return 5'000'000'000; }
};

/// The scopes of this class that a call opens and closes, in order.
std::vector<std::string> ScopesOf(const std::function<void()>& call)
{
    const RecordingMetrics metrics;
    call();
    std::vector<std::string> scopes;
    for (const std::string& line : metrics.GetLines()) {
        if (line.find("Standalone") != std::string::npos ||
            line.find("InputSourceFromFileName") != std::string::npos)
            scopes.push_back(line);
    }
    return scopes;
}

} // namespace

TEST(StandaloneDOMParser, PutsTheDocumentUnderARootCalledDocument)
{
    const StandaloneParseResult result =
        StandaloneDOMParser().ParseXmlString(TString(u"<a>x</a>"), u"id");
    EXPECT_THAT(result.errors, IsEmpty());
    EXPECT_EQ(Describe(result), "Document(a([x]))");
}

TEST(StandaloneDOMParser, TellsErrorsApart)
{
    const StandaloneParseResult result =
        StandaloneDOMParser().ParseXmlString(TString(u"<a>\n<b></a>"), u"id");
    ASSERT_EQ(result.diagnostics.size(), 1u);
    EXPECT_EQ(result.diagnostics[0].GetMessage(), result.errors.front());
    EXPECT_EQ(result.diagnostics[0].GetLine(), 2);
    EXPECT_EQ(result.diagnostics[0].GetText(), u"expected end of tag 'b'");
}

TEST(StandaloneDOMParser, KeepsAttributesAndMixedContentInOrder)
{
    const StandaloneParseResult result = StandaloneDOMParser().ParseXmlString(
        TString(u"<a k='1' p:l='2'>x<b m=''/>y<![CDATA[<z>]]><c><d/></c> &amp; <!-- no --> w</a>"),
        u"id");
    EXPECT_THAT(result.errors, IsEmpty());
    EXPECT_EQ(Describe(result), "Document(a k=1 p:l=2([x]b m=()[y<z>]c(d())[ &  w]))");
    EXPECT_FALSE(result.root->GetChild(u"a")->IsEncoded());
}

TEST(StandaloneDOMParser, DropsTextOfWhiteSpaceAloneAndKeepsOtherTextWhole)
{
    const TString xml(u"<a> \n <b> x\ty </b>\r\n\t<c>\u00A0</c></a>");
    const StandaloneDOMParser parser;
    const std::string utf8 = xml.toStdString();
    EXPECT_EQ(Describe(parser.ParseXmlString(xml, u"id")), "Document(a(b([ x\ty ])c([\xC2\xA0])))");
    EXPECT_EQ(Describe(parser.ParseXmlString(utf8, u"id")),
              Describe(parser.ParseXmlString(xml, u"id")));
    EXPECT_EQ(Describe(parser.ParseXmlBytes(ToBytes(utf8))),
              Describe(parser.ParseXmlString(xml, u"id")));
    const TemporaryFolder folder;
    EXPECT_EQ(Describe(parser.ParseXmlFile(folder.Write("a.xml", utf8))),
              Describe(parser.ParseXmlString(xml, u"id")));
}

TEST(StandaloneDOMParser, DropsTextOfWhiteSpaceAloneWhateverStandsBeforeTheDocument)
{
    const std::string utf8 = " <a> <b/>\n</a>";
    const StandaloneDOMParser parser;
    EXPECT_EQ(Describe(parser.ParseXmlString(utf8, u"id")), "Document(a(b()))");
    EXPECT_EQ(Describe(parser.ParseXmlString(utf8.c_str(), u"id")), "Document(a(b()))");
    EXPECT_EQ(Describe(parser.ParseXmlString(TString::fromStdString(utf8), u"id")),
              "Document(a(b()))");
}

TEST(StandaloneDOMParser, KeepsTextOfWhiteSpaceAloneWhenAskedTo)
{
    EXPECT_EQ(Describe(ParseKeeping(u"<a> <b>\n</b> </a>")), "Document(a([ ]b([\n])[ ]))");
    EXPECT_EQ(Describe(ParseKeeping(u"<a> <!-- c --> <![CDATA[ ]]> <b/></a>")),
              "Document(a([    ]b()))");
}

TEST(StandaloneDOMParser, TextsSkipWhiteSpaceInFrontOfTheDeclaration)
{
    const StandaloneDOMParser parser;
    const TString xml(u" \n\n\t<?xml version='1.0'?><a/>");
    EXPECT_EQ(Describe(parser.ParseXmlString(xml, u"id")), "Document(a())");
    EXPECT_THAT(parser.ParseXmlString(xml, u"id").errors, IsEmpty());
    EXPECT_THAT(parser.ParseXmlString(xml.toStdString(), u"id").errors, IsEmpty());
    EXPECT_THAT(parser.ParseXmlString(xml.toStdString().c_str(), u"id").errors, IsEmpty());
    const TemporaryFolder folder;
    EXPECT_THAT(parser.ParseXmlFile(folder.Write("a.xml", xml.toStdString())).errors, IsEmpty());
    EXPECT_THAT(parser.ParseXmlBytes(ToBytes(xml.toStdString())).errors, Not(IsEmpty()))
        << "bytes are taken as they are";
}

TEST(StandaloneDOMParser, ReadsTextsAsUnicodeWhateverTheDeclarationSays)
{
    const TString xml(u"<?xml version='1.0' encoding='ISO-8859-1'?><a>\u00E9\u4E2D</a>");
    const StandaloneParseResult result = StandaloneDOMParser().ParseXmlString(xml, u"id");
    EXPECT_THAT(result.errors, IsEmpty());
    EXPECT_EQ(result.root->GetChild(u"a")->GetAllText(), u"\u00E9\u4E2D");
    const StandaloneParseResult bytes = StandaloneDOMParser().ParseXmlBytes(
        ToBytes("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>"));
    EXPECT_EQ(bytes.root->GetChild(u"a")->GetAllText(), u"\u00E9");
}

TEST(StandaloneDOMParser, TextsInUtf8AreReadAsTheirUnits)
{
    using namespace std::string_literals;
    StandaloneDOMParser parser;
    std::vector<std::uint64_t> sizes;
    parser.SetStatisticsEventHandler([&sizes](const DOMParserStatistics& statistics) {
        sizes.push_back(statistics.sourceSize);
    });
    for (const std::string& utf8 :
         {"<a b='\xC3\xA9'>\xF0\x9F\x98\x80</a>"s, " \r\n\v\f\t<a>x</a>"s, "\xEF\xBB\xBF<a/>"s,
          "\xC2\xA0<a/>"s, "<a>\0</a>"s, "<a>\xEF\xBF\xBF</a>"s, ""s, "  "s}) {
        const StandaloneParseResult result = parser.ParseXmlString(utf8, u"id");
        const StandaloneParseResult expected =
            parser.ParseXmlString(TString::fromStdString(utf8), u"id");
        EXPECT_EQ(Describe(result), Describe(expected)) << utf8;
        EXPECT_EQ(result.errors, expected.errors) << utf8;
        EXPECT_EQ(sizes.front(), sizes.back()) << utf8;
        sizes.clear();
    }
    EXPECT_EQ(parser.ParseXmlString(static_cast<const char*>(nullptr), u"id").errors,
              parser.ParseXmlString(TString(), u"id").errors);
}

TEST(StandaloneDOMParser, WhatIsTakenOutOfATreeOutlivesIt)
{
    StandaloneParseResult result =
        StandaloneDOMParser().ParseXmlString("<a k='v'><b n='1'>text<c/>more</b></a>", u"id");
    StandaloneDOMElement& outer = *result.root->GetChild(u"a");
    const TString value = outer.GetAttribute(u"k");
    const std::unique_ptr<StandaloneDOMElement> inner = outer.RemoveChild(*outer.GetChild(u"b"));
    result.root.reset();
    EXPECT_EQ(value, u"v");
    EXPECT_EQ(Describe(*inner), "b n=1([text]c()[more])");
}

TEST(StandaloneDOMParser, ListsErrorsAndHandsOutWhatWasRead)
{
    const StandaloneParseResult result =
        StandaloneDOMParser().ParseXmlString(TString(u"<a><b>x</b><c></a>"), u"the id");
    ASSERT_EQ(result.errors.size(), 1U);
    EXPECT_THAT(result.errors[0].toStdString(), HasSubstr("Fatal Error"));
    EXPECT_THAT(result.errors[0].toStdString(), HasSubstr("the id"));
    EXPECT_EQ(Describe(result), "Document(a(b([x])c()))");
}

TEST(StandaloneDOMParser, AParseIsNotTouchedByTheOneBefore)
{
    const StandaloneDOMParser parser;
    EXPECT_THAT(parser.ParseXmlString(TString(u"<a"), u"bad").errors, Not(IsEmpty()));
    const StandaloneParseResult result = parser.ParseXmlString(TString(u"<b/>"), u"good");
    EXPECT_THAT(result.errors, IsEmpty());
    EXPECT_EQ(Describe(result), "Document(b())");
}

TEST(StandaloneDOMParser, ExpandsEntitiesOnlyWhenAllowedTo)
{
    const TString xml(u"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>");
    StandaloneDOMParser parser;
    EXPECT_THAT(parser.ParseXmlString(xml, u"id").errors, Not(IsEmpty()));
    parser.AllowEntityExpansion_Insecure();
    for (int round = 0; round < 2; ++round) {
        const StandaloneParseResult result = parser.ParseXmlString(xml, u"id");
        EXPECT_THAT(result.errors, IsEmpty());
        EXPECT_EQ(Describe(result), "Document(a([x]))");
    }
}

TEST(StandaloneDOMParser, ReportsStatisticsWithAndWithoutErrors)
{
    StandaloneDOMParser parser;
    std::vector<std::pair<std::uint64_t, TString>> reported;
    parser.SetStatisticsEventHandler([&reported](const DOMParserStatistics& statistics) {
        reported.emplace_back(statistics.sourceSize, statistics.sourceId);
    });
    parser.ParseXmlString(TString(u"  <a>\u00E9</a>"), u"good");
    parser.ParseXmlString(TString(u"<a>"), u"bad");
    EXPECT_THAT(reported,
                ElementsAre(std::pair(9U, TString(u"good")), std::pair(3U, TString(u"bad"))));
    parser.SetStatisticsEventHandler({});
    parser.ParseXmlString(TString(u"<a/>"), u"silent");
    EXPECT_EQ(reported.size(), 2U);
}

TEST(StandaloneDOMParser, AnUnreadableFileIsThrownAndNotReported)
{
    StandaloneDOMParser parser;
    int reports = 0;
    parser.SetStatisticsEventHandler([&reports](const DOMParserStatistics&) { ++reports; });
    const TemporaryFolder folder;
    EXPECT_THROW(parser.ParseXmlFile(folder.GetPath("none.xml")), TIO::Exception);
    EXPECT_EQ(reports, 0);
}

TEST(StandaloneDOMParser, WhatASourceOrASchemaThrowsPassesAndIsNotReported)
{
    const TemporaryFolder folder;
    // Not UTF-8, which a source that reads the file itself insists on.
    const TString path = folder.Write("a.xml", std::string("\xFF\xFE<\0a\0/\0>\0", 10));
    StandaloneDOMParser parser;
    int reports = 0;
    parser.SetStatisticsEventHandler([&reports](const DOMParserStatistics&) { ++reports; });
    FileInputSource file(path);
    EXPECT_THROW(parser.ParseXmlInputSource(file, false), CorvinaException);
    ScriptedInputSource unsuitable("<a/>");
    EXPECT_THROW(parser.ParseXmlInputSource(unsuitable, false), LogicException);
    EXPECT_EQ(reports, 0);
    EXPECT_EQ(Describe(parser.ParseXmlString("<a/>", u"id")), "Document(a())") << "usable again";
    EXPECT_EQ(reports, 1);

    parser.AddXSDInputSource(std::make_unique<FileInputSource>(path));
    EXPECT_THROW(parser.ParseXmlString("<a/>", u"id"), CorvinaException);
    EXPECT_EQ(reports, 1);
}

TEST(StandaloneDOMParser, ReportsTheWholeSizeOfLargeSources)
{
    StandaloneDOMParser parser;
    std::uint64_t size = 0;
    parser.SetStatisticsEventHandler(
        [&size](const DOMParserStatistics& statistics) { size = statistics.sourceSize; });
    HugeInputSource source;
    parser.ParseXmlInputSource(source, false);
    EXPECT_EQ(size, 5'000'000'000U);
}

TEST(StandaloneDOMParser, MessagesNameTheSource)
{
    const StandaloneDOMParser parser;
    const auto errorOf = [](const StandaloneParseResult& result) {
        return result.errors.empty() ? "none" : result.errors.front().toStdString();
    };
    EXPECT_THAT(errorOf(parser.ParseXmlString("<a>", u"the id")), EndsWith(" (id: the id)"));
    EXPECT_THAT(errorOf(parser.ParseXmlBytes(ToBytes("<a>"))), EndsWith(" (id: )"));
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "<a>");
    EXPECT_THAT(errorOf(parser.ParseXmlFile(path)), EndsWith(" (id: " + path.toStdString() + ")"));
}

TEST(StandaloneDOMParser, ListsARefusedExternalEntityTwice)
{
    const StandaloneParseResult result = StandaloneDOMParser().ParseXmlString(
        "<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/hostname'>]><a>&e;</a>", u"id");
    ASSERT_EQ(result.errors.size(), 2U);
    EXPECT_EQ(result.errors[0], result.errors[1]);
    EXPECT_THAT(result.errors[0].toStdString(), HasSubstr("'e'"));
    EXPECT_EQ(Describe(result), "Document()");
}

TEST(StandaloneDOMParser, ListsWhatADocumentBreaksAndNotWhatIsWrongWithASchema)
{
    StandaloneDOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(
        u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
        u"<xs:element name='n' type='none'/></xs:schema>",
        u"broken.xsd", false));
    EXPECT_THAT(parser.ParseXmlString("<n/>", u"id").errors, IsEmpty());
    EXPECT_THAT(parser.ParseXmlString("<m/>", u"id").errors,
                ElementsAre(u"Error(1,5): no declaration found for element 'm' (id: id)"));
}

TEST(StandaloneDOMParser, ValidatesAgainstTheSchemasOfTheCallerInEveryParse)
{
    StandaloneDOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(c_schema, u"n.xsd", false));
    for (int round = 0; round < 3; ++round) {
        EXPECT_THAT(parser.ParseXmlString(TString(u"<n>12</n>"), u"good").errors, IsEmpty());
        EXPECT_THAT(parser.ParseXmlString(TString(u"<n>x</n>"), u"bad").errors, Not(IsEmpty()));
        EXPECT_THAT(parser.ParseXmlString(TString(u"<m/>"), u"unknown").errors, Not(IsEmpty()));
    }
}

TEST(StandaloneDOMParser, ReadsASchemaFileAnewForEveryParse)
{
    const TemporaryFolder folder;
    StandaloneDOMParser parser;
    parser.AddXSDInputSource(std::make_unique<FileInputSource>(folder.Write("n.xsd", c_schema)));
    for (int round = 0; round < 3; ++round) {
        EXPECT_THAT(parser.ParseXmlString(TString(u"<n>12</n>"), u"good").errors, IsEmpty());
        EXPECT_THAT(parser.ParseXmlString(TString(u"<n>x</n>"), u"bad").errors, Not(IsEmpty()));
    }
}

TEST(StandaloneDOMParser, ASchemaWithoutIdentifierIsAnAssertionOfTheParse)
{
    StandaloneDOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(c_schema, TString(), false));
    EXPECT_THROW(parser.ParseXmlString(TString(u"<n>1</n>"), u"id"), LogicException);
}

TEST(StandaloneDOMParser, ValidatesAgainstCompiledInSchemas)
{
    StandaloneDOMParser parser;
    parser.AddXSDResourceId(QtKesResourceId::FileformatZapXsd);
    EXPECT_THAT(parser.ParseXmlString(TString(u"<nothing-of-the-suite/>"), u"bad").errors,
                Not(IsEmpty()));
}

TEST(StandaloneDOMParser, AnUnknownSchemaResourceIsRefused)
{
    StandaloneDOMParser parser;
    EXPECT_THROW(parser.AddXSDResourceId(static_cast<QtKesResourceId>(0x12345678)),
                 CorvinaException);
    EXPECT_THAT(parser.ParseXmlString(TString(u"<a/>"), u"id").errors, IsEmpty());
}

TEST(StandaloneDOMParser, EveryFrontDoorIsMeasured)
{
    const StandaloneDOMParser parser;
    const std::string utf8 = "<a/>";
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", utf8);
    StringInputSource source(u"<a/>", u"id", false);
    EXPECT_THAT(ScopesOf([&] { parser.ParseXmlInputSource(source, false); }),
                ElementsAre("+StandaloneDOMParser_ParseXmlInputSource",
                            "-StandaloneDOMParser_ParseXmlInputSource"));
    EXPECT_THAT(ScopesOf([&] { parser.ParseXmlFile(path); }),
                ElementsAre("+StandaloneDOMParser_ParseXmlFile", "+InputSourceFromFileName",
                            "-InputSourceFromFileName", "+StandaloneDOMParser_ParseXmlInputSource",
                            "-StandaloneDOMParser_ParseXmlInputSource",
                            "-StandaloneDOMParser_ParseXmlFile"));
    const auto ofString = ElementsAre(
        "+StandaloneDOMParser_ParseXmlString", "+StandaloneDOMParser_ParseXmlInputSource",
        "-StandaloneDOMParser_ParseXmlInputSource", "-StandaloneDOMParser_ParseXmlString");
    EXPECT_THAT(ScopesOf([&] { parser.ParseXmlString(TString(u"<a/>"), u"id"); }), ofString);
    EXPECT_THAT(ScopesOf([&] { parser.ParseXmlString(utf8, u"id"); }), ofString);
    EXPECT_THAT(ScopesOf([&] { parser.ParseXmlBytes(ToBytes(utf8)); }),
                ElementsAre("+StandaloneDOMParser_ParseXmlBytes",
                            "+StandaloneDOMParser_ParseXmlInputSource",
                            "-StandaloneDOMParser_ParseXmlInputSource",
                            "-StandaloneDOMParser_ParseXmlBytes"));
}

TEST(StandaloneDOMParser, ScopesCarryTheirFlag)
{
    const auto sink = std::make_shared<FlagSink>();
    Metrics::SetSink(sink);
    const StandaloneDOMParser parser;
    parser.ParseXmlBytes(ToBytes("<a/>"));
    parser.ParseXmlString(TString(u"<a/>"), u"id");
    const TemporaryFolder folder;
    parser.ParseXmlFile(folder.Write("a.xml", "<a/>"));
    Metrics::SetSink(nullptr);
    EXPECT_EQ(sink->opened.size(), 6U);
    for (const auto& [name, flags] : sink->opened)
        EXPECT_EQ(flags, 0x80000000000U) << name;
}

TEST(StandaloneDOMParser, AMillionLevelsNeedNoStack)
{
    std::string xml;
    for (int level = 0; level < c_deepLevels; ++level)
        xml += "<e>";
    for (int level = 0; level < c_deepLevels; ++level)
        xml += "</e>";
    RunOnSmallStack([&xml] {
        const StandaloneParseResult result = StandaloneDOMParser().ParseXmlString(xml, u"deep");
        EXPECT_THAT(result.errors, IsEmpty());
        int levels = 0;
        const StandaloneDOMElement* element = result.root.get();
        while ((element = element->GetChild(u"e")) != nullptr)
            ++levels;
        EXPECT_EQ(levels, c_deepLevels);
    });
}

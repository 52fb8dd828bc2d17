#include "bytes/XercesInputSource.h"
#include "support/ErrorsOf.h"
#include "support/FailingAllocations.h"
#include "support/SmallStack.h"
#include "support/TemporaryFile.h"

#include <kescorexml/DOMBuilder.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementTraversal.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <kesplatform/CorvinaException.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <thread>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

void ExpectSamePlaces(const DOMElement& a, const DOMElement& b)
{
    using Traversal = DOMElementTraversal::PreorderTraversalTemplate<const DOMElement>;
    const auto place = [](const DOMElement& element) {
        return std::vector<int>{element.GetStartLine(), element.GetStartColumn(),
                                element.GetEndLine(), element.GetEndColumn()};
    };
    const Traversal other(b);
    auto element = other.begin();
    for (const DOMElement& own : Traversal(a)) {
        ASSERT_TRUE(element != other.end());
        EXPECT_EQ(place(own), place(*element)) << own.GetName();
        ++element;
    }
}

const std::string c_accents = "<a b='\xC3\xA9'>\xE2\x82\xAC</a>";

void ExpectAccents(const DOM& dom)
{
    EXPECT_THAT(ErrorsOf(dom), IsEmpty());
    ASSERT_NE(dom.GetDocumentRoot(), nullptr);
    EXPECT_EQ(dom.GetDocumentRoot()->GetAttribute(u"b"), u"\u00E9");
    EXPECT_EQ(dom.GetDocumentRoot()->GetText(), u"\u20AC");
}

} // namespace

TEST(DOMParser, BuildsTheTreeUnderTheRootAndDropsWhitespaceAlone)
{
    const auto dom = DOMParser().ParseXmlString(u"  <a> <b/> </a>", u"id");
    const DOMElement& root = *dom->GetRoot();
    EXPECT_EQ(root.GetName(), u"Document");
    ASSERT_EQ(root.GetChildren().size(), 1U);
    const DOMElement& a = *dom->GetDocumentRoot();
    EXPECT_EQ(a.GetName(), u"a");
    EXPECT_FALSE(a.HasText());
    ASSERT_EQ(a.GetChildren().size(), 1U);
    EXPECT_EQ(a.GetChildren()[0].GetName(), u"b");
    EXPECT_FALSE(root.HasText());
    EXPECT_FALSE(dom->HasErrors());
}

TEST(DOMParser, KeepsWhitespaceWhenTold)
{
    const DOMParser parser;
    StringInputSource source(u"  <a> <b/>\n</a>", u"id", true);
    EXPECT_EQ(parser.ParseXmlInputSource(source, true)->GetDocumentRoot()->GetText(), u" \n");
    EXPECT_EQ(parser.ParseXmlInputSource(source, false)->GetDocumentRoot()->GetText(), u"");
}

TEST(DOMParser, GathersTextAroundChildren)
{
    const auto dom = DOMParser().ParseXmlString(u"<a> x <b>in</b> <c/> y\n</a>", u"id");
    EXPECT_EQ(dom->GetDocumentRoot()->GetText(), u" x  y\n");
    EXPECT_EQ(dom->GetDocumentRoot()->GetChildText(u"b"), u"in");
}

TEST(DOMParser, TakesTextInEveryForm)
{
    const DOMParser parser;
    const TString text = TString::fromStdString(c_accents);
    ExpectAccents(*parser.ParseXmlString(text, u"id"));
    ExpectAccents(*parser.ParseXmlString(TString(text), u"id"));
    ExpectAccents(*parser.ParseXmlString(c_accents, u"id"));
    ExpectAccents(*parser.ParseXmlString(std::string(c_accents), u"id"));
    ExpectAccents(*parser.ParseXmlString(c_accents.c_str(), u"id"));
    std::vector<unsigned char> bytes(c_accents.begin(), c_accents.end());
    ExpectAccents(*parser.ParseXmlBytes(bytes));
    ExpectAccents(*parser.ParseXmlBytes(std::move(bytes)));
    const TemporaryFolder folder;
    ExpectAccents(*parser.ParseXmlFile(folder.Write("a.xml", c_accents)));
    Utf8InputSource source(c_accents, u"id", false);
    ExpectAccents(*parser.ParseXmlInputSource(source, false));
}

TEST(DOMParser, DropsWhitespaceBetweenTagsThroughEveryFrontDoor)
{
    const DOMParser parser;
    const std::string utf8 = "<a>\n <b/> </a>";
    const TString text = TString::fromStdString(utf8);
    const std::vector<unsigned char> bytes(utf8.begin(), utf8.end());
    const TemporaryFolder folder;
    std::vector<std::unique_ptr<DOM>> documents;
    documents.push_back(parser.ParseXmlString(text, u"id"));
    documents.push_back(parser.ParseXmlString(TString(text), u"id"));
    documents.push_back(parser.ParseXmlString(utf8, u"id"));
    documents.push_back(parser.ParseXmlString(std::string(utf8), u"id"));
    documents.push_back(parser.ParseXmlString(utf8.c_str(), u"id"));
    documents.push_back(parser.ParseXmlBytes(bytes));
    documents.push_back(parser.ParseXmlBytes(std::vector<unsigned char>(bytes)));
    documents.push_back(parser.ParseXmlFile(folder.Write("a.xml", utf8)));
    for (std::size_t i = 0; i < documents.size(); ++i) {
        ASSERT_THAT(ErrorsOf(*documents[i]), IsEmpty()) << i;
        EXPECT_FALSE(documents[i]->GetDocumentRoot()->HasText()) << i;
        EXPECT_TRUE(documents[i]->GetDocumentRoot()->HasChildren()) << i;
    }
}

TEST(DOMParser, LeavesAnLvalueAsItIs)
{
    const DOMParser parser;
    const TString text = u"<a/>";
    const std::string utf8 = "<a/>";
    const std::vector<unsigned char> bytes = {'<', 'a', '/', '>'};
    parser.ParseXmlString(text, u"id");
    parser.ParseXmlString(utf8, u"id");
    parser.ParseXmlBytes(bytes);
    EXPECT_EQ(text, u"<a/>");
    EXPECT_EQ(utf8, "<a/>");
    EXPECT_EQ(bytes.size(), 4U);
}

TEST(DOMParser, SkipsLeadingWhitespaceOfTextAndFilesButNotOfBytes)
{
    const DOMParser parser;
    const std::string text = "\n <?xml version='1.0'?><a/>";
    EXPECT_FALSE(parser.ParseXmlString(text, u"id")->HasErrors());
    EXPECT_FALSE(parser.ParseXmlString(TString::fromStdString(text), u"id")->HasErrors());
    const TemporaryFolder folder;
    EXPECT_FALSE(parser.ParseXmlFile(folder.Write("a.xml", text))->HasErrors());
    EXPECT_TRUE(parser.ParseXmlBytes({text.begin(), text.end()})->HasErrors());
}

TEST(DOMParser, RestoresAttributesThatBeginWithAColon)
{
    const auto dom = DOMParser().ParseXmlString("<r :a='1'><s :b='2' c='3'/></r>", u"id");
    EXPECT_THAT(ErrorsOf(*dom), IsEmpty());
    const DOMElement& r = *dom->GetDocumentRoot();
    EXPECT_EQ(r.GetAttributes(), (std::unordered_map<TString, TString>{{u":a", u"1"}}));
    EXPECT_EQ(r.GetChildren()[0].GetAttributes(),
              (std::unordered_map<TString, TString>{{u":b", u"2"}, {u"c", u"3"}}));
}

// As ColonProcessingMode says.
TEST(DOMParser, CountsColumnsInTheTextInWhichAttributesThatBeginWithAColonAreRenamed)
{
    const auto columnOf = [](const char* text) {
        const auto dom = DOMParser().ParseXmlString(text, u"id");
        return dom->GetErrorDiagnostics().at(0).GetColumn();
    };
    EXPECT_EQ(columnOf("<r><s _a='1'/></r ="), 19);
    EXPECT_GT(columnOf("<r><s :a='1'/></r ="), 19);
    EXPECT_EQ(columnOf("<r><s :a='1'/>\n</r ="), 5);
}

TEST(DOMParser, NamesAnAttributeThatBeginsWithAColonWithThePrefixThatItIsGiven)
{
    const auto dom = DOMParser().ParseXmlString("<r><s :a='1' :a='2'/></r>", u"id");
    EXPECT_TRUE(dom->GetConcatenatedErrors().contains(u"IllegalColon:a"))
        << dom->GetConcatenatedErrors();
}

TEST(DOMParser, PutsErrorsOnTheRootElement)
{
    const auto dom = DOMParser().ParseXmlString("<a><b></a>", u"the document");
    const std::string message = "Fatal Error(1,9): expected end of tag 'b' (id: the document)";
    EXPECT_THAT(ErrorsOf(*dom), ElementsAre(message));
    EXPECT_THAT(ErrorsOf(*dom->GetRoot()), ElementsAre(message));
    EXPECT_THAT(ErrorsOf(*dom->GetDocumentRoot()), IsEmpty());
    EXPECT_THAT(dom->GetMetadataForErrors(), ElementsAre(TError::ErrorInfo::NoError()));
    EXPECT_TRUE(dom->HasUnreportedErrors());
    EXPECT_FALSE(dom->HasCancelErrors());
    // What came before the error is there.
    EXPECT_EQ(dom->GetDocumentRoot()->GetChildren()[0].GetName(), u"b");
}

TEST(DOMParser, TellsErrorsApart)
{
    const auto dom = DOMParser().ParseXmlString("<a>\n<b></a>", u"the document");
    const std::vector<XMLDiagnostic> errors = dom->GetErrorDiagnostics();
    ASSERT_THAT(errors, SizeIs(1));
    EXPECT_EQ(errors[0].GetKind(), XMLDiagnostic::Kind::FatalError);
    EXPECT_EQ(errors[0].GetLine(), 2);
    EXPECT_EQ(errors[0].GetColumn(), 6);
    EXPECT_EQ(errors[0].GetId(), u"the document");
    EXPECT_EQ(errors[0].GetText(), u"expected end of tag 'b'");
    EXPECT_THAT(dom->GetErrorDiagnostics(*dom->GetDocumentRoot()), IsEmpty());
}

TEST(DOMParser, KeepsErrorsThatAreAlikeInLittleMemory)
{
    const auto parse = [](const DOMParser& parser, int errors) {
        std::string text = "<r>";
        for (int i = 0; i < errors; ++i)
            text += "<n/>\n";
        return parser.ParseXmlString(text + "</r>", u"id");
    };
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(
        u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='r'>"
        u"<xs:complexType><xs:sequence><xs:element name='n' type='xs:int' "
        u"maxOccurs='unbounded'/></xs:sequence></xs:complexType></xs:element></xs:schema>",
        u"s.xsd", false));
    parse(parser, 1);
    const auto dom = parse(parser, 1000);
    ASSERT_THAT(dom->GetErrorDiagnostics(), SizeIs(1000));
    const std::ptrdiff_t before = CountLiveAllocations();
    dom->ClearErrors();
    // Neither a message nor a text for each of them.
    EXPECT_LT(before - CountLiveAllocations(), 20);
}

TEST(DOMParser, PutsARefusedExternalEntityOnTheRootTwice)
{
    const auto dom = DOMParser().ParseXmlString("<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a/>", u"id");
    EXPECT_THAT(ErrorsOf(*dom), SizeIs(2));
    EXPECT_EQ(ErrorsOf(*dom)[0], ErrorsOf(*dom)[1]);
    EXPECT_EQ(dom->GetDocumentRoot(), nullptr);
}

TEST(DOMParser, OfAnEmptyTextGivesADocumentWithAnError)
{
    for (const char* const text : {"", " ", "\n"}) {
        const auto dom = DOMParser().ParseXmlString(text, u"id");
        EXPECT_EQ(dom->GetDocumentRoot(), nullptr);
        EXPECT_THAT(ErrorsOf(*dom),
                    ElementsAre("Fatal Error(1,1): invalid document structure (id: id)"));
    }
    EXPECT_THAT(ErrorsOf(*DOMParser().ParseXmlBytes(std::vector<unsigned char>())),
                ElementsAre("Fatal Error(1,1): invalid document structure (id: )"));
}

TEST(DOMParser, RecordsPositionsOnElementsOnlyWhenTold)
{
    DOMParser parser;
    const std::string text = "<a>\n  <b x='1'/>\n  <c>t</c>\n</a>";
    EXPECT_FALSE(parser.GetEnableLineNumbersOnElements());
    auto dom = parser.ParseXmlString(text, u"id");
    for (const DOMElement& element :
         DOMElementTraversal::PreorderTraversalTemplate<DOMElement>(*dom->GetRoot())) {
        EXPECT_EQ(element.GetStartLine(), 0);
        EXPECT_EQ(element.GetStartColumn(), 0);
        EXPECT_EQ(element.GetEndLine(), 0);
        EXPECT_EQ(element.GetEndColumn(), 0);
    }
    parser.SetEnableLineNumbersOnElements(true);
    EXPECT_TRUE(parser.GetEnableLineNumbersOnElements());
    dom = parser.ParseXmlString(text, u"id");
    const auto place = [](const DOMElement& element) {
        return std::vector<int>{element.GetStartLine(), element.GetStartColumn(),
                                element.GetEndLine(), element.GetEndColumn()};
    };
    const DOMElement& a = *dom->GetDocumentRoot();
    EXPECT_THAT(place(a), ElementsAre(1, 4, 4, 5));
    EXPECT_THAT(place(a.GetChildren()[0]), ElementsAre(2, 13, 2, 13));
    EXPECT_THAT(place(a.GetChildren()[1]), ElementsAre(3, 6, 3, 11));
    parser.SetEnableLineNumbersOnElements(false);
    dom = parser.ParseXmlString(text, u"id");
    EXPECT_EQ(dom->GetDocumentRoot()->GetStartLine(), 0);
}

TEST(DOMParser, PassesTheRestrictionOfPathsToItsDocuments)
{
    DOMParser parser;
    EXPECT_FALSE(parser.GetRestrictExternalPaths());
    EXPECT_FALSE(parser.ParseXmlString("<a/>", u"id")->GetRestrictExternalPaths());
    parser.SetRestrictExternalPaths(true);
    EXPECT_TRUE(parser.GetRestrictExternalPaths());
    EXPECT_TRUE(parser.ParseXmlString("<a/>", u"id")->GetRestrictExternalPaths());
}

TEST(DOMParser, ReportsStatisticsOfEveryParse)
{
    DOMParser parser;
    std::vector<std::pair<std::uint64_t, TString>> seen;
    parser.SetStatisticsEventHandler([&](const DOMParserStatistics& statistics) {
        seen.emplace_back(statistics.sourceSize, statistics.sourceId);
    });
    parser.ParseXmlString(u"  <a>\u00E9</a>", u"one");
    parser.ParseXmlString("broken", u"two");
    parser.ParseXmlBytes({'<', 'a', '/', '>'});
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "<a/>\n");
    parser.ParseXmlFile(path);
    parser.ParseXmlFile(folder.GetPath("missing.xml"));
    EXPECT_THAT(seen, ElementsAre(std::pair(11UL, TString(u"one")), std::pair(6UL, TString(u"two")),
                                  std::pair(4UL, TString()), std::pair(5UL, path)));
    parser.SetStatisticsEventHandler(nullptr);
    parser.ParseXmlString("<a/>", u"id");
    EXPECT_THAT(seen, SizeIs(4));
}

TEST(DOMParser, ReportsStatisticsOfFinishedParsesOnly)
{
    DOMParser parser;
    std::size_t reads = 0;
    std::vector<std::size_t> seen;
    parser.SetStatisticsEventHandler([&](const DOMParserStatistics&) { seen.push_back(reads); });
    const TemporaryFolder folder;
    FileInputSource unsupported(folder.Write("a.xml", std::string("\xFF\xFE<\0a\0/\0>\0", 10)));
    EXPECT_THROW(parser.ParseXmlInputSource(unsupported, false), CorvinaException);
    EXPECT_THAT(seen, IsEmpty());

    /// Counts how often it was handed to a scanner.
    class CountingSource : public StringInputSource
    {
    public:
        CountingSource(const TString& text, std::size_t& count)
            : StringInputSource(text, u"id", false), m_count(count)
        {
        }
        XercesInputSource GetXercesInputSource(ColonProcessingMode mode) override
        {
            ++m_count;
            return StringInputSource::GetXercesInputSource(mode);
        }

    private:
        std::size_t& m_count;
    };
    CountingSource broken(u"<a><b></a>", reads);
    EXPECT_TRUE(parser.ParseXmlInputSource(broken, false)->HasErrors());
    EXPECT_THAT(seen, ElementsAre(1U));
    CountingSource good(u"<a/>", reads);
    EXPECT_FALSE(parser.ParseXmlInputSource(good, false)->HasErrors());
    EXPECT_THAT(seen, ElementsAre(1U, 2U));
}

TEST(DOMParser, ReportsStatisticsOnceHoweverManyErrorsThereAre)
{
    DOMParser parser;
    parser.AddXSDInputSource(std::make_unique<StringInputSource>(
        u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
        u"<xs:complexType><xs:sequence><xs:element name='b' type='xs:int' minOccurs='0' "
        u"maxOccurs='9'/></xs:sequence></xs:complexType></xs:element></xs:schema>",
        u"s.xsd", false));
    int calls = 0;
    parser.SetStatisticsEventHandler([&](const DOMParserStatistics&) { ++calls; });
    for (const int errors : {0, 1, 2, 5}) {
        std::string text;
        for (int i = 0; i < errors; ++i)
            text += "<b>no number</b>";
        calls = 0;
        const auto dom = parser.ParseXmlString("<a>" + text + "</a>", u"id");
        EXPECT_THAT(ErrorsOf(*dom), SizeIs(errors));
        EXPECT_EQ(calls, 1) << errors;
    }
}

TEST(DOMParser, LetsExceptionsOfTheStatisticsHandlerPassAndGoesOnAfterwards)
{
    DOMParser parser;
    parser.SetStatisticsEventHandler(
        [](const DOMParserStatistics&) { throw std::runtime_error("no"); });
    EXPECT_THROW(parser.ParseXmlString("<a/>", u"id"), std::runtime_error);
    parser.SetStatisticsEventHandler(nullptr);
    EXPECT_FALSE(parser.ParseXmlString("<a/>", u"id")->HasErrors());
}

TEST(DOMParser, OfAFileThatCannotBeReadGivesADocumentThatSaysSo)
{
    const TemporaryFolder folder;
    DOMParser parser;
    parser.SetRestrictExternalPaths(true);
    for (const TString& path : {folder.GetPath("missing.xml"), folder.GetPath(), TString(),
                                folder.Write("bad.xml", "<a>\xFF</a>")}) {
        const auto dom = parser.ParseXmlFile(path);
        ASSERT_EQ(dom->GetRoot()->GetChildren().size(), 1U) << path;
        const DOMElement& error = *dom->GetDocumentRoot();
        EXPECT_EQ(error.GetName(), u"error");
        EXPECT_FALSE(error.HasChildren());
        EXPECT_THAT(ErrorsOf(*dom), SizeIs(1));
        EXPECT_THAT(ErrorsOf(error), ElementsAre(HasSubstr(path.toStdString())));
        std::list<TError::ErrorInfo> infos;
        error.GetMetadataForErrors(infos);
        ASSERT_EQ(infos.size(), 1U);
        EXPECT_EQ(infos.front().GetError().GetCode(), 0x354BEE43U);
        EXPECT_EQ(infos.front().GetError().GetIdentifier(), u"CorvinaException_AutoGen_0x354BEE43");
        EXPECT_TRUE(dom->HasUnreportedErrors());
        EXPECT_FALSE(dom->HasCancelErrors());
        EXPECT_FALSE(dom->GetRestrictExternalPaths());
    }
}

TEST(DOMParser, OfAnEmptyFileGivesADocumentWithAnError)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "");
    const auto dom = DOMParser().ParseXmlFile(path);
    EXPECT_EQ(dom->GetDocumentRoot(), nullptr);
    EXPECT_THAT(ErrorsOf(*dom), ElementsAre("Fatal Error(1,1): invalid document structure (id: " +
                                            path.toStdString() + ")"));
}

TEST(DOMParser, ThrowsForALargeFileInAnotherEncoding)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", std::string("\xFF\xFE<\0a\0/\0>\0", 10));
    std::filesystem::resize_file(path.toStdString(), 0x40000000);
    const DOMParser parser;
    try {
        parser.ParseXmlFile(path);
        ADD_FAILURE() << "was parsed";
    } catch (const CorvinaException& exception) {
        EXPECT_EQ(exception.GetErrorInfo().GetError().GetCode(), 0xE19C2DF8U);
    }
    EXPECT_FALSE(parser.ParseXmlString("<a/>", u"id")->HasErrors());
}

TEST(DOMParser, ParsesAndDestroysAMillionLevelsOnASmallStack)
{
    constexpr int c_levels = 1000000;
    std::string text;
    for (int i = 0; i < c_levels; ++i)
        text += "<a>";
    for (int i = 0; i < c_levels; ++i)
        text += "</a>";
    RunOnSmallStack([&] {
        const auto dom = DOMParser().ParseXmlString(std::move(text), u"id");
        EXPECT_THAT(ErrorsOf(*dom), IsEmpty());
        int levels = 0;
        for (const DOMElement* element = dom->GetRoot(); element->HasChildren();
             element = &element->GetChildren()[0])
            ++levels;
        EXPECT_EQ(levels, c_levels);
    });
}

TEST(DOMParser, BuildsWhatTheExportedBuilderBuilds)
{
    std::string many = "<a>";
    for (int i = 0; i < 3000; ++i) {
        const std::string number = std::to_string(i);
        many += "<n" + number + " k" + number + "='" + number + "' l='\xE2\x82\xAC'> t" + number +
                "<n/>\n</n" + number + ">";
    }
    const std::vector<std::string> documents = {
        "<a/>",
        "<a b='' c='1' d=' &lt;&#10; '> x <e/> y <e f='2'>\n</e>&amp;<![CDATA[<]]></a>",
        "<r :a='1' xmlns:p='u' p:b='2'><p:s :c='3'>\xF0\x9F\x98\x80</p:s></r>",
        "<r IllegalColon:a='1' xmlns:IllegalColon='u'>t</r>",
        "<!DOCTYPE a [<!ATTLIST a z CDATA 'def'>]><a> <a z='own'/></a>",
        "<a>text <b c='d'>more</c></a>",
        "<a><b c='d'>text",
        many + "</a>",
        many,
    };
    DOMParser parser;
    parser.SetEnableLineNumbersOnElements(true);
    for (const std::string& document : documents) {
        for (const bool keepWhitespaceText : {false, true}) {
            Utf8InputSource source(document, u"id", false);
            const auto dom = parser.ParseXmlInputSource(source, keepWhitespaceText);
            DOM expected;
            const auto builder = std::make_shared<DOMBuilder>(expected, keepWhitespaceText);
            const auto driver = XercesXMLParser::Create(source, builder);
            builder->SetLocationInterface(driver.get());
            driver->Parse();
            EXPECT_TRUE(*dom == expected) << document.substr(0, 100);
            EXPECT_EQ(ErrorsOf(*dom).size(), driver->GetErrors().size());
            ExpectSamePlaces(*dom->GetRoot(), *expected.GetRoot());
        }
    }
}

TEST(DOMParser, DocumentsOutliveTheirParser)
{
    auto parser = std::make_unique<DOMParser>();
    const auto first = parser->ParseXmlString("<a><b c='d'>text</b></a>", u"id");
    const auto second = parser->ParseXmlString("<a><b c='d'>text</b></a>", u"id");
    parser.reset();
    EXPECT_TRUE(*first == *second);
    EXPECT_EQ(first->GetDocumentRoot()->GetChildText(u"b"), u"text");
}

TEST(DOMParser, DifferentParsersWorkOnDifferentThreads)
{
    std::vector<std::thread> threads;
    std::vector<int> good(4, 0);
    for (std::size_t i = 0; i < good.size(); ++i) {
        threads.emplace_back([&good, i] {
            const DOMParser parser;
            for (int round = 0; round < 50; ++round) {
                const auto dom = parser.ParseXmlString("<a b='c'><d>text</d><d/></a>", u"id");
                if (!dom->HasErrors() && dom->GetDocumentRoot()->GetChildText(u"d") == u"text")
                    ++good[i];
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(good, ElementsAre(50, 50, 50, 50));
}

TEST(DOMParserDeathTest, MayBeAStaticObject)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            static const DOMParser s_parser;
            const bool good = !s_parser.ParseXmlString("<a/>", u"id")->HasErrors();
            std::exit(good ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(DOMParser, TakesWhatIsMovedIntoIt)
{
    const DOMParser parser;
    TString text(u"<a/>");
    EXPECT_NE(parser.ParseXmlString(std::move(text), u"id")->GetDocumentRoot(), nullptr);
    EXPECT_TRUE(text.IsEmpty());
    std::string utf8 = std::string(100, ' ') + "<a/>";
    EXPECT_NE(parser.ParseXmlString(std::move(utf8), u"id")->GetDocumentRoot(), nullptr);
    EXPECT_TRUE(utf8.empty());
    std::vector<unsigned char> bytes{'<', 'a', '/', '>'};
    EXPECT_NE(parser.ParseXmlBytes(std::move(bytes))->GetDocumentRoot(), nullptr);
    EXPECT_TRUE(bytes.empty());
}

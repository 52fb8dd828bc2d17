#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMException.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/InputSourceUtils.h>
#include <kescorexml/SAXInterface.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/VersionSniffer.h>
#include <kescorexml/XMLUtils.h>
#include <kescorexml/XercesXMLParser.h>

#include "Folder.h"

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

TEST(ReadingSnippets, AString)
{
    const auto document = DOMParser().ParseXmlString("<list><item>tea</item></list>", "list.xml");
    EXPECT_FALSE(document->HasErrors());
    EXPECT_EQ(document->GetDocumentRoot()->GetName(), u"list");
}

TEST(ReadingSnippets, AFile)
{
    const Folder folder;
    const std::string path = folder.Write("list.xml", "<list><item>tea</item></list>");
    const auto document = DOMParser().ParseXmlFile(path.c_str());
    ASSERT_FALSE(document->HasErrors());
    EXPECT_EQ(document->GetDocumentRoot()->GetChildText(u"item"), u"tea");
}

TEST(ReadingSnippets, AFileThatIsMissingIsAnErrorOfTheDocument)
{
    const auto document = DOMParser().ParseXmlFile("/no/such/file.xml");
    EXPECT_TRUE(document->HasErrors());
    EXPECT_EQ(document->GetConcatenatedErrors(), u"/no/such/file.xml: No such file or directory");
}

TEST(ReadingSnippets, Bytes)
{
    const std::string xml = "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>";
    const auto document = DOMParser().ParseXmlBytes({xml.begin(), xml.end()});
    EXPECT_EQ(document->GetDocumentRoot()->GetText(), u"\u00E9");
}

TEST(ReadingSnippets, AFileOfUtf16)
{
    const Folder folder;
    const std::u16string xml = u"\uFEFF<?xml version='1.0' encoding='UTF-16'?><a>\u20AC</a>";
    const std::string bytes(reinterpret_cast<const char*>(xml.data()), 2 * xml.size());
    const auto document = DOMParser().ParseXmlFile(folder.Write("a.xml", bytes).c_str());
    EXPECT_EQ(document->GetDocumentRoot()->GetText(), u"\u20AC");
}

TEST(ReadingSnippets, ManyDocumentsWithOneParser)
{
    const DOMParser parser;
    int items = 0;
    for (const char* xml : {"<a/>", "<a><b/></a>", "<a><b/><b/></a>"})
        items += static_cast<int>(
            parser.ParseXmlString(xml, "many")->GetDocumentRoot()->GetChildren().size());
    EXPECT_EQ(items, 3);
}

TEST(ReadingSnippets, TheChildrenOfAnElement)
{
    const auto document = DOMParser().ParseXmlString("<list><a>1</a><b>2</b></list>", "list.xml");
    TString seen;
    for (const auto& child : document->GetDocumentRoot()->GetChildren())
        seen += child->GetName() + u"=" + child->GetText() + u" ";
    EXPECT_EQ(seen, u"a=1 b=2 ");
}

TEST(ReadingSnippets, ChildrenByIndex)
{
    const auto document = DOMParser().ParseXmlString("<r><a/><b/><c/></r>", "r");
    const auto children = document->GetDocumentRoot()->GetChildren();
    TString names;
    for (std::size_t i = 0; i < children.size(); ++i)
        names += children[i].GetName();
    EXPECT_EQ(names, u"abc");
    EXPECT_EQ(children.front().GetName(), u"a");
    EXPECT_EQ(children.back().GetName(), u"c");
    EXPECT_THROW(static_cast<void>(children.at(3)), std::out_of_range);
}

TEST(ReadingSnippets, Attributes)
{
    const auto document = DOMParser().ParseXmlString("<point x='3' y=''/>", "point");
    const DOMElement& point = *document->GetDocumentRoot();
    EXPECT_EQ(point.GetAttribute(u"x"), u"3");
    EXPECT_TRUE(point.HasAttribute(u"y"));
    EXPECT_FALSE(point.HasAttribute(u"z"));
    EXPECT_EQ(point.GetAttribute(u"z"), u"");
}

TEST(ReadingSnippets, AllAttributesInOrder)
{
    const auto document = DOMParser().ParseXmlString("<a b='2' a='1' c='3'/>", "a");
    const auto& attributes = document->GetDocumentRoot()->GetAttributes();
    const std::map<TString, TString> sorted(attributes.begin(), attributes.end());
    TString text;
    for (const auto& [name, value] : sorted)
        text += name + value;
    EXPECT_EQ(text, u"a1b2c3");
}

TEST(ReadingSnippets, AnAttributeThatMustBeThere)
{
    const auto document = DOMParser().ParseXmlString("<point x='3'/>", "point");
    const DOMElement& point = *document->GetDocumentRoot();
    EXPECT_EQ(point.RequireAttribute(u"x")->second, u"3");
    try {
        point.RequireAttribute(u"y");
        FAIL();
    } catch (const DOMException& missing) {
        EXPECT_EQ(missing.GetMessagesFront(), u"y");
        EXPECT_STREQ(missing.what(), "y");
    }
}

TEST(ReadingSnippets, Numbers)
{
    const auto document = DOMParser().ParseXmlString("<a n=' 42 ' d='2.5e3' bad='4x'/>", "a");
    const DOMElement& a = *document->GetDocumentRoot();
    EXPECT_EQ(a.GetAttribute(u"n").toInt(), 42);
    EXPECT_EQ(a.GetAttribute(u"d").toDouble(), 2500.0);
    bool ok = true;
    EXPECT_EQ(a.GetAttribute(u"bad").toInt(&ok), 0);
    EXPECT_FALSE(ok);
}

TEST(ReadingSnippets, Booleans)
{
    const auto document = DOMParser().ParseXmlString("<a on='yes' odd='YES'/>", "a");
    bool on = false;
    EXPECT_TRUE(DOMElement::StringToBool(document->GetDocumentRoot()->GetAttribute(u"on"), on));
    EXPECT_TRUE(on);
    EXPECT_FALSE(DOMElement::StringToBool(document->GetDocumentRoot()->GetAttribute(u"odd"), on));
}

TEST(ReadingSnippets, AnAttributeOfTheNearestAncestor)
{
    const auto document = DOMParser().ParseXmlString("<a lang='en'><b><c/></b></a>", "a");
    EXPECT_EQ(document->GetElement(u"c")->GetParentAttr(u"lang"), u"en");
}

TEST(ReadingSnippets, TheTextOfAChild)
{
    const auto document = DOMParser().ParseXmlString("<book><title>Dune</title></book>", "book");
    const DOMElement& book = *document->GetDocumentRoot();
    EXPECT_EQ(book.GetChildText(u"title"), u"Dune");
    EXPECT_EQ(book.GetChildText(u"author"), u"");
    EXPECT_EQ(book.GetRequiredChild(u"title").GetText(), u"Dune");
    EXPECT_THROW(book.GetRequiredChild(u"author"), DOMException);
}

TEST(ReadingSnippets, ReferencesAndSectionsAreText)
{
    const auto document = DOMParser().ParseXmlString("<a>&lt;&#233;&amp;<![CDATA[<b/>]]></a>", "a");
    EXPECT_EQ(document->GetDocumentRoot()->GetText(), u"<\u00E9&<b/>");
    EXPECT_FALSE(document->GetDocumentRoot()->HasChildren());
}

TEST(ReadingSnippets, WhiteSpaceBetweenTagsIsDropped)
{
    const char* xml = "<a>\n  <b> x </b>\n</a>";
    const auto document = DOMParser().ParseXmlString(xml, "a");
    EXPECT_FALSE(document->GetDocumentRoot()->HasText());
    EXPECT_EQ(document->GetDocumentRoot()->GetChildText(u"b"), u" x ");

    Utf8InputSource source(xml, u"a", false);
    const auto kept = DOMParser().ParseXmlInputSource(source, true);
    EXPECT_EQ(kept->GetDocumentRoot()->GetText(), u"\n  \n");
}

TEST(ReadingSnippets, CommentsAreNoPartOfTheTree)
{
    const auto document = DOMParser().ParseXmlString("<a><!-- b --><?c d?>e</a>", "a");
    EXPECT_EQ(document->GetDocumentRoot()->GetText(), u"e");
    EXPECT_FALSE(document->GetDocumentRoot()->HasChildren());
}

TEST(ReadingSnippets, MixedContentWithTheStandaloneParser)
{
    const auto result =
        StandaloneDOMParser().ParseXmlString("<p>some <b>bold</b> text</p>", u"p.xml");
    ASSERT_TRUE(result.errors.empty());
    TString text;
    result.root->GetChild(u"p")->WalkNodes(
        [&text](StandaloneDOMElement& b) { text += u"*" + b.GetAllText() + u"*"; },
        [&text](TString& run) { text += run; });
    EXPECT_EQ(text, u"some *bold* text");
}

TEST(ReadingSnippets, PrefixesArePartsOfNames)
{
    const auto document = DOMParser().ParseXmlString(
        "<s:list xmlns:s='urn:shop' xmlns='urn:x'><s:item/><item/></s:list>", "list");
    const DOMElement& list = *document->GetDocumentRoot();
    EXPECT_EQ(list.GetName(), u"s:list");
    EXPECT_EQ(list.GetAttribute(u"xmlns:s"), u"urn:shop");
    EXPECT_EQ(list.GetChild(u"item"), &list.GetChildren()[1]);
    const TString name = list.GetName();
    EXPECT_EQ(name.mid(name.indexOf(u':') + 1), u"list") << "the name without its prefix";
    EXPECT_EQ(list.GetParentAttr(u"xmlns:" + name.left(name.indexOf(u':'))), u"urn:shop");
}

TEST(ReadingSnippets, PositionsOfElements)
{
    DOMParser parser;
    parser.SetEnableLineNumbersOnElements(true);
    const auto document = parser.ParseXmlString("<a>\n  <b>x</b>\n</a>", "a");
    const DOMElement& b = *document->GetElement(u"b");
    EXPECT_EQ(b.GetStartLine(), 2);
    EXPECT_EQ(b.GetStartColumn(), 6) << "behind the start tag";
    EXPECT_EQ(document->GetDocumentRoot()->GetEndLine(), 3);
}

TEST(ReadingSnippets, EntitiesOfADocumentAreRefused)
{
    const char* xml = "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>";
    EXPECT_TRUE(DOMParser().ParseXmlString(xml, "a")->HasErrors());
    StandaloneDOMParser trusting;
    trusting.AllowEntityExpansion_Insecure();
    const auto result = trusting.ParseXmlString(xml, u"a");
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(result.root->GetChild(u"a")->GetAllText(), u"x");
}

TEST(ReadingSnippets, ALimit)
{
    DOMParser parser;
    parser.SetAmplificationLimit(0, 20);
    const auto document = parser.ParseXmlString("<a>" + std::string(100, 'x') + "</a>", "a");
    EXPECT_TRUE(document->HasErrors());
    EXPECT_TRUE(document->GetConcatenatedErrors().contains(u"SetAmplificationLimit"));
}

TEST(ReadingSnippets, StatisticsOfEachParse)
{
    DOMParser parser;
    std::vector<std::uint64_t> sizes;
    parser.SetStatisticsEventHandler(
        [&sizes](const DOMParserStatistics& parse) { sizes.push_back(parse.sourceSize); });
    parser.ParseXmlString("<a/>", "a");
    parser.ParseXmlString("<abc/>", "abc");
    EXPECT_THAT(sizes, testing::ElementsAre(4, 6));
}

TEST(ReadingSnippets, TheBeginningOfALargeFile)
{
    const Folder folder;
    const std::string path = folder.Write("large.xml", "<book version='18.1'>" +
                                                           std::string(1'000'000, ' ') + "</book>");
    FileInputSource source(path.c_str());
    std::string beginning;
    ASSERT_TRUE(source.GetBytes(beginning, 512));
    const XmlUtils::StringRange tag = XmlUtils::FindRootTag(beginning);
    EXPECT_EQ(beginning.substr(tag.start, tag.length), "<book version='18.1'>");
    EXPECT_EQ(XmlUtils::FindAttributeValue(beginning, "version", tag), "18.1");
    source.ResetToStart();
    EXPECT_EQ(VersionSniffer(source, u"version")->GetAsString(), u"18.1");
}

TEST(ReadingSnippets, AFileLineByLine)
{
    const Folder folder;
    FileInputSource source(folder.Write("a.xml", "<a>\n<b/>\n</a>").c_str());
    std::vector<std::string> lines;
    for (std::string line; source.GetNextLine(line);)
        lines.push_back(line);
    EXPECT_THAT(lines, testing::ElementsAre("<a>\n", "<b/>\n", "</a>"));
}

TEST(ReadingSnippets, TheVersionOfAString)
{
    StringInputSource source(u"<!-- <a version='1'/> --><book version='2.3'/>", u"book", false);
    EXPECT_EQ(VersionSniffer(source, u"version")->GetAsString(), u"2.3");
    StringInputSource none(u"<book/>", u"book", false);
    EXPECT_FALSE(VersionSniffer(none, u"version").has_value());
}

TEST(ReadingSnippets, EventsInsteadOfATree)
{
    class CountingSink : public SAXInterface
    {
    public:
        void StartElement(TString&&, std::unordered_map<TString, TString>&&) override { ++count; }
        void EndElement() override {}
        void TextContent(const TString& text) override { texts += text; }
        int count = 0;
        TString texts;
    };
    const auto sink = std::make_shared<CountingSink>();
    StringInputSource source(u"<a>1<b>2</b><c/></a>", u"a", false);
    const auto parser = XercesXMLParser::Create(source, sink);
    parser->Parse();
    EXPECT_FALSE(parser->HasErrors());
    EXPECT_EQ(sink->count, 3);
    EXPECT_EQ(sink->texts, u"12");
}

TEST(ReadingSnippets, AParserAsAMember)
{
    class Reader
    {
    public:
        std::unique_ptr<DOM> Read(const char* xml) const
        {
            return m_parser.ParseXmlString(xml, "");
        }

    private:
        DOMParser m_parser;
    };
    const Reader reader;
    EXPECT_EQ(reader.Read("<a>1</a>")->GetDocumentRoot()->GetText(), u"1");
}

#include <kescorexml/Base64.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLOutput.h>
#include <kescorexml/XMLStringFormatter.h>
#include <kesplatform/TFile.h>

#include "Folder.h"

#include <gmock/gmock.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>

namespace {

std::unique_ptr<DOM> Parse(const char* xml)
{
    return DOMParser().ParseXmlString(xml, "snippet");
}

} // namespace

TEST(SavingSnippets, TheTextOfADocument)
{
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(*Parse("<a><b/></a>")),
              u"<?xml version='1.0' encoding='utf-8' ?>\n\n<a>\n  <b />\n</a>\n");
}

TEST(SavingSnippets, TheTextOfAnElement)
{
    const auto document = Parse("<a><b x='1'>text</b></a>");
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(*document->GetElement(u"b")),
              u"<b x='1'>text</b>\n");
}

TEST(SavingSnippets, ATextWithAComment)
{
    TString comment(u"made by hand");
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(*Parse("<a/>"), &comment, false),
              u"<!-- made by hand -->\n<a />\n");
}

TEST(SavingSnippets, WhatMustBeEscapedIs)
{
    DOMElement a(u"a");
    a.SetAttribute(u"x", u"'\"<&>");
    a.SetText(u"1 < 2 & 3");
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(a),
              u"<a x='&apos;&quot;&lt;&amp;&gt;'>1 &lt; 2 &amp; 3</a>\n");
}

TEST(SavingSnippets, AFile)
{
    const Folder folder;
    const auto document = Parse("<list><item>\u00E9</item></list>");
    XMLOutput::SaveXmlFile(*document, folder.Path("list.xml").c_str());
    EXPECT_EQ(folder.Read("list.xml"), "<?xml version='1.0' encoding='utf-8' ?>\n\n"
                                       "<list>\n  <item>\u00E9</item>\n</list>\n");
}

TEST(SavingSnippets, AFileIsReadChangedAndSaved)
{
    const Folder folder;
    const TString path(folder.Write("list.xml", "<list><item>tea</item></list>").c_str());
    const auto document = DOMParser().ParseXmlFile(path);
    ASSERT_FALSE(document->HasErrors()) << "what could not be read must not be saved over";
    document->GetDocumentRoot()->AddNewChild(u"item")->SetText(u"coffee");
    XMLOutput::SaveXmlFile(*document, path);
    EXPECT_TRUE(*DOMParser().ParseXmlFile(path) == *document);
}

TEST(SavingSnippets, AnElementAsAFileWithoutDeclaration)
{
    const Folder folder;
    const auto document = Parse("<list><item>tea</item></list>");
    XMLOutput::SaveXmlFile(*document->GetElement(u"item"), folder.Path("item.xml").c_str(), false);
    EXPECT_EQ(folder.Read("item.xml"), "<item>tea</item>\n");
}

TEST(SavingSnippets, AFileThatCannotBeSaved)
{
    const Folder folder;
    const std::string path = folder.Path("none/list.xml");
    try {
        XMLOutput::SaveXmlFile(*Parse("<a/>"), path.c_str());
        FAIL();
    } catch (const TIO::Exception& exception) {
        EXPECT_EQ(exception.what(), path + ": No such file or directory");
    }
}

TEST(SavingSnippets, AStream)
{
    std::ostringstream out;
    XMLOutput::WriteXml(*Parse("<a><b/></a>"), out);
    EXPECT_EQ(out.str(), "<?xml version='1.0' encoding='utf-8' ?>\n\n<a>\n  <b />\n</a>\n");
}

TEST(SavingSnippets, AFileStream)
{
    const Folder folder;
    std::ofstream out(folder.Path("a.xml"), std::ios::binary);
    XMLOutput::WriteXml(*Parse("<a/>")->GetDocumentRoot(), out);
    out.close();
    EXPECT_TRUE(out);
    EXPECT_EQ(folder.Read("a.xml"), "<a />\n");
}

TEST(SavingSnippets, AStreamThatFails)
{
    std::ofstream out("/no/such/folder/a.xml");
    XMLOutput::WriteXml(*Parse("<a/>"), out);
    EXPECT_FALSE(out);
}

TEST(SavingSnippets, ATextOnOneLine)
{
    XMLStringFormatter formatter(u"", true);
    XMLFormatter::FormatDOM(formatter, *Parse("<a>\n <b/>\n</a>"), nullptr, false);
    EXPECT_EQ(formatter.GetOutput(), u"<a><b /></a>");
}

TEST(SavingSnippets, ATextIndentedByTabs)
{
    XMLStringFormatter formatter(u"\t", false);
    formatter.OutputDOMElement(*Parse("<a><b/></a>")->GetDocumentRoot());
    EXPECT_EQ(formatter.GetOutput(), u"<a>\n\t<b />\n</a>\n");
}

TEST(SavingSnippets, BytesAsBase64)
{
    const std::vector<unsigned char> bytes{0, 1, 2, 255};
    std::vector<TString> lines;
    Base64Encode(bytes.data(), static_cast<unsigned>(bytes.size()), lines, false);
    DOMElement data(u"data");
    data.SetText(lines.at(0));
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(data), u"<data>AAEC/w==</data>\n");
    EXPECT_EQ(Base64Decode(data.GetText()), bytes);
}

TEST(SavingSnippets, NumbersAsAttributes)
{
    XMLStringFormatter formatter(u"", true);
    formatter.OutputTag(u"r", {{u"d", XMLFormatter::FormatDoubleAttribute(0.1)},
                               {u"i", XMLFormatter::FormatIntegerAttribute(-3)},
                               {u"b", XMLFormatter::FormatBooleanAttribute(true)}});
    EXPECT_EQ(formatter.GetOutput(), u"<r b='true' d='0.10000000000000001' i='-3' />");
}

#include <kescorexml/XMLOutput.h>

#include "support/RandomTree.h"
#include "support/TemporaryFile.h"
#include "support/TreeTesting.h"

#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kesplatform/TFile.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace {

std::string Written(const DOMElement& element, bool header)
{
    std::ostringstream stream;
    XMLOutput::WriteXml(element, stream, header);
    EXPECT_TRUE(stream.good());
    return stream.str();
}

std::string Rendered(const DOMElement& element, bool header)
{
    return XMLDomFormatter::RenderAsXMLString(element, nullptr, header).toStdString();
}

std::string BytesOf(const TString& path)
{
    std::ifstream file(path.toStdString(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Takes a number of bytes and no more.
class SmallBuffer : public std::streambuf
{
public:
    explicit SmallBuffer(std::streamsize room) : m_room(room) {}

    std::streamsize taken = 0;
    int calls = 0;

protected:
    std::streamsize xsputn(const char*, std::streamsize count) override
    {
        ++calls;
        const std::streamsize fits = std::min(count, m_room - taken);
        taken += fits;
        return fits;
    }
    int_type overflow(int_type) override { return traits_type::eof(); }

private:
    std::streamsize m_room;
};

/// Of more pieces than one.
std::unique_ptr<DOMElement> MakeLargeTree()
{
    auto root = std::make_unique<DOMElement>(u"root");
    for (int i = 0; i < 5000; ++i) {
        DOMElement* item = root->AddNewChild(u"item");
        item->SetAttribute(u"number", TString::number(i));
        item->AddNewChild(u"name")->SetText(
            u"\u00E9\U0001F600 & < a text that is long enough for CDATA");
    }
    return root;
}

} // namespace

TEST(XMLOutput, WritesWhatIsRendered)
{
    RandomTree random(11);
    for (std::size_t size = 1; size <= 100; ++size) {
        const auto tree = random.Tree(size);
        ASSERT_EQ(Written(*tree, false), Rendered(*tree, false));
        ASSERT_EQ(Written(*tree, true), Rendered(*tree, true));
    }
}

TEST(XMLOutput, WritesALargeTreeInPieces)
{
    const auto tree = MakeLargeTree();
    const std::string rendered = Rendered(*tree, true);
    EXPECT_EQ(Written(*tree, true), rendered);
    SmallBuffer buffer(static_cast<std::streamsize>(rendered.size()));
    std::ostream stream(&buffer);
    XMLOutput::WriteXml(*tree, stream, true);
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(buffer.taken, static_cast<std::streamsize>(rendered.size()));
    EXPECT_GT(buffer.calls, 4);
}

TEST(XMLOutput, WritesLongCloseTagsAndOneLongText)
{
    DOMElement root(u"r");
    DOMElement* last = &root;
    for (int i = 0; i < 400; ++i)
        last = last->AddNewChild(u"level");
    last->SetText(TString(200'000, u'x'));
    root.AddNewChild(u"next");
    EXPECT_EQ(Written(root, false), Rendered(root, false));
}

TEST(XMLOutput, ADocumentBeginsWithTheDeclarationUnlessToldOtherwise)
{
    const auto document = DOMParser().ParseXmlString("<a><b/></a>", u"id");
    std::ostringstream stream;
    XMLOutput::WriteXml(*document, stream);
    EXPECT_EQ(stream.str(), "<?xml version='1.0' encoding='utf-8' ?>\n\n<a>\n  <b />\n</a>\n");
    EXPECT_EQ(stream.str(), XMLDomFormatter::RenderAsXMLString(*document).toStdString());
    stream.str({});
    XMLOutput::WriteXml(*document, stream, false);
    EXPECT_EQ(stream.str(), "<a>\n  <b />\n</a>\n");
    stream.str({});
    XMLOutput::WriteXml(*document->GetDocumentRoot(), stream);
    EXPECT_EQ(stream.str(), "<a>\n  <b />\n</a>\n");
    EXPECT_EQ(stream.str(),
              XMLDomFormatter::RenderAsXMLString(*document->GetDocumentRoot()).toStdString());
}

TEST(XMLOutput, OfAnEmptyDocumentIsTheDeclarationAlone)
{
    std::ostringstream stream;
    XMLOutput::WriteXml(DOM(), stream);
    EXPECT_EQ(stream.str(), "<?xml version='1.0' encoding='utf-8' ?>\n\n");
    stream.str({});
    XMLOutput::WriteXml(DOM(), stream, false);
    EXPECT_EQ(stream.str(), "");
}

TEST(XMLOutput, StopsWhereAStreamFails)
{
    const auto tree = MakeLargeTree();
    SmallBuffer buffer(100);
    std::ostream stream(&buffer);
    XMLOutput::WriteXml(*tree, stream, true);
    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(buffer.taken, 100);
    EXPECT_EQ(buffer.calls, 2) << "the declaration and the first piece of the tree";

    std::ostream throwing(&buffer);
    throwing.exceptions(std::ios_base::badbit);
    EXPECT_THROW(XMLOutput::WriteXml(*tree, throwing), std::ios_base::failure);
}

TEST(XMLOutput, SavesAFileThatReadsBackTheSame)
{
    const TemporaryFolder folder;
    const TString path = folder.GetPath("a.xml");
    DOM document;
    document.GetRoot()->AppendChild(MakeLargeTree());
    XMLOutput::SaveXmlFile(document, path);
    EXPECT_EQ(BytesOf(path), Rendered(*document.GetDocumentRoot(), true));
    EXPECT_TRUE(*DOMParser().ParseXmlFile(path) == document);
    XMLOutput::SaveXmlFile(document, path, false);
    EXPECT_EQ(BytesOf(path), Rendered(*document.GetDocumentRoot(), false));
    XMLOutput::SaveXmlFile(*document.GetElement(u"name"), path);
    EXPECT_EQ(BytesOf(path), Rendered(*document.GetElement(u"name"), true));
    XMLOutput::SaveXmlFile(*document.GetElement(u"name"), path, false);
    EXPECT_EQ(BytesOf(path), Rendered(*document.GetElement(u"name"), false));
}

TEST(XMLOutput, AFileThatCannotBeSavedIsAnExceptionThatNamesIt)
{
    const TemporaryFolder folder;
    const TString path = folder.GetPath("none/a.xml");
    try {
        XMLOutput::SaveXmlFile(DOMElement(u"a"), path);
        FAIL();
    } catch (const TIO::Exception& exception) {
        EXPECT_EQ(exception.GetPath(), TPath(path));
        EXPECT_TRUE(exception.GetMessagesFront().startsWith(path + u": "));
    }
}

TEST(XMLOutput, WhatCannotBeRenderedLeavesTheOldFile)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "<old/>");
    DOMElement root(u"r");
    DOMElement* last = &root;
    for (int i = 0; i < 20'000; ++i)
        last = last->AddNewChild(u"e");
    EXPECT_THROW(XMLOutput::SaveXmlFile(root, path), std::length_error);
    EXPECT_EQ(BytesOf(path), "<old/>");
}

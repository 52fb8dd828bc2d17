#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementSearch.h>
#include <kescorexml/DOMElementTraversal.h>
#include <kescorexml/DOMException.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/DOMPathCanopy.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace {

/// A library of three books, one of them in a box.
class SearchingSnippets : public testing::Test
{
protected:
    const std::unique_ptr<DOM> document =
        DOMParser().ParseXmlString("<library><book id='1' lang='en'><title>Emma</title></book>"
                                   "<box><book id='2'><title>Faust</title></book></box>"
                                   "<book id='3' lang=''><title>Dune</title></book></library>",
                                   "library.xml");
    DOMElement& library = *document->GetDocumentRoot();
};

} // namespace

TEST_F(SearchingSnippets, TheFirstElementOfAName)
{
    EXPECT_EQ(document->GetElement(u"title")->GetText(), u"Emma");
    EXPECT_EQ(document->GetElement(u"author"), nullptr);
}

TEST_F(SearchingSnippets, TheFirstChildOfAName)
{
    EXPECT_EQ(library.GetChild(u"book")->GetAttribute(u"id"), u"1");
    EXPECT_EQ(library.GetChild(u"title"), nullptr) << "it is no child";
}

TEST_F(SearchingSnippets, AChildByAnAttribute)
{
    EXPECT_EQ(library.GetRequiredChildByAttr(u"id", u"3").GetChildText(u"title"), u"Dune");
    EXPECT_THROW(library.GetRequiredChildByAttr(u"id", u"2"), DOMException);
    const DOMElement* book = DOMElementSearch::FindChild(library, u"book", u"id", u"3");
    EXPECT_EQ(book->GetChildText(u"title"), u"Dune");
}

TEST_F(SearchingSnippets, AnElementAnywhereByAnAttribute)
{
    const DOMElement* book = DOMElementSearch::FindElement(library, u"book", 10, u"id", u"2");
    EXPECT_EQ(book->GetChildText(u"title"), u"Faust");
    book = DOMElementSearch::FindElement(library, u"book", 10, u"lang", u"");
    EXPECT_EQ(book->GetAttribute(u"id"), u"1") << "the first whose language is not empty";
}

TEST_F(SearchingSnippets, AllElementsOfAName)
{
    EXPECT_EQ(DOMPath::GetAll(library, u"//book").size(), 3U);
    EXPECT_TRUE(DOMPath::GetAll(library, u"//author").empty());
}

TEST_F(SearchingSnippets, TheFirstMatch)
{
    const DOMElement* title = DOMPath::GetFirst(library, u"//title");
    ASSERT_NE(title, nullptr);
    EXPECT_EQ(title->GetText(), u"Emma");
    EXPECT_EQ(DOMPath::GetFirst(library, u"//author"), nullptr);
}

TEST_F(SearchingSnippets, APathOfNames)
{
    EXPECT_EQ(DOMPath::GetAll(library, u"library/book/title").size(), 2U);
    EXPECT_EQ(DOMPath::GetAll(library, u"book/title").size(), 0U)
        << "a path begins with the name of where it starts";
    EXPECT_EQ(DOMPath::GetAll(*library.GetChild(u"box"), u"/library/*/*/title").size(), 1U);
}

TEST_F(SearchingSnippets, ALoopOverMatches)
{
    TString titles;
    for (const DOMElement& title : DOMPath::Walk(library, u"//title"))
        titles += title.GetText() + u" ";
    EXPECT_EQ(titles, u"Emma Faust Dune ");
}

TEST_F(SearchingSnippets, ALoopThatEndsEarly)
{
    const DOMElement* found = nullptr;
    for (const DOMElement& book : DOMPath::Walk(library, u"//book"))
        if (book.GetAttribute(u"id") == u"2") {
            found = &book;
            break;
        }
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->GetParent()->GetName(), u"box");
}

TEST_F(SearchingSnippets, AFunctionForEachMatch)
{
    DOMPath::Foreach(library, u"//book",
                     [](DOMElement& book) { book.SetAttribute(u"seen", u"yes"); });
    EXPECT_EQ(library.GetChild(u"book")->GetAttribute(u"seen"), u"yes");
}

TEST_F(SearchingSnippets, ConstElementsGiveConstMatches)
{
    const DOMElement& constant = library;
    const std::vector<const DOMElement*> titles = DOMPath::GetAll(constant, u"//title");
    EXPECT_EQ(titles.size(), 3U);
}

TEST_F(SearchingSnippets, AllElementsOfATree)
{
    int count = 0;
    for (const DOMElement& element : DOMElementTraversal::ConstPreorderTraversal(library))
        count += element.HasText() ? 1 : 0;
    EXPECT_EQ(count, 3);
}

TEST_F(SearchingSnippets, WhereAnElementIs)
{
    const DOMElement& title = library.GetChild(u"box")->GetRequiredChild(u"book");
    TString path = title.GetName();
    for (const DOMElement* e = title.GetParent(); e != document->GetRoot(); e = e->GetParent())
        path = e->GetName() + u"/" + path;
    EXPECT_EQ(path, u"library/box/book");
    EXPECT_TRUE(title.IsChildOf(library));
    EXPECT_FALSE(library.IsChildOf(title));
}

TEST_F(SearchingSnippets, ThePositionOfAChild)
{
    const DOMElement& box = *library.GetChild(u"box");
    EXPECT_EQ(library.FindChild(box) - library.GetChildren().begin(), 1);
}

TEST_F(SearchingSnippets, FoldersInFolders)
{
    const auto tree = DOMParser().ParseXmlString(
        "<folder><file/><folder><file/></folder><other><file/></other></folder>", "folders");
    EXPECT_EQ(DOMPathCanopy::UnderneathCanopy(*tree->GetDocumentRoot(), u"folder", u"file").size(),
              2U);
    EXPECT_EQ(DOMPathCanopy::WithinCanopy(*tree->GetDocumentRoot(), u"folder", u"folder").size(),
              1U);
}

#include "support/FailingAllocations.h"
#include "support/RandomTree.h"
#include "support/SmallStack.h"
#include "support/TreeTesting.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kesplatform/LogicException.h>

#include <QByteArray>
#include <QString>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using Attributes = XMLFormatter::AttributeMap;

/// The first element that was written, which must be there.
const DOMElement& First(const XMLDomFormatter& formatter)
{
    const DOMElement* first = formatter.GetDocumentRoot();
    if (first == nullptr)
        throw std::runtime_error("nothing was written");
    return *first;
}

void ExpectAssertion(const std::function<void()>& call, const TString& text,
                     const TString& identifier)
{
    try {
        call();
        ADD_FAILURE() << "no assertion";
    } catch (const LogicException& exception) {
        EXPECT_EQ(exception.GetText(), text);
        EXPECT_EQ(exception.GetFile(), u"modules/platform/kescorexml/main/parser/XMLDomFormatter");
        EXPECT_EQ(exception.GetErrorInfo().GetError().GetIdentifier(),
                  u"LogicException_LogicAssert_" + identifier);
        const QString digits =
            QString::number(exception.GetErrorInfo().GetError().GetCode(), 16).toUpper();
        EXPECT_EQ(u"0x" + TString(digits.rightJustified(8, u'0')), identifier);
    }
}

// Building

TEST(XMLDomFormatter, StartsWithANewDocumentWithoutRestriction)
{
    const XMLDomFormatter formatter;
    ASSERT_NE(formatter.GetDocument(), nullptr);
    EXPECT_FALSE(formatter.GetDocument()->GetRestrictExternalPaths());
    EXPECT_EQ(formatter.GetRoot(), formatter.GetDocument()->GetRoot());
    EXPECT_EQ(formatter.GetDocumentRoot(), nullptr);
}

TEST(XMLDomFormatter, BuildsOnTheDocumentThatItIsGiven)
{
    auto document = std::make_unique<DOM>(true);
    DOM* given = document.get();
    XMLDomFormatter formatter(std::move(document));
    EXPECT_EQ(formatter.GetDocument(), given);
    formatter.OutputTag(u"a", {});
    EXPECT_EQ(given->GetDocumentRoot(), formatter.GetDocumentRoot());
    EXPECT_EQ(First(formatter).GetName(), u"a");
    EXPECT_EQ(First(formatter).GetDOMManager(), given);
    EXPECT_EQ(formatter.GetElement(u"a"), formatter.GetDocumentRoot());
    EXPECT_EQ(formatter.GetElement(u"b"), nullptr);
}

TEST(XMLDomFormatter, HandsTheDocumentOver)
{
    XMLDomFormatter formatter;
    formatter.OutputTag(u"a", {});
    DOM* document = formatter.GetDocument();
    const std::unique_ptr<DOM> taken = formatter.TakeDocument();
    EXPECT_EQ(taken.get(), document);
    EXPECT_EQ(taken->GetDocumentRoot()->GetName(), u"a");
    EXPECT_EQ(formatter.GetDocument(), nullptr);
    EXPECT_EQ(formatter.GetRoot(), nullptr);
    EXPECT_EQ(formatter.GetDocumentRoot(), nullptr);
    EXPECT_EQ(formatter.GetElement(u"a"), nullptr);
    EXPECT_TRUE(formatter.GetOutput(FormatMode::Content).IsEmpty());
}

TEST(XMLDomFormatter, OpensAndClosesElements)
{
    XMLDomFormatter formatter;
    formatter.OutputOpenTag(u"a", {{u"k", u"v"}});
    formatter.OutputOpenTag(u"b", {});
    formatter.OutputCloseTag(u"b");
    formatter.OutputTag(u"c", {{u"l", u"w"}});
    formatter.OutputTag(u"d", {});
    formatter.OutputCloseTag(u"a");
    formatter.OutputTag(u"e", {});

    DOMElement expected(u"Document");
    DOMElement* a = expected.AddNewChild(u"a", nullptr);
    a->SetAttribute(u"k", u"v");
    a->AddNewChild(u"b", nullptr);
    a->AddNewChild(u"c", nullptr)->SetAttribute(u"l", u"w");
    a->AddNewChild(u"d", nullptr);
    expected.AddNewChild(u"e", nullptr);
    EXPECT_TRUE(*formatter.GetRoot() == expected);
}

TEST(XMLDomFormatter, WritesContentTagsAsChildren)
{
    XMLDomFormatter formatter;
    formatter.OutputContentTag(u"a", {{u"k", u"v"}}, u"x<y");
    EXPECT_EQ(First(formatter).GetText(), u"x<y");
    EXPECT_FALSE(First(formatter).IsEncoded());
    EXPECT_EQ(First(formatter).GetAttribute(u"k"), u"v");
    EXPECT_FALSE(formatter.GetRoot()->HasText());
}

TEST(XMLDomFormatter, ReplacesAttributesAndTextOfTheCurrentElement)
{
    XMLDomFormatter formatter;
    formatter.OutputOpenTag(u"a", {{u"k", u"v"}});
    formatter.OutputAttributes({{u"l", u"w"}});
    EXPECT_EQ(First(formatter).GetAttributes(), (Attributes{{u"l", u"w"}}));
    formatter.OutputString(u"old");
    formatter.OutputContent(u"new", true);
    EXPECT_EQ(First(formatter).GetText(), u"new");
    EXPECT_TRUE(First(formatter).IsEncoded());
    formatter.OutputContent(u"plain", false);
    EXPECT_FALSE(First(formatter).IsEncoded());
    formatter.OutputContent(u"forwarded");
    EXPECT_EQ(First(formatter).GetText(), u"forwarded");
    EXPECT_FALSE(First(formatter).IsEncoded());
}

TEST(XMLDomFormatter, AppendsPiecesAndLinesToTheText)
{
    XMLDomFormatter formatter;
    formatter.OutputOpenTag(u"a", {});
    formatter.OutputContent(u"x", true);
    formatter.OutputString(u"y");
    EXPECT_FALSE(First(formatter).IsEncoded());
    formatter.OutputContent(u"x", true);
    formatter.OutputLine(u"y");
    formatter.OutputLine(TString());
    EXPECT_EQ(First(formatter).GetText(), u"xy\n\n");
    EXPECT_FALSE(First(formatter).IsEncoded());
}

TEST(XMLDomFormatter, AppendsCopiesOfElements)
{
    RandomTree random(99);
    const std::unique_ptr<DOMElement> tree = random.Tree(50);
    XMLDomFormatter formatter;
    formatter.OutputDOMElement(*tree);
    EXPECT_TRUE(First(formatter) == *tree);
    EXPECT_NE(&First(formatter), tree.get());
    EXPECT_EQ(First(formatter).GetDOMManager(), formatter.GetDocument());
    EXPECT_EQ(tree->GetDOMManager(), nullptr);
}

TEST(XMLDomFormatter, AppendsEachChildOfAList)
{
    DOMElement element(u"a");
    element.AddNewChild(u"b", nullptr);
    element.AddNewChild(u"c", nullptr)->SetText(u"t");
    XMLDomFormatter formatter;
    formatter.OutputDOMElements(element.GetChildren());
    const auto children = formatter.GetRoot()->GetChildren();
    ASSERT_EQ(children.size(), 2U);
    EXPECT_TRUE(children[0] == *element.GetChild(u"b"));
    EXPECT_TRUE(children[1] == *element.GetChild(u"c"));
}

TEST(XMLDomFormatter, CopiesAMillionLevelsOnASmallStack)
{
    RunOnSmallStack([] {
        DOMElement root(u"e");
        DOMElement* last = &root;
        for (int i = 1; i < 1000000; ++i)
            last = last->AddNewChild(u"e", nullptr);
        XMLDomFormatter formatter;
        formatter.OutputDOMElement(root);
        EXPECT_TRUE(First(formatter) == root);
    });
}

TEST(XMLDomFormatter, StoresBytesAsIndentedEncodedLines)
{
    const std::string bytes(100, 'k');
    const QString encoded = QString::fromLatin1(QByteArray::fromStdString(bytes).toBase64());
    XMLDomFormatter formatter;
    {
        const XMLFormatter::Indenter indenter(formatter, u"a");
        formatter.OutputBinary(reinterpret_cast<const unsigned char*>(bytes.data()), 100);
    }
    const TString expected =
        u"  " + TString(encoded.left(72)) + u"\n  " + TString(encoded.mid(72)) + u"\n";
    EXPECT_EQ(First(formatter).GetText(), expected);
    EXPECT_TRUE(First(formatter).IsEncoded());
    EXPECT_EQ(formatter.GetOutput(FormatMode::EscapeAll), u"<a>\n" + expected + u"</a>\n");
}

TEST(XMLDomFormatter, MarksAnElementEncodedEvenForNoBytes)
{
    XMLDomFormatter formatter;
    formatter.OutputOpenTag(u"a", {});
    formatter.OutputBinary(nullptr, 0);
    EXPECT_FALSE(First(formatter).HasText());
    EXPECT_TRUE(First(formatter).IsEncoded());
}

TEST(XMLDomFormatter, RunsTheTextSequenceForTheFourArgumentContentTag)
{
    XMLDomFormatter formatter;
    formatter.OutputOpenTag(u"a", {{u"k", u"v"}});
    formatter.OutputString(u"old");
    formatter.OutputContentTag(u"t", {{u"l", u"w"}}, u"x", false);
    // The content replaces what was appended before it.
    EXPECT_EQ(First(formatter).GetText(), u"x</t>\n");
    EXPECT_EQ(First(formatter).GetAttributes(), (Attributes{{u"l", u"w"}}));
    EXPECT_FALSE(First(formatter).HasChildren());
    EXPECT_FALSE(First(formatter).IsEncoded());
}

TEST(XMLDomFormatter, IndentsByTwoBlanks)
{
    XMLDomFormatter formatter;
    formatter.Indent();
    EXPECT_EQ(formatter.GetIndent(), u"  ");
    formatter.Undent();
    EXPECT_TRUE(formatter.GetIndent().IsEmpty());
}

TEST(XMLDomFormatter, RefusesToIndentBytesBeyondTheLimit)
{
    XMLDomFormatter formatter;
    std::vector<std::unique_ptr<XMLFormatter::Indenter>> open;
    for (TString::size_type i = 0; i <= XMLFormatter::c_maxIndentLength; i += 2)
        open.push_back(std::make_unique<XMLFormatter::Indenter>(formatter, u"e"));
    EXPECT_GT(formatter.GetIndent().length(), XMLFormatter::c_maxIndentLength);
    const unsigned char byte = 1;
    EXPECT_THROW(formatter.OutputBinary(&byte, 1), std::length_error);
    open.pop_back();
    formatter.OutputBinary(&byte, 1);
    while (!open.empty())
        open.pop_back();
}

TEST(XMLDomFormatter, TakesAHundredThousandLevelsOfOpenTags)
{
    constexpr int c_levels = 100000;
    XMLDomFormatter formatter;
    {
        std::vector<std::unique_ptr<XMLFormatter::Indenter>> open;
        for (int i = 0; i < c_levels; ++i)
            open.push_back(std::make_unique<XMLFormatter::Indenter>(formatter, u"e"));
        EXPECT_EQ(formatter.GetIndent().length(), 2 * c_levels);
        while (!open.empty())
            open.pop_back();
    }
    EXPECT_TRUE(formatter.GetIndent().IsEmpty());
    int depth = 0;
    const DOMElement* last = formatter.GetRoot();
    while (last->HasChildren()) {
        last = &last->GetChildren().front();
        ++depth;
    }
    EXPECT_EQ(depth, c_levels);
    XMLDomFormatter copy;
    copy.Format(copy, First(formatter));
    EXPECT_TRUE(First(copy) == First(formatter));
}

TEST(XMLDomFormatter, EncodesNothingInAFourArgumentContentTag)
{
    XMLDomFormatter formatter;
    formatter.OutputOpenTag(u"a", {{u"k", u"v"}});
    formatter.OutputContentTag(u"t", {{u"l", u"w"}}, u"x<y", true);
    EXPECT_EQ(First(formatter).GetText(), u"x<y</t>\n");
    EXPECT_EQ(First(formatter).GetAttributes(), (Attributes{{u"l", u"w"}}));
    EXPECT_FALSE(First(formatter).HasChildren());
    EXPECT_FALSE(First(formatter).IsEncoded());
}

/// A document whose elements bear errors and warnings.
std::unique_ptr<DOM> MakeDocumentWithDiagnostics()
{
    auto document = std::make_unique<DOM>(false);
    AddChildren(*document->GetRoot(), "a(b(c),d)");
    for (const char* name : {"a", "b", "c", "d"}) {
        AddError(Find(*document, name), name);
        AddWarning(Find(*document, name), name);
    }
    return document;
}

TEST(XMLDomFormatter, CopiesAnElementOfAnotherDocumentWithItsDiagnostics)
{
    const std::unique_ptr<DOM> source = MakeDocumentWithDiagnostics();
    const std::string errors = JoinErrors(*source);
    const std::string warnings = JoinWarnings(*source);
    XMLDomFormatter formatter;
    formatter.OutputDOMElement(*source->GetDocumentRoot());
    EXPECT_TRUE(First(formatter) == *source->GetDocumentRoot());
    EXPECT_EQ(First(formatter).GetDOMManager(), formatter.GetDocument());
    EXPECT_EQ(JoinErrors(*formatter.GetDocument()), errors);
    EXPECT_EQ(JoinWarnings(*formatter.GetDocument()), warnings);
    EXPECT_EQ(JoinErrors(*source), errors);
    EXPECT_EQ(JoinWarnings(*source), warnings);
    EXPECT_EQ(Outline(*source->GetRoot()), "Document(a(b(c),d))");
}

TEST(XMLDomFormatter, LeavesBothDocumentsAloneWhenMemoryRunsOutInACopy)
{
    const std::unique_ptr<DOM> source = MakeDocumentWithDiagnostics();
    const std::string errors = JoinErrors(*source);
    const std::string warnings = JoinWarnings(*source);
    bool isDone = false;
    for (std::size_t allowed = 0; !isDone; ++allowed) {
        ASSERT_LT(allowed, 1000U);
        XMLDomFormatter formatter;
        formatter.OutputTag(u"before", {});
        {
            const FailingAllocations failing(allowed);
            try {
                formatter.OutputDOMElement(*source->GetDocumentRoot());
                isDone = true;
            } catch (const std::bad_alloc&) {
            }
        }
        ASSERT_EQ(JoinErrors(*source), errors) << allowed;
        ASSERT_EQ(JoinWarnings(*source), warnings) << allowed;
        ASSERT_EQ(Outline(*source->GetRoot()), "Document(a(b(c),d))") << allowed;
        ASSERT_EQ(Outline(*formatter.GetRoot()),
                  isDone ? "Document(before,a(b(c),d))" : "Document(before)")
            << allowed;
        ASSERT_EQ(JoinErrors(*formatter.GetDocument()), isDone ? errors : "") << allowed;
    }
}

// Assertions

struct Operation
{
    const char* name;
    const char16_t* identifier;
    void (*call)(XMLDomFormatter&);
};

const Operation c_operations[] = {
    {"OutputAttributes", u"0x5619328D", [](XMLDomFormatter& f) { f.OutputAttributes({}); }},
    {"OutputBinary", u"0xE813A351", [](XMLDomFormatter& f) { f.OutputBinary(nullptr, 0); }},
    {"OutputCloseTag", u"0x5C6709A4", [](XMLDomFormatter& f) { f.OutputCloseTag(u"a"); }},
    {"OutputComment", u"0xBA49C527", [](XMLDomFormatter& f) { f.OutputComment(u"c"); }},
    {"OutputContent", u"0xCE4F4D17", [](XMLDomFormatter& f) { f.OutputContent(u"x", true); }},
    {"OutputContentTag", u"0x2AF5921A",
     [](XMLDomFormatter& f) { f.OutputContentTag(u"a", {}, u"x"); }},
    {"OutputDOMElement", u"0xD26E62DD",
     [](XMLDomFormatter& f) { f.OutputDOMElement(DOMElement(u"a")); }},
    {"OutputHeader", u"0x968B6274", [](XMLDomFormatter& f) { f.OutputHeader(); }},
    {"OutputLine", u"0x0F7E4CE7", [](XMLDomFormatter& f) { f.OutputLine(u"x"); }},
    {"OutputOpenTag", u"0xE04AB21E", [](XMLDomFormatter& f) { f.OutputOpenTag(u"a", {}); }},
    {"OutputString", u"0x32368D81", [](XMLDomFormatter& f) { f.OutputString(u"x"); }},
    {"OutputTag", u"0xE6086904", [](XMLDomFormatter& f) { f.OutputTag(u"a", {}); }},
};

class XMLDomFormatterAssertion : public testing::TestWithParam<Operation>
{
};

TEST_P(XMLDomFormatterAssertion, IsRaisedWithoutADocument)
{
    XMLDomFormatter formatter{std::unique_ptr<DOM>()};
    ExpectAssertion([&] { GetParam().call(formatter); }, u"m_stack.top() != nullptr",
                    GetParam().identifier);
    EXPECT_TRUE(formatter.GetOutput(FormatMode::Content).IsEmpty());
}

TEST_P(XMLDomFormatterAssertion, IsRaisedWhenTheRootIsClosed)
{
    XMLDomFormatter formatter;
    formatter.OutputCloseTag(u"Document");
    ExpectAssertion([&] { GetParam().call(formatter); }, u"m_stack.top() != nullptr",
                    GetParam().identifier);
    EXPECT_TRUE(formatter.GetRoot()->IsEmpty());
    EXPECT_TRUE(formatter.GetOutput(FormatMode::Content).IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(OfEveryOperation, XMLDomFormatterAssertion,
                         testing::ValuesIn(c_operations),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(XMLDomFormatter, RefusesToCloseAnotherElementAndKeepsItsStack)
{
    XMLDomFormatter formatter;
    formatter.OutputOpenTag(u"a", {});
    formatter.OutputOpenTag(u"b", {});
    ExpectAssertion([&] { formatter.OutputCloseTag(u"a"); }, u"e->GetName() == tag", u"0x956FC18E");
    formatter.OutputTag(u"c", {});
    EXPECT_NE(First(formatter).GetChild(u"b")->GetChild(u"c"), nullptr);
    EXPECT_NO_THROW(formatter.OutputCloseTag(u"b"));
}

TEST(XMLDomFormatter, RefusesBytesForAnElementWithText)
{
    XMLDomFormatter formatter;
    formatter.OutputOpenTag(u"a", {});
    formatter.OutputString(u"x");
    const unsigned char byte = 1;
    ExpectAssertion([&] { formatter.OutputBinary(&byte, 1); }, u"!e->HasText()", u"0x9C70B807");
    EXPECT_EQ(First(formatter).GetText(), u"x");
    EXPECT_FALSE(First(formatter).IsEncoded());
}

} // namespace

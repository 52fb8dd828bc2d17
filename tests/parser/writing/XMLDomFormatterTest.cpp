#include "support/FailingAllocations.h"
#include "support/RandomTree.h"
#include "support/RecordingFormatter.h"
#include "support/SmallStack.h"
#include "support/TreeTesting.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLStringFormatter.h>
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

using testing::ElementsAre;
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

// Given the tree that it builds

/// A formatter whose current element is "a" in "Document(r(a(OUTLINE)))".
class BuildingFormatter : public XMLDomFormatter
{
public:
    explicit BuildingFormatter(const char* outline)
    {
        OutputOpenTag(u"r", {});
        OutputOpenTag(u"a", {});
        AddChildren(Current(), outline);
    }

    DOMElement& Current() { return *GetDocumentRoot()->GetChild(u"a"); }
    std::string GetOutline() const { return Outline(*GetDocumentRoot()); }
};

TEST(XMLDomFormatter, AppendsACopyOfTheCurrentElementAsItWas)
{
    BuildingFormatter formatter("x");
    formatter.OutputDOMElement(formatter.Current());
    EXPECT_EQ(formatter.GetOutline(), "r(a(x,a(x)))");
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content),
              u"<r>\n  <a>\n    <x />\n    <a>\n      <x />\n    </a>\n  </a>\n</r>\n");
    // The current element is still the same.
    formatter.OutputTag(u"y", {});
    EXPECT_EQ(formatter.GetOutline(), "r(a(x,a(x),y))");
}

TEST(XMLDomFormatter, AppendsACopyOfAnElementAroundTheCurrentOneAsItWas)
{
    BuildingFormatter formatter("x");
    AddError(formatter.Current(), "error");
    formatter.OutputDOMElement(*formatter.GetDocumentRoot());
    EXPECT_EQ(formatter.GetOutline(), "r(a(x,r(a(x))))");
    EXPECT_EQ(JoinErrors(*formatter.GetDocument()), "error error");
    formatter.OutputDOMElement(*formatter.GetRoot());
    EXPECT_EQ(formatter.GetOutline(), "r(a(x,r(a(x)),Document(r(a(x,r(a(x)))))))");
    formatter.OutputDOMElement(*formatter.Current().GetChild(u"x"));
    EXPECT_EQ(formatter.GetOutline(), "r(a(x,r(a(x)),Document(r(a(x,r(a(x))))),x))");
}

TEST(XMLDomFormatter, AppendsACopyOfAnElementOfItsOwnWhereTheDocumentIsGone)
{
    BuildingFormatter formatter("x,y");
    std::unique_ptr<DOMElement> kept =
        formatter.GetRoot()->RemoveChild(*formatter.GetDocumentRoot());
    formatter.TakeDocument().reset();
    ASSERT_EQ(kept->GetDOMManager(), nullptr);
    formatter.OutputDOMElement(*kept);
    EXPECT_EQ(Outline(*kept), "r(a(x,y,r(a(x,y))))");
}

TEST(XMLDomFormatter, LeavesItsDocumentAloneWhenMemoryRunsOutInACopyOfAPartOfIt)
{
    // Lists of so many children that some have room for one more and some have not.
    for (const std::string children : {"x", "x,y(z)", "x,y,z", "x,y,z,u", "x,y,z,u,v,w,s,t"}) {
        bool isDone = false;
        for (std::size_t allowed = 0; !isDone; ++allowed) {
            ASSERT_LT(allowed, 1000U);
            BuildingFormatter formatter(children.c_str());
            for (const char* name : {"r", "a", "x"}) {
                AddError(Find(*formatter.GetDocument(), name), name);
                AddWarning(Find(*formatter.GetDocument(), name), name);
            }
            const std::string errors = JoinErrors(*formatter.GetDocument());
            {
                const FailingAllocations failing(allowed);
                try {
                    formatter.OutputDOMElement(*formatter.GetDocumentRoot());
                    isDone = true;
                } catch (const std::bad_alloc&) {
                }
            }
            const std::string before = "r(a(" + children + "))";
            const std::string after = "r(a(" + children + "," + before + "))";
            ASSERT_EQ(formatter.GetOutline(), isDone ? after : before) << allowed;
            if (!isDone) {
                ASSERT_EQ(JoinErrors(*formatter.GetDocument()), errors) << allowed;
            }
        }
    }
}

TEST(XMLDomFormatter, AppendsTheChildrenOfTheCurrentElementAsTheyWere)
{
    std::string names = "c0";
    for (int i = 1; i < 100; ++i)
        names += ",c" + std::to_string(i);
    BuildingFormatter formatter(names.c_str());
    formatter.OutputDOMElements(formatter.Current().GetChildren());
    EXPECT_EQ(formatter.GetOutline(), "r(a(" + names + "," + names + "))");
    formatter.OutputDOMElements(formatter.GetDocumentRoot()->GetChildren());
    EXPECT_EQ(formatter.GetOutline(),
              "r(a(" + names + "," + names + ",a(" + names + "," + names + ")))");
}

TEST(XMLDomFormatter, FormatsTheTreeThatItsTargetBuildsAsItWas)
{
    // The target is this formatter or another one; what is written, the current element or one
    // around it.
    const auto format = [](bool isOwn, const char* name) {
        XMLDomFormatter other;
        BuildingFormatter formatter("x,y(z)");
        (isOwn ? formatter : other).Format(formatter, Find(*formatter.GetDocument(), name));
        return formatter.GetOutline();
    };
    for (const bool isOwn : {false, true}) {
        EXPECT_EQ(format(isOwn, "a"), "r(a(x,y(z),a(x,y(z))))");
        EXPECT_EQ(format(isOwn, "r"), "r(a(x,y(z),r(a(x,y(z)))))");
        EXPECT_EQ(format(isOwn, "Document"), "r(a(x,y(z),Document(r(a(x,y(z))))))");
        EXPECT_EQ(format(isOwn, "y"), "r(a(x,y(z),y(z)))");
    }
}

TEST(XMLDomFormatter, FormatsItsCurrentElementWithTheTextThatItHad)
{
    XMLDomFormatter formatter;
    formatter.OutputOpenTag(u"a", {{u"k", u"v"}});
    formatter.OutputContent(u"text", false);
    formatter.Format(formatter, First(formatter));
    // The sequence of text of a content tag, the content of which replaces what stood before.
    EXPECT_EQ(First(formatter).GetText(), u"text</a>\n");
    EXPECT_EQ(First(formatter).GetAttributes(), (Attributes{{u"k", u"v"}}));
    EXPECT_FALSE(First(formatter).HasChildren());
}

/// Runs a change of the tree when a tag is written to it.
class ChangingTarget : public RecordingFormatter
{
public:
    explicit ChangingTarget(std::function<void()> change) : m_change(std::move(change)) {}
    void OutputTag(const TString& name, const Attributes& attributes) override
    {
        m_change();
        RecordingFormatter::OutputTag(name, attributes);
    }

private:
    std::function<void()> m_change;
};

TEST(XMLDomFormatter, FormatsWithoutTheChildrenThatItsTargetAdds)
{
    const std::unique_ptr<DOMElement> tree = MakeTree("r(a,b(c),d)");
    // To what is being written, and to what is still to be written.
    for (const char* grown : {"r", "b", "c", "d"}) {
        ChangingTarget target([&] {
            for (int i = 0; i < 10; ++i)
                Find(*tree, grown).AddNewChild(u"new");
        });
        XMLDomFormatter().Format(target, *tree);
        EXPECT_EQ(target.GetText(), u"<r>\n  <a />\n  <b>\n    <c />\n  </b>\n  <d />\n</r>\n")
            << grown;
        Find(*tree, grown).RemoveChildren();
        *tree = *MakeTree("r(a,b(c),d)");
    }
}

TEST(XMLDomFormatter, SaysSoWhenItsTargetChangesTheTreeOtherwise)
{
    const std::function<std::unique_ptr<DOMElement>(DOMElement&)> changes[] = {
        [](DOMElement& r) {
            r.AddNewChild(u"new", &r.GetChildren().front());
            return nullptr;
        },
        [](DOMElement& r) { return r.RemoveChild(*r.GetChild(u"d")); },
        [](DOMElement& r) { return r.GetChild(u"b")->RemoveChild(u"c"); },
    };
    for (const auto& change : changes) {
        const std::unique_ptr<DOMElement> tree = MakeTree("r(a,b(c),d)");
        std::unique_ptr<DOMElement> removed;
        bool isChanged = false;
        ChangingTarget target([&] {
            if (!std::exchange(isChanged, true))
                removed = change(*tree);
        });
        const auto assertion = CatchAssertion([&] { XMLDomFormatter().Format(target, *tree); });
        ASSERT_TRUE(assertion.has_value());
        EXPECT_EQ(assertion->GetText(),
                  u"The children of an element changed while they were written.");
        EXPECT_EQ(target.GetText(), u"<r>\n  <a />\n</r>\n");
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

// Text from the tree

TEST(XMLDomFormatter, PutsHeaderAndCommentsBeforeTheDocumentElement)
{
    XMLDomFormatter formatter;
    formatter.OutputOpenTag(u"a", {});
    formatter.OutputComment(u"one");
    formatter.OutputOpenTag(u"b", {});
    formatter.OutputComment(u"two--");
    formatter.OutputCloseTag(u"b");
    formatter.OutputHeader();
    formatter.OutputCloseTag(u"a");
    const TString expected = u"<?xml version='1.0' encoding='utf-8' ?>\n\n<!-- one -->\n"
                             u"<!-- two-&45; -->\n<a>\n  <b />\n</a>\n";
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), expected);
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), expected);
}

TEST(XMLDomFormatter, RendersWithoutAnyChangeToTheTree)
{
    RandomTree random(34);
    XMLDomFormatter formatter;
    formatter.OutputDOMElement(*random.Tree(50));
    AddError(First(formatter), "error");
    formatter.OutputOpenTag(u"open", {});
    const DOMElement before(*formatter.GetRoot());
    const std::string errors = JoinErrors(*formatter.GetDocument());
    const TString output = formatter.GetOutput(FormatMode::Content);
    static_cast<void>(formatter.GetOutput(FormatMode::EscapeAll));
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), output);
    EXPECT_TRUE(*formatter.GetRoot() == before);
    EXPECT_EQ(JoinErrors(*formatter.GetDocument()), errors);
    formatter.OutputCloseTag(u"open");
}

TEST(XMLDomFormatter, RendersOnlyTheFirstOfSeveralElements)
{
    XMLDomFormatter formatter;
    formatter.OutputTag(u"a", {});
    formatter.OutputTag(u"b", {});
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), u"<a />\n");
}

TEST(XMLDomFormatter, RendersInTheModeThatIsAskedFor)
{
    XMLDomFormatter formatter;
    formatter.OutputContentTag(u"a", {}, TString(32, u'\n'));
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), u"<a>" + TString(32, u'\n') + u"</a>\n");
    TString references;
    for (int i = 0; i < 32; ++i)
        references += u"&#10;";
    EXPECT_EQ(formatter.GetOutput(FormatMode::EscapeAll), u"<a>" + references + u"</a>\n");
}

TEST(XMLDomFormatter, IndentsTrailingTextAsItStandsItself)
{
    DOMElement element(u"a");
    element.SetText(u"x");
    element.AddNewChild(u"b", nullptr);
    XMLDomFormatter formatter;
    RecordingFormatter balanced;
    formatter.Format(balanced, element);
    EXPECT_THAT(balanced.GetPieces(),
                ElementsAre(TString(), u"<", u"a", u">", u"\n", u"  ", u"<", u"b", u" />", u"\n",
                            TString(), u"x", TString(), u"</", u"a", u">", u"\n"));
    formatter.Indent();
    formatter.Indent();
    RecordingFormatter indented;
    formatter.Format(indented, element);
    EXPECT_EQ(indented.GetText(), u"<a>\n  <b />\n    x</a>\n");
}

/// Has another indentation each time that it is asked.
class RestlessFormatter : public XMLDomFormatter
{
public:
    const TString& GetIndent() const override
    {
        m_indent = u"[" + TString::number(m_asked++) + u"]";
        return m_indent;
    }

private:
    mutable int m_asked = 0;
    mutable TString m_indent;
};

TEST(XMLDomFormatter, RendersWithTheIndentationThatItHasAtEachText)
{
    const auto build = [](XMLFormatter& formatter) {
        const XMLFormatter::Indenter a(formatter, u"a");
        for (const char16_t* name : {u"b", u"c"}) {
            const XMLFormatter::Indenter indenter(formatter, name);
            formatter.OutputTag(u"d", {});
            formatter.OutputContent(u"text", false);
        }
        formatter.OutputContent(u"raw", true);
    };
    RestlessFormatter rendered;
    build(rendered);
    RestlessFormatter formatted;
    build(formatted);
    RecordingFormatter expected;
    expected.SetFormatMode(FormatMode::Content);
    formatted.Format(expected, First(formatted));
    const TString output = rendered.GetOutput(FormatMode::Content);
    EXPECT_EQ(output, expected.GetText());
    EXPECT_TRUE(output.contains(u"[0]text") && output.contains(u"[1]text") &&
                output.contains(u"[2]"));
}

TEST(XMLDomFormatter, StoresEachLineOfBytesWithTheIndentationThatItHasThen)
{
    const std::vector<unsigned char> bytes(120, 0);
    RestlessFormatter formatter;
    formatter.OutputOpenTag(u"a", {});
    formatter.OutputBinary(bytes.data(), 120);
    EXPECT_EQ(First(formatter).GetText(), u"[0]" + TString(72, u'A') + u"\n[1]" +
                                              TString(72, u'A') + u"\n[2]" + TString(16, u'A') +
                                              u"\n");
}

TEST(XMLDomFormatter, WritesEncodedTextRaw)
{
    DOMElement element(u"a");
    element.SetText(u"<x/>", true);
    element.AddNewChild(u"b", nullptr)->SetText(u"<y/>", true);
    XMLDomFormatter formatter;
    RecordingFormatter target;
    formatter.Format(target, element);
    EXPECT_EQ(target.GetText(), u"<a>\n  <b>\n<y/>\n  </b>\n\n<x/>\n  </a>\n");
}

/// What Format is said to do, by recursion.
void FormatModel(XMLFormatter& target, const DOMElement& element)
{
    if (!element.HasChildren()) {
        if (element.HasText())
            target.OutputContentTag(element.GetName(), element.GetAttributes(), element.GetText(),
                                    !element.IsEncoded());
        else
            target.OutputTag(element.GetName(), element.GetAttributes());
        return;
    }
    const XMLFormatter::Indenter indenter(target, element.GetName(), element.GetAttributes());
    for (const auto& child : element.GetChildren())
        FormatModel(target, *child);
    if (element.HasText()) {
        target.OutputString(TString());
        target.OutputContent(element.GetText(), element.IsEncoded());
    }
}

/// Notes which operations are called, and breaks at one of the calls.
class CallTarget : public RecordingFormatter
{
public:
    using XMLFormatter::OutputContent;
    using XMLFormatter::OutputContentTag;
    void Indent() override { Call(u"Indent"); }
    void Undent() override { Call(u"Undent"); }
    void OutputDOMElement(const DOMElement&) override { Call(u"Element"); }
    void OutputContent(const TString& text, bool raw) override
    {
        Call((raw ? u"Raw " : u"Content ") + text);
    }
    void OutputContentTag(const TString& name, const Attributes&, const TString& text,
                          bool encode) override
    {
        Call((encode ? u"ContentTag " : u"RawContentTag ") + name + text);
    }
    void OutputOpenTag(const TString& name, const Attributes&) override { Call(u"Open " + name); }
    void OutputCloseTag(const TString& name) override { Call(u"Close " + name); }
    void OutputTag(const TString& name, const Attributes&) override { Call(u"Tag " + name); }

    std::size_t breakAt = static_cast<std::size_t>(-1);

private:
    void Call(const TString& call)
    {
        OutputString(call);
        if (GetPieces().size() == breakAt)
            throw std::runtime_error("told to break");
    }
};

TEST(XMLDomFormatter, CallsItsTargetAsTheRecursionWould)
{
    RandomTree random(31);
    for (int i = 0; i < 100; ++i) {
        const std::unique_ptr<DOMElement> tree = random.Tree(1 + random.Below(40));
        CallTarget expected;
        FormatModel(expected, *tree);
        CallTarget target;
        XMLDomFormatter formatter;
        formatter.Format(target, *tree);
        ASSERT_EQ(target.GetPieces(), expected.GetPieces());
    }
}

TEST(XMLDomFormatter, ClosesWhatIsOpenWhereverItsTargetBreaks)
{
    RandomTree random(32);
    const std::unique_ptr<DOMElement> tree = random.Tree(40);
    CallTarget whole;
    FormatModel(whole, *tree);
    for (std::size_t breakAt = 1; breakAt <= whole.GetPieces().size(); ++breakAt) {
        bool isExpectedToThrow = false;
        CallTarget expected;
        expected.breakAt = breakAt;
        try {
            FormatModel(expected, *tree);
        } catch (const std::runtime_error&) {
            isExpectedToThrow = true;
        }
        bool throws = false;
        CallTarget target;
        target.breakAt = breakAt;
        XMLDomFormatter formatter;
        try {
            formatter.Format(target, *tree);
        } catch (const std::runtime_error&) {
            throws = true;
        }
        ASSERT_EQ(throws, isExpectedToThrow) << breakAt;
        ASSERT_EQ(target.GetPieces(), expected.GetPieces()) << breakAt;
    }
}

TEST(XMLDomFormatter, FormatsAMillionLevelsOnASmallStack)
{
    RunOnSmallStack([] {
        DOMElement root(u"e");
        DOMElement* last = &root;
        for (int i = 1; i < 1000000; ++i)
            last = last->AddNewChild(u"e", nullptr);
        XMLStringFormatter target(TString(), true);
        XMLDomFormatter formatter;
        formatter.Format(target, root);
        EXPECT_EQ(target.GetOutput().length(), 999999 * 7 + 5);
    });
}

// One-call rendering

TEST(XMLDomFormatter, RendersADocumentWithHeaderAndComment)
{
    DOM document(false);
    DOMElement* a = document.GetRoot()->AddNewChild(u"a", nullptr);
    a->AddNewChild(u"b", nullptr)->SetText(TString(32, u'x') + u"<");
    TString comment(u"note");
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(document, &comment, true),
              u"<?xml version='1.0' encoding='utf-8' ?>\n\n<!-- note -->\n<a>\n  <b><![CDATA[" +
                  TString(32, u'x') + u"<]]></b>\n</a>\n");
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(*a->GetChild(u"b"), nullptr, false),
              u"<b><![CDATA[" + TString(32, u'x') + u"<]]></b>\n");
}

TEST(XMLDomFormatter, RendersAnEmptyDocumentAsWhatIsWantedAroundIt)
{
    EXPECT_TRUE(XMLDomFormatter::RenderAsXMLString(DOM(false), nullptr, false).IsEmpty());
    TString comment(u"note");
    const TString header(u"<?xml version='1.0' encoding='utf-8' ?>\n\n");
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(DOM(false), nullptr, true), header);
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(DOM(false), &comment, true),
              header + u"<!-- note -->\n");
    XMLDomFormatter formatter;
    formatter.OutputHeader();
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), header);
}

TEST(XMLDomFormatter, RendersAnElementWithHeaderAndComment)
{
    DOMElement element(u"a");
    element.SetText(TString(32, u'\n'));
    TString comment(u"note");
    const TString text = u"<a>" + TString(32, u'\n') + u"</a>\n";
    const TString header(u"<?xml version='1.0' encoding='utf-8' ?>\n\n");
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(element, &comment, true),
              header + u"<!-- note -->\n" + text);
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(element, nullptr, true), header + text);
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(element, &comment, false),
              u"<!-- note -->\n" + text);
    EXPECT_EQ(comment, u"note");
}

TEST(XMLDomFormatter, RendersWhatItBuilt)
{
    RandomTree random(33);
    for (int i = 0; i < 50; ++i) {
        XMLDomFormatter formatter;
        formatter.OutputDOMElement(*random.Tree(1 + random.Below(40)));
        for (const FormatMode mode : {FormatMode::EscapeAll, FormatMode::Content}) {
            RecordingFormatter expected;
            expected.SetFormatMode(mode);
            FormatModel(expected, First(formatter));
            ASSERT_EQ(formatter.GetOutput(mode), expected.GetText());
            // The formatter's own indentation shows in texts that follow children.
            formatter.Indent();
            RecordingFormatter indented;
            indented.SetFormatMode(mode);
            formatter.Format(indented, First(formatter));
            ASSERT_EQ(formatter.GetOutput(mode), indented.GetText());
            formatter.Undent();
        }
    }
}

} // namespace

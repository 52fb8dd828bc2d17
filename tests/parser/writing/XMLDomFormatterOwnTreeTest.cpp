#include "support/FailingAllocations.h"
#include "support/RecordingFormatter.h"
#include "support/TreeTesting.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLDomFormatter.h>

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <utility>

// What a formatter does that is given the tree that it builds, or a part of it.

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
    struct Case
    {
        const char* tree;
        std::function<std::unique_ptr<DOMElement>(DOMElement&)> change;
    };
    const Case cases[] = {
        {"r(a,b(c),d)",
         [](DOMElement& r) {
             r.AddNewChild(u"new", &r.GetChildren().front());
             return nullptr;
         }},
        {"r(a,b(c),d)", [](DOMElement& r) { return r.RemoveChild(*r.GetChild(u"d")); }},
        {"r(a,b(c),d)", [](DOMElement& r) { return r.GetChild(u"b")->RemoveChild(u"c"); }},
        // As many as before, and the last one where it was.
        {"r(a,b,d)",
         [](DOMElement& r) {
             auto removed = r.RemoveChild(*r.GetChild(u"b"));
             r.AddNewChild(u"new", r.GetChild(u"d"));
             return removed;
         }},
    };
    for (const Case& tried : cases) {
        const std::unique_ptr<DOMElement> tree = MakeTree(tried.tree);
        std::unique_ptr<DOMElement> removed;
        bool isChanged = false;
        ChangingTarget target([&] {
            if (!std::exchange(isChanged, true))
                removed = tried.change(*tree);
        });
        const auto assertion = CatchAssertion([&] { XMLDomFormatter().Format(target, *tree); });
        ASSERT_TRUE(assertion.has_value());
        EXPECT_EQ(assertion->GetText(),
                  u"The children of an element changed while they were written.");
        EXPECT_EQ(target.GetText(), u"<r>\n  <a />\n</r>\n");
    }
}

} // namespace

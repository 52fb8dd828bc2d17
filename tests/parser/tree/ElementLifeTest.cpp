// What becomes of removed elements and of copies when what they came from changes or ends.

#include "tree/ElementLife.h"

#include "support/TreeTesting.h"

#include <functional>

namespace {

void ExpectAssertion(const std::function<void()>& work, const char* text)
{
    const auto assertion = CatchAssertion(work);
    ASSERT_TRUE(assertion.has_value()) << text;
    EXPECT_EQ(assertion->GetText(), TString(text));
}

} // namespace

TEST(ElementLife, ARemovedElementMayOutliveItsParent)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "p(a(b))");
    AddError(Find(dom, "b"), "eb");
    std::unique_ptr<DOMElement> removed = Find(dom, "p").RemoveChild(u"a");
    dom.GetRoot()->SetAttribute(u"k", u"v");
    EXPECT_EQ(removed->GetParentAttr(u"k"), TString(u"v"));
    dom.GetRoot()->RemoveChild(u"p").reset();

    EXPECT_EQ(removed->GetParent(), nullptr);
    EXPECT_FALSE(removed->IsRootNode());
    EXPECT_EQ(removed->GetDOMManager(), &dom);
    EXPECT_FALSE(removed->IsChildOf(*dom.GetRoot()));
    EXPECT_EQ(removed->GetParentAttr(u"k"), TString());
    EXPECT_TRUE(removed->HasErrors());
    EXPECT_TRUE(dom.HasErrors());
    EXPECT_FALSE(dom.HasErrors(*dom.GetRoot()->AddNewChild(u"x")));
    EXPECT_FALSE(removed->HasWarnings());
    ExpectAssertion([&] { dom.GetRoot()->Adopt(*removed, nullptr); },
                    "Cannot adopt a child without an existing parent.");
    ExpectAssertion([&] { removed->MoveToFront(); }, "parent");
    removed.reset();
    EXPECT_FALSE(dom.HasErrors());
}

TEST(ElementLife, ARemovedElementMayOutliveItsDocument)
{
    auto dom = std::make_unique<DOM>();
    AddChildren(*dom->GetRoot(), "a(b),c");
    AddError(Find(*dom, "b"), "eb");
    std::unique_ptr<DOMElement> removed = dom->GetRoot()->RemoveChild(u"a");
    const std::vector<std::unique_ptr<DOMElement>> more = dom->GetRoot()->RemoveChildren();
    dom.reset();

    EXPECT_EQ(removed->GetDOMManager(), nullptr);
    EXPECT_EQ(Find(*removed, "b").GetDOMManager(), nullptr);
    EXPECT_EQ(more[0]->GetDOMManager(), nullptr);
    EXPECT_EQ(removed->GetParent(), nullptr);
    EXPECT_FALSE(removed->IsRootNode());
    EXPECT_FALSE(removed->IsChildOf(*more[0]));
    EXPECT_TRUE(CatchAssertion([&] { removed->HasErrors(); }).has_value());
    EXPECT_EQ(Outline(*removed), "a(b)");

    DOM other;
    DOMElement* a = other.GetRoot()->AppendChild(std::move(removed));
    EXPECT_EQ(a->GetParent(), other.GetRoot());
    EXPECT_EQ(Find(*a, "b").GetDOMManager(), &other);
    EXPECT_FALSE(other.HasErrors()) << "the messages ended with their document";
}

TEST(ElementLife, ACopyMayOutliveItsDocument)
{
    auto dom = std::make_unique<DOM>();
    AddChildren(*dom->GetRoot(), "a(b)");
    const DOMElement copy(Find(*dom, "a"));
    const DOMElement copyOfTheRoot(*dom->GetRoot());
    dom.reset();
    EXPECT_EQ(copy.GetDOMManager(), nullptr);
    EXPECT_EQ(copyOfTheRoot.GetDOMManager(), nullptr);
    EXPECT_EQ(Outline(copyOfTheRoot), "Document(a(b))");
    EXPECT_TRUE(copy.IsRootNode());
}

TEST(ElementLife, AReinsertedElementNamesItsNewParentOnly)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "p(a),q");
    std::unique_ptr<DOMElement> removed = Find(dom, "p").RemoveChild(u"a");
    DOMElement* a = Find(dom, "q").AppendChild(std::move(removed));
    EXPECT_EQ(a->GetParent(), &Find(dom, "q"));
    dom.GetRoot()->RemoveChild(u"p").reset();
    EXPECT_EQ(a->GetParent(), &Find(dom, "q"));
    EXPECT_TRUE(a->IsChildOf(*dom.GetRoot()));
}

TEST(ElementLife, ARemovedElementMayTakeItsFormerParentIn)
{
    for (const char* outline : {"p(c)", "p(x,c,y)", "p(x(c))"}) {
        auto top = MakeTree(outline);
        DOMElement& holder = *Find(*top, "c").GetParent();
        std::unique_ptr<DOMElement> removed = holder.RemoveChild(u"c");
        DOMElement& c = *removed;
        const std::string before = Outline(*top);
        DOMElement* p = c.AppendChild(std::move(top));
        EXPECT_EQ(Outline(c), "c(" + before + ")");
        EXPECT_EQ(p->GetParent(), &c);
        // The way upwards ends, so all of these come back.
        EXPECT_EQ(c.GetParent(), nullptr);
        EXPECT_FALSE(c.IsRootNode());
        EXPECT_FALSE(c.IsChildOf(*p));
        EXPECT_TRUE(holder.IsChildOf(c));
        EXPECT_EQ(holder.GetParentAttr(u"k"), TString());
        const DOMElement stranger(TString(u"s"));
        EXPECT_FALSE(holder.IsChildOf(stranger));
    }
}

TEST(ElementLife, ARemovedElementMayAdoptTheChildrenOfItsFormerRelatives)
{
    const auto root = MakeTree("p(q(x,c),y)");
    std::unique_ptr<DOMElement> removed = Find(*root, "q").RemoveChild(u"c");
    DOMElement& c = *removed;
    c.AdoptChildren(Find(*root, "q"), nullptr);
    EXPECT_EQ(Outline(c), "c(x)");
    EXPECT_EQ(c.GetParent(), &Find(*root, "q")) << "which is not below it";
    c.AdoptChildren(*root, nullptr);
    EXPECT_EQ(Outline(c), "c(x,q,y)");
    EXPECT_EQ(c.GetParent(), nullptr) << "which is below it now";
    EXPECT_FALSE(Find(c, "q").IsChildOf(*root));
}

TEST(ElementLife, RemovedElementsTakeTurnsWithoutMakingACircle)
{
    auto a = MakeTree("a(b(c))");
    std::unique_ptr<DOMElement> b = a->RemoveChild(u"b");
    std::unique_ptr<DOMElement> c = b->RemoveChild(u"c");
    DOMElement* rawA = a.get();
    DOMElement* rawC = c.get();
    // c names b, b names a; a goes below c.
    c->AppendChild(std::move(a));
    EXPECT_FALSE(rawA->IsChildOf(DOMElement(TString(u"s"))));
    EXPECT_EQ(rawA->GetParentAttr(u"k"), TString());
    EXPECT_EQ(rawC->GetParentAttr(u"k"), TString());
    EXPECT_TRUE(rawA->IsChildOf(*rawC));
    rawA->AppendChild(std::move(b));
    EXPECT_EQ(Outline(*c), "c(a(b))");
    EXPECT_EQ(Find(*c, "b").GetParentAttr(u"k"), TString());
}

TEST(ElementLife, ACopyWithoutChildrenMayOutliveItsDocument)
{
    auto dom = std::make_unique<DOM>();
    AddChildren(*dom->GetRoot(), "a");
    AddError(Find(*dom, "a"), "e");
    const DOMElement copy(Find(*dom, "a"));
    EXPECT_EQ(copy.GetDOMManager(), dom.get());
    dom.reset();
    EXPECT_EQ(copy.GetDOMManager(), nullptr);
    EXPECT_TRUE(CatchAssertion([&] { copy.HasErrors(); }).has_value());
}

TEST(ElementLife, NobodyKnowsAnElementThatIsJustInATree)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a(b)");
    for (const DOMElement* element : {&Find(dom, "a"), &Find(dom, "b")}) {
        EXPECT_EQ(ElementLife::Identity(*element), nullptr);
        EXPECT_FALSE(ElementLife::IsRemembered(*element));
        EXPECT_FALSE(ElementLife::IsRemoved(*element));
        EXPECT_FALSE(ElementLife::HasRemovedChildren(*element));
        EXPECT_EQ(ElementLife::LooseIn(*element), nullptr);
    }
    AddError(Find(dom, "b"), "e");
    EXPECT_TRUE(ElementLife::IsRemembered(Find(dom, "b")));
    EXPECT_FALSE(ElementLife::IsRemembered(Find(dom, "a")));
    dom.ClearErrors();
    EXPECT_FALSE(ElementLife::IsRemembered(Find(dom, "b")));
}

TEST(ElementLife, ARemovedElementIsLooseUntilItIsInsertedAgain)
{
    DOM dom;
    DOM other;
    AddChildren(*dom.GetRoot(), "a(b)");
    DOMElement& a = Find(dom, "a");
    std::unique_ptr<DOMElement> b = a.RemoveChild(u"b");
    EXPECT_TRUE(ElementLife::IsRemoved(*b));
    EXPECT_TRUE(ElementLife::HasRemovedChildren(a));
    EXPECT_TRUE(ElementLife::IsRemembered(a));
    EXPECT_EQ(ElementLife::LooseIn(*b), &dom);
    const DOMElement* inserted = other.GetRoot()->AppendChild(std::move(b));
    EXPECT_FALSE(ElementLife::IsRemoved(*inserted));
    EXPECT_FALSE(ElementLife::HasRemovedChildren(a));
    EXPECT_FALSE(ElementLife::IsRemembered(a));
    EXPECT_EQ(ElementLife::LooseIn(*inserted), nullptr);

    const DOMElement copy(*inserted);
    EXPECT_EQ(ElementLife::LooseIn(copy), &other);
    EXPECT_FALSE(ElementLife::IsRemoved(copy));
    DOMElement detached(u"d");
    AddChildren(detached, "e");
    const auto e = detached.RemoveChild(u"e");
    EXPECT_TRUE(ElementLife::IsRemoved(*e));
    EXPECT_EQ(ElementLife::LooseIn(*e), nullptr);
}

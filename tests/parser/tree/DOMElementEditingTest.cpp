#include <kescorexml/DOMElement.h>

#include "support/EditingChecks.h"
#include "support/SmallStack.h"

namespace {

constexpr int c_deep = 1'000'000;

/// A chain of elements below `top`, which the last of them is returned from.
DOMElement* Deepen(DOMElement& top, int levels)
{
    DOMElement* last = &top;
    for (int i = 0; i < levels; ++i)
        last = last->AddNewChild(u"e");
    return last;
}

constexpr const char* c_ownSubtree = "Cannot insert an element into its own subtree.";

} // namespace

// Insertion

TEST(DOMElementEditing, InsertChildAppendsWithoutInsertionPoint)
{
    const auto root = MakeTree("r(a)");
    auto child = std::make_unique<DOMElement>(TString(u"b"));
    DOMElement* expected = child.get();
    EXPECT_EQ(root->InsertChild(std::move(child), nullptr), expected);
    EXPECT_EQ(child, nullptr);
    EXPECT_EQ(expected->GetParent(), root.get());
    const DOMElement* c = root->AppendChild(MakeTree("c"));
    EXPECT_EQ(c, &root->GetChildren().back());
    EXPECT_EQ(Outline(*root), "r(a,b,c)");
}

TEST(DOMElementEditing, InsertChildPutsInFrontOfTheInsertionPoint)
{
    const LogCapture log;
    const auto root = MakeTree("r(a,b)");
    root->InsertChild(MakeTree("x"), &root->GetChildren()[0]);
    EXPECT_EQ(Outline(*root), "r(x,a,b)");
    root->InsertChild(MakeTree("y"), &root->GetChildren()[2]);
    EXPECT_EQ(Outline(*root), "r(x,a,y,b)");
    EXPECT_EQ(log.Count(), 0U);
}

TEST(DOMElementEditing, AMissingInsertionPointIsLoggedAndTheChildAppended)
{
    const LogCapture log;
    const auto root = MakeTree("r(a(b),c)");
    const DOMElement stranger(TString(u"s"));
    root->InsertChild(MakeTree("x"), &stranger);
    EXPECT_EQ(Outline(*root), "r(a(b),c,x)");
    ASSERT_EQ(log.Count(), 1U);
    ExpectMissLogged(log, 0);
    // Grandchildren and the element itself are no children either.
    root->AddNewChild(u"y", &Find(*root, "b"));
    root->AddNewChild(u"z", root.get());
    EXPECT_EQ(Outline(*root), "r(a(b),c,x,y,z)");
    ASSERT_EQ(log.Count(), 3U);
    ExpectMissLogged(log, 2);
}

TEST(DOMElementEditing, TheInsertedElementIsNoInsertionPointForItself)
{
    const LogCapture log;
    const auto root = MakeTree("r(a)");
    auto child = MakeTree("x");
    const DOMElement* before = child.get();
    root->InsertChild(std::move(child), before);
    EXPECT_EQ(Outline(*root), "r(a,x)");
    EXPECT_EQ(log.Count(), 1U);
}

TEST(DOMElementEditing, ThereMustBeAnElementToInsert)
{
    auto root = MakeTree("r(a)");
    ExpectAssertion([&] { root->InsertChild(nullptr, nullptr); }, "child != nullptr");
    ExpectAssertion([&] { root->InsertChild(nullptr, root->GetChild(u"a")); }, "child != nullptr");
    ExpectAssertion([&] { root->AppendChild(nullptr); }, "child != nullptr");
    EXPECT_EQ(Outline(*root), "r(a)");
}

TEST(DOMElementEditing, AddNewChildMakesADetachedElementAndInsertsIt)
{
    DOM dom;
    DOMElement* a = dom.GetRoot()->AddNewChild(u"a", nullptr);
    DOMElement* b = dom.GetRoot()->AddNewChild(u"b", a);
    EXPECT_EQ(Outline(*dom.GetRoot()), "Document(b,a)");
    EXPECT_EQ(b->GetDOMManager(), &dom);
    EXPECT_TRUE(b->IsEmpty());
}

TEST(DOMElementEditing, GetOrNewChildAppendsOnlyWhenThereIsNone)
{
    const auto root = MakeTree("r(a,b)");
    EXPECT_EQ(root->GetOrNewChild(u"a"), &root->GetChildren()[0]);
    EXPECT_EQ(Outline(*root), "r(a,b)");
    DOMElement* made = root->GetOrNewChild(u"c");
    EXPECT_EQ(made, &root->GetChildren()[2]);
    EXPECT_EQ(root->GetOrNewChild(u"c"), made);
}

TEST(DOMElementEditing, InsertionAttachesTheWholeSubtree)
{
    DOM dom;
    DOMElement* inserted = dom.GetRoot()->AppendChild(MakeTree("a(b(c,d),e)"));
    for (const char* name : {"a", "b", "c", "d", "e"})
        EXPECT_EQ(Find(*inserted, name).GetDOMManager(), &dom) << name;
}

TEST(DOMElementEditing, InsertionBelowADetachedElementDetachesAndLeavesDiagnosticsBehind)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a(b),c");
    AddError(Find(dom, "b"), "eb");
    DOMElement detached(TString(u"d"));
    DOMElement* a = detached.AppendChild(dom.GetRoot()->RemoveChild(u"a"));
    EXPECT_EQ(a->GetDOMManager(), nullptr);
    EXPECT_EQ(Find(*a, "b").GetDOMManager(), nullptr);
    EXPECT_EQ(JoinErrors(dom), "") << "no element of the tree has the message";
    EXPECT_TRUE(dom.HasErrors()) << "but the registry has";
    EXPECT_FALSE(dom.HasErrors(Find(dom, "c")));
    // Back in the tree the element finds what was left behind.
    dom.GetRoot()->AppendChild(detached.RemoveChild(u"a"));
    EXPECT_EQ(JoinErrors(dom), "eb");
}

TEST(DOMElementEditing, InsertionMovesDiagnosticsToTheOtherDocument)
{
    DOM from;
    DOM to;
    AddChildren(*from.GetRoot(), "p(a(b),c)");
    for (const char* name : {"a", "b", "c", "p"}) {
        AddError(Find(from, name), name);
        AddWarning(Find(from, name), name);
    }
    AddError(*from.GetRoot(), "root");
    to.GetRoot()->AppendChild(Find(from, "p").RemoveChild(u"a"));
    EXPECT_EQ(JoinErrors(from), "root p c") << "the parent was not the root";
    EXPECT_EQ(JoinWarnings(from), "p c");
    EXPECT_EQ(JoinErrors(to), "a b");
    EXPECT_EQ(JoinWarnings(to), "a b");
    // A leaf takes its own along, too.
    to.GetRoot()->AppendChild(Find(from, "p").RemoveChild(u"c"));
    EXPECT_EQ(JoinErrors(from), "root p");
    EXPECT_EQ(JoinErrors(to), "c a b");
}

TEST(DOMElementEditing, AChildOfTheOldRootTakesTheDiagnosticsOfTheRootAlong)
{
    for (const char* outline : {"a", "a(b)"}) {
        DOM from;
        DOM to;
        AddChildren(*from.GetRoot(), outline);
        AddError(*from.GetRoot(), "root");
        AddWarning(*from.GetRoot(), "wroot");
        to.GetRoot()->AppendChild(from.GetRoot()->RemoveChild(u"a"));
        EXPECT_FALSE(from.HasErrors());
        EXPECT_FALSE(from.HasWarnings());
        EXPECT_EQ(JoinErrors(to), "root");
        EXPECT_EQ(JoinWarnings(to), "wroot");
        EXPECT_TRUE(to.HasErrors(*to.GetRoot()));
        EXPECT_FALSE(to.HasErrors(Find(to, "a")));
    }
}

TEST(DOMElementEditing, DiagnosticsOfTheNewRootDisplaceThoseOfTheOldOne)
{
    DOM from;
    DOM to;
    AddChildren(*from.GetRoot(), "a");
    AddError(*from.GetRoot(), "old");
    AddWarning(*from.GetRoot(), "wold");
    AddError(*to.GetRoot(), "new");
    to.GetRoot()->AppendChild(from.GetRoot()->RemoveChild(u"a"));
    EXPECT_EQ(JoinErrors(to), "new");
    EXPECT_EQ(JoinWarnings(to), "wold");
    EXPECT_EQ(JoinErrors(from), "");
    EXPECT_EQ(JoinWarnings(from), "");
}

TEST(DOMElementEditing, InsertionWithinADocumentKeepsDiagnosticsInPlace)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a(b),c");
    AddError(Find(dom, "b"), "b");
    AddError(*dom.GetRoot(), "root");
    Find(dom, "c").AppendChild(dom.GetRoot()->RemoveChild(u"a"));
    EXPECT_EQ(JoinErrors(dom), "root b");
}

TEST(DOMElementEditing, AnElementCannotGetIntoItsOwnSubtree)
{
    auto root = MakeTree("r(a(b,c),d)");
    DOMElement& a = Find(*root, "a");
    DOMElement& b = Find(*root, "b");
    DOMElement* top = root.get();
    ExpectAssertion([&] { b.InsertChild(std::move(root), nullptr); }, c_ownSubtree);
    ASSERT_NE(root, nullptr) << "the owner keeps what was not inserted";
    ExpectAssertion([&] { top->InsertChild(std::move(root), nullptr); }, c_ownSubtree);
    ExpectAssertion([&] { a.Move(b, nullptr); }, c_ownSubtree);
    ExpectAssertion([&] { a.Move(a, nullptr); }, c_ownSubtree);
    ExpectAssertion([&] { b.Adopt(a, nullptr); }, c_ownSubtree);
    ExpectAssertion([&] { b.AdoptChildren(a, nullptr); }, c_ownSubtree);
    ExpectAssertion([&] { b.AdoptChildren(*top, nullptr); }, c_ownSubtree);
    EXPECT_EQ(Outline(*top), "r(a(b,c),d)");
    EXPECT_EQ(a.GetParent(), top);
    EXPECT_EQ(b.GetParent(), &a);
    EXPECT_TRUE(b.IsChildOf(*top));
}

TEST(DOMElementEditing, ALeafCannotBecomeItsOwnChild)
{
    auto leaf = std::make_unique<DOMElement>(TString(u"a"));
    DOMElement* raw = leaf.get();
    ExpectAssertion([&] { raw->AppendChild(std::move(leaf)); }, c_ownSubtree);
    EXPECT_EQ(leaf.get(), raw);
    EXPECT_FALSE(raw->HasChildren());
}

// Removal

TEST(DOMElementEditing, RemoveChildHandsOutTheElementWithWhatItKnows)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a,b,c");
    DOMElement& b = Find(dom, "b");
    AddError(b, "eb");
    const std::unique_ptr<DOMElement> removed = dom.GetRoot()->RemoveChild(b);
    EXPECT_EQ(removed.get(), &b);
    EXPECT_EQ(Outline(*dom.GetRoot()), "Document(a,c)");
    EXPECT_EQ(b.GetParent(), dom.GetRoot());
    EXPECT_FALSE(b.IsRootNode());
    EXPECT_EQ(b.GetDOMManager(), &dom);
    EXPECT_TRUE(b.HasErrors()) << "its diagnostics stay in the registry";
    EXPECT_EQ(JoinErrors(dom), "") << "but it is in no tree";
    EXPECT_TRUE(b.IsChildOf(*dom.GetRoot()));
}

TEST(DOMElementEditing, RemovingEachOfManyChildrenLeavesTheOthersInOrder)
{
    for (std::size_t gone = 0; gone < 5; ++gone) {
        const auto root = MakeTree("r(0,1,2,3,4)");
        std::string expected;
        for (std::size_t i = 0; i < 5; ++i) {
            if (i != gone)
                expected += (expected.empty() ? "" : ",") + std::to_string(i);
        }
        const auto removed = root->RemoveChild(root->GetChildren()[gone]);
        EXPECT_EQ(removed->GetName().toStdString(), std::to_string(gone));
        EXPECT_EQ(Outline(*root), "r(" + expected + ")");
    }
}

TEST(DOMElementEditing, RemovingAStrangerIsAnAssertion)
{
    const auto root = MakeTree("r(a(b))");
    DOMElement stranger(TString(u"a"));
    ExpectAssertion([&] { root->RemoveChild(stranger); }, "i != m_children.end()");
    ExpectAssertion([&] { root->RemoveChild(Find(*root, "b")); }, "i != m_children.end()");
    ExpectAssertion([&] { stranger.RemoveChild(*root); }, "i != m_children.end()");
    const auto removed = root->RemoveChild(u"a");
    ExpectAssertion([&] { root->RemoveChild(*removed); }, "i != m_children.end()");
}

TEST(DOMElementEditing, RemoveChildByNameTakesTheFirst)
{
    const auto root = MakeTree("r(a,b(1),b)");
    EXPECT_EQ(Outline(*root->RemoveChild(u"b")), "b(1)");
    EXPECT_EQ(Outline(*root), "r(a,b)");
    EXPECT_EQ(root->RemoveChild(u"x"), nullptr);
    EXPECT_EQ(Outline(*root), "r(a,b)");
}

TEST(DOMElementEditing, RemoveChildrenHandsOutAllOfThemInOrder)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a(b),c,d");
    AddError(Find(dom, "b"), "eb");
    const auto removed = dom.GetRoot()->RemoveChildren();
    ASSERT_EQ(removed.size(), 3U);
    EXPECT_FALSE(dom.GetRoot()->HasChildren());
    EXPECT_EQ(Outline(*removed[0]), "a(b)");
    EXPECT_EQ(Outline(*removed[1]), "c");
    EXPECT_EQ(Outline(*removed[2]), "d");
    for (const auto& child : removed) {
        EXPECT_EQ(child->GetParent(), dom.GetRoot());
        EXPECT_EQ(child->GetDOMManager(), &dom);
    }
    EXPECT_TRUE(removed[0]->HasErrors());
    EXPECT_TRUE(dom.GetRoot()->RemoveChildren().empty());
}

TEST(DOMElementEditing, RemoveIfEmptyTakesEmptyChildrenOnly)
{
    const auto root = MakeTree("r(text,attribute,child(x),empty)");
    Find(*root, "text").SetText(u"t");
    Find(*root, "attribute").SetAttribute(u"k", u"v");
    for (const char* name : {"text", "attribute", "child"}) {
        EXPECT_EQ(root->RemoveIfEmpty(Find(*root, name)), nullptr) << name;
        EXPECT_EQ(root->RemoveIfEmpty(TString(name)), nullptr) << name;
    }
    EXPECT_EQ(root->RemoveIfEmpty(u"none"), nullptr);
    EXPECT_EQ(Outline(*root), "r(text,attribute,child(x),empty)");
    EXPECT_EQ(root->RemoveIfEmpty(u"empty")->GetName(), TString(u"empty"));
    EXPECT_EQ(Outline(*root), "r(text,attribute,child(x))");
    EXPECT_NE(root->GetChild(u"child")->RemoveIfEmpty(Find(*root, "x")), nullptr);
    EXPECT_NE(root->RemoveIfEmpty(Find(*root, "child")), nullptr);
}

TEST(DOMElementEditing, RemoveIfEmptyByNameLooksAtTheFirstOnly)
{
    const auto root = MakeTree("r(a(x),a)");
    EXPECT_EQ(root->RemoveIfEmpty(u"a"), nullptr);
    EXPECT_EQ(Outline(*root), "r(a(x),a)");
}

TEST(DOMElementEditing, RemoveIfEmptyOfAStrangerIsAnAssertionOnlyWhenItIsEmpty)
{
    const auto root = MakeTree("r(a)");
    DOMElement stranger(TString(u"s"));
    ExpectAssertion([&] { root->RemoveIfEmpty(stranger); }, "i != m_children.end()");
    stranger.SetText(u"t");
    EXPECT_EQ(root->RemoveIfEmpty(stranger), nullptr);
}

// Depth

TEST(DOMElementEditing, DepthCostsNoStack)
{
    RunOnSmallStack([] {
        DOM from;
        DOM to;
        DOMElement* last = Deepen(*from.GetRoot(), c_deep);
        AddError(*last, "deep");
        EXPECT_TRUE(last->IsChildOf(*from.GetRoot()));
        EXPECT_EQ(last->GetParentAttr(u"k"), TString());
        EXPECT_TRUE(from.GetRoot()->HasErrors());
        EXPECT_TRUE(from.GetDocumentRoot()->HasErrors());

        from.GetDocumentRoot()->Move(*to.GetRoot(), nullptr);
        EXPECT_EQ(last->GetDOMManager(), &to);
        EXPECT_EQ(JoinErrors(to), "deep");
        from.GetRoot()->AdoptChildren(*to.GetRoot(), nullptr);
        EXPECT_EQ(last->GetDOMManager(), &from);
        EXPECT_EQ(JoinErrors(from), "deep");
        DOMElement detached(TString(u"d"));
        detached.Adopt(*from.GetDocumentRoot(), nullptr);
        EXPECT_EQ(last->GetDOMManager(), nullptr);
        EXPECT_TRUE(CatchAssertion([&] { detached.GetChildren()[0].Move(*last, nullptr); }));
        to.GetRoot()->AppendChild(detached.RemoveChild(u"e"));
        EXPECT_EQ(last->GetDOMManager(), &to);
        to.GetRoot()->RemoveChild(u"e").reset();
        EXPECT_FALSE(to.GetRoot()->HasChildren());
    });
}

TEST(DOMElementEditing, ADeepDocumentEndsOnASmallStack)
{
    RunOnSmallStack([] {
        auto dom = std::make_unique<DOM>();
        DOMElement* last = Deepen(*dom->GetRoot(), c_deep);
        const std::unique_ptr<DOMElement> removed = dom->GetRoot()->RemoveChild(u"e");
        dom.reset();
        EXPECT_EQ(last->GetDOMManager(), nullptr);
    });
}

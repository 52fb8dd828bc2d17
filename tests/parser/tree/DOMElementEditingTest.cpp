#include <kescorexml/DOMElement.h>

#include "support/SmallStack.h"
#include "support/TreeTesting.h"

#include <cstdint>
#include <functional>
#include <iterator>
#include <set>

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

void ExpectMissLogged(const LogCapture& log, std::size_t index)
{
    ASSERT_LT(index, log.Count());
    const LogCapture::Entry entry = log.At(index);
    EXPECT_EQ(static_cast<int>(entry.severity), 3);
    EXPECT_EQ(entry.message,
              TString(u"DOMElement was asked to insert before a non-existent child."));
    EXPECT_EQ(
        entry.info,
        TError::ErrorInfo(CorvinaError(0xD78DE10E, u"LogSite_MissingDomElement_0xD78DE10E"), 2, 2));
}

void ExpectAssertion(const std::function<void()>& work, const char* text)
{
    const auto assertion = CatchAssertion(work);
    ASSERT_TRUE(assertion.has_value()) << text;
    EXPECT_EQ(assertion->GetText(), TString(text));
    EXPECT_EQ(assertion->GetFile(), TString(u"modules/platform/kescorexml/main/parser/DOMElement"));
    EXPECT_TRUE(assertion->GetErrorInfo().GetError().GetIdentifier().startsWith(
        u"LogicException_LogicAssert_0x"));
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

// Moving

TEST(DOMElementEditing, MovePutsTheElementUnderItsNewParent)
{
    const LogCapture log;
    const auto root = MakeTree("r(a(x,y),b(z))");
    Find(*root, "y").Move(Find(*root, "b"), &Find(*root, "z"));
    EXPECT_EQ(Outline(*root), "r(a(x),b(y,z))");
    Find(*root, "x").Move(*root, nullptr);
    EXPECT_EQ(Outline(*root), "r(a,b(y,z),x)");
    Find(*root, "x").Move(*root, &Find(*root, "a"));
    EXPECT_EQ(Outline(*root), "r(x,a,b(y,z))");
    EXPECT_EQ(log.Count(), 0U);
    // It is no child any more when it is searched for.
    Find(*root, "x").Move(*root, &Find(*root, "x"));
    EXPECT_EQ(Outline(*root), "r(a,b(y,z),x)");
    ASSERT_EQ(log.Count(), 1U);
    ExpectMissLogged(log, 0);
}

TEST(DOMElementEditing, MoveNeedsAParentThatHoldsTheElement)
{
    const auto root = MakeTree("r(a)");
    DOMElement other(TString(u"o"));
    const auto assertion = CatchAssertion([&] { root->Move(other, nullptr); });
    ASSERT_TRUE(assertion.has_value());
    const auto removed = root->RemoveChild(u"a");
    ExpectAssertion([&] { removed->Move(other, nullptr); }, "i != m_children.end()");
    EXPECT_FALSE(other.HasChildren());
}

TEST(DOMElementEditing, MoveBetweenDocumentsTakesDiagnosticsAlong)
{
    DOM from;
    DOM to;
    AddChildren(*from.GetRoot(), "a(b)");
    AddError(Find(from, "b"), "eb");
    AddError(*from.GetRoot(), "root");
    Find(from, "a").Move(*to.GetRoot(), nullptr);
    EXPECT_EQ(JoinErrors(to), "root eb");
    EXPECT_EQ(JoinErrors(from), "");
    EXPECT_EQ(Find(to, "b").GetDOMManager(), &to);
}

TEST(DOMElementEditing, AdoptMovesAChildHere)
{
    const LogCapture log;
    const auto root = MakeTree("r(a(x),b(y))");
    DOMElement& b = Find(*root, "b");
    b.Adopt(Find(*root, "x"), &Find(*root, "y"));
    EXPECT_EQ(Outline(*root), "r(a,b(x,y))");
    b.Adopt(Find(*root, "a"), nullptr);
    EXPECT_EQ(Outline(*root), "r(b(x,y,a))");
    const DOMElement stranger(TString(u"s"));
    root->Adopt(Find(*root, "x"), &stranger);
    EXPECT_EQ(Outline(*root), "r(b(y,a),x)");
    EXPECT_EQ(log.Count(), 1U);
}

TEST(DOMElementEditing, AdoptOfAParentlessElementIsAnAssertion)
{
    DOMElement root(TString(u"r"));
    DOMElement orphan(TString(u"o"));
    ExpectAssertion([&] { root.Adopt(orphan, nullptr); },
                    "Cannot adopt a child without an existing parent.");
    ExpectAssertion([&] { root.Adopt(root, nullptr); },
                    "Cannot adopt a child without an existing parent.");
}

TEST(DOMElementEditing, AdoptOfAnOwnChildOrItselfDoesNothing)
{
    const LogCapture log;
    const auto root = MakeTree("r(a,b,c)");
    DOMElement& a = Find(*root, "a");
    root->Adopt(a, nullptr);
    root->Adopt(Find(*root, "c"), &a);
    const DOMElement stranger(TString(u"s"));
    root->Adopt(a, &stranger);
    a.Adopt(a, nullptr);
    EXPECT_EQ(Outline(*root), "r(a,b,c)");
    EXPECT_EQ(log.Count(), 0U);
}

TEST(DOMElementEditing, AdoptOfARemovedElementOfAnotherParentIsAnAssertion)
{
    const auto root = MakeTree("r(a,b)");
    const auto removed = root->RemoveChild(u"a");
    ExpectAssertion([&] { Find(*root, "b").Adopt(*removed, nullptr); }, "i != m_children.end()");
    // It still names this parent, so there is nothing to do.
    root->Adopt(*removed, nullptr);
    EXPECT_EQ(Outline(*root), "r(b)");
}

TEST(DOMElementEditing, AdoptChildrenTakesAllInOrder)
{
    const LogCapture log;
    const auto root = MakeTree("r(a(1(2),3,4),b(5,6))");
    DOMElement& a = Find(*root, "a");
    DOMElement& b = Find(*root, "b");
    b.AdoptChildren(a, nullptr);
    EXPECT_EQ(Outline(*root), "r(a,b(5,6,1(2),3,4))");
    a.AdoptChildren(b, nullptr);
    b.AddNewChild(u"7");
    DOMElement* eight = b.AddNewChild(u"8");
    b.AdoptChildren(a, eight);
    EXPECT_EQ(Outline(*root), "r(a,b(7,5,6,1(2),3,4,8))");
    for (const auto& child : b.GetChildren())
        EXPECT_EQ(child->GetParent(), &b);
    EXPECT_EQ(log.Count(), 0U);
}

TEST(DOMElementEditing, AdoptChildrenOfItselfOrALeafDoesNothing)
{
    const LogCapture log;
    const auto root = MakeTree("r(a,b)");
    const DOMElement stranger(TString(u"s"));
    root->AdoptChildren(*root, &stranger);
    root->AdoptChildren(Find(*root, "a"), &stranger);
    EXPECT_EQ(Outline(*root), "r(a,b)");
    EXPECT_EQ(log.Count(), 0U);
}

TEST(DOMElementEditing, AdoptChildrenOfADescendantIsFine)
{
    const auto root = MakeTree("r(a(b(c,d)))");
    DOMElement& a = Find(*root, "a");
    root->AdoptChildren(Find(*root, "b"), &a);
    EXPECT_EQ(Outline(*root), "r(c,d,a(b))");
}

TEST(DOMElementEditing, EachAssertionHasACodeOfItsOwnAndALine)
{
    const auto root = MakeTree("r(a)");
    DOMElement lonely(u"l");
    const std::function<void()> breaches[] = {
        [&] { root->InsertChild(nullptr, nullptr); },
        [&] { root->GetChildren()[0].AppendChild(root->RemoveChild(u"a")); },
        [&] { root->RemoveChild(lonely); },
        [&] { lonely.Move(*root, nullptr); },
        [&] { root->Adopt(lonely, nullptr); },
        [&] { lonely.MoveToFront(); },
    };
    std::set<std::uint32_t> codes;
    std::set<int> lines;
    for (const auto& breach : breaches) {
        const auto assertion = CatchAssertion(breach);
        ASSERT_TRUE(assertion.has_value()) << codes.size();
        EXPECT_EQ(assertion->GetFile(),
                  TString(u"modules/platform/kescorexml/main/parser/DOMElement"));
        EXPECT_GT(assertion->GetLine(), 0);
        codes.insert(assertion->GetErrorInfo().GetError().GetCode());
        lines.insert(assertion->GetLine());
    }
    EXPECT_EQ(codes.size(), std::size(breaches));
    EXPECT_EQ(lines.size(), std::size(breaches));
}

TEST(DOMElementEditing, AdoptChildrenLogsAMissForEachChild)
{
    const LogCapture log;
    const auto root = MakeTree("r(a(1,2,3),b(4))");
    const DOMElement stranger(TString(u"s"));
    Find(*root, "b").AdoptChildren(Find(*root, "a"), &stranger);
    EXPECT_EQ(Outline(*root), "r(a,b(4,1,2,3))");
    ASSERT_EQ(log.Count(), 3U);
    for (std::size_t i = 0; i < 3; ++i)
        ExpectMissLogged(log, i);
}

TEST(DOMElementEditing, AdoptChildrenInFrontOfOneOfThemIsAsInsertingOneByOne)
{
    for (std::size_t point = 0; point < 4; ++point) {
        const auto fast = MakeTree("r(a(1,2,3,4),b(x))");
        const auto slow = MakeTree("r(a(1,2,3,4),b(x))");
        std::size_t misses = 0;
        {
            const LogCapture log;
            DOMElement& a = Find(*slow, "a");
            const DOMElement* before = &a.GetChildren()[point];
            for (auto& child : a.RemoveChildren())
                Find(*slow, "b").InsertChild(std::move(child), before);
            misses = log.Count();
        }
        const LogCapture log;
        DOMElement& a = Find(*fast, "a");
        Find(*fast, "b").AdoptChildren(a, &a.GetChildren()[point]);
        EXPECT_EQ(Outline(*fast), Outline(*slow)) << point;
        EXPECT_EQ(log.Count(), misses) << point;
    }
}

TEST(DOMElementEditing, AdoptChildrenAcrossDocumentsTakesDiagnosticsAlong)
{
    DOM from;
    DOM to;
    AddChildren(*from.GetRoot(), "p(a(b),c)");
    for (const char* name : {"p", "a", "b", "c"})
        AddError(Find(from, name), name);
    AddError(*from.GetRoot(), "root");
    to.GetRoot()->AdoptChildren(Find(from, "p"), nullptr);
    EXPECT_EQ(JoinErrors(from), "root p");
    EXPECT_EQ(JoinErrors(to), "c a b");
    for (const char* name : {"a", "b", "c"})
        EXPECT_EQ(Find(to, name).GetDOMManager(), &to);
}

TEST(DOMElementEditing, AdoptChildrenOfAForeignRootTakesTheRootsDiagnosticsAlong)
{
    DOM from;
    DOM to;
    AddChildren(*from.GetRoot(), "a,b");
    AddError(*from.GetRoot(), "root");
    AddError(Find(from, "a"), "a");
    DOMElement* target = to.GetRoot()->AddNewChild(u"t");
    target->AdoptChildren(*from.GetRoot(), nullptr);
    EXPECT_FALSE(from.HasErrors());
    EXPECT_EQ(JoinErrors(to), "root a");
    EXPECT_TRUE(to.HasErrors(Find(to, "a")));
    EXPECT_FALSE(to.HasErrors(Find(to, "b")));
}

TEST(DOMElementEditing, AdoptChildrenBelowADetachedElementDetaches)
{
    DOM from;
    AddChildren(*from.GetRoot(), "a(b)");
    AddError(Find(from, "b"), "b");
    DOMElement detached(TString(u"d"));
    detached.AdoptChildren(*from.GetRoot(), nullptr);
    EXPECT_EQ(Find(detached, "b").GetDOMManager(), nullptr);
    EXPECT_TRUE(from.HasErrors());
    EXPECT_EQ(JoinErrors(from), "");
}

TEST(DOMElementEditing, MoveToFrontMakesTheFirstChild)
{
    const LogCapture log;
    const auto root = MakeTree("r(a,b,c)");
    Find(*root, "c").MoveToFront();
    EXPECT_EQ(Outline(*root), "r(c,a,b)");
    Find(*root, "a").MoveToFront();
    EXPECT_EQ(Outline(*root), "r(a,c,b)");
    EXPECT_EQ(log.Count(), 0U);
}

TEST(DOMElementEditing, MoveToFrontOfTheFirstOfSeveralMakesItTheLast)
{
    const LogCapture log;
    const auto root = MakeTree("r(a,b,c)");
    Find(*root, "a").MoveToFront();
    EXPECT_EQ(Outline(*root), "r(b,c,a)");
    ASSERT_EQ(log.Count(), 1U);
    ExpectMissLogged(log, 0);
}

TEST(DOMElementEditing, MoveToFrontOfAnOnlyChildChangesNothing)
{
    const LogCapture log;
    const auto root = MakeTree("r(a)");
    Find(*root, "a").MoveToFront();
    EXPECT_EQ(Outline(*root), "r(a)");
    EXPECT_EQ(log.Count(), 0U);
}

TEST(DOMElementEditing, MoveToFrontWithoutParentIsAnAssertion)
{
    DOMElement root(TString(u"r"));
    ExpectAssertion([&] { root.MoveToFront(); }, "parent");
}

// What is kept

TEST(DOMElementEditing, LocationsAndTheEncodedFlagSurviveEveryMove)
{
    const auto expectKept = [](const DOMElement& element) {
        EXPECT_EQ(element.GetStartLine(), 1);
        EXPECT_EQ(element.GetStartColumn(), 2);
        EXPECT_EQ(element.GetEndLine(), 3);
        EXPECT_EQ(element.GetEndColumn(), 4);
        EXPECT_TRUE(element.IsEncoded());
        EXPECT_EQ(element.GetText(), TString(u"&amp;"));
    };
    DOM dom;
    DOM other;
    AddChildren(*dom.GetRoot(), "p(a(b),c),q");
    for (const char* name : {"a", "b"}) {
        DOMElement& element = Find(dom, name);
        element.SetText(u"&amp;", true);
        element.SetElementStartLocation(1, 2);
        element.SetElementEndLocation(3, 4);
    }
    DOMElement& a = Find(dom, "a");
    DOMElement& b = Find(dom, "b");
    const auto expectBothKept = [&] {
        expectKept(a);
        expectKept(b);
    };
    std::unique_ptr<DOMElement> removed = Find(dom, "p").RemoveChild(a);
    expectBothKept();
    Find(dom, "q").InsertChild(std::move(removed), nullptr);
    expectBothKept();
    a.Move(*other.GetRoot(), nullptr);
    expectBothKept();
    Find(dom, "p").Adopt(a, &Find(dom, "c"));
    expectBothKept();
    a.MoveToFront();
    expectBothKept();
    Find(dom, "q").AdoptChildren(Find(dom, "p"), nullptr);
    expectBothKept();
    DOMElement detached(u"d");
    for (auto& child : Find(dom, "q").RemoveChildren())
        detached.AppendChild(std::move(child));
    expectBothKept();
}

TEST(DOMElementEditing, ANewChildOfALocatedParentHasNoLocation)
{
    DOMElement parent(u"p");
    parent.SetElementStartLocation(1, 2);
    parent.SetElementEndLocation(3, 4);
    parent.SetEncoded(true);
    for (const DOMElement* child : {parent.AddNewChild(u"a"), parent.GetOrNewChild(u"b")}) {
        EXPECT_EQ(child->GetStartLine(), 0);
        EXPECT_EQ(child->GetStartColumn(), 0);
        EXPECT_EQ(child->GetEndLine(), 0);
        EXPECT_EQ(child->GetEndColumn(), 0);
        EXPECT_FALSE(child->IsEncoded());
    }
    EXPECT_EQ(parent.GetStartLine(), 1);
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

#include <kescorexml/DOMElement.h>

#include "support/EditingChecks.h"

#include <cstdint>
#include <set>

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

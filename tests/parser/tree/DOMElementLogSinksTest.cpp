// Log sinks that change trees while a missing insertion point is reported.

#include <kescorexml/DOMElement.h>

#include "support/TreeTesting.h"

#include <functional>

namespace {

void ExpectOwnSubtree(const std::function<void()>& work)
{
    const auto assertion = CatchAssertion(work);
    ASSERT_TRUE(assertion.has_value());
    EXPECT_EQ(assertion->GetText(), TString(u"Cannot insert an element into its own subtree."));
}

/// Has `work` done whenever a missing insertion point is logged, with the number of the miss.
class WorkingLog
{
public:
    explicit WorkingLog(std::function<void(int)> work)
        : m_previous(TLog::SetSink([this, work = std::move(work)](const TLog::Record& record) {
              EXPECT_EQ(record.message,
                        TString(u"DOMElement was asked to insert before a non-existent child."));
              work(m_misses++);
          }))
    {
    }
    WorkingLog(const WorkingLog&) = delete;
    WorkingLog& operator=(const WorkingLog&) = delete;
    ~WorkingLog() { TLog::SetSink(m_previous); }

    int Misses() const { return m_misses; }

private:
    int m_misses = 0;
    TLog::Sink m_previous;
};

} // namespace

TEST(DOMElementLogSinks, AMissIsLoggedAfterTheAdoptionAndBeforeTheInsertion)
{
    DOM from;
    DOM to;
    AddChildren(*from.GetRoot(), "c(d)");
    AddChildren(*to.GetRoot(), "a");
    AddError(Find(from, "d"), "ed");
    AddError(*from.GetRoot(), "root");
    DOMElement& c = Find(from, "c");
    const DOMElement stranger(u"s");
    const WorkingLog log([&](int) {
        EXPECT_EQ(c.GetDOMManager(), &to);
        EXPECT_EQ(c.GetChildren()[0].GetDOMManager(), &to);
        EXPECT_TRUE(to.HasErrors(c));
        EXPECT_EQ(JoinErrors(to), "root") << "it is not in the tree yet";
        EXPECT_FALSE(from.HasErrors());
        EXPECT_EQ(Outline(*to.GetRoot()), "Document(a)");
        EXPECT_EQ(c.GetParent(), from.GetRoot());
        to.GetRoot()->AddNewChild(u"added");
    });
    to.GetRoot()->InsertChild(from.GetRoot()->RemoveChild(u"c"), &stranger);
    EXPECT_EQ(log.Misses(), 1);
    EXPECT_EQ(Outline(*to.GetRoot()), "Document(a,added,c(d))");
    EXPECT_EQ(JoinErrors(to), "root ed");
    EXPECT_EQ(c.GetParent(), to.GetRoot());
}

TEST(DOMElementLogSinks, ALogSinkMayFillShortenAndEmptyTheList)
{
    const DOMElement stranger(u"s");
    for (const std::size_t added : {1U, 2U, 3U, 50U}) {
        const auto root = MakeTree("r(a,b,c)");
        const WorkingLog log([&](int) {
            for (std::size_t i = 0; i < added; ++i)
                root->AddNewChild(u"x", &root->GetChildren().front());
        });
        const DOMElement* child = root->AddNewChild(u"new", &stranger);
        ASSERT_EQ(root->GetChildren().size(), 4 + added);
        EXPECT_EQ(&root->GetChildren().back(), child);
        EXPECT_EQ(root->GetChildren()[added].GetName(), TString(u"a"));
    }
    for (int left = 0; left < 3; ++left) {
        const auto root = MakeTree("r(a,b,c)");
        const WorkingLog log([&](int) {
            while (root->GetChildren().size() > static_cast<std::size_t>(left))
                root->RemoveChild(root->GetChildren().back());
            if (left == 0) {
                AddChildren(*root, "x");
                root->RemoveChildren();
            }
        });
        root->AddNewChild(u"new", &stranger);
        const char* expected[] = {"r(new)", "r(a,new)", "r(a,b,new)"};
        EXPECT_EQ(Outline(*root), expected[left]);
    }
}

TEST(DOMElementLogSinks, ALogSinkThatInsertsTheInsertionPointIsTooLateForTheFirst)
{
    const auto root = MakeTree("r(a)");
    std::unique_ptr<DOMElement> late = MakeTree("late");
    const DOMElement* before = late.get();
    const WorkingLog log([&](int) { root->AppendChild(std::move(late)); });
    root->AddNewChild(u"b", before);
    root->AddNewChild(u"c", before);
    EXPECT_EQ(log.Misses(), 1);
    EXPECT_EQ(Outline(*root), "r(a,c,late,b)");
}

TEST(DOMElementLogSinks, ALogSinkMayMissInsertionPointsItself)
{
    const auto root = MakeTree("r(a)");
    const DOMElement stranger(u"s");
    const WorkingLog log([&](int miss) {
        if (miss < 100)
            root->AddNewChild(TString::number(miss), &stranger);
    });
    root->AddNewChild(u"last", &stranger);
    EXPECT_EQ(log.Misses(), 101);
    ASSERT_EQ(root->GetChildren().size(), 102U);
    EXPECT_EQ(root->GetChildren()[1].GetName(), TString(u"99"));
    EXPECT_EQ(root->GetChildren()[101].GetName(), TString(u"last"));
}

TEST(DOMElementLogSinks, ALogSinkMayChangeTheListBetweenAdoptedChildren)
{
    const DOMElement stranger(u"s");
    {
        const auto root = MakeTree("r(p(1,2,3),q(a))");
        DOMElement& q = Find(*root, "q");
        const WorkingLog log([&](int miss) {
            EXPECT_FALSE(Find(*root, "p").HasChildren()) << "taken over first";
            q.AddNewChild(TString(u"x") + TString::number(miss));
        });
        q.AdoptChildren(Find(*root, "p"), &stranger);
        EXPECT_EQ(log.Misses(), 3);
        EXPECT_EQ(Outline(*root), "r(p,q(a,x0,1,x1,2,x2,3))");
    }
    {
        const auto root = MakeTree("r(p(1,2,3),q(a))");
        DOMElement& q = Find(*root, "q");
        const WorkingLog log([&](int) { q.RemoveChildren(); });
        q.AdoptChildren(Find(*root, "p"), &stranger);
        EXPECT_EQ(log.Misses(), 3);
        EXPECT_EQ(Outline(*root), "r(p,q(3))");
    }
    {
        const auto root = MakeTree("r(p(1,2,3,4),q(a))");
        DOMElement& q = Find(*root, "q");
        std::unique_ptr<DOMElement> late = MakeTree("late");
        const DOMElement* before = late.get();
        const WorkingLog log([&](int miss) {
            if (miss == 1)
                q.InsertChild(std::move(late), &Find(q, "a"));
        });
        q.AdoptChildren(Find(*root, "p"), before);
        EXPECT_EQ(log.Misses(), 2);
        EXPECT_EQ(Outline(*root), "r(p,q(3,4,late,a,1,2))");
    }
}

TEST(DOMElementLogSinks, ALogSinkMayFillTheListThatChildrenAreAdoptedFrom)
{
    const DOMElement stranger(u"s");
    const auto root = MakeTree("r(p(1,2),q)");
    DOMElement& p = Find(*root, "p");
    const WorkingLog log([&](int) { AddChildren(p, "x,y"); });
    Find(*root, "q").AdoptChildren(p, &stranger);
    EXPECT_EQ(Outline(*root), "r(p(x,y,x,y),q(1,2))");
}

TEST(DOMElementLogSinks, ALogSinkMayMoveTheParentToAnotherDocument)
{
    const DOMElement stranger(u"s");
    for (const bool isAdoption : {false, true}) {
        DOM from;
        DOM first;
        DOM second;
        AddChildren(*from.GetRoot(), "p(1(x),2,3)");
        AddChildren(*first.GetRoot(), "q");
        for (const char* name : {"x", "2", "3"})
            AddError(Find(from, name), name);
        DOMElement& q = Find(first, "q");
        const WorkingLog log([&](int miss) {
            if (miss == 0)
                q.Move(*second.GetRoot(), nullptr);
        });
        if (isAdoption)
            q.AdoptChildren(Find(from, "p"), &stranger);
        else
            q.InsertChild(Find(from, "p").RemoveChild(u"1"), &stranger);
        EXPECT_EQ(Outline(*second.GetRoot()),
                  isAdoption ? "Document(q(1(x),2,3))" : "Document(q(1(x)))");
        for (const char* name : {"q", "1", "x"})
            EXPECT_EQ(Find(second, name).GetDOMManager(), &second) << name;
        EXPECT_EQ(JoinErrors(second), isAdoption ? "3 2 x" : "x");
        EXPECT_FALSE(first.HasErrors());
        EXPECT_EQ(from.HasErrors(), !isAdoption);
    }
}

TEST(DOMElementLogSinks, ManyMissesAmongManyChildrenStayQuick)
{
    DOMElement from(u"from");
    DOMElement to(u"to");
    for (int i = 0; i < 100'000; ++i) {
        from.AddNewChild(u"a");
        to.AddNewChild(u"b");
    }
    const DOMElement stranger(u"s");
    const WorkingLog log([](int) {});
    to.AdoptChildren(from, &stranger);
    EXPECT_EQ(log.Misses(), 100'000);
    EXPECT_EQ(to.GetChildren().size(), 200'000U);
}

TEST(DOMElementLogSinks, ALogSinkThatPutsTheParentBelowTheChildGetsAnAssertion)
{
    DOM from;
    DOM to;
    AddChildren(*from.GetRoot(), "c(d)");
    AddChildren(*to.GetRoot(), "p(x)");
    AddError(Find(from, "d"), "ed");
    const DOMElement stranger(u"s");
    std::unique_ptr<DOMElement> removed = from.GetRoot()->RemoveChild(u"c");
    DOMElement& c = *removed;
    DOMElement& p = Find(to, "p");
    {
        const WorkingLog log([&](int) { p.Move(Find(c, "d"), nullptr); });
        ExpectOwnSubtree([&] { p.InsertChild(std::move(removed), &stranger); });
    }
    ASSERT_EQ(removed.get(), &c) << "the caller still owns it";
    EXPECT_EQ(Outline(c), "c(d(p(x)))");
    EXPECT_EQ(c.GetDOMManager(), &from);
    EXPECT_EQ(Find(c, "x").GetDOMManager(), &from);
    EXPECT_TRUE(c.HasErrors());
    EXPECT_FALSE(to.HasErrors());
    from.GetRoot()->AppendChild(std::move(removed));
    EXPECT_EQ(JoinErrors(from), "ed");
}

TEST(DOMElementLogSinks, AMoveThatALogSinkPreventsGoesBack)
{
    for (const int left : {0, 1, 2}) {
        const auto root = MakeTree("r(a,b,c(d),e)");
        DOMElement& c = Find(*root, "c");
        DOMElement target(u"t");
        DOMElement* t = target.AddNewChild(u"u");
        const DOMElement stranger(u"s");
        {
            const WorkingLog log([&](int) {
                t->Move(Find(c, "d"), nullptr);
                while (root->GetChildren().size() > static_cast<std::size_t>(left))
                    root->RemoveChild(root->GetChildren().back());
            });
            ExpectOwnSubtree([&] { c.Move(*t, &stranger); });
        }
        const char* expected[] = {"r(c(d(u)))", "r(a,c(d(u)))", "r(a,b,c(d(u)))"};
        EXPECT_EQ(Outline(*root), expected[left]);
        EXPECT_EQ(c.GetParent(), root.get());
        EXPECT_TRUE(t->IsChildOf(*root));
    }
}

TEST(DOMElementLogSinks, ChildrenWhoseAdoptionALogSinkPreventsGoBack)
{
    for (const bool isFilled : {false, true}) {
        DOM from;
        DOM to;
        AddChildren(*from.GetRoot(), "p(1,2(z),3)");
        AddChildren(*to.GetRoot(), "q(a)");
        AddError(Find(from, "3"), "e3");
        AddError(Find(from, "1"), "e1");
        DOMElement& p = Find(from, "p");
        DOMElement& q = Find(to, "q");
        DOMElement& z = Find(from, "z");
        const DOMElement stranger(u"s");
        {
            const WorkingLog log([&](int miss) {
                if (isFilled && miss == 0)
                    AddChildren(p, "x");
                if (miss == 1)
                    q.Move(z, nullptr);
            });
            ExpectOwnSubtree([&] { q.AdoptChildren(p, &stranger); });
        }
        EXPECT_EQ(Outline(p), isFilled ? "p(2(z(q(a,1))),3,x)" : "p(2(z(q(a,1))),3)");
        EXPECT_EQ(Outline(*to.GetRoot()), "Document");
        for (const auto& child : p.GetChildren())
            EXPECT_EQ(child->GetParent(), &p);
        for (const char* name : {"2", "3", "q", "1"})
            EXPECT_EQ(Find(from, name).GetDOMManager(), &from) << name;
        EXPECT_EQ(JoinErrors(from), "e3 e1");
    }
}

#include <kescorexml/DOM.h>

#include "support/TreeWithMessages.h"

#include <list>
#include <thread>

namespace {

class DOMDiagnosticsTransfer : public TreeWithMessages
{
};

} // namespace

// Adopting and copying

TEST_F(DOMDiagnosticsTransfer, AdoptingMovesTheOwnEntriesOfANodeToTheTarget)
{
    DOM other;
    DOMElement* target = other.GetRoot()->AddNewChild(u"t");
    Push("b", "b");
    Push("c", "c");
    Warn("b", "wb");
    other.AdoptErrorsAndWarningsForNode(At("b"), target);
    EXPECT_EQ(JoinErrors(other), "b");
    EXPECT_EQ(JoinWarnings(other), "wb");
    EXPECT_EQ(JoinErrors(m_dom), "c");
    EXPECT_EQ(JoinWarnings(m_dom), "");
    EXPECT_TRUE(other.HasErrors(*target));
}

TEST_F(DOMDiagnosticsTransfer, AdoptingWithoutTargetKeepsTheKey)
{
    DOM other;
    Push("b", "b");
    other.AdoptErrorsAndWarningsForNode(At("b"), nullptr);
    EXPECT_FALSE(m_dom.HasErrors());
    EXPECT_TRUE(other.HasErrors(At("b")));
    EXPECT_TRUE(other.HasErrors()) << "whatever tree the keys belong to";
    EXPECT_EQ(JoinErrors(other), "") << "but it is not in the other tree";
}

TEST_F(DOMDiagnosticsTransfer, AdoptingLosesMessagesWhenTheKeyHasSome)
{
    DOM other;
    DOMElement* target = other.GetRoot()->AddNewChild(u"t");
    AddError(*target, "existing");
    Push("b", "lost");
    Warn("b", "kept");
    other.AdoptErrorsAndWarningsForNode(At("b"), target);
    EXPECT_EQ(JoinErrors(other), "existing");
    EXPECT_EQ(JoinWarnings(other), "kept");
    EXPECT_FALSE(m_dom.HasErrors());
    EXPECT_FALSE(m_dom.HasWarnings());
}

TEST_F(DOMDiagnosticsTransfer, AdoptingNothingChangesNothing)
{
    DOM other;
    DOMElement* target = other.GetRoot()->AddNewChild(u"t");
    AddWarning(*target, "w");
    other.AdoptErrorsAndWarningsForNode(At("b"), target);
    EXPECT_FALSE(other.HasErrors());
    EXPECT_EQ(JoinWarnings(other), "w");
    const DOMElement detached(TString(u"d"));
    other.AdoptErrorsAndWarningsForNode(detached, target);
    other.CopyErrorsAndWarningsForNode(detached, target);
    EXPECT_FALSE(other.HasErrors());
    EXPECT_EQ(JoinWarnings(other), "w");
}

TEST_F(DOMDiagnosticsTransfer, AdoptingWithinADocumentMovesToTheTarget)
{
    Push("b", "b");
    Warn("b", "w");
    m_dom.AdoptErrorsAndWarningsForNode(At("b"), &At("e"));
    EXPECT_FALSE(m_dom.HasErrors(At("b")));
    EXPECT_TRUE(m_dom.HasErrors(At("e")));
    EXPECT_EQ(JoinErrors(m_dom), "b");
    EXPECT_EQ(JoinWarnings(m_dom), "w");
}

TEST_F(DOMDiagnosticsTransfer, AdoptingFromTheSameElementDropsTheMessages)
{
    // The key has an entry, so nothing is inserted, and then the source's entry is erased.
    Push("b", "b");
    m_dom.AdoptErrorsAndWarningsForNode(At("b"), nullptr);
    EXPECT_FALSE(m_dom.HasErrors());
}

TEST_F(DOMDiagnosticsTransfer, CopyingLeavesTheSource)
{
    DOM other;
    DOMElement* target = other.GetRoot()->AddNewChild(u"t");
    Push("b", "1");
    m_dom.InsertError(At("b"), u"0", MakeInfo(1), true);
    Push("c", "c");
    Warn("b", "w");
    other.CopyErrorsAndWarningsForNode(At("b"), target);
    EXPECT_EQ(JoinErrors(other), "0 1");
    EXPECT_EQ(JoinWarnings(other), "w");
    EXPECT_EQ(JoinErrors(m_dom), "0 1 c");
    AddError(*target, "2");
    EXPECT_EQ(JoinErrors(m_dom), "0 1 c");
    other.CopyErrorsAndWarningsForNode(At("c"), target);
    EXPECT_EQ(JoinErrors(other), "0 1 2") << "an entry that exists is kept";
    m_dom.CopyErrorsAndWarningsForNode(At("b"), &At("e"));
    EXPECT_EQ(JoinErrors(m_dom), "0 1 0 1 c");
    m_dom.CopyErrorsAndWarningsForNode(At("b"), nullptr);
    EXPECT_EQ(JoinErrors(m_dom), "0 1 0 1 c");
}

// Handing everything over

TEST_F(DOMDiagnosticsTransfer, MovingEverythingDiscardsWhatTheOtherHeld)
{
    DOM other;
    AddError(*other.GetRoot(), "discarded");
    AddWarning(*other.GetRoot(), "discarded");
    Push("b", "b");
    m_dom.MoveErrorsAndWarningsTo(other);
    EXPECT_FALSE(m_dom.HasErrors());
    EXPECT_FALSE(m_dom.HasWarnings());
    EXPECT_FALSE(other.HasWarnings());
    EXPECT_TRUE(other.HasErrors());
    EXPECT_TRUE(other.HasErrors(At("a")));
    EXPECT_FALSE(other.HasErrors(At("e")));
    EXPECT_EQ(JoinErrors(other), "") << "the keys still name the elements of the first document";
    std::list<TString> messages;
    other.GetErrors(*m_dom.GetRoot(), messages);
    EXPECT_EQ(JoinMessages(messages), "b");
}

TEST_F(DOMDiagnosticsTransfer, MovingEverythingToItselfLeavesNothing)
{
    Push("b", "b");
    Warn("b", "w");
    m_dom.MoveErrorsAndWarningsTo(m_dom);
    EXPECT_FALSE(m_dom.HasErrors());
    EXPECT_FALSE(m_dom.HasWarnings());
}

namespace {

/// What an element without parent is told about messages of elements that are gone: all of it.
void ExpectCounted(const DOM& dom)
{
    EXPECT_TRUE(dom.HasErrors());
    EXPECT_TRUE(dom.HasUnreportedErrors());
    EXPECT_TRUE(dom.HasCancelErrors());
    EXPECT_FALSE(dom.HasOnlyCancelErrors());
    EXPECT_TRUE(dom.HasWarnings());
    const DOMElement lonely(TString(u"l"));
    EXPECT_TRUE(dom.HasErrors(lonely));
    EXPECT_TRUE(dom.HasUnreportedErrors(lonely));
    EXPECT_TRUE(dom.HasCancelErrors(lonely));
    EXPECT_FALSE(dom.HasOnlyCancelErrors(lonely));
    EXPECT_TRUE(dom.HasWarnings(lonely));
}

/// And what one with parent, and each listing, is told: nothing.
void ExpectHidden(const DOM& dom, const DOMElement& inner)
{
    EXPECT_FALSE(dom.HasErrors(inner));
    EXPECT_FALSE(dom.HasUnreportedErrors(inner));
    EXPECT_FALSE(dom.HasCancelErrors(inner));
    EXPECT_TRUE(dom.HasOnlyCancelErrors(inner));
    EXPECT_FALSE(dom.HasWarnings(inner));
    EXPECT_EQ(JoinErrors(dom), "");
    EXPECT_EQ(JoinWarnings(dom), "");
}

void RecordAllKinds(const DOMElement& element)
{
    element.Error(u"cancelled", MakeInfo(1), true, true);
    element.Error(u"real", MakeInfo(1), false, false);
    element.Warning(u"w", MakeInfo(1));
}

} // namespace

TEST_F(DOMDiagnosticsTransfer, MovedMessagesCountWithoutParentEvenWhenTheirElementsAreGone)
{
    DOM other;
    DOMElement* inner = other.GetRoot()->AddNewChild(u"x");
    RecordAllKinds(At("c"));
    m_dom.MoveErrorsAndWarningsTo(other);
    ExpectCounted(other);
    m_dom.GetRoot()->RemoveChild(u"a").reset();
    ExpectCounted(other);
    ExpectHidden(other, *inner);
    EXPECT_FALSE(m_dom.HasErrors());
    other.ClearErrors(*inner);
    other.ClearWarnings(*inner);
    ExpectCounted(other);
    other.ClearErrors();
    EXPECT_FALSE(other.HasErrors());
    EXPECT_TRUE(other.HasWarnings());
    other.ClearWarnings();
    EXPECT_FALSE(other.HasWarnings());
}

TEST_F(DOMDiagnosticsTransfer, MovedMessagesCountEvenWhenTheirDocumentIsGone)
{
    DOM other;
    {
        DOM gone;
        AddChildren(*gone.GetRoot(), "x(y)");
        RecordAllKinds(Find(gone, "y"));
        RecordAllKinds(*gone.GetRoot());
        gone.MoveErrorsAndWarningsTo(other);
    }
    ExpectCounted(other);
    DOM last;
    other.MoveErrorsAndWarningsTo(last);
    ExpectCounted(last);
    ExpectHidden(last, *last.GetRoot()->AddNewChild(u"z"));
    EXPECT_FALSE(other.HasErrors());
    EXPECT_FALSE(other.HasWarnings());
    last.ClearAllErrorsAndWarnings();
    EXPECT_FALSE(last.HasErrors());
    EXPECT_FALSE(last.HasWarnings());
}

TEST_F(DOMDiagnosticsTransfer, CopiedMessagesCountEvenWhenTheirElementIsGone)
{
    DOM other;
    DOMElement* inner = other.GetRoot()->AddNewChild(u"x");
    RecordAllKinds(At("c"));
    other.CopyErrorsAndWarningsForNode(At("c"), nullptr);
    At("b").RemoveChild(At("c")).reset();
    EXPECT_FALSE(m_dom.HasErrors());
    EXPECT_FALSE(m_dom.HasWarnings());
    ExpectCounted(other);
    ExpectHidden(other, *inner);
}

TEST_F(DOMDiagnosticsTransfer, MessagesLeftBehindByADetachedElementOutliveIt)
{
    {
        DOMElement holder(TString(u"h"));
        RecordAllKinds(At("b"));
        holder.AppendChild(m_dom.GetRoot()->RemoveChild(u"a"));
        ExpectCounted(m_dom);
        ExpectHidden(m_dom, At("e"));
    }
    ExpectCounted(m_dom);
    ExpectHidden(m_dom, At("e"));
}

TEST_F(DOMDiagnosticsTransfer, AnElementAtAUsedAddressNeitherShowsNorTouchesAStrangersMessages)
{
    // Allocators like to give the same address again; whether they do is not for the test to say.
    DOM other;
    std::size_t reused = 0;
    for (int round = 0; round < 200; ++round) {
        DOM source;
        DOMElement* victim = source.GetRoot()->AddNewChild(u"victim");
        AddError(*victim, "stranger");
        AddWarning(*victim, "stranger");
        source.MoveErrorsAndWarningsTo(other);
        const void* address = victim;
        source.GetRoot()->RemoveChild(*victim).reset();

        DOMElement* fresh = other.GetRoot()->AddNewChild(u"fresh");
        reused += fresh == address ? 1U : 0U;
        EXPECT_FALSE(fresh->HasErrors());
        EXPECT_FALSE(fresh->HasWarnings());
        EXPECT_TRUE(other.HasUnreportedErrors());
        EXPECT_EQ(JoinErrors(other), "");
        // Nor do they stand in the way of its own, nor these in theirs.
        fresh->Error(u"own", MakeInfo(1), true, true);
        EXPECT_EQ(JoinErrors(other), "own");
        EXPECT_FALSE(fresh->HasUnreportedErrors());
        EXPECT_TRUE(other.HasUnreportedErrors());
        EXPECT_FALSE(other.HasOnlyCancelErrors());
        // Nor of those that it adopts.
        DOMElement* giver = other.GetRoot()->AddNewChild(u"giver");
        AddWarning(*giver, "adopted");
        other.AdoptErrorsAndWarningsForNode(*giver, fresh);
        EXPECT_EQ(JoinWarnings(other), "adopted");
        fresh->ClearErrors();
        EXPECT_TRUE(other.HasErrors());
        other.GetRoot()->RemoveChildren();
        EXPECT_TRUE(other.HasErrors());
        EXPECT_TRUE(other.HasWarnings());
    }
    RecordProperty("addresses used again", static_cast<int>(reused));
}

// Threads

TEST_F(DOMDiagnosticsTransfer, OppositeDirectionsDoNotDeadlock)
{
    constexpr int c_rounds = 2000;
    DOM other;
    DOMElement* theirs = other.GetRoot()->AddNewChild(u"t");
    DOMElement& mine = At("b");
    DOMElement& mineToo = At("c");
    DOMElement* theirsToo = other.GetRoot()->AddNewChild(u"u");
    const auto work = [](DOM& to, const DOMElement& node, const DOMElement& target) {
        for (int round = 0; round < c_rounds; ++round) {
            node.Error(u"m", MakeInfo(1), false, false);
            to.AdoptErrorsAndWarningsForNode(node, &target);
            to.CopyErrorsAndWarningsForNode(node, &target);
            to.EraseErrorsAndWarningsForNode(target);
        }
    };
    std::thread there([&] { work(other, mine, *theirs); });
    std::thread back([&] { work(m_dom, *theirsToo, mineToo); });
    there.join();
    back.join();
    EXPECT_FALSE(m_dom.HasErrors(mine));
    EXPECT_FALSE(other.HasErrors(*theirsToo));
}

TEST_F(DOMDiagnosticsTransfer, WholeDocumentsHandedOverInOppositeDirectionsDoNotDeadlock)
{
    DOM other;
    const auto work = [](DOM& from, DOM& to) {
        for (int round = 0; round < 2000; ++round) {
            from.MoveErrorsAndWarningsTo(to);
            to.HasErrors();
            static_cast<void>(to.GetErrors());
        }
    };
    Push("b", "b");
    std::thread there([&] { work(m_dom, other); });
    std::thread back([&] { work(other, m_dom); });
    there.join();
    back.join();
    std::list<TString> messages;
    m_dom.GetErrors(*m_dom.GetRoot(), messages);
    other.GetErrors(*m_dom.GetRoot(), messages);
    EXPECT_LE(messages.size(), 1U);
}

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElementTraversal.h>

#include "support/FailingAllocations.h"
#include "support/SmallStack.h"
#include "support/TreeTesting.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <list>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace {

class DOMDiagnostics : public testing::Test
{
protected:
    DOMDiagnostics() { AddChildren(*m_dom.GetRoot(), "a(b(c),d),e"); }

    DOMElement& At(const char* name) { return Find(m_dom, name); }
    void Push(const char* name, const char* message, bool reported = false, bool cancel = false)
    {
        m_dom.PushError(At(name), message, MakeInfo(1), reported, cancel);
    }
    void Warn(const char* name, const char* message)
    {
        m_dom.PushWarning(At(name), message, MakeInfo(2));
    }

    DOM m_dom;
};

} // namespace

// Recording and listing

TEST_F(DOMDiagnostics, PushedMessagesComeInOrderAndPrefixedOnesFirst)
{
    Push("b", "A");
    EXPECT_EQ(ErrorsOf(m_dom), "A");
    m_dom.InsertError(At("b"), u"B", MakeInfo(2), true);
    EXPECT_EQ(ErrorsOf(m_dom), "B A");
    Push("b", "C");
    m_dom.InsertError(At("b"), u"D", MakeInfo(3), true);
    EXPECT_EQ(ErrorsOf(m_dom), "D B A C");
    Warn("b", "A");
    m_dom.InsertWarning(At("b"), u"B", MakeInfo(2));
    Warn("b", "C");
    m_dom.InsertWarning(At("b"), u"D", MakeInfo(3));
    EXPECT_EQ(WarningsOf(m_dom), "D B A C");
}

TEST_F(DOMDiagnostics, AnInsertedErrorIsNoCancellation)
{
    m_dom.InsertError(At("b"), u"B", MakeInfo(2), true);
    EXPECT_TRUE(m_dom.HasErrors());
    EXPECT_FALSE(m_dom.HasUnreportedErrors());
    EXPECT_FALSE(m_dom.HasCancelErrors());
    EXPECT_FALSE(m_dom.HasOnlyCancelErrors());
    m_dom.InsertError(At("b"), u"B", MakeInfo(2), false);
    EXPECT_TRUE(m_dom.HasUnreportedErrors());
}

TEST_F(DOMDiagnostics, ListingsTakeChildrenFromTheLastToTheFirst)
{
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        Push(name, name);
        Warn(name, name);
    }
    m_dom.PushError(*m_dom.GetRoot(), u"root", MakeInfo(1), false, false);
    EXPECT_EQ(ErrorsOf(m_dom), "root e a d b c");
    EXPECT_EQ(WarningsOf(m_dom), "e a d b c");
    std::list<TString> messages{u"first"};
    m_dom.GetErrors(At("a"), messages);
    EXPECT_EQ(JoinMessages(messages), "first a d b c");
    messages.clear();
    m_dom.GetWarnings(At("b"), messages);
    EXPECT_EQ(JoinMessages(messages), "b c");
}

TEST_F(DOMDiagnostics, TheTemplateCollectsIntoThreeKindsOfContainer)
{
    m_dom.PushError(At("a"), u"1", MakeInfo(1), false, false);
    m_dom.PushError(At("b"), u"2", MakeInfo(2), false, false);
    m_dom.PushError(At("d"), u"3", MakeInfo(3), false, false);
    m_dom.PushWarning(At("a"), u"4", MakeInfo(4));
    m_dom.PushWarning(At("b"), u"5", MakeInfo(5));

    std::vector<TString> texts{u"0"};
    m_dom.GetErrors(At("a"), texts);
    EXPECT_EQ(JoinMessages(texts), "0 1 3 2");
    texts.clear();
    m_dom.GetWarnings(At("a"), texts);
    EXPECT_EQ(JoinMessages(texts), "4 5");
    std::list<TError::ErrorInfo> infos;
    m_dom.GetErrors(At("a"), infos);
    EXPECT_THAT(infos, testing::ElementsAre(MakeInfo(1), MakeInfo(3), MakeInfo(2)));
    infos.clear();
    m_dom.GetWarnings(At("b"), infos);
    EXPECT_THAT(infos, testing::ElementsAre(MakeInfo(5)));
    std::list<TString> list;
    m_dom.GetErrors<std::list<TString>>(At("b"), list);
    m_dom.GetWarnings<std::list<TString>>(At("b"), list);
    EXPECT_EQ(JoinMessages(list), "2 5");
    EXPECT_THAT(m_dom.GetMetadataForErrors(),
                testing::ElementsAre(MakeInfo(1), MakeInfo(3), MakeInfo(2)));
    EXPECT_THAT(m_dom.GetMetadataForWarnings(), testing::ElementsAre(MakeInfo(4), MakeInfo(5)));
}

TEST_F(DOMDiagnostics, ConcatenatedMessagesHaveLineFeedsBetweenNeighbours)
{
    EXPECT_EQ(m_dom.GetConcatenatedErrors(), TString());
    EXPECT_EQ(m_dom.GetConcatenatedWarnings(), TString());
    Push("a", "a");
    Warn("a", "x");
    EXPECT_EQ(m_dom.GetConcatenatedErrors(), TString(u"a"));
    Push("a", "b");
    Push("e", "");
    Warn("b", "y");
    EXPECT_EQ(m_dom.GetConcatenatedErrors(), TString(u"\na\nb"));
    EXPECT_EQ(m_dom.GetConcatenatedWarnings(), TString(u"x\ny"));
}

TEST_F(DOMDiagnostics, AnUnknownElementHasNoEntry)
{
    Push("a", "e");
    Warn("a", "w");
    DOM other;
    const DOMElement* stranger = other.GetRoot()->AddNewChild(u"s");
    EXPECT_FALSE(m_dom.HasErrors(*stranger));
    EXPECT_FALSE(m_dom.HasWarnings(*stranger));
    EXPECT_TRUE(m_dom.HasOnlyCancelErrors(*stranger));
    std::list<TString> messages;
    m_dom.GetErrors(*stranger, messages);
    m_dom.GetWarnings(*stranger, messages);
    EXPECT_TRUE(messages.empty());
    m_dom.ClearErrors(*stranger);
    m_dom.ClearWarnings(*stranger);
    m_dom.EraseErrorsAndWarningsForNode(*stranger);
    EXPECT_EQ(ErrorsOf(m_dom) + WarningsOf(m_dom), "ew");
}

// Questions about subtrees

TEST_F(DOMDiagnostics, HasErrorsAsksTheElementAndItsDescendants)
{
    Push("b", "m");
    for (const char* name : {"a", "b"})
        EXPECT_TRUE(m_dom.HasErrors(At(name))) << name;
    for (const char* name : {"c", "d", "e"})
        EXPECT_FALSE(m_dom.HasErrors(At(name))) << name;
    EXPECT_TRUE(m_dom.HasErrors());
    EXPECT_TRUE(m_dom.HasErrors(*m_dom.GetRoot()));
}

TEST_F(DOMDiagnostics, HasUnreportedErrorsLooksAtTheFlag)
{
    Push("b", "m", true);
    EXPECT_TRUE(m_dom.HasErrors());
    EXPECT_FALSE(m_dom.HasUnreportedErrors());
    Push("c", "m", false);
    EXPECT_TRUE(m_dom.HasUnreportedErrors());
    EXPECT_TRUE(m_dom.HasUnreportedErrors(At("a")));
    EXPECT_TRUE(m_dom.HasUnreportedErrors(At("c")));
    EXPECT_FALSE(m_dom.HasUnreportedErrors(At("d")));
}

TEST_F(DOMDiagnostics, HasUnreportedErrorsFindsAnyQualifyingMessageOfAnEntry)
{
    Push("b", "1", true);
    Push("b", "2", false);
    Push("b", "3", true);
    EXPECT_TRUE(m_dom.HasUnreportedErrors(At("b")));
    m_dom.ClearErrors();
    Push("b", "1", true);
    m_dom.InsertError(At("b"), u"0", MakeInfo(1), false);
    EXPECT_TRUE(m_dom.HasUnreportedErrors(At("b")));
}

TEST_F(DOMDiagnostics, HasCancelErrorsLooksAtTheFlag)
{
    Push("b", "m");
    EXPECT_FALSE(m_dom.HasCancelErrors());
    Push("c", "m", false, true);
    EXPECT_TRUE(m_dom.HasCancelErrors());
    EXPECT_TRUE(m_dom.HasCancelErrors(At("b")));
    EXPECT_FALSE(m_dom.HasCancelErrors(At("d")));
}

TEST_F(DOMDiagnostics, HasOnlyCancelErrorsIsTrueWithoutAnyError)
{
    EXPECT_TRUE(m_dom.HasOnlyCancelErrors());
    EXPECT_TRUE(m_dom.HasOnlyCancelErrors(At("a")));
    Push("c", "m", false, true);
    EXPECT_TRUE(m_dom.HasOnlyCancelErrors());
    EXPECT_TRUE(m_dom.HasOnlyCancelErrors(At("c")));
    EXPECT_TRUE(m_dom.HasOnlyCancelErrors(At("e"))) << "a subtree without error at all";
    Push("d", "m", false, false);
    EXPECT_FALSE(m_dom.HasOnlyCancelErrors());
    EXPECT_FALSE(m_dom.HasOnlyCancelErrors(At("a")));
    EXPECT_FALSE(m_dom.HasOnlyCancelErrors(At("d")));
    EXPECT_TRUE(m_dom.HasOnlyCancelErrors(At("b")));
    Push("c", "m", false, false);
    EXPECT_FALSE(m_dom.HasOnlyCancelErrors(At("b"))) << "one of two is a real error";
}

TEST_F(DOMDiagnostics, AParentlessElementCoversTheWholeRegistry)
{
    Push("b", "m", false, true);
    Warn("b", "w");
    const DOMElement lonely(TString(u"l"));
    EXPECT_TRUE(m_dom.HasErrors(lonely));
    EXPECT_TRUE(m_dom.HasUnreportedErrors(lonely));
    EXPECT_TRUE(m_dom.HasCancelErrors(lonely));
    EXPECT_TRUE(m_dom.HasOnlyCancelErrors(lonely));
    EXPECT_TRUE(m_dom.HasWarnings(lonely));
    Push("b", "m");
    EXPECT_FALSE(m_dom.HasOnlyCancelErrors(lonely));
    std::list<TString> messages;
    m_dom.GetErrors(lonely, messages);
    EXPECT_TRUE(messages.empty()) << "a listing walks the tree";
    m_dom.ClearErrors(lonely);
    EXPECT_FALSE(m_dom.HasErrors());
    m_dom.ClearWarnings(lonely);
    EXPECT_FALSE(m_dom.HasWarnings());
}

TEST_F(DOMDiagnostics, HasWarningsAsksTheElementAndItsDescendants)
{
    EXPECT_FALSE(m_dom.HasWarnings());
    Warn("b", "w");
    EXPECT_TRUE(m_dom.HasWarnings());
    for (const char* name : {"a", "b"})
        EXPECT_TRUE(m_dom.HasWarnings(At(name))) << name;
    for (const char* name : {"c", "d", "e"})
        EXPECT_FALSE(m_dom.HasWarnings(At(name))) << name;
    EXPECT_FALSE(m_dom.HasErrors());
}

TEST_F(DOMDiagnostics, QuestionsAboutASubtreeAgreeWithItsListing)
{
    std::mt19937 random(7);
    for (const std::size_t recorded : {0U, 1U, 5U, 40U, 200U}) {
        DOM dom;
        std::vector<DOMElement*> elements{dom.GetRoot()};
        while (elements.size() < 200) {
            // Some subtrees are deep and some are wide.
            const std::size_t most = elements.size() % 3 == 0 ? elements.size() : 4;
            elements.push_back(
                elements[elements.size() - 1 - random() % std::min(most, elements.size())]
                    ->AddNewChild(u"a"));
        }
        std::set<const DOMElement*> cancelled;
        for (std::size_t i = 0; i < recorded; ++i) {
            DOMElement& element = *elements[random() % elements.size()];
            const bool cancel = random() % 2 == 0;
            element.Error(u"e", TError::ErrorInfo::NoError(), false, cancel);
            if (cancel)
                cancelled.insert(&element);
        }
        for (const DOMElement* element : elements) {
            std::list<TString> messages;
            dom.GetErrors(*element, messages);
            EXPECT_EQ(element->HasErrors(), !messages.empty());
            bool isCancelled = false;
            for (const DOMElement& below : DOMElementTraversal::ConstPreorderTraversal(*element))
                isCancelled = isCancelled || cancelled.contains(&below);
            EXPECT_EQ(element->HasCancelErrors(), isCancelled);
        }
    }
}

TEST_F(DOMDiagnostics, AQuestionAboutASubtreeCountsWhatWasRemovedFromIt)
{
    // Among many errors elsewhere, so that a walk over the subtree ends before all are looked at.
    for (int i = 0; i < 200; ++i) {
        if (i == 100)
            AddError(*At("c").AddNewChild(u"below"), "m");
        AddError(*At("e").AddNewChild(u"x"), "m");
    }
    std::unique_ptr<DOMElement> removed = At("b").RemoveChild(At("c"));
    EXPECT_TRUE(removed->IsChildOf(At("a")));
    EXPECT_TRUE(m_dom.HasErrors(At("a")));
    EXPECT_TRUE(m_dom.HasErrors(At("b")));
    EXPECT_FALSE(m_dom.HasErrors(At("d")));

    DOMElement* inserted = At("d").InsertChild(std::move(removed), nullptr);
    EXPECT_FALSE(m_dom.HasErrors(At("b")));
    EXPECT_TRUE(m_dom.HasErrors(At("d")));

    removed = At("d").RemoveChild(*inserted);
    EXPECT_TRUE(m_dom.HasErrors(At("d")));
    removed.reset();
    EXPECT_FALSE(m_dom.HasErrors(At("d")));
    EXPECT_FALSE(m_dom.HasErrors(At("a")));
}

TEST_F(DOMDiagnostics, QuestionsAboutManyEntriesInADeepTreeStayQuick)
{
    DOM dom;
    DOMElement* side = dom.GetRoot()->AddNewChild(u"side");
    DOMElement* last = dom.GetRoot();
    for (int i = 0; i < 100'000; ++i) {
        last = last->AddNewChild(u"e");
        AddError(*last, "m");
        AddWarning(*last, "m");
    }
    // Each of the messages is on the way down, none of them on this side.
    EXPECT_FALSE(dom.HasErrors(*side));
    EXPECT_FALSE(dom.HasWarnings(*side));
    EXPECT_TRUE(dom.HasOnlyCancelErrors(*side));
    EXPECT_TRUE(dom.HasErrors(*last));
    EXPECT_EQ(dom.GetErrors().size(), 100'000U);
}

// Clearing

TEST_F(DOMDiagnostics, ClearErrorsTakesTheSubtree)
{
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        Push(name, name);
        Warn(name, name);
    }
    m_dom.ClearErrors(At("b"));
    EXPECT_EQ(ErrorsOf(m_dom), "e a d");
    EXPECT_EQ(WarningsOf(m_dom), "e a d b c");
    m_dom.ClearWarnings(At("a"));
    EXPECT_EQ(WarningsOf(m_dom), "e");
    EXPECT_EQ(ErrorsOf(m_dom), "e a d");
    m_dom.ClearErrors();
    EXPECT_FALSE(m_dom.HasErrors());
    EXPECT_TRUE(m_dom.HasWarnings());
    m_dom.ClearWarnings();
    EXPECT_FALSE(m_dom.HasWarnings());
}

TEST_F(DOMDiagnostics, ClearingTheRootClearsWhatIsInNoTree)
{
    Push("b", "m");
    Warn("b", "w");
    const auto removed = m_dom.GetRoot()->RemoveChild(u"a");
    EXPECT_TRUE(m_dom.HasErrors());
    m_dom.ClearErrors(*m_dom.GetRoot());
    m_dom.ClearWarnings(*m_dom.GetRoot());
    EXPECT_FALSE(removed->HasErrors());
    EXPECT_FALSE(removed->HasWarnings());
}

TEST_F(DOMDiagnostics, EraseTakesTheOwnEntriesOnly)
{
    for (const char* name : {"a", "b", "c"}) {
        Push(name, name);
        Warn(name, name);
    }
    m_dom.EraseErrorsAndWarningsForNode(At("b"));
    EXPECT_EQ(ErrorsOf(m_dom), "a c");
    EXPECT_EQ(WarningsOf(m_dom), "a c");
    m_dom.ClearAllErrorsAndWarnings();
    EXPECT_FALSE(m_dom.HasErrors());
    EXPECT_FALSE(m_dom.HasWarnings());
}

// Adopting and copying

TEST_F(DOMDiagnostics, AdoptingMovesTheOwnEntriesOfANodeToTheTarget)
{
    DOM other;
    DOMElement* target = other.GetRoot()->AddNewChild(u"t");
    Push("b", "b");
    Push("c", "c");
    Warn("b", "wb");
    other.AdoptErrorsAndWarningsForNode(At("b"), target);
    EXPECT_EQ(ErrorsOf(other), "b");
    EXPECT_EQ(WarningsOf(other), "wb");
    EXPECT_EQ(ErrorsOf(m_dom), "c");
    EXPECT_EQ(WarningsOf(m_dom), "");
    EXPECT_TRUE(other.HasErrors(*target));
}

TEST_F(DOMDiagnostics, AdoptingWithoutTargetKeepsTheKey)
{
    DOM other;
    Push("b", "b");
    other.AdoptErrorsAndWarningsForNode(At("b"), nullptr);
    EXPECT_FALSE(m_dom.HasErrors());
    EXPECT_TRUE(other.HasErrors(At("b")));
    EXPECT_TRUE(other.HasErrors()) << "whatever tree the keys belong to";
    EXPECT_EQ(ErrorsOf(other), "") << "but it is not in the other tree";
}

TEST_F(DOMDiagnostics, AdoptingLosesMessagesWhenTheKeyHasSome)
{
    DOM other;
    DOMElement* target = other.GetRoot()->AddNewChild(u"t");
    AddError(*target, "existing");
    Push("b", "lost");
    Warn("b", "kept");
    other.AdoptErrorsAndWarningsForNode(At("b"), target);
    EXPECT_EQ(ErrorsOf(other), "existing");
    EXPECT_EQ(WarningsOf(other), "kept");
    EXPECT_FALSE(m_dom.HasErrors());
    EXPECT_FALSE(m_dom.HasWarnings());
}

TEST_F(DOMDiagnostics, AdoptingNothingChangesNothing)
{
    DOM other;
    DOMElement* target = other.GetRoot()->AddNewChild(u"t");
    AddWarning(*target, "w");
    other.AdoptErrorsAndWarningsForNode(At("b"), target);
    EXPECT_FALSE(other.HasErrors());
    EXPECT_EQ(WarningsOf(other), "w");
    const DOMElement detached(TString(u"d"));
    other.AdoptErrorsAndWarningsForNode(detached, target);
    other.CopyErrorsAndWarningsForNode(detached, target);
    EXPECT_FALSE(other.HasErrors());
    EXPECT_EQ(WarningsOf(other), "w");
}

TEST_F(DOMDiagnostics, AdoptingWithinADocumentMovesToTheTarget)
{
    Push("b", "b");
    Warn("b", "w");
    m_dom.AdoptErrorsAndWarningsForNode(At("b"), &At("e"));
    EXPECT_FALSE(m_dom.HasErrors(At("b")));
    EXPECT_TRUE(m_dom.HasErrors(At("e")));
    EXPECT_EQ(ErrorsOf(m_dom), "b");
    EXPECT_EQ(WarningsOf(m_dom), "w");
}

TEST_F(DOMDiagnostics, AdoptingFromTheSameElementDropsTheMessages)
{
    // The key has an entry, so nothing is inserted, and then the source's entry is erased.
    Push("b", "b");
    m_dom.AdoptErrorsAndWarningsForNode(At("b"), nullptr);
    EXPECT_FALSE(m_dom.HasErrors());
}

TEST_F(DOMDiagnostics, CopyingLeavesTheSource)
{
    DOM other;
    DOMElement* target = other.GetRoot()->AddNewChild(u"t");
    Push("b", "1");
    m_dom.InsertError(At("b"), u"0", MakeInfo(1), true);
    Push("c", "c");
    Warn("b", "w");
    other.CopyErrorsAndWarningsForNode(At("b"), target);
    EXPECT_EQ(ErrorsOf(other), "0 1");
    EXPECT_EQ(WarningsOf(other), "w");
    EXPECT_EQ(ErrorsOf(m_dom), "0 1 c");
    AddError(*target, "2");
    EXPECT_EQ(ErrorsOf(m_dom), "0 1 c");
    other.CopyErrorsAndWarningsForNode(At("c"), target);
    EXPECT_EQ(ErrorsOf(other), "0 1 2") << "an entry that exists is kept";
    m_dom.CopyErrorsAndWarningsForNode(At("b"), &At("e"));
    EXPECT_EQ(ErrorsOf(m_dom), "0 1 0 1 c");
    m_dom.CopyErrorsAndWarningsForNode(At("b"), nullptr);
    EXPECT_EQ(ErrorsOf(m_dom), "0 1 0 1 c");
}

// Handing everything over

TEST_F(DOMDiagnostics, MovingEverythingDiscardsWhatTheOtherHeld)
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
    EXPECT_EQ(ErrorsOf(other), "") << "the keys still name the elements of the first document";
    std::list<TString> messages;
    other.GetErrors(*m_dom.GetRoot(), messages);
    EXPECT_EQ(JoinMessages(messages), "b");
}

TEST_F(DOMDiagnostics, MovingEverythingToItselfLeavesNothing)
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
    EXPECT_EQ(ErrorsOf(dom), "");
    EXPECT_EQ(WarningsOf(dom), "");
}

void RecordAllKinds(const DOMElement& element)
{
    element.Error(u"cancelled", MakeInfo(1), true, true);
    element.Error(u"real", MakeInfo(1), false, false);
    element.Warning(u"w", MakeInfo(1));
}

} // namespace

TEST_F(DOMDiagnostics, MovedMessagesCountWithoutParentEvenWhenTheirElementsAreGone)
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

TEST_F(DOMDiagnostics, MovedMessagesCountEvenWhenTheirDocumentIsGone)
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

TEST_F(DOMDiagnostics, CopiedMessagesCountEvenWhenTheirElementIsGone)
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

TEST_F(DOMDiagnostics, MessagesLeftBehindByADetachedElementOutliveIt)
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

TEST_F(DOMDiagnostics, AnElementAtAUsedAddressNeitherShowsNorTouchesAStrangersMessages)
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
        EXPECT_EQ(ErrorsOf(other), "");
        // Nor do they stand in the way of its own, nor these in theirs.
        fresh->Error(u"own", MakeInfo(1), true, true);
        EXPECT_EQ(ErrorsOf(other), "own");
        EXPECT_FALSE(fresh->HasUnreportedErrors());
        EXPECT_TRUE(other.HasUnreportedErrors());
        EXPECT_FALSE(other.HasOnlyCancelErrors());
        // Nor of those that it adopts.
        DOMElement* giver = other.GetRoot()->AddNewChild(u"giver");
        AddWarning(*giver, "adopted");
        other.AdoptErrorsAndWarningsForNode(*giver, fresh);
        EXPECT_EQ(WarningsOf(other), "adopted");
        fresh->ClearErrors();
        EXPECT_TRUE(other.HasErrors());
        other.GetRoot()->RemoveChildren();
        EXPECT_TRUE(other.HasErrors());
        EXPECT_TRUE(other.HasWarnings());
    }
    RecordProperty("addresses used again", static_cast<int>(reused));
}

// What a message is, besides its text

namespace {

/// One message of each kind of error, with a record of its own, and a warning.
void RecordWithEveryFlag(const DOMElement& element)
{
    element.Error(u"open", MakeInfo(11), false, false);
    element.Error(u"reported", MakeInfo(12), true, false);
    element.Error(u"cancelled", MakeInfo(13), false, true);
    element.Error(u"both", MakeInfo(14), true, true);
    element.Warning(u"w1", MakeInfo(15));
    element.Warning(u"w2", MakeInfo(16));
}

/// Takes the messages of `element` apart, which hold what RecordWithEveryFlag has recorded.
void ExpectEveryFlag(const DOM& dom, const DOMElement& element)
{
    std::list<TString> texts;
    dom.GetErrors(element, texts);
    EXPECT_EQ(JoinMessages(texts), "open reported cancelled both");
    std::list<TError::ErrorInfo> infos;
    dom.GetErrors(element, infos);
    EXPECT_THAT(infos,
                testing::ElementsAre(MakeInfo(11), MakeInfo(12), MakeInfo(13), MakeInfo(14)));
    texts.clear();
    dom.GetWarnings(element, texts);
    EXPECT_EQ(JoinMessages(texts), "w1 w2");
    infos.clear();
    dom.GetWarnings(element, infos);
    EXPECT_THAT(infos, testing::ElementsAre(MakeInfo(15), MakeInfo(16)));
}

/// Records one error, lets `transfer` take it to the element that it returns, and asks there.
void ExpectFlagsSurvive(
    const std::function<const DOMElement&(DOM& from, DOMElement& source, DOM& to)>& transfer)
{
    for (const bool reported : {false, true}) {
        for (const bool cancel : {false, true}) {
            DOM from;
            DOM to;
            AddChildren(*from.GetRoot(), "p(source)");
            AddChildren(*to.GetRoot(), "q");
            DOMElement& source = Find(from, "source");
            source.Error(u"m", MakeInfo(21), reported, cancel);
            const DOMElement& target = transfer(from, source, to);
            EXPECT_TRUE(to.HasErrors(target));
            EXPECT_EQ(to.HasUnreportedErrors(target), !reported);
            EXPECT_EQ(to.HasCancelErrors(target), cancel);
            EXPECT_EQ(to.HasOnlyCancelErrors(target), cancel);
        }
    }
    DOM from;
    DOM to;
    AddChildren(*from.GetRoot(), "p(source)");
    AddChildren(*to.GetRoot(), "q");
    RecordWithEveryFlag(Find(from, "source"));
    ExpectEveryFlag(to, transfer(from, Find(from, "source"), to));
}

} // namespace

TEST_F(DOMDiagnostics, FlagsAndRecordsSurviveAdoption)
{
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        const DOMElement& target = Find(to, "q");
        to.AdoptErrorsAndWarningsForNode(source, &target);
        return target;
    });
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        to.AdoptErrorsAndWarningsForNode(source, nullptr);
        return source;
    });
}

TEST_F(DOMDiagnostics, FlagsAndRecordsSurviveInsertionIntoAnotherDocument)
{
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        source.Move(Find(to, "q"), nullptr);
        return source;
    });
    ExpectFlagsSurvive([](DOM& from, DOMElement& source, DOM& to) -> const DOMElement& {
        Find(to, "q").AdoptChildren(Find(from, "p"), nullptr);
        return source;
    });
}

TEST_F(DOMDiagnostics, FlagsAndRecordsSurviveCopies)
{
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        const DOMElement& target = Find(to, "q");
        to.CopyErrorsAndWarningsForNode(source, &target);
        return target;
    });
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        return *Find(to, "q").AppendChild(std::make_unique<DOMElement>(source));
    });
    ExpectFlagsSurvive([](DOM& from, DOMElement&, DOM& to) -> const DOMElement& {
        return Find(*Find(to, "q").AppendChild(std::make_unique<DOMElement>(Find(from, "p"))),
                    "source");
    });
}

TEST_F(DOMDiagnostics, FlagsAndRecordsSurviveAssignmentAndDeepCopy)
{
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        DOMElement& target = Find(to, "q");
        target = source;
        return target;
    });
    ExpectFlagsSurvive([](DOM& from, DOMElement&, DOM& to) -> const DOMElement& {
        Find(to, "q") = Find(from, "p");
        return Find(to, "source");
    });
    ExpectFlagsSurvive([](DOM& from, DOMElement&, DOM& to) -> const DOMElement& {
        to.DeepCopy(from);
        return Find(to, "source");
    });
}

TEST_F(DOMDiagnostics, FlagsAndRecordsSurviveTheMoveOfEverything)
{
    ExpectFlagsSurvive([](DOM& from, DOMElement& source, DOM& to) -> const DOMElement& {
        from.MoveErrorsAndWarningsTo(to);
        return source;
    });
}

TEST_F(DOMDiagnostics, DestroyedElementsLeaveNothingInTheRegistry)
{
    std::ptrdiff_t before = 0;
    for (int round = 0; round < 100; ++round) {
        DOMElement* element = At("a").AddNewChild(u"x");
        AddError(*element, "e");
        AddWarning(*element, "w");
        At("a").RemoveChild(*element).reset();
        // The first round makes room in the registries.
        if (round == 0)
            before = CountLiveAllocations();
    }
    EXPECT_EQ(CountLiveAllocations(), before);
}

// Threads

TEST_F(DOMDiagnostics, MayBeRecordedAndReadFromSeveralThreads)
{
    constexpr int c_rounds = 500;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this, i] {
            const char* names[] = {"a", "b", "c", "d"};
            const DOMElement& element = At(names[i]);
            for (int round = 0; round < c_rounds; ++round) {
                element.Error(u"e", MakeInfo(1), false, false);
                element.PrefixWarning(u"w", MakeInfo(1));
                At("e").Error(u"shared", MakeInfo(1), false, false);
                element.HasErrors();
                m_dom.HasUnreportedErrors();
                std::list<TString> messages;
                element.GetWarnings(messages);
                m_dom.AddDataSourceRename(TString::number(round), u"x");
                m_dom.RenameDataSource(u"1");
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(m_dom.GetErrors().size(), 8U * c_rounds);
    EXPECT_EQ(m_dom.GetWarnings().size(), 4U * c_rounds);
}

TEST_F(DOMDiagnostics, OppositeDirectionsDoNotDeadlock)
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

TEST_F(DOMDiagnostics, WholeDocumentsHandedOverInOppositeDirectionsDoNotDeadlock)
{
    DOM other;
    const auto work = [](DOM& from, DOM& to) {
        for (int round = 0; round < 2000; ++round) {
            from.MoveErrorsAndWarningsTo(to);
            to.HasErrors();
            to.GetErrors();
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

// Depth

TEST_F(DOMDiagnostics, DepthCostsNoStack)
{
    RunOnSmallStack([] {
        DOM dom;
        DOMElement* side = dom.GetRoot()->AddNewChild(u"side");
        DOMElement* last = dom.GetRoot();
        for (int i = 0; i < 1'000'000; ++i)
            last = last->AddNewChild(u"e");
        AddError(*last, "deep");
        AddWarning(*last, "deep");
        EXPECT_TRUE(dom.HasErrors(Find(dom, "e")));
        EXPECT_FALSE(dom.HasErrors(*side));
        EXPECT_FALSE(dom.HasWarnings(*side));
        EXPECT_EQ(ErrorsOf(dom), "deep");
        dom.ClearErrors(Find(dom, "e"));
        EXPECT_FALSE(dom.HasErrors());
    });
}

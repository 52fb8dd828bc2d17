#include <kescorexml/DOM.h>
#include <kescorexml/DOMElementTraversal.h>

#include "support/FailingAllocations.h"
#include "support/SmallStack.h"
#include "support/TreeWithMessages.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <list>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace {

class DOMDiagnostics : public TreeWithMessages
{
};

} // namespace

// Recording and listing

TEST_F(DOMDiagnostics, PushedMessagesComeInOrderAndPrefixedOnesFirst)
{
    Push("b", "A");
    EXPECT_EQ(JoinErrors(m_dom), "A");
    m_dom.InsertError(At("b"), u"B", MakeInfo(2), true);
    EXPECT_EQ(JoinErrors(m_dom), "B A");
    Push("b", "C");
    m_dom.InsertError(At("b"), u"D", MakeInfo(3), true);
    EXPECT_EQ(JoinErrors(m_dom), "D B A C");
    Warn("b", "A");
    m_dom.InsertWarning(At("b"), u"B", MakeInfo(2));
    Warn("b", "C");
    m_dom.InsertWarning(At("b"), u"D", MakeInfo(3));
    EXPECT_EQ(JoinWarnings(m_dom), "D B A C");
}

TEST_F(DOMDiagnostics, WhatProgramsRecordHasNoPosition)
{
    Push("b", "Error(1,2): A (id: x)");
    Warn("b", "W");
    const std::vector<XMLDiagnostic> errors = m_dom.GetErrorDiagnostics();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].GetKind(), XMLDiagnostic::Kind::Error);
    EXPECT_EQ(errors[0].GetText(), u"Error(1,2): A (id: x)");
    EXPECT_EQ(errors[0].GetMessage(), u"Error(1,2): A (id: x)");
    EXPECT_EQ(errors[0].GetLine(), 0);
    EXPECT_EQ(errors[0].GetColumn(), 0);
    EXPECT_TRUE(errors[0].GetId().IsEmpty());
    const std::vector<XMLDiagnostic> warnings = m_dom.GetWarningDiagnostics();
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_EQ(warnings[0].GetKind(), XMLDiagnostic::Kind::Warning);
    EXPECT_EQ(warnings[0].GetMessage(), u"W");
}

TEST_F(DOMDiagnostics, ListsDiagnosticsInTheOrderOfMessages)
{
    for (const char* name : {"c", "e", "a", "b", "d"}) {
        Push(name, name);
        Warn(name, name);
    }
    m_dom.InsertError(At("a"), u"first", MakeInfo(2), true);
    const auto messagesOf = [](const std::vector<XMLDiagnostic>& diagnostics) {
        std::list<TString> messages;
        for (const XMLDiagnostic& diagnostic : diagnostics)
            messages.push_back(diagnostic.GetMessage());
        return messages;
    };
    EXPECT_EQ(messagesOf(m_dom.GetErrorDiagnostics()), m_dom.GetErrors());
    EXPECT_EQ(messagesOf(m_dom.GetWarningDiagnostics()), m_dom.GetWarnings());
    std::list<TString> below;
    m_dom.GetErrors(At("b"), below);
    EXPECT_EQ(below.size(), 2u);
    EXPECT_EQ(messagesOf(m_dom.GetErrorDiagnostics(At("b"))), below);
    EXPECT_EQ(messagesOf(m_dom.GetWarningDiagnostics(At("b"))), below);
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
    EXPECT_EQ(JoinErrors(m_dom), "root e a d b c");
    EXPECT_EQ(JoinWarnings(m_dom), "e a d b c");
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
    EXPECT_EQ(JoinErrors(m_dom) + JoinWarnings(m_dom), "ew");
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
    EXPECT_EQ(JoinErrors(m_dom), "e a d");
    EXPECT_EQ(JoinWarnings(m_dom), "e a d b c");
    m_dom.ClearWarnings(At("a"));
    EXPECT_EQ(JoinWarnings(m_dom), "e");
    EXPECT_EQ(JoinErrors(m_dom), "e a d");
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
    EXPECT_EQ(JoinErrors(m_dom), "a c");
    EXPECT_EQ(JoinWarnings(m_dom), "a c");
    m_dom.ClearAllErrorsAndWarnings();
    EXPECT_FALSE(m_dom.HasErrors());
    EXPECT_FALSE(m_dom.HasWarnings());
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
                static_cast<void>(m_dom.RenameDataSource(u"1"));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(m_dom.GetErrors().size(), 8U * c_rounds);
    EXPECT_EQ(m_dom.GetWarnings().size(), 4U * c_rounds);
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
        EXPECT_EQ(JoinErrors(dom), "deep");
        dom.ClearErrors(Find(dom, "e"));
        EXPECT_FALSE(dom.HasErrors());
    });
}

#include "scanner/ParseBudget.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

/// What a step may take for nothing.
constexpr std::size_t c_free = 32 * 1024;

/// The budget of a parse that validates a document type and may do `work`.
ParseBudget MakeBudget(std::uint64_t work)
{
    ParseLimits limits;
    limits.SetValidationWorkLimit(0, work);
    ParseBudget budget;
    budget.Begin(limits, 0, true);
    budget.BeginDocumentType();
    return budget;
}

} // namespace

TEST(ParseBudget, AllocationsOfOneStepDoNotCountForTheNext)
{
    ParseBudget budget = MakeBudget(0);
    for (int step = 0; step < 3; ++step) {
        budget.AddMemory(c_free);
        budget.ReturnMemory(c_free);
        budget.SettleMemory();
    }
    budget.AddMemory(c_free);
    EXPECT_THROW(budget.AddMemory(1), LimitExceeded);
}

TEST(ParseBudget, NodesOfOneStepDoNotCountForTheNext)
{
    // The n-th node of a step counts half of n.
    ParseBudget budget = MakeBudget(0);
    for (int step = 0; step < 3; ++step) {
        for (int node = 0; node < 360; ++node)
            budget.AddModelNode();
        budget.SettleMemory();
    }
    const auto addMany = [&] {
        for (int node = 0; node < 370; ++node)
            budget.AddModelNode();
    };
    EXPECT_THROW(addMany(), LimitExceeded);
}

TEST(ParseBudget, HalfOfWhatAStepAllocatesBeyondWhatIsFreeIsWork)
{
    ParseBudget budget = MakeBudget(100);
    budget.AddMemory(c_free + 80);
    budget.SettleMemory();
    // 60 of the 100 are left, whatever a step allocates for nothing.
    budget.AddMemory(c_free + 60);
    EXPECT_THROW(budget.AddMemory(1), LimitExceeded);
}

TEST(ParseBudget, StepsCountOnceTheDocumentTypeHasBegunAndUntilTheEnd)
{
    ParseLimits limits;
    limits.SetValidationWorkLimit(0, 0);
    ParseBudget budget;
    budget.Begin(limits, 0, true);
    budget.AddMemory(2 * c_free);
    budget.BeginDocumentType();
    EXPECT_THROW(budget.AddMemory(2 * c_free), LimitExceeded);
    budget.BeginDocumentType();
    budget.EndMemory();
    budget.AddMemory(2 * c_free);
    // Where nothing is validated, memory is no work.
    budget.Begin(limits, 0, false);
    budget.BeginDocumentType();
    budget.AddMemory(2 * c_free);
}

TEST(ParseBudget, WhatIsDeclaredCountsUnderTheNameOfItsKind)
{
    ParseLimits limits;
    limits.SetNameCollisionLimit(1);
    ParseBudget budget;
    budget.Begin(limits, 0, false);
    // One of each kind may have the name; another whose hash is the same may not.
    budget.DeclareEntity(u"bA");
    budget.DeclareEntity(u"%bA");
    budget.MeetName(NameKind::Notation, u"bA");
    budget.DeclareElement(u"bA", u"ANY");
    budget.DeclareAttribute(u"bA", u"bA", u"CDATA");
    budget.DeclareAttribute(u"x", u"bA", u"CDATA");
    EXPECT_THROW(budget.DeclareEntity(u"ag"), LimitExceeded);
    EXPECT_THROW(budget.DeclareEntity(u"%ag"), LimitExceeded);
    EXPECT_THROW(budget.DeclareElement(u"ag", u"ANY"), LimitExceeded);
    EXPECT_THROW(budget.DeclareAttribute(u"x", u"ag", u"CDATA"), LimitExceeded);
    EXPECT_TRUE(budget.HasFailed());
}

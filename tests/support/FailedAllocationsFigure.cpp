// Says, when all tests have run, how many allocations they have had fail: a figure of SECURITY.md.

#include "support/FailingAllocations.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

class Figure : public testing::Environment
{
    void TearDown() override
    {
        if (CountFailedAllocations() != 0)
            std::cout << CountFailedAllocations() << " allocations failed\n";
    }
};

[[maybe_unused]] const testing::Environment* const s_figure =
    testing::AddGlobalTestEnvironment(new Figure);

} // namespace

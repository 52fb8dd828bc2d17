#include "base/StackGuard.h"

#include "support/SmallStack.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <ucontext.h>

namespace {

constexpr std::size_t c_moreThanAnyStack = std::numeric_limits<std::size_t>::max() / 2;

constexpr std::size_t c_depthLimit = 100'000'000;

/// Goes deeper until RequireRoom throws, and returns how deep it was: less than the limit.
std::size_t Descend(std::size_t depth, std::string& message)
{
    if (depth == c_depthLimit)
        return depth;
    volatile char frame[1024];
    frame[0] = 0;
    try {
        StackGuard::RequireRoom("too deep for this test");
        const std::size_t reached = Descend(depth + 1, message);
        return reached + static_cast<std::size_t>(frame[0]);
    } catch (const std::length_error& error) {
        message = error.what();
        return depth;
    }
}

ucontext_t s_caller;
ucontext_t s_other;
bool s_hasRoom = false;

void AskOnAnotherStack()
{
    s_hasRoom = StackGuard::HasRoom(c_moreThanAnyStack);
    swapcontext(&s_other, &s_caller);
}

} // namespace

TEST(StackGuard, KnowsHowMuchIsLeftOfTheStack)
{
    EXPECT_TRUE(StackGuard::HasRoom());
    EXPECT_TRUE(StackGuard::HasRoom(64 * 1024));
    EXPECT_FALSE(StackGuard::HasRoom(c_moreThanAnyStack));
}

TEST(StackGuard, KeepsAQuarterOfASmallStackInReserve)
{
    constexpr std::size_t c_kibibyte = 1024;
    RunOnSmallStack(
        [] {
            EXPECT_TRUE(StackGuard::HasRoom(100 * c_kibibyte));
            EXPECT_FALSE(StackGuard::HasRoom(150 * c_kibibyte));
        },
        200 * c_kibibyte);
}

TEST(StackGuard, EndsARecursionBeforeTheStackEnds)
{
    std::string message;
    const std::size_t depth = Descend(0, message);
    EXPECT_GT(depth, 16U);
    EXPECT_LT(depth, c_depthLimit);
    EXPECT_EQ(message, "too deep for this test");
}

// A coroutine's stack lies elsewhere: nothing is known of where it ends.
TEST(StackGuard, LeavesAStackOfTheProgramsOwnUnguarded)
{
    constexpr std::size_t c_bytes = std::size_t{256} * 1024;
    const auto stack = std::make_unique<std::byte[]>(c_bytes);
    ASSERT_EQ(getcontext(&s_other), 0);
    s_other.uc_stack.ss_sp = stack.get();
    s_other.uc_stack.ss_size = c_bytes;
    s_other.uc_link = nullptr;
    makecontext(&s_other, AskOnAnotherStack, 0);
    ASSERT_EQ(swapcontext(&s_caller, &s_other), 0);
    EXPECT_TRUE(s_hasRoom);
}

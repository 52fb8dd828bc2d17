#include "scanner/ScannerMemory.h"

#include "support/FailingAllocations.h"

#include <gtest/gtest.h>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/QName.hpp>
#include <xercesc/validators/common/ContentSpecNode.hpp>

namespace {

using xercesc::ContentSpecNode;
using xercesc::OutOfMemoryException;
using xercesc::QName;

/// The stack with which a destructor takes a content model apart, and the next one.
constexpr XMLSize_t c_stackSize = 10 * sizeof(void*);
constexpr XMLSize_t c_nextStackSize = 12 * sizeof(void*);

class ScannerMemoryTest : public testing::Test
{
protected:
    ScannerMemoryTest()
    {
        xercesc::XMLPlatformUtils::Initialize();
        ParseLimits limits;
        limits.SetNameCollisionLimit(0);
        m_budget.Begin(limits, 0, true);
        m_budget.BeginDocumentType();
    }
    ~ScannerMemoryTest() override { xercesc::XMLPlatformUtils::Terminate(); }

    ContentSpecNode* MakeNode(ScannerMemory& memory, const char16_t* name)
    {
        return new (&memory) ContentSpecNode(new (&memory) QName(name, 0, &memory), false, &memory);
    }

    ParseBudget m_budget;
};

} // namespace

TEST_F(ScannerMemoryTest, MeetsTheNameOfAModelNodeWithTheNextNode)
{
    ScannerMemory memory(m_budget);
    ContentSpecNode* const node = MakeNode(memory, u"a");
    EXPECT_THROW((void)MakeNode(memory, u"b"), LimitExceeded);
    delete node;
}

TEST_F(ScannerMemoryTest, MeetsNoNameOfANodeThatIsGone)
{
    ScannerMemory memory(m_budget);
    delete MakeNode(memory, u"a");
    delete MakeNode(memory, u"b");
    EXPECT_FALSE(memory.HasRefused());
}

TEST_F(ScannerMemoryTest, MeetsNoNamesOnceMemoryHasFailed)
{
    ScannerMemory memory(m_budget);
    // Now there is a reserve for as many.
    delete MakeNode(memory, u"a");
    const FailingAllocations none(0);
    EXPECT_THROW((void)memory.allocate(1), OutOfMemoryException);
    ContentSpecNode* const node = MakeNode(memory, u"a");
    delete MakeNode(memory, u"b");
    delete node;
}

TEST_F(ScannerMemoryTest, GivesDestructorsTheirStackWhenThereIsNoOtherMemory)
{
    ScannerMemory memory(m_budget);
    const FailingAllocations none(0);
    void* const stack = memory.allocate(c_stackSize);
    void* const next = memory.allocate(c_nextStackSize);
    EXPECT_FALSE(memory.HasRefused());
    memory.deallocate(stack);
    memory.deallocate(next);
}

TEST_F(ScannerMemoryTest, TakesNothingForAStackOnceThatOneIsGone)
{
    ScannerMemory memory(m_budget);
    const FailingAllocations none(0);
    memory.deallocate(memory.allocate(c_stackSize));
    EXPECT_THROW((void)memory.allocate(c_nextStackSize), OutOfMemoryException);
    EXPECT_TRUE(memory.HasRefused());
}

#include "writing/CompleteStringFormatter.h"

#include "support/FailingAllocations.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

// With sanitizers, the heap of texts is another one.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

TEST(CompleteStringFormatter, GivesNoTextThatLacksACloseTag)
{
    CompleteStringFormatter formatter(TString(), false);
    const TString name(std::u16string(100'000, u'n'));
    formatter.OutputOpenTag(name, {});
    {
        const FailingAllocations failing(0);
        EXPECT_THROW(formatter.OutputCloseTag(name), std::bad_alloc);
    }
    EXPECT_THROW(static_cast<void>(formatter.GetOutput()), std::bad_alloc);
}

#endif

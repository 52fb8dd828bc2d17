#include <kescorexml/detail/DiagnosticList.h>

#include "support/FailingAllocations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

XMLDiagnostic Make(const char16_t* text)
{
    return {XMLDiagnostic::Kind::Error, text, u"id", 1, 2};
}

} // namespace

TEST(DiagnosticList, WhoHasAskedForMessagesSeesThemChange)
{
    const auto info = TError::ErrorInfo::NoError();
    DiagnosticList list;
    const std::vector<TString>& messages = list.GetMessages();
    EXPECT_THAT(messages, IsEmpty());
    list.Add(Make(u"a"), info);
    EXPECT_THAT(messages, ElementsAre(u"Error(1,2): a (id: id)"));
    list.Clear();
    EXPECT_THAT(messages, IsEmpty());
    list.Add(Make(u"b"), info);
    EXPECT_THAT(messages, ElementsAre(u"Error(1,2): b (id: id)"));
    EXPECT_EQ(&messages, &list.GetMessages());
}

TEST(DiagnosticList, MakesMessagesOfWhatWasAddedBefore)
{
    DiagnosticList list;
    list.Add(Make(u"a"), {});
    list.Add(Make(u"b"), {});
    EXPECT_THAT(list.GetMessages(),
                ElementsAre(u"Error(1,2): a (id: id)", u"Error(1,2): b (id: id)"));
}

TEST(DiagnosticList, AddsBothOrNeitherWhenMemoryRunsOut)
{
    for (const bool keepsMessages : {false, true}) {
        bool hasFailed = true;
        for (std::size_t allowed = 0; hasFailed; ++allowed) {
            DiagnosticList list;
            if (keepsMessages)
                static_cast<void>(list.GetMessages());
            XMLDiagnostic diagnostic = Make(u"a");
            bool hasThrown = false;
            {
                const FailingAllocations failing(allowed);
                try {
                    list.Add(std::move(diagnostic), {});
                } catch (const std::bad_alloc&) {
                    hasThrown = true;
                }
                hasFailed = FailingAllocations::HasFailed();
            }
            EXPECT_EQ(hasThrown, hasFailed);
            const std::size_t count = hasThrown ? 0 : 1;
            EXPECT_EQ(list.GetDiagnostics().size(), count);
            EXPECT_EQ(list.GetMetadata().size(), count);
            EXPECT_EQ(list.GetMessages().size(), count);
        }
    }
}

TEST(DiagnosticList, GivesBackTheMemoryOfWhatItForgets)
{
    DiagnosticList list;
    list.Add(Make(u"a"), {});
    static_cast<void>(list.GetMessages());
    list.Clear();
    EXPECT_EQ(list.GetDiagnostics().capacity(), 0u);
    EXPECT_EQ(list.GetMetadata().capacity(), 0u);
    EXPECT_EQ(list.GetMessages().capacity(), 0u);
}

// Small documents with each of their bytes changed, and random ones: nobody can tell which scanner
// has read them.

#include "support/BothScanners.h"
#include "support/Effort.h"
#include "support/ExpectSame.h"
#include "support/OddDocuments.h"
#include "support/RandomDocument.h"

#include <gtest/gtest.h>

#include <string_view>

using namespace std::string_view_literals;

namespace {

constexpr std::string_view c_nastyBytes =
    "\0\x01\t\n\r !\"&'-/:;<=>?[]ax1\x7F\x80\xBF\xC3\xE2\xED\xEF\xF0\xFF"sv;

std::string ReplaceLineEnds(const std::string& text, std::string_view lineEnd)
{
    std::string changed;
    for (const char c : text) {
        if (c == '\n')
            changed += lineEnd;
        else if (c != '\r')
            changed += c;
    }
    return changed;
}

} // namespace

TEST(DirectEquivalence, DocumentsCutAnywhereAreTheSame)
{
    BothScanners both;
    for (const std::string& document : OddDocuments::Small()) {
        for (std::size_t length = 0; length < document.size(); ++length) {
            const std::string cut = document.substr(0, length);
            ASSERT_TRUE(ExpectSame(both.CompareSome(cut, length)));
            ASSERT_TRUE(ExpectSame(both.CompareSome(document.substr(length), length)));
        }
    }
}

TEST(DirectEquivalence, DocumentsWithAnyByteReplacedAreTheSame)
{
    BothScanners both;
    std::size_t turn = 0;
    for (const std::string& document : OddDocuments::Small()) {
        for (std::size_t i = 0; i < document.size(); i += Effort::c_stride) {
            for (const char byte : c_nastyBytes) {
                std::string changed = document;
                changed[i] = byte;
                ASSERT_TRUE(ExpectSame(both.CompareSome(changed, ++turn)));
            }
        }
    }
}

TEST(DirectEquivalence, DocumentsWithAByteInsertedOrTakenAwayAreTheSame)
{
    BothScanners both;
    std::size_t turn = 0;
    for (const std::string& document : OddDocuments::Small()) {
        for (std::size_t i = 0; i < document.size(); i += Effort::c_stride) {
            std::string shorter = document;
            shorter.erase(i, 1);
            ASSERT_TRUE(ExpectSame(both.CompareSome(shorter, ++turn)));
            for (const char byte : " \n\r<>&'-]:\xC3"sv) {
                std::string longer = document;
                longer.insert(i, 1, byte);
                ASSERT_TRUE(ExpectSame(both.CompareSome(longer, ++turn)));
            }
        }
    }
}

TEST(DirectEquivalence, AllLineEndsAreTheSame)
{
    BothScanners both;
    for (const OddDocuments::Document& document : OddDocuments::All()) {
        if (document.bytes.find_first_of("\r\n") == std::string::npos)
            continue;
        for (const std::string_view lineEnd : {"\n"sv, "\r\n"sv, "\r"sv, "\n\r"sv, "\r\r\n"sv,
                                               "\xC2\x85"sv, "\xE2\x80\xA8"sv, "\n\n\n"sv}) {
            const std::string changed = ReplaceLineEnds(document.bytes, lineEnd);
            ASSERT_TRUE(ExpectSame(both.CompareEvents(changed)));
            ASSERT_TRUE(
                ExpectSame(both.CompareDom(changed, BothScanners::Source::Binary, {true, true})));
        }
    }
}

TEST(DirectEquivalence, PairsOfDocumentsOneBehindTheOtherAreTheSame)
{
    BothScanners both;
    for (const std::string& first : OddDocuments::Small()) {
        for (const std::string& second : OddDocuments::Small())
            ASSERT_TRUE(ExpectSame(both.CompareEvents(first + second)));
    }
}

TEST(DirectEquivalence, RandomDocumentsAreTheSame)
{
    BothScanners both;
    for (const std::size_t faults : {0U, 1U, 5U}) {
        RandomDocument random(20261122, faults);
        for (std::size_t turn = 0; turn < Effort::Scale(4000); ++turn)
            ASSERT_TRUE(ExpectSame(both.CompareSome(random.Next(), turn)));
    }
}

TEST(DirectEquivalence, RandomDocumentsWithRandomSinksAreTheSame)
{
    RandomDocument documents(7, 1);
    RandomBytes random(8);
    BothScanners both;
    for (int i = 0; i < 3000; ++i) {
        SinkPlan plan;
        const std::size_t event = 1 + random.Below(20);
        if (random.Below(2) == 0)
            plan.stopFrom = event;
        else
            plan.throwFrom = event;
        plan.stopsOnce = random.Below(2) == 0;
        plan.throwsWhenAsked = random.Below(2) == 0;
        plan.thrown = static_cast<SinkPlan::Thrown>(random.Below(4));
        const std::string document = documents.Next();
        ASSERT_TRUE(ExpectSame(both.CompareEvents(document, BothScanners::Source::Utf8, plan)));
    }
}

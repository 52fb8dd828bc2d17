// Nothing is read in front of a document or behind it, wherever it lies.

#include "direct/DirectScanning.h"
#include "support/GuardedString.h"
#include "support/OddDocuments.h"
#include "support/ParseOutcome.h"
#include "support/ParseTrace.h"
#include "support/Repeat.h"

#include <kescorexml/DOMParser.h>

#include <gtest/gtest.h>

namespace {

/// The parsers are used again, so that most of the time is spent with documents.
class PageEnds
{
public:
    void ExpectSame(const std::string& bytes)
    {
        for (const auto place : {GuardedBytes::Place::Start, GuardedBytes::Place::End}) {
            GuardedString guarded(bytes, place);
            if (bytes.size() >= 16) {
                ASSERT_TRUE(guarded.IsGuarded());
            }
            ParseTrace expected;
            TraceDocument(expected, *m_domParser.ParseXmlString(bytes, u"id"));
            ParseTrace trace;
            TraceDocument(trace, *m_domParser.ParseXmlString(guarded.Get(), u"id"));
            EXPECT_EQ(trace.Difference(expected, "guarded", "elsewhere"), "") << ToReadable(bytes);

            const ParseOutcome outcome = ParseUtf8(bytes);
            Utf8InputSource source(std::move(guarded.Get()), u"id", false);
            EXPECT_EQ(ParseSource(source), outcome) << ToReadable(bytes);
        }
    }

private:
    const DirectScanning::Switch m_switched{true};
    const DOMParser m_domParser;
};

} // namespace

TEST(DirectPageEnd, AGuardedStringIsGuarded)
{
    {
        GuardedString end("0123456789abcdef", GuardedBytes::Place::End);
        EXPECT_TRUE(end.IsGuarded());
        EXPECT_DEATH(static_cast<void>(*const_cast<volatile char*>(end.Get().data() + 17)), "");
        const std::string moved = std::move(end.Get());
        EXPECT_EQ(moved, "0123456789abcdef");
    }
    GuardedString start("0123456789abcdefg", GuardedBytes::Place::Start);
    EXPECT_TRUE(start.IsGuarded());
    EXPECT_DEATH(static_cast<void>(*const_cast<volatile char*>(start.Get().data() - 1)), "");
}

TEST(DirectPageEnd, OddDocumentsAreReadWithinTheirBytes)
{
    PageEnds pages;
    for (const OddDocuments::Document& document : OddDocuments::All())
        pages.ExpectSame(document.bytes);
}

TEST(DirectPageEnd, DocumentsCutAnywhereAreReadWithinTheirBytes)
{
    PageEnds pages;
    for (const std::string& document : OddDocuments::Small()) {
        for (std::size_t length = 16; length < document.size(); ++length)
            pages.ExpectSame(document.substr(0, length));
    }
}

TEST(DirectPageEnd, EndsAtEachDistanceFromTheEndOfABlockAreReadWithinTheirBytes)
{
    PageEnds pages;
    for (std::size_t length = 0; length < 140; ++length) {
        const std::string run = Repeat("x", length);
        for (const std::string& document :
             {"<a>" + run + "</a>", "<a>" + run, "<a b='" + run + "'/>", "<a b='" + run,
              "<a><!--" + run, "<a><![CDATA[" + run, "<" + run + "a", "<a " + run + "b",
              "<a/>" + Repeat("\n", length), "<a>" + run + "\xF0\x9F\x98", "<a>" + run + "\xC3",
              "<a>" + run + "&", "<a>" + run + "&#x1", "<a>" + run + "<", "<a>" + run + "]]",
              "<?p " + run, "<!DOCTYPE a" + run, "<a>" + run + "\r"})
            pages.ExpectSame(document);
    }
}

// Long texts, values and names with something special in them at the ends of the blocks in which
// scanners work.

#include "support/BothScanners.h"
#include "support/ExpectSame.h"
#include "support/RandomBytes.h"

#include <gtest/gtest.h>

#include <string_view>

using namespace std::string_view_literals;

namespace {

constexpr std::size_t c_sizes[] = {15,   16,    17,    31,    32,    33,    63,   64,   65,
                                   127,  128,   255,   256,   1023,  1024,  1025, 4095, 4096,
                                   4097, 16383, 16384, 16385, 49151, 49152, 49153};

constexpr std::string_view c_special[] = {"\r\n"sv,
                                          "\r"sv,
                                          "\n"sv,
                                          "&amp;"sv,
                                          "&#65;"sv,
                                          "&#x1F600;"sv,
                                          "&x;"sv,
                                          "&"sv,
                                          "<"sv,
                                          "<b/>"sv,
                                          "]]>"sv,
                                          "]]"sv,
                                          "\xC3\xA9"sv,
                                          "\xE2\x82\xAC"sv,
                                          "\xF0\x9F\x98\x80"sv,
                                          "\xF0\x9F"sv,
                                          "\xFF"sv,
                                          "\xED\xA0\x80"sv,
                                          "\xEF\xBF\xBE"sv,
                                          "\xC2\x85"sv,
                                          "\xE2\x80\xA8"sv,
                                          "\0"sv,
                                          "\x01"sv,
                                          "'"sv,
                                          "\""sv,
                                          ">"sv,
                                          "\t"sv,
                                          " :a='1' "sv,
                                          "<!--x-->"sv,
                                          "<![CDATA[]]>"sv,
                                          "--"sv,
                                          "?>"sv,
                                          "\x80"sv};

/// What stands around the long run, and what the run is made of.
struct Frame
{
    std::string_view before;
    std::string_view unit;
    std::string_view behind;
};

constexpr Frame c_frames[] = {{"<a>", "x", "</a>"},
                              {"<a b='", "x", "'/>"},
                              {"<a><![CDATA[", "x", "]]></a>"},
                              {"<a><!--", "x", "--></a>"},
                              {"<?p ", "x", "?><a/>"},
                              {"<a>", "\xC3\xA9", "<b/></a>"},
                              {"<a b=\"", "\xE2\x82\xAC", "\"/>"},
                              {"<a>", "\xF0\x9F\x98\x80", "<b/></a>"},
                              {"<a>", "\n", "<b/></a>"},
                              {"<a", " ", "b='1'/>"},
                              {"<", "n", "/>"},
                              {"<a ", "n", "='1'/>"},
                              {"<a>", "\r\n", "<b/></a>"},
                              {"", " ", "<a/>"},
                              {"<a/>", "\n", ""},
                              {"<a></a", "\t", ">"}};

/// A run of as many bytes of whole units, the special thing, and a little more.
std::string Build(const Frame& frame, std::size_t length, std::string_view special)
{
    std::string document(frame.before);
    while (document.size() + frame.unit.size() <= length)
        document += frame.unit;
    document += special;
    for (int i = 0; i < 3; ++i)
        document += frame.unit;
    document += frame.behind;
    return document;
}

} // namespace

TEST(DirectEquivalence, SpecialThingsAtTheEndsOfBlocksAreTheSame)
{
    BothScanners both;
    std::size_t turn = 0;
    for (const std::size_t size : c_sizes) {
        for (const Frame& frame : c_frames) {
            for (const std::string_view special : c_special) {
                ++turn;
                // A long document with one frame and one special thing is much like another.
                if (size > 2000 && turn % 7 != 0)
                    continue;
                const std::string document = Build(frame, size, special);
                ASSERT_TRUE(ExpectSame(both.CompareSome(document, turn)));
            }
        }
    }
}

TEST(DirectEquivalence, EveryDistanceFromTheStartOfATextIsTheSame)
{
    BothScanners both;
    for (std::size_t length = 3; length < 140; ++length) {
        for (const std::string_view special : c_special) {
            ASSERT_TRUE(ExpectSame(both.CompareEvents(Build(c_frames[0], length, special))));
            ASSERT_TRUE(ExpectSame(both.CompareEvents(Build(c_frames[1], length, special))));
        }
    }
}

TEST(DirectEquivalence, LongDocumentsOfMixedThingsAreTheSame)
{
    BothScanners both;
    RandomBytes random(99);
    const std::vector<std::string_view> parts = {
        "<b>"sv,           "x</b>"sv,   "<b c='1'/>"sv,      "text "sv,
        "&amp;"sv,         "\r\n"sv,    "\xE2\x82\xAC"sv,    "<!--c-->"sv,
        "<![CDATA[<]]>"sv, "<b></b>"sv, "<c d='&#10;'/>"sv,  "\n    "sv,
        "<?p q?>"sv,       "]]&gt;"sv,  "\xF0\x9F\x98\x80"sv};
    for (int i = 0; i < 60; ++i) {
        std::string document = "<a>";
        std::size_t open = 0;
        const std::size_t size = 1000 + random.Below(120'000);
        while (document.size() < size) {
            const std::size_t part = random.Below(parts.size());
            if (part == 1 && open == 0)
                continue;
            open += part == 0 ? 1 : 0;
            open -= part == 1 ? 1 : 0;
            document += parts[part];
        }
        for (; open > 0; --open)
            document += "</b>";
        document += random.Below(4) == 0 ? "&x;</a>" : "</a>";
        ASSERT_TRUE(ExpectSame(both.CompareSome(document, static_cast<std::size_t>(i))));
    }
}

TEST(DirectEquivalence, DeepDocumentsAreTheSame)
{
    BothScanners both;
    for (const std::size_t depth : {1000U, 20'000U}) {
        std::string document;
        for (std::size_t i = 0; i < depth; ++i)
            document += "<a>";
        for (std::size_t i = 0; i < depth; ++i)
            document += "</a>";
        ASSERT_TRUE(ExpectSame(both.CompareEvents(document)));
        ASSERT_TRUE(
            ExpectSame(both.CompareDom(document, BothScanners::Source::Binary, {true, false})));
        ASSERT_TRUE(
            ExpectSame(both.CompareStandalone(document, BothScanners::Source::Utf8, false)));
        document.pop_back();
        ASSERT_TRUE(
            ExpectSame(both.CompareDom(document, BothScanners::Source::Utf8, {true, false})));
    }
}

TEST(DirectEquivalence, AnyNumberOfAttributesIsTheSame)
{
    BothScanners both;
    std::string tag = "<a";
    for (std::size_t count = 0; count <= 200; ++count) {
        ASSERT_TRUE(ExpectSame(both.CompareSome("<r>" + tag + "/>" + tag + "></a></r>", count)));
        // The first, one in the middle or the last of them again.
        for (const std::size_t again : {std::size_t{0}, count / 2, count})
            ASSERT_TRUE(
                ExpectSame(both.CompareEvents(tag + " n" + std::to_string(again) + "='x'/>")));
        tag += " n" + std::to_string(count) + "='" + std::string(count % 40, 'v') + "'";
    }
}

TEST(DirectEquivalence, CharactersAtTheEndsOfWhatIsCheckedAheadAreTheSame)
{
    // What is checked before the first event that nobody can take back.
    constexpr std::size_t c_checked = 0x40000;
    constexpr std::string_view c_start = "<a>";
    BothScanners both;
    for (std::size_t shift = 0; shift < 3; ++shift) {
        std::string document(c_start);
        document.append(shift, 'x');
        while (document.size() < c_checked + 0x30000)
            document += "\xE2\x82\xAC";
        document += "<b/></a>";
        ASSERT_TRUE(ExpectSame(both.CompareEvents(document)));
        EXPECT_EQ(DirectScanning::GetLastVerdict(), DirectScanning::Verdict::Accepted);
        for (std::size_t back = 0; back < 8; ++back) {
            std::string broken = document;
            broken[c_start.size() + c_checked + 4 - back] = '\xFF';
            ASSERT_TRUE(ExpectSame(both.CompareEvents(broken)));
        }
    }
    // More than twice what is checked lies behind these.
    for (const std::size_t before : {1U, 100U, 5000U, 0x8000U, 0x20000U}) {
        const std::string broken = "<a><b/>" + std::string(before, 'x') + "\xFF" +
                                   std::string(4 * c_checked, 'x') + "</a>";
        ASSERT_TRUE(ExpectSame(both.CompareEvents(broken)));
    }
}

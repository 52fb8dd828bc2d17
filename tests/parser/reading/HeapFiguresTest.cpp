// What trees take of the heap for each byte of their source: the figures of SECURITY.md and the
// README.

#include "support/Repeat.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMBuilder.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <gtest/gtest.h>

#include <malloc.h>

#include <cstddef>
#include <memory>
#include <string>

// With sanitizers, the heap is another one.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace {

constexpr std::size_t c_bytes = 1'000'000;

double HeapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

/// How much heap the result of `parse` takes for each byte of its source.
template <typename Parse>
double Measure(const std::string& source, const Parse& parse)
{
    // What the first parse of a process sets up is no part of a tree.
    parse("<a/>");
    const double before = HeapInUse();
    const auto kept = parse(source);
    return (HeapInUse() - before) / static_cast<double>(source.size());
}

double OfDOMParser(const std::string& source)
{
    return Measure(source,
                   [](const std::string& text) { return DOMParser().ParseXmlString(text, u"id"); });
}

double OfDOMBuilder(const std::string& source)
{
    return Measure(source, [](const std::string& text) {
        auto dom = std::make_unique<DOM>();
        Utf8InputSource input(text, u"id", false);
        XercesXMLParser::Create(input, std::make_shared<DOMBuilder>(*dom, false))->Parse();
        return dom;
    });
}

double OfStandaloneDOMParser(const std::string& source)
{
    return Measure(source, [](const std::string& text) {
        return StandaloneDOMParser().ParseXmlString(text, u"id");
    });
}

/// Start tags whose attributes have names of their own, all as short as they can be.
std::string DistinctNames(std::string_view end)
{
    constexpr std::string_view c_letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    const auto letter = [&](std::size_t i) { return c_letters[i % c_letters.size()]; };
    std::string text = "<a>";
    for (std::size_t i = 0; text.size() < c_bytes; ++i) {
        text += "<a ";
        text += {letter(i), letter(i / c_letters.size()),
                 letter(i / c_letters.size() / c_letters.size())};
        text += "=''";
        text += end;
    }
    return text;
}

/// Start tags whose attributes take turns with a few names, all as short as they can be.
std::string NamesInTurn(std::string_view end)
{
    constexpr std::string_view c_letters = "ABCDEF";
    std::string text = "<a>";
    for (std::size_t i = 0; text.size() < c_bytes; ++i) {
        text += "<a ";
        text += c_letters[i % c_letters.size()];
        text += "=''";
        text += end;
    }
    return text;
}

/// Tags of which no two near each other have the same name, all as short as they can be.
std::string DistinctElements(std::string_view end)
{
    std::string text = "<a>";
    for (int i = 10000; text.size() < c_bytes; ++i) {
        text += "<x" + std::to_string(i);
        text += end;
    }
    return text;
}

std::string Catalogue()
{
    std::string text = "<catalogue>\n";
    for (int i = 10000; text.size() < c_bytes; ++i) {
        const std::string number = std::to_string(i);
        text += "  <item id='" + number + "'>\n    <name>Thing " + number + "</name>\n    <price>" +
                number + "</price>\n  </item>\n";
    }
    return text + "</catalogue>\n";
}

std::string Article()
{
    const std::string words = Repeat("The quick brown fox jumps over the lazy dog. ", 23);
    return "<article>\n" + Repeat("<p>" + words + "</p>\n", c_bytes / 1045) + "</article>\n";
}

} // namespace

TEST(HeapFigures, AreThoseThatAreStated)
{
    struct Figures
    {
        const char* document;
        std::string source;
        double ofParser;
        double ofBuilder;
        double ofStandalone;
    };
    const Figures all[] = {
        {"an article", Article(), 2.2, 2.2, 2.2},
        {"a catalogue", Catalogue(), 4.5, 4.5, 3.8},
        {"empty elements", "<a>" + Repeat("<a/>", c_bytes / 4) + "</a>", 23, 23, 12.2},
        {"elements with names of their own", DistinctNames("/>"), 33, 33, 28.6},
        {"elements that do not end", Repeat("<a>", c_bytes / 3), 33, 33, 19},
        {"such elements with names of their own", DistinctNames(">"), 37, 37, 33},
        {"elements with names in turn", NamesInTurn("/>"), 36, 36, 32},
        {"such elements with names in turn", NamesInTurn(">"), 42, 42, 37},
    };
    for (const Figures& figures : all) {
        const auto expect = [&](const char* parser, double stated, double measured) {
            EXPECT_LE(measured, stated) << figures.document << ", " << parser;
            // One that is far too high says nothing.
            EXPECT_GE(measured, 0.9 * stated) << figures.document << ", " << parser;
        };
        expect("DOMParser", figures.ofParser, OfDOMParser(figures.source));
        expect("DOMBuilder", figures.ofBuilder, OfDOMBuilder(figures.source));
        expect("StandaloneDOMParser", figures.ofStandalone, OfStandaloneDOMParser(figures.source));
    }
}

TEST(HeapFigures, AreTheSameWhateverBuildsTheTree)
{
    const std::string sources[] = {
        DistinctElements("/>"),
        DistinctElements(">"),
        Repeat("<a><b/>", c_bytes / 7),
        "<a>" + Repeat("<a/>", c_bytes / 4) + "</a>",
        "<a>" + Repeat("<a><b/><c/></a>", c_bytes / 15) + "</a>",
        "<a>" + Repeat("<a>" + Repeat("<b/>", 16) + "</a>", c_bytes / 71) + "</a>",
        "<a>" + Repeat("<a>" + Repeat("<b/>", 40) + "</a>", c_bytes / 167) + "</a>",
    };
    for (const std::string& source : sources) {
        // Long lists have some slack, an eighth of a pointer for each element at most.
        EXPECT_LE(OfDOMBuilder(source), 1.012 * OfDOMParser(source)) << source.substr(0, 40);
    }
}

#endif

// Documents made to take time or memory, as large as somebody may send them: that each ends, and
// what it takes, which are figures of SECURITY.md. What the limits count is tested in
// ParseLimitsTest.cpp.

#include "support/CollidingNames.h"
#include "support/Effort.h"
#include "support/LimitedParse.h"
#include "support/ProcessFigures.h"
#include "support/Repeat.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StringInputSource.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

/// What the worst of several parses takes.
struct Figures
{
    void Add(const ProcessFigures& parse)
    {
        ++documents;
        worstMilliseconds = std::max(worstMilliseconds, parse.GetMilliseconds());
        worstMemory = std::max(worstMemory, parse.GetMemory());
    }

    std::size_t documents = 0;
    long worstMilliseconds = 0;
    std::size_t worstMemory = 0;
};

std::string Doubling(const std::string& start, const std::string& reference, int levels)
{
    std::string text = start + "a0 'text'>";
    for (int i = 1; i <= levels; ++i) {
        const std::string former = reference + "a" + std::to_string(i - 1) + ";";
        text += start + "a" + std::to_string(i) + " '" + former + former + "'>";
    }
    return text;
}

std::string CollidingElements(unsigned count)
{
    std::string text;
    for (const std::string& name : MakeCollidingNames(count))
        text += "<" + name + "/>";
    return text;
}

std::string CollidingAttributes(unsigned count)
{
    std::string text = "<a";
    for (const std::string& name : MakeCollidingNames(count))
        text += " " + name + "=''";
    return text + "/>";
}

std::string CollidingEntities(unsigned count)
{
    std::string text;
    for (const std::string& name : MakeCollidingNames(count))
        text += "<!ENTITY " + name + " 'x'>";
    return text;
}

/// Up to a megabyte each.
std::vector<std::string> MakeHostileDocuments()
{
    const std::string names =
        Concatenate(500, [](const std::string& i) { return (i == "0" ? "b" : ",b") + i + "?"; });
    const std::string defaults =
        Concatenate(2000, [](const std::string& i) { return " x" + i + " CDATA ''"; });
    return {
        WithDoctype(Doubling("<!ENTITY ", "&", 40), "<a>&a40;</a>"),
        WithDoctype(Doubling("<!ENTITY ", "&", 40), "<a b='&a40;'/>"),
        WithDoctype(Doubling("<!ENTITY ", "&", 40) + "<!ATTLIST a b CDATA '&a40;'>", "<a/>"),
        WithDoctype(Doubling("<!ENTITY % ", "&#37;", 40) + "%a40;", "<a/>"),
        WithDoctype("<!ENTITY e '&e;'>", "<a>&e;</a>"),
        WithDoctype("<!ENTITY e SYSTEM 'file:///dev/zero'>", "<a>&e;</a>"),
        WithDoctype("<!ELEMENT a (" + names + ")>", "<a/>"),
        WithDoctype("<!ELEMENT b EMPTY><!ELEMENT a ((b|c)*,b" + Repeat(",(b|c)", 30) + ")>",
                    "<a>" + Repeat("<b/>", 40) + "</a>"),
        WithDoctype("<!ELEMENT a " + Repeat("(", 100'000) + "b" + Repeat(")", 100'000) + ">",
                    "<a/>"),
        WithDoctype("<!ATTLIST b" + defaults + ">", "<a>" + Repeat("<b/>", 20'000) + "</a>"),
        WithDoctype(CollidingEntities(20'000), "<a/>"),
        "<a>" + CollidingElements(30'000) + "</a>",
        // Not well-formed, so that the other scanner reads them, too.
        "<a>" + CollidingElements(30'000),
        CollidingAttributes(30'000),
        CollidingAttributes(30'000) + "</b>",
        Repeat("<a>", 330'000),
        Repeat("<a>", 140'000) + Repeat("</a>", 140'000),
        "<a " + Repeat("b", 900'000),
        "<a b='" + Repeat("&lt;", 240'000) + "'/>",
        "<a>" + Repeat("&#1;", 240'000) + "</a>",
        "<a>" + Repeat("]]", 450'000),
        "<a><!--" + Repeat("-", 900'000),
        "<a><![CDATA[" + Repeat("]", 900'000),
        "<a>" + Repeat("<?b", 300'000),
        "<a>" + Repeat("<b/>", 240'000) + "</c>",
        "<a>" + Repeat("<b c='1'>x</b>", 70'000) + "</a>",
        "<a " + Repeat("xmlns:b='c' ", 80'000) + "/>",
        "<a>" + Repeat("<b:c xmlns:b='d'>", 60'000),
        Repeat("\xFF", 900'000),
        Repeat(std::string_view("<a>\0", 4), 240'000),
    };
}

std::unique_ptr<DOM> Measure(const DOMParser& parser, const std::string& text, Figures& figures)
{
    ProcessFigures parse;
    parse.Begin();
    auto document = parser.ParseXmlString(text, u"id");
    parse.End();
    figures.Add(parse);
    return document;
}

} // namespace

TEST(HostileDocuments, EndWithAnErrorOrATree)
{
    Figures figures;
    for (const bool isValidating : {false, true}) {
        DOMParser parser;
        if (isValidating)
            parser.AddXSDInputSource(
                std::make_unique<StringInputSource>(TString(c_openSchema), u"schema", false));
        const std::vector<std::string> documents = MakeHostileDocuments();
        for (std::size_t i = 0; i < documents.size(); ++i) {
            const std::string& text = documents[i];
            const auto whole = Measure(parser, text, figures);
            EXPECT_TRUE(whole->HasErrors() || whole->GetDocumentRoot() != nullptr)
                << text.substr(0, 100);
            if (i % Effort::c_stride != 0)
                continue;
            // What is cut is no document.
            for (const std::size_t size : {text.size() / 2, text.size() - 1})
                EXPECT_TRUE(Measure(parser, text.substr(0, size), figures)->HasErrors())
                    << text.substr(0, 100);
        }
    }
    std::cout << figures.documents << " hostile documents, at most " << figures.worstMilliseconds
              << " ms and " << (figures.worstMemory >> 20) << " MiB each\n";
}

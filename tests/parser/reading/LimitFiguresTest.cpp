// What it would cost to read the documents that the limits refuse, family by family, which are
// figures of SECURITY.md: of each the smallest one that is refused is read without limits. What the
// limits count is tested in ParseLimitsTest.cpp. With KESCOREXML_LIMIT_FIGURES set, the limits are
// those that are there at first, which takes some minutes; else they are a small part of that.

#include "support/CollidingNames.h"
#include "support/LimitedParse.h"
#include "support/ProcessFigures.h"
#include "support/Repeat.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

struct Document
{
    std::string text;
    /// Null for none.
    const char* schema = nullptr;
    bool expandsEntities = false;
};

/// Documents of any size that meet one limit.
struct Family
{
    const char* limit;
    const char* setter;
    const char* name;
    std::function<Document(int)> make;
};

bool HasFullLimits()
{
    return std::getenv("KESCOREXML_LIMIT_FIGURES") != nullptr;
}

/// Of one, two or three letters, from a number on.
std::string MakeLetters(const std::string& number)
{
    std::string name;
    for (int rest = std::stoi(number); rest > 0 || name.empty(); rest /= 26)
        name += static_cast<char>('a' + rest % 26);
    return name;
}

std::size_t Count(int n)
{
    return static_cast<std::size_t>(n);
}

/// Leaves documents to Xerces, which the library's own scanner would read.
const std::string c_entity = "<!ENTITY e ''>";

const char* const c_targetSchema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:u'>"
    "<xs:element name='z' type='xs:int'/></xs:schema>";

const std::string c_defaultsSchema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'><xs:complexType>"
    "<xs:sequence><xs:element name='b' maxOccurs='unbounded'><xs:complexType>" +
    Concatenate(20,
                [](const std::string& i) {
                    return "<xs:attribute name='a" + i + "' type='xs:string' default=''/>";
                }) +
    "</xs:complexType></xs:element></xs:sequence></xs:complexType></xs:element></xs:schema>";

const std::string c_messagesSchema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'><xs:complexType>"
    "<xs:sequence><xs:element name='b' minOccurs='0' maxOccurs='unbounded'><xs:simpleType>"
    "<xs:restriction base='xs:string'><xs:pattern value='" +
    Repeat("p", 3000) +
    "'/></xs:restriction></xs:simpleType></xs:element></xs:sequence></xs:complexType></xs:element>"
    "</xs:schema>";

std::string DeclareNested(int levels)
{
    return "<!ENTITY % a0 ''>" +
           Concatenate(levels,
                       [](const std::string& i) {
                           return "<!ENTITY % a" + std::to_string(std::stoi(i) + 1) + " '&#37;a" +
                                  i + ";'>";
                       }) +
           "%a" + std::to_string(levels) + ";";
}

/// Each expands the one before, which expands none, so often.
std::string DeclareRepeated(int times)
{
    return "<!ENTITY % a ''><!ENTITY % b '" + Repeat("&#37;a;", 100) + "'>" +
           Repeat("%b;", Count(times));
}

std::string ForNames(const std::vector<std::string>& names, const std::string& before,
                     const std::string& after)
{
    std::string text;
    for (const std::string& name : names)
        text += before + name + after;
    return text;
}

std::string Numbered(int count, const std::string& before, const std::string& after)
{
    return Concatenate(count, [&](const std::string& i) { return before + i + after; });
}

std::vector<Family> MakeAmplifications()
{
    const auto family = [](const char* name, std::function<Document(int)> make) {
        return Family{"amplification", "SetAmplificationLimit", name, std::move(make)};
    };
    return {
        family("long default values",
               [](int n) {
                   return Document{WithDoctype(c_entity + "<!ATTLIST b x CDATA '" +
                                                   std::string(10'000, 'x') + "'>",
                                               "<a>" + Repeat("<b/>", Count(n)) + "</a>")};
               }),
        family("default attributes of a unit",
               [](int n) {
                   const std::string attributes = Concatenate(1000, [](const std::string& i) {
                       return " " + MakeLetters(i) + " CDATA ''";
                   });
                   return Document{WithDoctype("<!ATTLIST b" + attributes + ">",
                                               "<a>" + Repeat("<b/>", Count(n)) + "</a>")};
               }),
        family("default attributes of a schema",
               [](int n) {
                   return Document{"<a>" + Repeat("<b/>", Count(n)) + "</a>",
                                   c_defaultsSchema.c_str()};
               }),
        family("elements of an entity",
               [](int n) {
                   return Document{WithDoctype("<!ENTITY e '" + Repeat("<b/>", 1000) + "'>",
                                               "<a>" + Repeat("&e;", Count(n)) + "</a>"),
                                   nullptr, true};
               }),
        family("attributes of an entity",
               [](int n) {
                   return Document{
                       WithDoctype("<!ENTITY e '<b" + Numbered(500, " a", "=\"\"") + "/>'>",
                                   "<a>" + Repeat("&e;", Count(n)) + "</a>"),
                       nullptr, true};
               }),
    };
}

std::vector<Family> MakeExpansions()
{
    const auto family = [](const char* name, std::function<Document(int)> make) {
        return Family{"expansion", "SetExpansionLimit", name, std::move(make)};
    };
    const auto inDoctype = [&](const char* name, std::function<std::string(int)> declare) {
        return family(name, [declare = std::move(declare)](int n) {
            return Document{WithDoctype(declare(n), "<a/>")};
        });
    };
    return {
        family("text of an entity",
               [](int n) {
                   return Document{WithDoctype("<!ENTITY e '" + std::string(20'000, 'x') + "'>",
                                               "<a>" + Repeat("&e;", Count(n)) + "</a>"),
                                   nullptr, true};
               }),
        inDoctype("comments of an entity",
                  [](int n) {
                      return "<!ENTITY % e '<!--" + std::string(10'000, 'x') + "-->'>" +
                             Repeat("%e;", Count(n));
                  }),
        inDoctype("empty entities", DeclareRepeated),
        inDoctype("nested entities", DeclareNested),
        inDoctype("an entity in a default value",
                  [](int n) {
                      return "<!ENTITY e '" + std::string(10'000, 'x') + "'><!ATTLIST a b CDATA '" +
                             Repeat("&e;", Count(n)) + "'>";
                  }),
        family("declared attributes",
               [](int n) {
                   return Document{
                       WithDoctype("<!ATTLIST b" + Numbered(10'000, " b", " CDATA #IMPLIED") + ">",
                                   "<a>" + Repeat("<b/>", Count(n)) + "</a>")};
               }),
        family("tags behind one of 120,000 attributes",
               [](int n) {
                   return Document{WithDoctype(c_entity, "<a><b" + Numbered(120'000, " c", "=''") +
                                                             "/>" + Repeat("<b c=''/>", Count(n)) +
                                                             "</a>")};
               }),
    };
}

std::vector<Family> MakeLookUps()
{
    const auto family = [](const char* name, std::function<std::string(int)> make) {
        return Family{"validation work", "SetValidationWorkLimit", name,
                      [make = std::move(make)](int n) {
                          return Document{make(n), c_openSchema};
                      }};
    };
    // Fewer where the limit on them is low, too.
    const std::size_t levels = HasFullLimits() ? 5'000 : 100;
    const auto below = [levels](const std::string& content) {
        return Repeat("<a>", levels) + content + Repeat("</a>", levels);
    };
    return {
        {"validation depth", "SetValidationDepthLimit", "levels",
         [](int n) {
             return Document{Repeat("<a>", Count(n)) + Repeat("</a>", Count(n)), c_openSchema};
         }},
        family("elements below 5,000 levels",
               [=](int n) { return below(Repeat("<a/>", Count(n))); }),
        family("prefixes below 5,000 levels",
               [=](int n) {
                   return "<a xmlns:x='u'>" + below(Repeat("<a x:b='' x:c='' x:d=''/>", Count(n))) +
                          "</a>";
               }),
        family("elements below 40,000 namespaces",
               [](int n) {
                   return "<a" + Numbered(40'000, " xmlns:p", "='u'") + ">" +
                          Repeat("<a/>", Count(n)) + "</a>";
               }),
        family("unknown elements", [](int n) { return "<a>" + Numbered(n, "<b", "/>") + "</a>"; }),
        family("unknown elements of many namespaces",
               [](int n) { return "<a>" + Numbered(n, "<b xmlns='u", "'/>") + "</a>"; }),
        family("unknown elements whose names collide",
               [](int n) {
                   return "<a>" +
                          ForNames(MakeCollidingNames(static_cast<unsigned>(n)), "<", "/>") +
                          "</a>";
               }),
    };
}

std::vector<Family> MakeDeclarations()
{
    const auto family = [](const char* name, std::function<std::string(int)> declare,
                           std::function<std::string(int)> content = {}) {
        return Family{"validation work", "SetValidationWorkLimit", name,
                      [declare = std::move(declare), content = std::move(content)](int n) {
                          return Document{WithDoctype(declare(n), content ? content(n) : "<a/>"),
                                          c_targetSchema};
                      }};
    };
    const std::string model = "((b|c)*,b" + Repeat(",(b|c)", 12) + ")";
    return {
        family("mixed content",
               [](int n) { return "<!ELEMENT a (#PCDATA" + Numbered(n, "|e", "") + ")*>"; }),
        family("a choice", [](int n) { return "<!ELEMENT a (b" + Numbered(n, "|e", "") + ")*>"; }),
        family("a sequence",
               [](int n) { return "<!ELEMENT a (b" + Numbered(n, ",e", "?") + ")>"; }),
        family("values of an attribute",
               [](int n) { return "<!ATTLIST a b (c" + Numbered(n, "|e", "") + ") #IMPLIED>"; }),
        family(
            "a model of exponential size",
            [](int n) {
                return "<!ELEMENT b EMPTY><!ELEMENT c EMPTY><!ELEMENT a ((b|c)*,b" +
                       Repeat(",(b|c)", Count(n)) + ")>";
            },
            [](int n) { return "<a>" + Repeat("<b/>", Count(n) + 1) + "</a>"; }),
        family(
            "small models of exponential size",
            [model](int n) {
                return "<!ELEMENT b EMPTY><!ELEMENT c EMPTY><!ELEMENT a ANY>" +
                       Numbered(n, "<!ELEMENT a", " " + model + ">");
            },
            [](int n) {
                return "<a>" +
                       Concatenate(n,
                                   [](const std::string& i) {
                                       return "<a" + i + ">" + Repeat("<b/>", 13) + "</a" + i + ">";
                                   }) +
                       "</a>";
            }),
    };
}

std::vector<Family> MakeOthers()
{
    const auto names = [](int n) { return MakeCollidingNames(static_cast<unsigned>(n)); };
    const auto colliding = [](const char* name, std::function<Document(int)> make) {
        return Family{"name collision", "SetNameCollisionLimit", name, std::move(make)};
    };
    const auto elements = [=](int n) { return ForNames(names(n), "<", "/>"); };
    return {
        colliding(
            "elements",
            [=](int n) { return Document{WithDoctype(c_entity, "<a>" + elements(n) + "</a>")}; }),
        colliding("elements, and 30,000 uses of one",
                  [=](int n) {
                      return Document{WithDoctype(
                          c_entity, "<a>" + elements(n) +
                                        Repeat("<" + names(n).front() + "/>", 30'000) + "</a>")};
                  }),
        colliding("names of a content model",
                  [=](int n) {
                      return Document{WithDoctype(c_entity + "<!ELEMENT x (b" +
                                                      ForNames(names(n), "|", "") + ")*>",
                                                  "<a/>")};
                  }),
        colliding("attributes",
                  [=](int n) {
                      return Document{
                          WithDoctype(c_entity, "<a" + ForNames(names(n), " ", "=''") + "/>")};
                  }),
        colliding("prefixes",
                  [=](int n) {
                      return Document{"<a>" + ForNames(names(n), "<b xmlns:", "='u'/>") + "</a>",
                                      c_openSchema};
                  }),
        {"message", "SetMessageLimit", "long messages",
         [](int n) {
             return Document{"<a>" + Numbered(n, "<b>", "x</b>") + "</a>",
                             c_messagesSchema.c_str()};
         }},
    };
}

using Growth = ParseLimits::Growth;

/// Calls `set` with each limit that is a growth, its getter and its setter.
template <typename Change>
void ChangeGrowths(ParseLimits& limits, Change&& change)
{
    const Growth amplification = change(limits.GetAmplificationLimit());
    limits.SetAmplificationLimit(amplification.factor, amplification.threshold);
    const Growth expansion = change(limits.GetExpansionLimit());
    limits.SetExpansionLimit(expansion.factor, expansion.threshold);
    const Growth work = change(limits.GetValidationWorkLimit());
    limits.SetValidationWorkLimit(work.factor, work.threshold);
    const Growth messages = change(limits.GetMessageLimit());
    limits.SetMessageLimit(messages.factor, messages.threshold);
}

/// Those that are there at first, or a small part of them, and nothing for the bytes.
void SetLimits(ParseLimits& limits)
{
    if (HasFullLimits())
        return;
    constexpr std::uint64_t c_part = 256;
    ChangeGrowths(limits, [](const Growth& growth) {
        return Growth{0, growth.threshold / c_part};
    });
    limits.SetValidationDepthLimit(limits.GetValidationDepthLimit() / c_part);
    limits.SetNameCollisionLimit(limits.GetNameCollisionLimit() / c_part);
}

void SwitchOff(ParseLimits& limits)
{
    constexpr std::uint64_t c_off = std::numeric_limits<std::uint64_t>::max();
    ChangeGrowths(limits, [](const Growth&) { return Growth{c_off, c_off}; });
    limits.SetValidationDepthLimit(c_off);
    limits.SetNameCollisionLimit(c_off);
}

template <typename Parser>
void Prepare(Parser& parser, const Document& document, void (*setLimits)(ParseLimits&))
{
    setLimits(parser);
    if (document.schema != nullptr)
        parser.AddXSDInputSource(
            std::make_unique<Utf8InputSource>(std::string(document.schema), u"schema", false));
}

/// The message about a limit, or the empty text.
template <typename Errors>
std::string FindLimit(const Errors& errors)
{
    for (const TString& error : errors) {
        const std::string text = error.toStdString();
        if (text.find(" limit, Set") != std::string::npos)
            return text;
    }
    return {};
}

/// What FindLimit says. `figures` are those of the parse, with the tree.
std::string Parse(const Document& document, void (*setLimits)(ParseLimits&),
                  ProcessFigures& figures)
{
    if (document.expandsEntities) {
        StandaloneDOMParser parser;
        parser.AllowEntityExpansion_Insecure();
        Prepare(parser, document, setLimits);
        figures.Begin();
        const StandaloneParseResult result = parser.ParseXmlString(document.text, u"id");
        figures.End();
        return FindLimit(result.errors);
    }
    DOMParser parser;
    Prepare(parser, document, setLimits);
    figures.Begin();
    const auto dom = parser.ParseXmlString(document.text, u"id");
    figures.End();
    return FindLimit(dom->GetErrors());
}

/// The smallest number, up to a thirty-second more, for which a document of the family is refused.
int FindRefused(const Family& family)
{
    const auto isRefused = [&](int n) {
        ProcessFigures figures;
        const std::string error = Parse(family.make(n), SetLimits, figures);
        EXPECT_TRUE(error.empty() || error.find(family.setter) != std::string::npos) << error;
        return !error.empty();
    };
    int fits = 1;
    if (isRefused(fits))
        return fits;
    int refused = 2;
    constexpr int c_most = 1 << 24;
    while (refused < c_most && !isRefused(refused)) {
        fits = refused;
        refused *= 2;
    }
    EXPECT_LT(refused, c_most);
    while (refused - fits > 1 && refused - fits > fits / 32) {
        const int middle = fits + (refused - fits) / 2;
        (isRefused(middle) ? refused : fits) = middle;
    }
    return refused;
}

} // namespace

TEST(LimitFigures, OfWhatTheyRefuse)
{
    for (const auto& make :
         {MakeAmplifications, MakeExpansions, MakeLookUps, MakeDeclarations, MakeOthers}) {
        for (const Family& family : make()) {
            SCOPED_TRACE(std::string(family.limit) + ": " + family.name);
            const Document document = family.make(FindRefused(family));
            ProcessFigures figures;
            EXPECT_EQ(Parse(document, SwitchOff, figures), "");
            std::cout << family.limit << " limit: " << family.name << ": "
                      << (document.text.size() + 1023) / 1024 << " KiB refused, would take "
                      << figures.Describe() << std::endl;
        }
    }
}

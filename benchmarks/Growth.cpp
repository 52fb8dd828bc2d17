#include "Growth.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/VersionSniffer.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLRangeTable.h>
#include <kescorexml/XMLUtils.h>

#include <kesplatform/QualifiedName.h>
#include <kesplatform/TError.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using Work = std::function<void()>;

/// One kind of input. `prepare` makes one of the given size, and what to do with it; only the
/// latter is timed. It is done once.
struct Family
{
    std::string name;
    std::size_t largest;
    std::function<Work(std::size_t)> prepare;
};

std::string Repeat(const std::string& part, std::size_t count)
{
    std::string text;
    text.reserve(part.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        text += part;
    return text;
}

Work Parse(std::string text)
{
    return [text = std::move(text)] { DOMParser().ParseXmlString(text, u"id"); };
}

std::shared_ptr<DOM> MakeDocument(const std::string& text)
{
    return DOMParser().ParseXmlString(text, u"id");
}

/// A document of `count` elements below one another.
std::shared_ptr<DOM> MakeDeepDocument(std::size_t count)
{
    return MakeDocument(Repeat("<a>", count) + Repeat("</a>", count));
}

/// A document of `count` elements beside one another.
std::shared_ptr<DOM> MakeWideDocument(std::size_t count)
{
    return MakeDocument("<a>" + Repeat("<b/>", count) + "</a>");
}

Work FindRootTag(std::string text)
{
    return [text = std::move(text)] { static_cast<void>(XmlUtils::FindRootTag(text)); };
}

Work SniffVersion(std::string text)
{
    auto source = std::make_shared<Utf8InputSource>(std::move(text), u"id", false);
    return [source] { static_cast<void>(VersionSniffer(*source, TString())); };
}

void AddScannerFamilies(std::vector<Family>& families)
{
    constexpr std::size_t c_bytes = 10 << 20;
    const auto both = [&](const std::string& name, const std::string& part,
                          const std::string& start, const std::string& end) {
        const auto make = [=](std::size_t bytes) {
            return start + Repeat(part, bytes / part.size()) + end;
        };
        families.push_back({name + ": FindRootTag", c_bytes,
                            [make](std::size_t bytes) { return FindRootTag(make(bytes)); }});
        families.push_back({name + ": VersionSniffer", c_bytes,
                            [make](std::size_t bytes) { return SniffVersion(make(bytes)); }});
    };
    both("'>' in a quoted attribute of the root tag", ">", "<a b='", "' version='1.0'/>");
    both("prolog of short comments", "<!-- c -->", "", "<a version='1.0'/>");
    both("prolog of one comment", " -", "<!--", "--><a version='1.0'/>");
    both("prolog of instructions", "<?p i?>", "", "<a version='1.0'/>");
    both("prolog of declarations", "<!d>", "", "<a version='1.0'/>");
    both("prolog of '<!' without end", "<!", "", "");
    both("quotes in odd numbers", "'\"", "<a b=", "'/>");

    families.push_back(
        {"attribute name before the match: FindAttributeValue", 1000000, [](std::size_t count) {
             const std::string text = "<a " + Repeat("xname ", count) + " name='value'>";
             return Work([text] {
                 static_cast<void>(XmlUtils::FindAttributeValue(text, "name", {0, text.size()}));
             });
         }});
    families.push_back({"'<!' runs: XMLRangeTable", c_bytes, [](std::size_t bytes) {
                            const std::string text = "<a>" + Repeat("<!", bytes / 2);
                            return Work([text] {
                                XMLRangeTable table(text);
                                std::size_t end = 0;
                                for (std::size_t at = 0; at < text.size(); ++at)
                                    table.GetRangeTypeAt(at, end);
                            });
                        }});
}

void AddParseFamilies(std::vector<Family>& families)
{
    const auto parse = [&](const std::string& name, std::size_t largest,
                           std::function<std::string(std::size_t)> make) {
        families.push_back(
            {name + ": parse", largest, [make](std::size_t count) { return Parse(make(count)); }});
    };
    parse("'>' in a quoted attribute of the root tag", 10 << 20,
          [](std::size_t bytes) { return "<a :b='" + Repeat(">", bytes) + "'/>"; });
    parse("' :a=' in text", 1000000,
          [](std::size_t count) { return "<a>" + Repeat(" :a=", count) + "</a>"; });
    parse("' :a=' without any '>'", 1000000,
          [](std::size_t count) { return "<a " + Repeat(" :a=", count); });
    parse("colon names in one start tag", 100000, [](std::size_t count) {
        std::string text = "<a";
        for (std::size_t i = 0; i < count; ++i)
            text += " :a" + std::to_string(i) + "=''";
        return text + "/>";
    });
    parse("quotes in odd numbers in text", 1000000,
          [](std::size_t count) { return "<a>" + Repeat("' :a=", count) + "<b/></a>"; });
    parse("'<!' in text", 1000000,
          [](std::size_t count) { return "<a>" + Repeat("<!", count) + "</a>"; });
    parse("text runs in one element", 1000000,
          [](std::size_t count) { return "<a>" + Repeat("x<b/>", count) + "</a>"; });
    parse("levels", 1000000,
          [](std::size_t count) { return Repeat("<a>", count) + Repeat("</a>", count); });
    parse("different names", 250000, [](std::size_t count) {
        std::string text = "<a>";
        for (std::size_t i = 0; i < count; ++i)
            text += "<b" + std::to_string(i) + " c" + std::to_string(i) + "=''/>";
        return text + "</a>";
    });
    parse("tags whose values do not end, beside an entity", 10 << 20, [](std::size_t bytes) {
        const std::string tag = "<a a\"b=\"" + std::string(6000, 'x');
        return "<!DOCTYPE a [<!ENTITY e ''>]>" + Repeat(tag, bytes / tag.size());
    });
    families.push_back(
        {"text runs in one element: standalone parse", 1000000, [](std::size_t count) {
             const std::string text = "<a>" + Repeat("x<b/>", count) + "</a>";
             return Work([text] { StandaloneDOMParser().ParseXmlString(text, u"id"); });
         }});
}

/// Names whose hashes the scanner takes for the same: it adds up units with powers of 38.
std::string MakeCollidingName(std::size_t number)
{
    constexpr int c_pairs = 20;
    std::string name;
    for (int pair = 0; pair < c_pairs; ++pair)
        name += (number >> pair & 1) != 0 ? "bA" : "ag";
    return name;
}

/// Names that collide in each of the tables of the scanner, in documents that the direct scanner
/// leaves to it; and in one that it reads itself.
void AddCollidingFamilies(std::vector<Family>& families)
{
    constexpr std::size_t c_largest = 65536;
    const auto add = [&](const std::string& name, const std::string& start,
                         const std::string& before, const std::string& after,
                         const std::string& end, const char* schema = nullptr) {
        families.push_back(
            {"colliding " + name + ": parse", c_largest, [=](std::size_t count) -> Work {
                 std::string text = start;
                 for (std::size_t i = 0; i < count; ++i)
                     text += before + MakeCollidingName(i) + after;
                 text += end;
                 auto parser = std::make_shared<DOMParser>();
                 if (schema != nullptr)
                     parser->AddXSDInputSource(
                         std::make_unique<Utf8InputSource>(std::string(schema), u"schema", false));
                 return [=] { parser->ParseXmlString(text, u"id"); };
             }});
    };
    const char* const schema =
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
        "<xs:complexType><xs:sequence><xs:any processContents='lax' minOccurs='0' "
        "maxOccurs='unbounded'/></xs:sequence><xs:attribute name='i' type='xs:ID'/>"
        "</xs:complexType></xs:element></xs:schema>";
    const std::string entity = "<!DOCTYPE a [<!ENTITY e ''>";
    add("elements of a plain document", "<a>", "<", "/>", "</a>");
    add("elements", entity + "]><a>", "<", "/>", "</a>");
    add("elements before a wrong last byte", "<a>", "<", "/>", "</b>");
    add("attributes of a tag", entity + "]><a", " ", "=''", "/>");
    add("attributes of a tag that references hide", entity + "<!ENTITY f \"&#60;b", " ", "=''",
        "/>\">]><a/>");
    add("names of a content model", entity + "<!ELEMENT a (b", "|", "", ")*>]><a/>");
    add("declared elements", entity, "<!ELEMENT ", " ANY>", "]><a/>");
    add("declared attributes", entity, "<!ATTLIST a ", " CDATA #IMPLIED>", "]><a/>");
    add("entities", entity, "<!ENTITY ", " ''>", "]><a/>");
    add("parameter entities", entity, "<!ENTITY % ", " ''>", "]><a/>");
    add("notations", entity, "<!NOTATION ", " SYSTEM ''>", "]><a/>");
    add("elements without schema", "<a>", "<", "/>", "</a>", schema);
    add("prefixes", "<a>", "<b xmlns:", "='u'/>", "</a>", schema);
    add("namespaces", "<a>", "<b xmlns='", "'/>", "</a>", schema);
    add("identifiers", "<a>", "<a i='", "'/>", "</a>", schema);
}

void AddDiagnosticsFamilies(std::vector<Family>& families)
{
    families.push_back({"diagnostics on one element", 1000000, [](std::size_t count) {
                            auto document = MakeDocument("<a/>");
                            return Work([document, count] {
                                for (std::size_t i = 0; i < count; ++i)
                                    document->GetDocumentRoot()->Error(
                                        u"e", TError::ErrorInfo::NoError(), false, false);
                                static_cast<void>(document->GetErrors());
                            });
                        }});
    families.push_back(
        {"a diagnostic on each element", 1000000, [](std::size_t count) {
             auto document = MakeWideDocument(count);
             return Work([document] {
                 for (const auto& element : document->GetDocumentRoot()->GetChildren())
                     element->Error(u"e", TError::ErrorInfo::NoError(), false, false);
                 static_cast<void>(document->GetErrors());
             });
         }});
    families.push_back({"HasErrors of each element without, half of them have some", 100000,
                        [](std::size_t count) {
                            auto document = MakeWideDocument(count);
                            const auto elements = document->GetDocumentRoot()->GetChildren();
                            for (std::size_t i = 0; i < count / 2; ++i)
                                elements[i].Error(u"e", TError::ErrorInfo::NoError(), false, false);
                            return Work([document, count] {
                                const auto all = document->GetDocumentRoot()->GetChildren();
                                for (std::size_t i = count / 2; i < count; ++i)
                                    all[i].HasErrors();
                            });
                        }});
    families.push_back({"HasErrors of a long list for each child, one error elsewhere", 100000,
                        [](std::size_t count) {
                            auto document =
                                MakeDocument("<r><a>" + Repeat("<b/>", count) + "</a><c/></r>");
                            const auto children = document->GetDocumentRoot()->GetChildren();
                            children.back().Error(u"e", TError::ErrorInfo::NoError(), false, false);
                            return Work([document, count] {
                                const auto all = document->GetDocumentRoot()->GetChildren();
                                for (std::size_t i = 0; i < count; ++i)
                                    all.front().HasErrors();
                            });
                        }});
    families.push_back({"HasErrors of a leaf on each level, one error on the deepest", 100000,
                        [](std::size_t count) {
                            auto document = MakeDocument("<r>" + Repeat("<a><b/>", count) + "<e/>" +
                                                         Repeat("</a>", count) + "</r>");
                            DOMElement* deepest = document->GetDocumentRoot();
                            while (!deepest->GetChildren().empty())
                                deepest = &deepest->GetChildren().back();
                            deepest->Error(u"e", TError::ErrorInfo::NoError(), false, false);
                            return Work([document] {
                                const DOMElement* level = document->GetDocumentRoot();
                                for (; !level->GetChildren().empty();
                                     level = &level->GetChildren().back())
                                    level->GetChildren().front().HasErrors();
                            });
                        }});
}

void AddTreeFamilies(std::vector<Family>& families)
{
    families.push_back(
        {"children before one element: AdoptChildren", 1000000, [](std::size_t count) {
             auto from = MakeWideDocument(count);
             auto to = MakeDocument("<a><before/></a>");
             return Work([from, to] {
                 DOMElement& target = *to->GetDocumentRoot();
                 target.AdoptChildren(*from->GetDocumentRoot(), &target.GetChildren().front());
             });
         }});
    families.push_back({"AppendText", 1000000, [](std::size_t count) {
                            auto element = std::make_shared<DOMElement>(u"a");
                            return Work([element, count] {
                                for (std::size_t i = 0; i < count; ++i)
                                    element->AppendText(u"x");
                            });
                        }});
    for (const char* const path : {"//a", "//a//a", "a//a/a", "//a//b", "a//a//a//b"}) {
        families.push_back(
            {std::string("all of ") + path + " in a deep tree", 1000000, [path](std::size_t count) {
                 auto document = MakeDeepDocument(count);
                 return Work([document, path] {
                     static_cast<void>(
                         DOMPath::GetAll(*document->GetDocumentRoot(), TString(path)));
                 });
             }});
    }
    families.push_back({"renames", 1000000, [](std::size_t count) {
                            auto document = MakeDocument("<a/>");
                            return Work([document, count] {
                                for (std::size_t i = 0; i < count; ++i) {
                                    const TString name = TString::number(i);
                                    document->AddDataSourceRename(name, u"new" + name);
                                }
                                for (std::size_t i = 0; i < count; ++i)
                                    static_cast<void>(
                                        document->RenameDataSource(TString::number(i)));
                            });
                        }});
    families.push_back({"copies of a deep tree", 1000000, [](std::size_t count) {
                            auto document = MakeDeepDocument(count);
                            return Work([document] { DOMElement(*document->GetDocumentRoot()); });
                        }});
}

double GetProcessorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double Measure(const Family& family, std::size_t size)
{
    constexpr int c_runs = 3;
    double least = std::numeric_limits<double>::max();
    for (int run = 0; run < c_runs; ++run) {
        const Work work = family.prepare(size);
        const double start = GetProcessorSeconds();
        work();
        least = std::min(least, GetProcessorSeconds() - start);
    }
    return least;
}

/// The slope of the line that fits best through the logarithms.
double FitExponent(const std::vector<double>& sizes, const std::vector<double>& seconds)
{
    const auto count = static_cast<double>(sizes.size());
    double sumX = 0;
    double sumY = 0;
    double sumXX = 0;
    double sumXY = 0;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const double x = std::log(sizes[i]);
        const double y = std::log(std::max(seconds[i], 1e-9));
        sumX += x;
        sumY += y;
        sumXX += x * x;
        sumXY += x * y;
    }
    return (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

} // namespace

int PrintGrowth()
{
    constexpr std::size_t c_doublings = 4;
    constexpr double c_largestExponent = 1.5;
    constexpr double c_minimumSeconds = 0.05;
    std::vector<Family> families;
    AddScannerFamilies(families);
    AddParseFamilies(families);
    AddCollidingFamilies(families);
    AddTreeFamilies(families);
    AddDiagnosticsFamilies(families);
    int exceeded = 0;
    std::printf("| input | largest | ms | exponent |\n|---|---:|---:|---:|\n");
    for (const Family& family : families) {
        std::vector<double> sizes;
        std::vector<double> seconds;
        for (std::size_t step = 0; step <= c_doublings; ++step) {
            const std::size_t size = family.largest >> (c_doublings - step);
            sizes.push_back(static_cast<double>(size));
            seconds.push_back(Measure(family, size));
        }
        const double exponent = FitExponent(sizes, seconds);
        exceeded += exponent > c_largestExponent && seconds.back() > c_minimumSeconds;
        std::printf("| %s | %zu | %.2f | %.2f |\n", family.name.c_str(), family.largest,
                    seconds.back() * 1e3, exponent);
        std::fflush(stdout);
    }
    return exceeded;
}

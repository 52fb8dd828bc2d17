#include "Documents.h"
#include "Families.h"
#include "Peers.h"
#include "Ratios.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>

#include <kesplatform/VectorRegisters.h>

#include <QDomDocument>
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <pugixml.hpp>
#include <tinyxml2.h>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include <memory>
#include <stdexcept>
#include <utility>

namespace {

using Function = void (*)(benchmark::State&, const Document&);

/// What bytes to DOM may cost.
struct Limits
{
    double besideScanner;
    double besidePugixml;
};

Limits GetLimits(const Document& document)
{
    if (document.name == "text")
        return {0.2, 0.8};
    return {0.35, 2.5};
}

/// The same beside libxml2 and tinyxml2.
constexpr double c_besideOthers = 0.6;
constexpr double c_withLineNumbers = 1.15;
constexpr double c_destroying = 0.1;
/// Bytes a source byte.
constexpr double c_heap = 4;

void Scan(benchmark::State& state, const Document& document)
{
    BareReader reader;
    for (auto _ : state)
        reader.Parse(document.bytes);
}

/// Times making a tree or, with `Destroy`, ending it; the other half is not counted.
template <bool Destroy, typename Make>
void MakeAndEnd(benchmark::State& state, Make&& make)
{
    for (auto _ : state) {
        if constexpr (Destroy)
            state.PauseTiming();
        // As the library does: others leave them in use, and all that follows is slow.
        ClearUpperVectorHalves();
        auto tree = make();
        if constexpr (Destroy)
            state.ResumeTiming();
        else
            state.PauseTiming();
        if (tree == nullptr) {
            state.SkipWithError("the document was not parsed");
            return;
        }
        tree.reset();
        if constexpr (!Destroy)
            state.ResumeTiming();
    }
    SettleHeap();
}

std::unique_ptr<DOM> MakeOurs(const DOMParser& parser, const Document& document)
{
    std::unique_ptr<DOM> dom = parser.ParseXmlString(document.bytes, TString());
    return dom->HasErrors() ? nullptr : std::move(dom);
}

template <bool Destroy>
void OurDom(benchmark::State& state, const Document& document)
{
    const DOMParser parser;
    MakeAndEnd<Destroy>(state, [&] { return MakeOurs(parser, document); });
}

void OurDomWithLineNumbers(benchmark::State& state, const Document& document)
{
    DOMParser parser;
    parser.SetEnableLineNumbersOnElements(true);
    MakeAndEnd<false>(state, [&] { return MakeOurs(parser, document); });
}

std::unique_ptr<pugi::xml_document> MakePugixml(const Document& document)
{
    auto tree = std::make_unique<pugi::xml_document>();
    if (!tree->load_buffer(document.bytes.data(), document.bytes.size()))
        return nullptr;
    return tree;
}

struct EndXmlDoc
{
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

std::unique_ptr<xmlDoc, EndXmlDoc> MakeLibxml2(const Document& document)
{
    return std::unique_ptr<xmlDoc, EndXmlDoc>(
        xmlReadMemory(document.bytes.data(), static_cast<int>(document.bytes.size()), "document",
                      nullptr, XML_PARSE_NONET | XML_PARSE_HUGE));
}

std::unique_ptr<tinyxml2::XMLDocument> MakeTinyxml2(const Document& document)
{
    auto tree = std::make_unique<tinyxml2::XMLDocument>();
    if (tree->Parse(document.bytes.data(), document.bytes.size()) != tinyxml2::XML_SUCCESS)
        return nullptr;
    return tree;
}

/// It refuses documents of more than some hundred levels.
bool TakesTinyxml2(const Document& document)
{
    return document.name != "deep";
}

std::unique_ptr<QDomDocument> MakeQDom(const Document& document)
{
    auto tree = std::make_unique<QDomDocument>();
    const auto size = static_cast<qsizetype>(document.bytes.size());
    if (!tree->setContent(QByteArray::fromRawData(document.bytes.data(), size)))
        return nullptr;
    return tree;
}

std::unique_ptr<xercesc::XercesDOMParser> MakeXercesDom(const Document& document)
{
    InitialiseXercesOnce();
    auto tree = std::make_unique<xercesc::XercesDOMParser>();
    tree->setLoadExternalDTD(false);
    xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(document.bytes.data()),
                                      document.bytes.size(), u"document");
    source.setCopyBufToStream(false);
    tree->parse(source);
    if (tree->getErrorCount() > 0)
        return nullptr;
    return tree;
}

void Register(const std::string& name, Function function, const Document& document)
{
    benchmark::RegisterBenchmark(name.c_str(), [function, &document](benchmark::State& state) {
        function(state, document);
    })->Unit(benchmark::kMillisecond);
}

template <typename Make>
void MeasureHeap(const std::string& name, const Document& document, Make&& make)
{
    const std::size_t before = GetHeapInUse();
    auto tree = make();
    const std::size_t after = GetHeapInUse();
    if (tree == nullptr)
        throw std::runtime_error(name + ": the document was not parsed");
    AddValue(name,
             static_cast<double>(after - before) / static_cast<double>(document.bytes.size()));
}

} // namespace

void RegisterParseBenchmarks()
{
    for (const Document& document : GetDocuments()) {
        const std::string suffix = "/" + document.name;
        const std::string scan = "scan" + suffix;
        Register(scan, Scan, document);
        Register("parse" + suffix, OurDom<false>, document);
        Register("destroy" + suffix, OurDom<true>, document);
        Register("lines" + suffix, OurDomWithLineNumbers, document);
        const Limits limits = GetLimits(document);
        AddRatio({"bytes to DOM", document.name, "parse" + suffix, scan, limits.besideScanner});
        AddRatio({"destroying the DOM", document.name, "destroy" + suffix, scan, c_destroying});
        AddRatio({"bytes to DOM with line numbers", document.name, "lines" + suffix,
                  "parse" + suffix, c_withLineNumbers});

        const auto peer = [&](const std::string& name, double limit, Function function) {
            const std::string full = "parse:" + name + suffix;
            Register(full, function, document);
            AddRatio({"bytes to a tree of " + name, document.name, full, scan, 0});
            // Ours once more, in the process of this peer.
            const std::string beside = "beside:" + name + suffix;
            Register(beside, OurDom<false>, document);
            AddRatio({"bytes to DOM beside " + name, document.name, beside, full, limit});
        };
        peer("pugixml", limits.besidePugixml, [](benchmark::State& state, const Document& d) {
            MakeAndEnd<false>(state, [&] { return MakePugixml(d); });
        });
        peer("libxml2", c_besideOthers, [](benchmark::State& state, const Document& d) {
            MakeAndEnd<false>(state, [&] { return MakeLibxml2(d); });
        });
        if (TakesTinyxml2(document)) {
            peer("tinyxml2", c_besideOthers, [](benchmark::State& state, const Document& d) {
                MakeAndEnd<false>(state, [&] { return MakeTinyxml2(d); });
            });
        }
        peer("QDomDocument", 0, [](benchmark::State& state, const Document& d) {
            MakeAndEnd<false>(state, [&] { return MakeQDom(d); });
        });
        peer("XercesDOMParser", 0, [](benchmark::State& state, const Document& d) {
            MakeAndEnd<false>(state, [&] { return MakeXercesDom(d); });
        });
    }
}

void MeasureHeaps()
{
    // Xerces and the library's own statics come into being before anything is counted.
    const DOMParser parser;
    parser.ParseXmlString("<warm/>", TString());
    for (const Document& document : GetDocuments()) {
        const std::string suffix = "/" + document.name;
        const auto measure = [&](const char* name, double limit, auto&& make) {
            const std::string full = "heap:" + std::string(name) + suffix;
            MeasureHeap(full, document, make);
            AddRatio({"heap, bytes a source byte", document.name, full, "1", limit});
        };
        measure("kescorexml", c_heap, [&] { return MakeOurs(parser, document); });
        measure("pugixml", 0, [&] { return MakePugixml(document); });
        measure("libxml2", 0, [&] { return MakeLibxml2(document); });
        if (TakesTinyxml2(document))
            measure("tinyxml2", 0, [&] { return MakeTinyxml2(document); });
        measure("QDomDocument", 0, [&] { return MakeQDom(document); });
        measure("XercesDOMParser", 0, [&] { return MakeXercesDom(document); });
    }
}

#include "Documents.h"
#include "Families.h"
#include "Ratios.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <pugixml.hpp>

#include <memory>
#include <string>

namespace {

/// What a copy may cost beside its peer.
constexpr double c_copyLimit = 2;

using Function = void (*)(benchmark::State&, const Document&);

std::unique_ptr<DOM> Parse(const Document& document)
{
    return DOMParser().ParseXmlString(document.bytes, TString());
}

void Copy(benchmark::State& state, const Document& document)
{
    const std::unique_ptr<DOM> dom = Parse(document);
    for (auto _ : state) {
        auto copy = std::make_unique<DOM>();
        copy->DeepCopy(*dom);
        state.PauseTiming();
        copy.reset();
        state.ResumeTiming();
    }
}

void CopyPugixml(benchmark::State& state, const Document& document)
{
    pugi::xml_document tree;
    tree.load_buffer(document.bytes.data(), document.bytes.size());
    for (auto _ : state) {
        auto copy = std::make_unique<pugi::xml_document>();
        copy->reset(tree);
        state.PauseTiming();
        copy.reset();
        state.ResumeTiming();
    }
}

void CopyLibxml2(benchmark::State& state, const Document& document)
{
    xmlDoc* tree = xmlReadMemory(document.bytes.data(), static_cast<int>(document.bytes.size()),
                                 "document", nullptr, XML_PARSE_NONET | XML_PARSE_HUGE);
    for (auto _ : state) {
        xmlDoc* copy = xmlCopyDoc(tree, 1);
        state.PauseTiming();
        xmlFreeDoc(copy);
        state.ResumeTiming();
    }
    xmlFreeDoc(tree);
}

void Compare(benchmark::State& state, const Document& document)
{
    const std::unique_ptr<DOM> one = Parse(document);
    const std::unique_ptr<DOM> other = Parse(document);
    if (!(*one == *other)) {
        state.SkipWithError("equal documents were found to differ");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(*one == *other);
}

/// Moves the document element from one document into another, and back the next time.
void Move(benchmark::State& state, const Document& document)
{
    std::unique_ptr<DOM> from = Parse(document);
    auto to = std::make_unique<DOM>();
    for (auto _ : state) {
        to->GetRoot()->Adopt(*from->GetDocumentRoot(), nullptr);
        from.swap(to);
    }
}

/// Hands the parsed tree to a formatter that builds a new one.
void Rebuild(benchmark::State& state, const Document& document)
{
    const std::unique_ptr<DOM> dom = Parse(document);
    for (auto _ : state) {
        auto formatter = std::make_unique<XMLDomFormatter>();
        formatter->OutputDOMElement(*dom->GetDocumentRoot());
        state.PauseTiming();
        formatter.reset();
        state.ResumeTiming();
    }
}

void GetOutput(benchmark::State& state, const Document& document)
{
    XMLDomFormatter formatter(Parse(document));
    formatter.OutputHeader();
    for (auto _ : state)
        benchmark::DoNotOptimize(formatter.GetOutput(FormatMode::EscapeAll));
}

} // namespace

void RegisterTreeBenchmarks()
{
    for (const Document& document : GetDocuments()) {
        const std::string suffix = "/" + document.name;
        const auto add = [&](const std::string& name, Function function) {
            benchmark::RegisterBenchmark((name + suffix).c_str(), [function, &document](
                                                                      benchmark::State& state) {
                function(state, document);
            })->Unit(benchmark::kMillisecond);
        };
        add("copy", Copy);
        add("copy:pugixml", CopyPugixml);
        add("copy:libxml2", CopyLibxml2);
        add("compare", Compare);
        add("move", Move);
        add("rebuild", Rebuild);
        add("GetOutput", GetOutput);

        const auto against = [&](const char* work, const std::string& subject,
                                 const std::string& reference, double limit = 0) {
            AddRatio({work, document.name, subject + suffix, reference + suffix, limit});
        };
        against("DeepCopy", "copy", "copy:pugixml", c_copyLimit);
        against("copy of libxml2", "copy:libxml2", "copy:pugixml");
        against("comparing two equal trees", "compare", "copy");
        against("moving between documents", "move", "copy");
        against("XMLDomFormatter::OutputDOMElement", "rebuild", "copy");
        against("XMLDomFormatter::GetOutput", "GetOutput", "write:pugixml");
    }
}

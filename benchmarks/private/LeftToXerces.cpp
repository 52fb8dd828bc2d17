#include "PrivateFamilies.h"

#include "../Documents.h"
#include "../Peers.h"
#include "../Ratios.h"

#include "direct/DirectScanning.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace {

// Beside the scanner.

constexpr double c_notPlain = 1.35;
/// Both roads, one after the other.
constexpr double c_declined = 1.35 + 0.35;

void Scan(benchmark::State& state, const Document& document)
{
    BareReader reader;
    for (auto _ : state)
        reader.Parse(document.bytes);
}

/// Parses with one parser, and fails when the direct scanner did not come to that verdict.
void Parse(benchmark::State& state, const std::string& bytes, DirectScanning::Verdict verdict)
{
    const DOMParser parser;
    for (auto _ : state) {
        std::unique_ptr<DOM> dom = parser.ParseXmlString(bytes, TString());
        state.PauseTiming();
        dom.reset();
        state.ResumeTiming();
    }
    if (DirectScanning::GetLastVerdict() != verdict)
        state.SkipWithError("the document took another road than it was made for");
}

/// What a document costs that is not plain for something that costs nothing: it could be any.
void NotPlain(benchmark::State& state, const Document& document)
{
    const DirectScanning::Switch off(false);
    Parse(state, document.bytes, DirectScanning::Verdict::Disabled);
}

void DeclinedAtTheEnd(benchmark::State& state, const Document& document)
{
    Parse(state, document.bytes + "junk", DirectScanning::Verdict::Markup);
}

} // namespace

void RegisterLeftToXercesBenchmarks()
{
    for (const Document& document : GetDocuments()) {
        const auto add = [&](const std::string& name,
                             void (*function)(benchmark::State&, const Document&)) {
            std::string full = name + "/" + document.name;
            benchmark::RegisterBenchmark(full.c_str(), [function,
                                                        &document](benchmark::State& state) {
                function(state, document);
            })->Unit(benchmark::kMillisecond);
            return full;
        };
        const std::string scan = add("scan", Scan);
        AddRatio({"bytes to DOM, not plain", document.name, add("notplain", NotPlain), scan,
                  c_notPlain});
        AddRatio({"bytes to DOM, declined at the end", document.name,
                  add("declined", DeclinedAtTheEnd), scan, c_declined});
    }
}

#include "Documents.h"
#include "Families.h"
#include "Ratios.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElementSearch.h>
#include <kescorexml/DOMElementTraversal.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>

namespace {

/// What a path query may cost beside its peer. Walks have no limit: down a chain each element tells
/// only where the next one is, while pugixml's nodes follow one another.
constexpr double c_pathLimit = 1;

/// What is asked of a document, in words that mean the same to this library and to XPath.
struct Queries
{
    const char* document;
    const char* byName;
    const char* byAny;
    const char* byDeepSteps;
};

constexpr Queries c_queries[] = {
    {"attributes", "//calculation", "//*", "//column//calculation"},
    {"text", "//p", "//*", "//chapter//p"},
    {"deep", "//folder", "//*", "//tree//folder//folder"},
    {"mime", "//glob", "//*", "//mime-type//glob"},
    {"cldr-cs", "//displayName", "//*", "//numbers//currency//displayName"},
    {"te", "//annotation", "//*", "//annotations//annotation"},
};

constexpr char c_noName[] = "no-such-element";

/// The same document in both libraries.
struct Trees
{
    explicit Trees(const Document& document)
        : ours(DOMParser().ParseXmlString(document.bytes, TString()))
    {
        peer.load_buffer(document.bytes.data(), document.bytes.size());
    }

    const DOMElement& Root() const { return *std::as_const(*ours).GetDocumentRoot(); }

    std::unique_ptr<DOM> ours;
    pugi::xml_document peer;
};

std::size_t WalkOurs(const Trees& trees)
{
    std::size_t elements = 0;
    for (const DOMElement& element : DOMElementTraversal::ConstPreorderTraversal(trees.Root())) {
        benchmark::DoNotOptimize(&element);
        ++elements;
    }
    return elements;
}

std::size_t WalkPeer(Trees& trees)
{
    std::size_t elements = 0;
    pugi::xml_node node = trees.peer.document_element();
    while (node) {
        elements += node.type() == pugi::node_element ? 1U : 0U;
        if (const pugi::xml_node child = node.first_child()) {
            node = child;
            continue;
        }
        pugi::xml_node next;
        while (node && !(next = node.next_sibling()))
            node = node.parent();
        node = next;
    }
    return elements;
}

std::size_t FindOurs(const Trees& trees)
{
    static const TString c_name(c_noName);
    return DOMElementSearch::FindElement(trees.Root(), c_name, std::numeric_limits<int>::max(),
                                         TString(), TString()) != nullptr;
}

std::size_t FindPeer(const Trees& trees)
{
    return !trees.peer
                .find_node([](const pugi::xml_node& node) {
                    return std::strcmp(node.name(), c_noName) == 0;
                })
                .empty();
}

/// Registers one question asked both ways; each way returns how many elements it found.
template <typename Ours, typename Peer>
void Add(const char* work, const char* name, const Document& document, double limit, Ours ours,
         Peer peer)
{
    const std::string subject = std::string(name) + "/" + document.name;
    const std::string reference = std::string(name) + ":pugixml/" + document.name;
    const auto run = [&document, ours, peer](benchmark::State& state, bool isPeer) {
        Trees trees(document);
        if (ours(trees) != peer(trees)) {
            state.SkipWithError("the two libraries found different numbers of elements");
            return;
        }
        for (auto _ : state)
            benchmark::DoNotOptimize(isPeer ? peer(trees) : ours(trees));
    };
    for (const bool isPeer : {false, true})
        benchmark::RegisterBenchmark((isPeer ? reference : subject).c_str(),
                                     [run, isPeer](benchmark::State& state) { run(state, isPeer); })
            ->Unit(benchmark::kMillisecond);
    AddRatio({work, document.name, subject, reference, limit});
}

void AddPath(const char* work, const char* name, const Document& document, const char* path)
{
    Add(
        work, name, document, c_pathLimit,
        [path = TString(path)](const Trees& trees) {
            return DOMPath::GetAll(trees.Root(), path).size();
        },
        [path](const Trees& trees) { return trees.peer.select_nodes(path).size(); });
}

} // namespace

void RegisterQueryBenchmarks()
{
    for (const Document& document : GetDocuments()) {
        for (const Queries& queries : c_queries) {
            if (document.name != queries.document)
                continue;
            AddPath("GetAll by name", "query-name", document, queries.byName);
            AddPath("GetAll by *", "query-any", document, queries.byAny);
            AddPath("GetAll by deep steps", "query-deep", document, queries.byDeepSteps);
            Add("FindElement", "find", document, 0, FindOurs, FindPeer);
            Add("pre-order walk", "walk", document, 0, WalkOurs, WalkPeer);
        }
    }
}

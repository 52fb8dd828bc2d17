#include "Documents.h"
#include "Families.h"
#include "Ratios.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElementTraversal.h>
#include <kescorexml/DOMParser.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

constexpr const char* c_document = "attributes";
constexpr std::array<std::size_t, 3> c_counts{0, 1, 100'000};

/// The document, with an error on each of the elements that a walk meets first.
std::unique_ptr<DOM> MakeDocument(std::size_t errors)
{
    std::unique_ptr<DOM> dom = DOMParser().ParseXmlString(GetDocument(c_document).bytes, TString());
    const TString message(u"the value is out of range");
    std::size_t left = errors;
    for (const DOMElement& element :
         DOMElementTraversal::ConstPreorderTraversal(*dom->GetDocumentRoot())) {
        if (left == 0)
            break;
        element.Error(message, TError::ErrorInfo::NoError(), false, false);
        --left;
    }
    if (left > 0)
        throw std::logic_error("the document has too few elements");
    return dom;
}

/// What the listings cannot do without: one walk over the tree.
void Walk(benchmark::State& state)
{
    const std::unique_ptr<DOM> dom = MakeDocument(0);
    for (auto _ : state) {
        std::size_t count = 0;
        for (const DOMElement& element :
             DOMElementTraversal::ConstPreorderTraversal(*dom->GetRoot()))
            count += element.HasText() ? 1U : 0U;
        benchmark::DoNotOptimize(count);
    }
}

void HasErrors(benchmark::State& state, std::size_t errors)
{
    const std::unique_ptr<DOM> dom = MakeDocument(errors);
    for (auto _ : state)
        benchmark::DoNotOptimize(dom->GetDocumentRoot()->HasErrors());
}

/// Asks an element that has none, behind all those that have some.
void HasErrorsNot(benchmark::State& state, std::size_t errors)
{
    const std::unique_ptr<DOM> dom = MakeDocument(errors);
    const DOMElement* last = nullptr;
    for (const DOMElement& element :
         DOMElementTraversal::ConstPreorderTraversal(*dom->GetDocumentRoot()))
        last = &element;
    if (last->HasErrors()) {
        state.SkipWithError("the last element has errors");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(last->HasErrors());
}

void GetErrors(benchmark::State& state, std::size_t errors)
{
    const std::unique_ptr<DOM> dom = MakeDocument(errors);
    for (auto _ : state) {
        std::list<TString> messages = dom->GetErrors();
        benchmark::DoNotOptimize(messages.size());
    }
}

/// Recording on as many elements, and forgetting again.
void Record(benchmark::State& state, std::size_t errors)
{
    const std::unique_ptr<DOM> dom = MakeDocument(0);
    const TString message(u"the value is out of range");
    for (auto _ : state) {
        std::size_t left = errors;
        for (const DOMElement& element :
             DOMElementTraversal::ConstPreorderTraversal(*dom->GetDocumentRoot())) {
            if (left-- == 0)
                break;
            element.Error(message, TError::ErrorInfo::NoError(), false, false);
        }
        dom->ClearErrors();
    }
}

} // namespace

void RegisterDiagnosticsBenchmarks()
{
    const std::string walk = std::string("walk:diagnostics/") + c_document;
    benchmark::RegisterBenchmark(walk.c_str(), Walk)->Unit(benchmark::kMillisecond);
    for (const std::size_t count : c_counts) {
        const auto add = [&](const std::string& work,
                             void (*function)(benchmark::State&, std::size_t)) {
            const std::string subject = work + ":" + std::to_string(count) + "/" + c_document;
            benchmark::RegisterBenchmark(subject.c_str(), [function,
                                                           count](benchmark::State& state) {
                function(state, count);
            })->Unit(benchmark::kMillisecond);
            AddRatio(
                {work + ", " + std::to_string(count) + " errors", c_document, subject, walk, 0});
        };
        add("HasErrors", HasErrors);
        add("HasErrors of an element without", HasErrorsNot);
        add("GetErrors", GetErrors);
        add("recording and clearing", Record);
    }
}

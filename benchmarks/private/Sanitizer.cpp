#include "PrivateFamilies.h"

#include "../Documents.h"
#include "../Ratios.h"

#include "bytes/XercesColonSanitizer.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t c_bytes = 8'000'000;

/// Where no attribute's name begins with a colon, the sanitizer is to be as fast as two searches
/// for a byte.
constexpr double c_oneRun = 2;
/// Where each block of bytes that are looked at together has a colon, it is a little more.
constexpr double c_manyColons = 3;
/// What is found has to be looked at, and the whole text copied. Lest it become worse.
constexpr double c_manyNames = 60;

std::string Replace(std::string text, std::string_view before, std::string_view after)
{
    std::string replaced;
    std::size_t from = 0;
    for (std::size_t at; (at = text.find(before, from)) != std::string::npos;
         from = at + before.size())
        replaced.append(text, from, at - from).append(after);
    return replaced.append(text, from);
}

/// Measures the sanitizer beside one search through the same text for a byte that is not there.
void Add(const std::string& document, std::string text, double limit)
{
    const auto input = std::make_shared<const std::string>(std::move(text));
    const std::string subject = "sanitize/" + document;
    const std::string reference = "memchr/" + document;
    const auto add = [](const std::string& name, std::function<void()> work) {
        benchmark::RegisterBenchmark(name.c_str(), [work =
                                                        std::move(work)](benchmark::State& state) {
            for (auto _ : state)
                work();
        })->Unit(benchmark::kMillisecond);
    };
    add(subject, [input] {
        benchmark::DoNotOptimize(XercesColonSanitizer::EncodeColonAttributeNames(input));
    });
    add(reference,
        [input] { benchmark::DoNotOptimize(std::memchr(input->data(), '\1', input->size())); });
    AddRatio({"colon sanitizer", document, subject, reference, limit});
}

} // namespace

/// What stands before every parse and is no part of the library's face, so that it is measured by
/// itself.
void RegisterSanitizerBenchmarks()
{
    Add("text, no colon", MakeTextHeavy(c_bytes), c_oneRun);
    Add("attributes, no colon", MakeAttributeHeavy(c_bytes), c_oneRun);
    for (const Document& document : GetDocuments())
        Add(document.name, document.bytes, document.name == "mime" ? c_manyColons : c_oneRun);
    // One name in each start tag.
    Add("attributes, colon names", Replace(MakeAttributeHeavy(c_bytes), " role=", " :role="),
        c_manyNames);
}

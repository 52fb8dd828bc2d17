#include "../Documents.h"
#include "../Ratios.h"

#include "XercesColonSanitizer.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t c_bytes = 8'000'000;

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
/// itself. Takes the flags of Google Benchmark and --check: exit with 1 when a ratio is above its
/// limit.
int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    const bool check = std::erase_if(arguments, [](const char* argument) {
                           return std::strcmp(argument, "--check") == 0;
                       }) > 0;
    Add("text, no colon name", MakeTextHeavy(c_bytes), 2);
    Add("attributes, no colon name", MakeAttributeHeavy(c_bytes), 2);
    // One name in each start tag, and the whole text has to be copied: no search can be compared.
    Add("attributes, colon names", Replace(MakeAttributeHeavy(c_bytes), " role=", " :role="), 0);
    const int exceeded = RunAndPrintRatios(static_cast<int>(arguments.size()), arguments.data());
    return check && exceeded > 0 ? 1 : 0;
}

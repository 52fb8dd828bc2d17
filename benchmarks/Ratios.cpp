#include "Ratios.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <string_view>

#include <malloc.h>

namespace {

std::vector<Ratio>& GetRatios()
{
    static std::vector<Ratio> ratios;
    return ratios;
}

/// The figures of each benchmark in nanoseconds, one for each round, and the values that were
/// given.
std::map<std::string, std::vector<double>>& GetFigures()
{
    static std::map<std::string, std::vector<double>> figures;
    return figures;
}

class CollectingReporter final : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            const char* name = run.run_name.function_name.c_str();
            if (run.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", name, run.error_message.c_str());
                m_hasFailed = true;
                continue;
            }
            if (run.run_type != Run::RT_Iteration)
                continue;
            const double seconds = run.cpu_accumulated_time / static_cast<double>(run.iterations);
            GetFigures()[name].push_back(seconds * 1e9);
            std::fprintf(stderr, "%-60s %14.0f ns\n", name, seconds * 1e9);
        }
    }

    bool HasFailed() const { return m_hasFailed; }

private:
    bool m_hasFailed = false;
};

/// Takes the flag out of the arguments. Returns whether it was there.
bool TakeFlag(std::vector<char*>& arguments, const char* flag)
{
    return std::erase_if(arguments, [flag](const char* argument) {
               return std::strcmp(argument, flag) == 0;
           }) > 0;
}

int TakeRounds(std::vector<char*>& arguments)
{
    static constexpr std::string_view c_flag = "--rounds=";
    int rounds = 1;
    std::erase_if(arguments, [&rounds](const char* argument) {
        if (!std::string_view(argument).starts_with(c_flag))
            return false;
        rounds = std::atoi(argument + c_flag.size());
        return true;
    });
    return rounds;
}

/// The median of what the figures of each round give.
double MedianRatio(const std::vector<double>& subjects, const std::vector<double>& references)
{
    std::vector<double> ratios(subjects.size());
    std::transform(subjects.begin(), subjects.end(), references.begin(), ratios.begin(),
                   [](double subject, double reference) { return subject / reference; });
    const auto middle = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2);
    std::nth_element(ratios.begin(), middle, ratios.end());
    return *middle;
}

enum class Outcome
{
    NotMeasured,
    Broken,
    Within,
    Above,
};

Outcome Print(const Ratio& ratio)
{
    const std::vector<double>& subjects = GetFigures()[ratio.subject];
    const std::vector<double>& references = GetFigures()[ratio.reference];
    if (subjects.empty())
        return Outcome::NotMeasured;
    if (subjects.size() != references.size()) {
        std::fprintf(stderr, "%s was measured %zu times, %s %zu times\n", ratio.subject.c_str(),
                     subjects.size(), ratio.reference.c_str(), references.size());
        return Outcome::Broken;
    }
    const double value = MedianRatio(subjects, references);
    const bool isAbove = ratio.limit > 0 && !(value <= ratio.limit);
    std::printf("| %s | %s | %s | %s | %.3g%s | ", ratio.work.c_str(), ratio.document.c_str(),
                ratio.subject.c_str(), ratio.reference.c_str(), value, isAbove ? " (above)" : "");
    if (ratio.limit > 0)
        std::printf("%.3g", ratio.limit);
    std::printf(" |\n");
    return isAbove ? Outcome::Above : Outcome::Within;
}

} // namespace

void AddRatio(Ratio ratio)
{
    GetRatios().push_back(std::move(ratio));
}

void AddValue(const std::string& name, double value)
{
    GetFigures()[name].push_back(value);
}

void SetUpHeap(std::vector<char*>& arguments)
{
    if (TakeFlag(arguments, "--cold"))
        return;
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
}

int RunAndPrintRatios(std::vector<char*> arguments)
{
    const bool check = TakeFlag(arguments, "--check");
    const int rounds = TakeRounds(arguments);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (rounds < 1)
        std::fprintf(stderr, "--rounds wants a number of rounds\n");
    if (rounds < 1 || benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;
    CollectingReporter reporter;
    for (int round = 0; round < rounds; ++round)
        benchmark::RunSpecifiedBenchmarks(&reporter);
    AddValue("1", 1);

    std::printf("| work | document | measured | against | ratio | limit |\n");
    std::printf("|---|---|---|---|---:|---:|\n");
    bool isBroken = reporter.HasFailed();
    int above = 0;
    for (const Ratio& ratio : GetRatios()) {
        const Outcome outcome = Print(ratio);
        isBroken = isBroken || outcome == Outcome::Broken;
        above += outcome == Outcome::Above ? 1 : 0;
    }
    if (above > 0)
        std::fprintf(stderr, "%d ratios are above their limits\n", above);
    return isBroken || (check && above > 0) ? 1 : 0;
}

#include "Ratios.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>

namespace {

std::vector<Ratio>& GetRatios()
{
    static std::vector<Ratio> ratios;
    return ratios;
}

/// The runs of each benchmark, in nanoseconds, and the values that were given.
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
            if (run.run_type != Run::RT_Iteration || run.error_occurred)
                continue;
            const double seconds = run.cpu_accumulated_time / static_cast<double>(run.iterations);
            GetFigures()[run.run_name.function_name].push_back(seconds * 1e9);
            std::fprintf(stderr, "%-60s %14.0f ns\n", run.run_name.function_name.c_str(),
                         seconds * 1e9);
        }
    }
};

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
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

int RunAndPrintRatios(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    CollectingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    AddValue("1", 1);

    int exceeded = 0;
    std::printf("| work | document | measured | against | ratio | limit |\n");
    std::printf("|---|---|---|---|---:|---:|\n");
    for (const Ratio& ratio : GetRatios()) {
        const auto subject = GetFigures().find(ratio.subject);
        const auto reference = GetFigures().find(ratio.reference);
        if (subject == GetFigures().end() || reference == GetFigures().end())
            continue;
        const double value = Median(subject->second) / Median(reference->second);
        const bool isAbove = ratio.limit > 0 && value > ratio.limit;
        exceeded += isAbove ? 1 : 0;
        std::printf("| %s | %s | %s | %s | %.3g%s | ", ratio.work.c_str(), ratio.document.c_str(),
                    ratio.subject.c_str(), ratio.reference.c_str(), value,
                    isAbove ? " (above)" : "");
        if (ratio.limit > 0)
            std::printf("%.3g", ratio.limit);
        std::printf(" |\n");
    }
    return exceeded;
}

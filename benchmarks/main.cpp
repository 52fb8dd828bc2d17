#include "Families.h"
#include "Growth.h"
#include "Large.h"
#include "Ratios.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

int MeasureLarge()
{
    try {
        const int grown = PrintLarge();
        if (grown > 0)
            std::fprintf(stderr, "%d costs a byte grow with the size\n", grown);
        return grown > 0 ? 1 : 0;
    } catch (const std::runtime_error& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}

} // namespace

/// Takes the flags of RunAndPrintRatios() and these:
///   --cold    let the heap give memory back to the system after each run, so that the next one
///             pays for getting it; else the heap stays warm, for this library and its peers alike
///   --heaps   measure the memory that trees take, and nothing else
///   --growth  measure how time grows with inputs that double, and nothing else; exit with 1 when
///             one grows clearly faster than linearly (see Growth.h)
///   --large   measure documents up to 1 GB, and nothing else; exit with 1 when a byte costs more
///             in large ones (see Large.h)
int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    const auto take = [&arguments](const char* flag) {
        return std::erase_if(arguments, [flag](const char* argument) {
                   return std::strcmp(argument, flag) == 0;
               }) > 0;
    };
    if (take("--large"))
        return MeasureLarge();
    SetUpHeap(arguments);
    if (take("--growth")) {
        const int exceeded = PrintGrowth();
        if (exceeded > 0)
            std::fprintf(stderr, "%d inputs take more than linear time\n", exceeded);
        return exceeded > 0 ? 1 : 0;
    }
    if (take("--heaps")) {
        MeasureHeaps();
        arguments.push_back(const_cast<char*>("--benchmark_filter=^$"));
    }
    RegisterParseBenchmarks();
    RegisterWriteBenchmarks();
    RegisterTreeBenchmarks();
    RegisterDiagnosticsBenchmarks();
    RegisterTextBenchmarks();
    RegisterFrontDoorBenchmarks();
    RegisterQueryBenchmarks();
    return RunAndPrintRatios(std::move(arguments));
}

#include "Families.h"
#include "Ratios.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

/// Takes the flags of Google Benchmark and these:
///   --check   exit with 1 when a ratio is above its limit
int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    const auto isCheck = [](const char* argument) { return std::strcmp(argument, "--check") == 0; };
    const bool check = std::any_of(arguments.begin(), arguments.end(), isCheck);
    std::erase_if(arguments, isCheck);

    MeasureHeaps();
    RegisterParseBenchmarks();
    RegisterWriteBenchmarks();
    const int exceeded =
        RunAndPrintRatios(static_cast<int>(arguments.size()), arguments.data());
    if (exceeded > 0)
        std::fprintf(stderr, "%d ratios are above their limits\n", exceeded);
    return check && exceeded > 0 ? 1 : 0;
}

#include "PrivateFamilies.h"

#include "../Ratios.h"

#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

/// Takes "--cold" and the flags of RunAndPrintRatios() and this one:
///   --accepted  count the installed documents that the direct scanner reads, and nothing else;
///   exit
///               with 1 when they are too few
int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    if (argc == 2 && std::strcmp(argv[1], "--accepted") == 0) {
        const bool areEnough = PrintAccepted();
        if (!areEnough)
            std::fprintf(stderr, "the direct scanner has read too few documents\n");
        return areEnough ? 0 : 1;
    }
    SetUpHeap(arguments);
    RegisterSanitizerBenchmarks();
    RegisterLeftToXercesBenchmarks();
    return RunAndPrintRatios(std::move(arguments));
}

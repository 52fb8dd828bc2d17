#include "PrivateFamilies.h"

#include "direct/DirectScanning.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>

namespace {

using DirectScanning::Verdict;

/// How much of the files of each folder is to be read directly.
constexpr double c_minimumShare = 0.95;

/// How many files came to each verdict.
struct Counts
{
    std::map<Verdict, std::size_t> files;
    std::size_t all = 0;

    double Share(Verdict verdict) const
    {
        const auto found = files.find(verdict);
        if (found == files.end())
            return 0;
        return static_cast<double>(found->second) / static_cast<double>(all);
    }
};

Counts Count(const char* folder)
{
    Counts counts;
    const DOMParser parser;
    std::error_code missing;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, missing)) {
        if (!entry.is_regular_file() || entry.path().extension() != ".xml")
            continue;
        parser.ParseXmlFile(TString::fromStdString(entry.path().string()));
        ++counts.files[DirectScanning::GetLastVerdict()];
        ++counts.all;
    }
    return counts;
}

bool Print(const char* name, const Counts& counts)
{
    const bool areEnough = counts.Share(Verdict::Accepted) >= c_minimumShare;
    for (const auto& [verdict, count] : counts.files) {
        const bool isAccepted = verdict == Verdict::Accepted;
        std::printf("| %s | %s | %zu | %.4g %%%s |", name, DirectScanning::GetName(verdict), count,
                    counts.Share(verdict) * 100, isAccepted && !areEnough ? " (below)" : "");
        if (isAccepted)
            std::printf(" %.3g %%", c_minimumShare * 100);
        std::printf(" |\n");
    }
    if (counts.all == 0)
        std::fprintf(stderr, "there are no documents of %s\n", name);
    return areEnough;
}

} // namespace

bool PrintAccepted()
{
    std::printf("| documents | direct scanner | files | share | at least |\n");
    std::printf("|---|---|---:|---:|---:|\n");
    const bool isEnoughOfCldr = Print("CLDR", Count("/usr/share/unicode/cldr"));
    const bool isEnoughOfMime = Print("shared-mime-info", Count("/usr/share/mime"));
    return isEnoughOfCldr && isEnoughOfMime;
}

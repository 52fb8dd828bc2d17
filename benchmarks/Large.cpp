#include "Large.h"

#include "Documents.h"
#include "Peers.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

double GetProcessorSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Runs `work` in a process of its own and returns the most memory that the process had.
template <typename Work>
std::size_t MeasurePeak(Work&& work)
{
    std::fflush(nullptr);
    // Else the process inherits room on the heap, and what it puts there does not count.
    malloc_trim(0);
    const pid_t child = fork();
    if (child == 0) {
        work();
        std::_Exit(0);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
        std::fprintf(stderr, "a measurement failed\n");
        std::exit(1);
    }
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

struct Figures
{
    double scan = 0;
    double parse = 0;
    double destroy = 0;
    double write = 0;
    std::size_t heap = 0;
};

/// Makes the machine itself get `size` bytes of memory, and gives them back to the system. Where
/// the machine is a virtual one, the first use of a page costs many times what later ones do, and
/// pages that were free for some seconds may count as new.
void TouchMemory(std::size_t size)
{
    constexpr std::size_t c_pageSize = 4096;
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return;
    for (std::size_t at = 0; at < size; at += c_pageSize)
        static_cast<volatile char*>(memory)[at] = 1;
    munmap(memory, size);
}

/// One run: the first in a process, so that all memory comes from the system.
Figures Measure(const std::string& bytes)
{
    Figures figures;
    constexpr std::size_t c_mostMemory = 8'000'000'000;
    constexpr std::size_t c_mostMemoryPerByte = 40;
    const std::size_t touched = std::min(c_mostMemory, c_mostMemoryPerByte * bytes.size());
    const auto time = [touched](double& seconds, auto&& work) {
        TouchMemory(touched);
        const double start = GetProcessorSeconds();
        work();
        seconds = GetProcessorSeconds() - start;
    };
    BareReader reader;
    const DOMParser parser;
    parser.ParseXmlString("<warm/>", TString());
    time(figures.scan, [&] { reader.Parse(bytes); });
    const std::size_t before = GetHeapInUse();
    std::unique_ptr<DOM> dom;
    time(figures.parse, [&] { dom = parser.ParseXmlString(bytes, TString()); });
    figures.heap = GetHeapInUse() - before;
    try {
        TString text;
        time(figures.write,
             [&] { text = XMLDomFormatter::RenderAsXMLString(*dom, nullptr, true); });
    } catch (const std::length_error&) {
        figures.write = std::numeric_limits<double>::quiet_NaN();
    }
    time(figures.destroy, [&] { dom.reset(); });
    return figures;
}

/// The medians of some such runs, each in a process of its own.
Figures MeasureApart(const std::string& bytes, int runs)
{
    int ends[2];
    if (pipe(ends) != 0)
        std::exit(1);
    std::vector<Figures> all(static_cast<std::size_t>(runs));
    for (Figures& figures : all) {
        MeasurePeak([&] {
            const Figures measured = Measure(bytes);
            if (write(ends[1], &measured, sizeof(measured)) != sizeof(measured))
                std::_Exit(1);
        });
        if (read(ends[0], &figures, sizeof(figures)) != sizeof(figures))
            std::exit(1);
    }
    close(ends[0]);
    close(ends[1]);
    const auto median = [&all](auto member) {
        std::nth_element(
            all.begin(), all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2), all.end(),
            [member](const Figures& a, const Figures& b) { return a.*member < b.*member; });
        return all[all.size() / 2].*member;
    };
    return {median(&Figures::scan), median(&Figures::parse), median(&Figures::destroy),
            median(&Figures::write), median(&Figures::heap)};
}

void PrintSizes()
{
    std::printf("| document | bytes | scan, ns/B | parse, ns/B | destroy, ns/B | write, ns/B "
                "| heap, B/B |\n|---|---:|---:|---:|---:|---:|---:|\n");
    const auto print = [](const char* name, std::string (*make)(std::size_t), std::size_t size) {
        const std::string bytes = make(size);
        const Figures figures = MeasureApart(bytes, size > 100'000'000 ? 3 : 7);
        const auto perByte = [&bytes](auto value) {
            return static_cast<double>(value) / static_cast<double>(bytes.size());
        };
        std::printf("| %s | %zu | %.2f | %.2f | %.3f | %.2f | %.2f |\n", name, bytes.size(),
                    perByte(figures.scan) * 1e9, perByte(figures.parse) * 1e9,
                    perByte(figures.destroy) * 1e9, perByte(figures.write) * 1e9,
                    perByte(figures.heap));
        std::fflush(stdout);
    };
    for (const std::size_t size :
         {std::size_t{10'000'000}, std::size_t{100'000'000}, std::size_t{1'000'000'000}}) {
        print("attributes", MakeAttributeHeavy, size);
        print("text", MakeTextHeavy, size);
        print("deep", MakeDeep, size);
    }
    std::printf("\nWhat is \"nan\" would not fit into a string.\n");
}

/// Copies of one element until the file is larger than what is read at once.
std::size_t WriteFile(const std::filesystem::path& path)
{
    constexpr std::size_t c_readAtOnce = 1'073'741'823;
    const std::string part = "<p>" + std::string(994, 'x') + "</p>";
    std::ofstream file(path, std::ios::binary);
    file << "<r>";
    std::size_t size = 7;
    for (; size <= c_readAtOnce; size += part.size())
        file << part;
    file << "</r>";
    file.close();
    if (!file) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        std::exit(1);
    }
    return size;
}

void PrintFile()
{
    const auto path = std::filesystem::temp_directory_path() /
                      ("kescorexml-large-" + std::to_string(getpid()) + ".xml");
    const std::size_t size = WriteFile(path);
    const std::size_t peak = MeasurePeak([&path] {
        const auto dom = DOMParser().ParseXmlFile(TString::fromStdString(path.string()));
        if (dom->HasErrors() || dom->GetDocumentRoot()->GetChildren().size() < 1'000'000)
            std::_Exit(1);
    });
    std::filesystem::remove(path);
    std::printf("\nA file of %zu bytes: parsed, at most %.2f bytes of memory a byte.\n", size,
                static_cast<double>(peak) / static_cast<double>(size));
}

void PrintPeaks()
{
    std::printf("\n| document | peak while parsing a string, B/B |\n|---|---:|\n");
    for (const Document& document : GetDocuments()) {
        const std::size_t base = MeasurePeak([] { DOMParser().ParseXmlString("<a/>", TString()); });
        const std::size_t peak =
            MeasurePeak([&document] { DOMParser().ParseXmlString(document.bytes, TString()); });
        std::printf("| %s | %.2f |\n", document.name.c_str(),
                    static_cast<double>(peak - base) / static_cast<double>(document.bytes.size()));
    }
}

} // namespace

void PrintLarge()
{
    PrintPeaks();
    PrintFile();
    std::printf("\n");
    PrintSizes();
}

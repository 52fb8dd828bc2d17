#include "Large.h"

#include "Documents.h"
#include "Peers.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
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
    if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0)
        throw std::runtime_error("a process that measures has failed");
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

/// For each byte of a document: nanoseconds of the processor, and bytes of memory.
struct Figures
{
    double scan = 0;
    double parse = 0;
    double destroy = 0;
    double write = 0;
    /// Filling fresh memory, as much as a text of the document takes at least.
    double fill = 0;
    double heap = 0;
};

enum class Heap
{
    /// Memory comes from the system when it is needed and goes back when it is not, as in a process
    /// that sets nothing.
    Cold,
    /// All memory that will be needed is in the process, and used before.
    Warm,
};

/// Fills memory, and has the compiler keep that although nobody reads it.
void Fill(void* memory, std::size_t size)
{
    std::memset(memory, 1, size);
    asm volatile("" : : "r"(memory) : "memory");
}

void WarmHeap(std::size_t size)
{
    constexpr int c_never = -1;
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, c_never);
    void* memory = std::malloc(size);
    if (memory == nullptr)
        std::_Exit(1);
    Fill(memory, size);
    std::free(memory);
}

/// Fills memory that comes from the system, which any program pays for as much. On a virtual
/// machine that differs by a factor of ten, with whether its host has the memory at hand.
void FillFreshMemory(std::size_t size)
{
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        std::_Exit(1);
    Fill(memory, size);
    munmap(memory, size);
}

/// One run: the first in a process.
Figures Measure(const std::string& bytes, Heap heap)
{
    const auto size = static_cast<double>(bytes.size());
    const auto time = [size](auto&& work) {
        const double start = GetProcessorSeconds();
        work();
        return (GetProcessorSeconds() - start) / size * 1e9;
    };
    if (heap == Heap::Warm) {
        constexpr std::size_t c_maximum = 12'000'000'000;
        // Indentation makes forty bytes of text from a byte of a deep document, and while the text
        // grows there may be two.
        constexpr std::size_t c_maximumPerByte = 100;
        WarmHeap(std::min(c_maximum, c_maximumPerByte * bytes.size()));
    }
    Figures figures;
    BareReader reader;
    const DOMParser parser;
    parser.ParseXmlString("<warm/>", TString());
    figures.scan = time([&] { reader.Parse(bytes); });
    const std::size_t before = GetHeapInUse();
    std::unique_ptr<DOM> dom;
    figures.parse = time([&] { dom = parser.ParseXmlString(bytes, TString()); });
    figures.heap = static_cast<double>(GetHeapInUse() - before) / size;
    // What a virtual machine's host takes to hand out memory that it does not have ready counts
    // here and not where the text needs as much again: it has nothing to do with the library.
    figures.fill = time([&] { FillFreshMemory(sizeof(char16_t) * bytes.size()); });
    try {
        TString text;
        figures.write =
            time([&] { text = XMLDomFormatter::RenderAsXMLString(*dom, nullptr, true); });
    } catch (const std::length_error&) {
        figures.write = std::numeric_limits<double>::quiet_NaN();
    }
    figures.destroy = time([&] { dom.reset(); });
    return figures;
}

/// The medians of some such runs, each in a process of its own.
Figures MeasureApart(const std::string& bytes, Heap heap, int runs)
{
    int ends[2];
    if (pipe(ends) != 0)
        throw std::runtime_error("no pipe");
    std::vector<Figures> all(static_cast<std::size_t>(runs));
    for (Figures& figures : all) {
        MeasurePeak([&] {
            const Figures measured = Measure(bytes, heap);
            if (write(ends[1], &measured, sizeof(measured)) != sizeof(measured))
                std::_Exit(1);
        });
        if (read(ends[0], &figures, sizeof(figures)) != sizeof(figures))
            throw std::runtime_error("a process that measures has said nothing");
    }
    close(ends[0]);
    close(ends[1]);
    const auto median = [&all](double Figures::*member) {
        std::nth_element(
            all.begin(), all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2), all.end(),
            [member](const Figures& a, const Figures& b) { return a.*member < b.*member; });
        return all[all.size() / 2].*member;
    };
    return {median(&Figures::scan),  median(&Figures::parse), median(&Figures::destroy),
            median(&Figures::write), median(&Figures::fill),  median(&Figures::heap)};
}

/// Prints a table of documents of one kind in three sizes. Returns how many of its costs a byte are
/// more than 1.3 times as high at the largest size that has them as at the smallest.
int PrintSizes(const char* name, std::string (*make)(std::size_t), Heap heap)
{
    std::printf("\n| %s, %s heap | scan, ns/B | parse, ns/B | destroy, ns/B | write, ns/B "
                "| fill, ns/B | heap, B/B |\n|---|---:|---:|---:|---:|---:|---:|\n",
                name, heap == Heap::Warm ? "warm" : "cold");
    constexpr struct
    {
        double Figures::*perByte;
        bool isOurs;
    } c_costs[] = {{&Figures::scan, false}, {&Figures::parse, true}, {&Figures::destroy, true},
                   {&Figures::write, true}, {&Figures::fill, false}, {&Figures::heap, true}};
    std::vector<Figures> sizes;
    for (const std::size_t size : {10'000'000U, 100'000'000U, 1'000'000'000U}) {
        sizes.push_back(MeasureApart(make(size), heap, size < 1'000'000'000 ? 7 : 3));
        std::printf("| %zu MB", size / 1'000'000);
        for (const auto& cost : c_costs)
            std::printf(" | %.3f", sizes.back().*cost.perByte);
        std::printf(" |\n");
        std::fflush(stdout);
    }
    int grown = 0;
    std::printf("| growth");
    for (const auto& [perByte, isOurs] : c_costs) {
        const bool hasLargest = !std::isnan(sizes[2].*perByte);
        const double growth = sizes[hasLargest ? 2 : 1].*perByte / (sizes[0].*perByte);
        std::printf(" | %.2f%s", growth, hasLargest ? "" : " (100 MB)");
        constexpr double c_maximumGrowth = 1.3;
        grown += isOurs && !(growth <= c_maximumGrowth) ? 1 : 0;
    }
    std::printf(" |\n");
    return grown;
}

/// A file that is larger than what is read at once, full of copies of one element. It goes with
/// this object.
class LargeFile
{
public:
    LargeFile()
        : m_path(std::filesystem::temp_directory_path() /
                 ("kescorexml-large-" + std::to_string(getpid()) + ".xml"))
    {
        constexpr std::size_t c_readAtOnce = 1'073'741'823;
        const std::string part = "<p>" + std::string(994, 'x') + "</p>";
        std::ofstream file(m_path, std::ios::binary);
        file << "<r>";
        for (m_size = 7; m_size <= c_readAtOnce; m_size += part.size())
            file << part;
        file << "</r>";
        file.close();
        if (!file) {
            Remove();
            throw std::runtime_error("cannot write " + m_path.string());
        }
    }
    ~LargeFile() { Remove(); }
    LargeFile(const LargeFile&) = delete;
    LargeFile& operator=(const LargeFile&) = delete;

    TString Path() const { return TString::fromStdString(m_path.string()); }
    std::size_t Size() const { return m_size; }

private:
    void Remove()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }

    std::filesystem::path m_path;
    std::size_t m_size = 0;
};

void PrintFile()
{
    const LargeFile file;
    const std::size_t peak = MeasurePeak([&file] {
        const auto dom = DOMParser().ParseXmlFile(file.Path());
        if (dom->HasErrors() || dom->GetDocumentRoot()->GetChildren().size() < 1'000'000)
            std::_Exit(1);
    });
    std::printf("\nA file of %zu bytes: parsed, at most %.2f bytes of memory a byte.\n",
                file.Size(), static_cast<double>(peak) / static_cast<double>(file.Size()));
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

int PrintLarge()
{
    PrintPeaks();
    PrintFile();
    std::printf("\nWhat is \"nan\" would not fit into a string.\n");
    int grown = 0;
    for (const Heap heap : {Heap::Cold, Heap::Warm}) {
        const int grownHere = PrintSizes("attributes", MakeAttributeHeavy, heap) +
                              PrintSizes("text", MakeTextHeavy, heap) +
                              PrintSizes("deep", MakeDeep, heap);
        if (heap == Heap::Warm)
            grown = grownHere;
    }
    return grown;
}

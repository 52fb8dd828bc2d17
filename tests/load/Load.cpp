// Eight threads that parse, validate, query, write and exchange diagnostics, with memory that fails
// at random:
//   load steps NUMBER FOLDER...     so many steps of each thread
//   load seconds NUMBER FOLDER...   so long; then memory must be flat, too
// The folders hold documents. Ends with 1 at the first thing that is not as it must be.

#include "load/Corpus.h"
#include "load/ResidentPeaks.h"
#include "load/Worker.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

#if defined(__SANITIZE_ADDRESS__)
/// Xerces is compiled without frame pointers, and what it leaks is known by where it was allocated.
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}

/// Where memory fails, the scanner forgets the stream that it was to read, or a part of the message
/// that it was to give.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions()
{
    return "leak:ReaderMgr::createReader\nleak:InMemMsgLoader::loadMsg\n";
}
#endif

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t c_threads = 8;

struct Extent
{
    std::size_t steps = 0;
    std::chrono::seconds seconds{0};
};

struct Totals
{
    std::atomic<std::size_t> steps = 0;
    std::atomic<std::size_t> failures = 0;
    std::atomic<std::size_t> running = c_threads;
    std::atomic<bool> isBroken = false;
};

void RunWorker(Worker& worker, const std::function<bool(std::size_t)>& isEnough, Totals& totals)
{
    try {
        for (std::size_t step = 0; !isEnough(step) && !totals.isBroken; ++step) {
            worker.Step();
            ++totals.steps;
        }
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "load: %s\n", exception.what());
        totals.isBroken = true;
    }
    totals.failures += worker.CountFailures();
    --totals.running;
}

bool Run(const std::vector<std::string>& corpus, const Extent& extent)
{
    SharedDocuments shared(c_threads);
    Totals totals;
    const Clock::time_point begin = Clock::now();
    const auto isEnough = [&](std::size_t step) {
        return extent.steps > 0 ? step == extent.steps : Clock::now() - begin >= extent.seconds;
    };
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < c_threads; ++i) {
        threads.emplace_back([&, i] {
            Worker worker(corpus, shared, i);
            RunWorker(worker, isEnough, totals);
        });
    }
    ResidentPeaks peaks;
    while (totals.running > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        if (extent.steps == 0)
            peaks.Look(static_cast<std::size_t>((Clock::now() - begin) * ResidentPeaks::c_parts /
                                                extent.seconds));
    }
    for (std::thread& thread : threads)
        thread.join();
    std::printf("load: %zu threads, %zu documents, %.0f s, %zu steps, memory failed in %zu\n",
                c_threads, corpus.size(),
                std::chrono::duration<double>(Clock::now() - begin).count(), totals.steps.load(),
                totals.failures.load());
    if (totals.failures == 0 && !totals.isBroken) {
        std::fputs("load: memory never failed\n", stderr);
        return false;
    }
    if (extent.steps > 0)
        return !totals.isBroken;
    std::printf("load: peaks of its tenths, in MiB:");
    for (const std::size_t peak : peaks.Get())
        std::printf(" %zu", peak >> 20);
    std::printf("\n");
    if (!peaks.AreFlat())
        std::fputs("load: memory grows\n", stderr);
    return !totals.isBroken && peaks.AreFlat();
}

} // namespace

int main(int count, char** arguments)
{
    try {
        const std::vector<std::string> words(arguments + 1, arguments + count);
        if (words.size() < 3 || (words[0] != "steps" && words[0] != "seconds"))
            throw std::runtime_error("usage: load steps|seconds NUMBER FOLDER...");
        Extent extent;
        if (words[0] == "steps")
            extent.steps = std::stoul(words[1]);
        else
            extent.seconds = std::chrono::seconds(std::stoul(words[1]));
        if (extent.steps == 0 && extent.seconds.count() == 0)
            throw std::runtime_error("nothing to do");
        return Run(ReadCorpus({words.begin() + 2, words.end()}), extent) ? 0 : 1;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "load: %s\n", exception.what());
        return 2;
    }
}

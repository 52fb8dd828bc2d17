// Linked into the test programs of the tree in which tools/mutation plants its faults. Writes, to
// the file that MUTATION_RECORD names, a line a test: name, source file, seconds of a core and the
// switches that it passed; the line named * is for what is passed before any test. Without that
// variable it ends the process at the first failure: one is enough.
#include "MutationSwitch.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

namespace {
constexpr int c_failureStatus = 10;

class Recorder : public testing::EmptyTestEventListener
{
public:
    explicit Recorder(char const* path) : m_file(path, std::ios::app) {}

    void OnTestProgramStart(testing::UnitTest const&) override { Write("*", "", 0); }

    void OnTestStart(testing::TestInfo const&) override
    {
        Clear();
        m_start = std::clock();
    }

    void OnTestEnd(testing::TestInfo const& test) override
    {
        auto const ticks = static_cast<double>(std::clock() - m_start);
        if (!test.result()->Passed() || test.result()->Skipped())
            return;
        std::string const name = std::string(test.test_suite_name()) + '.' + test.name();
        Write(name, test.file(), ticks / CLOCKS_PER_SEC);
    }

private:
    void Write(std::string const& name, char const* file, double seconds)
    {
        m_file << name << '\t' << file << '\t' << seconds << '\t';
        for (std::uint32_t n = 1; n < mutation::c_maximumFaults; ++n) {
            if (mutation::g_table->passed[n])
                m_file << n << ' ';
        }
        m_file << std::endl;
    }

    static void Clear()
    {
        std::fill(std::begin(mutation::g_table->passed), std::end(mutation::g_table->passed), 0);
    }

    std::ofstream m_file;
    std::clock_t m_start = 0;
};

class FirstFailure : public testing::EmptyTestEventListener
{
    void OnTestPartResult(testing::TestPartResult const& result) override
    {
        if (result.failed())
            _exit(c_failureStatus);
    }
};

bool const g_listening = [] {
    char const* path = std::getenv("MUTATION_RECORD");
    testing::TestEventListener* listener = nullptr;
    if (path)
        listener = new Recorder(path);
    else if (std::getenv("MUTATION_TABLE"))
        listener = new FirstFailure;
    if (listener)
        testing::UnitTest::GetInstance()->listeners().Append(listener);
    return listener != nullptr;
}();
} // namespace

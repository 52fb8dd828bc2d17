// With KESCOREXML_TEST_SCANNER=both in the environment, each document that a test has had parsed
// is, once the test has ended, read by both scanners and compared. Tests of the direct scanner do
// so themselves. The linker puts the function below in place of DirectScanner::Scan; the library
// knows nothing of it.

#include "direct/DirectScanner.h"
#include "support/BothScanners.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

using DirectScanning::Verdict;

Verdict ScanItself(DirectScanner& scanner, const DirectScanner::Document& document,
                   ScanSink& sink) asm("__real__ZN13DirectScanner4ScanERKNS_8DocumentER8ScanSink");

Verdict ScanAndKeep(DirectScanner& scanner, const DirectScanner::Document& document,
                    ScanSink& sink) asm("__wrap__ZN13DirectScanner4ScanERKNS_8DocumentER8ScanSink");

namespace {

/// Longer ones are made by tests that are about size.
constexpr std::size_t c_longest = 0x4000;

/// The documents of a test. Allocates nothing, as tests count that.
class Kept
{
public:
    void Keep(std::string_view document) noexcept
    {
        const std::lock_guard lock(m_mutex);
        if (document.size() > c_longest || m_room.size() - m_end < sizeof(std::size_t) + c_longest)
            return;
        const std::size_t size = document.size();
        std::memcpy(m_room.data() + m_end, &size, sizeof size);
        std::memcpy(m_room.data() + m_end + sizeof size, document.data(), size);
        m_end += sizeof size + size;
    }
    /// Calls `work` for each, and forgets them.
    template <typename Work>
    void Take(const Work& work)
    {
        const std::size_t end = std::exchange(m_end, 0);
        for (std::size_t at = 0; at < end;) {
            std::size_t size = 0;
            std::memcpy(&size, m_room.data() + at, sizeof size);
            work(std::string(m_room.data() + at + sizeof size, size));
            at += sizeof size + size;
        }
    }

private:
    std::mutex m_mutex;
    std::size_t m_end = 0;
    std::array<char, 0x400000> m_room;
};

Kept s_kept;
std::atomic<bool> s_isKeeping = false;

class Comparer : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo& test) override
    {
        s_isKeeping = !std::string_view(test.test_suite_name()).starts_with("Direct");
    }
    void OnTestEnd(const testing::TestInfo&) override
    {
        s_isKeeping = false;
        BothScanners both;
        s_kept.Take([&](const std::string& document) {
            if (!m_known.insert(std::hash<std::string>()(document)).second)
                return;
            EXPECT_EQ(both.CompareSome(document, m_known.size()), "");
        });
    }
    void OnTestProgramEnd(const testing::UnitTest&) override
    {
        std::cout << m_known.size() << " documents were read by both scanners\n";
    }

    std::unordered_set<std::size_t> m_known;
};

bool Install()
{
    const char* const value = std::getenv("KESCOREXML_TEST_SCANNER");
    if (value == nullptr || std::string_view(value) != "both")
        return false;
    testing::UnitTest::GetInstance()->listeners().Append(new Comparer);
    return true;
}

[[maybe_unused]] const bool s_isInstalled = Install();

} // namespace

Verdict ScanAndKeep(DirectScanner& scanner, const DirectScanner::Document& document, ScanSink& sink)
{
    if (s_isKeeping)
        s_kept.Keep(document.bytes);
    return ScanItself(scanner, document, sink);
}

#include "support/KesxmlProcess.h"

#include <cstddef>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using KesxmlMemory = KesxmlTest;

/// How a run of the command ended, and the most memory that it has held.
struct Checked
{
    int status;
    std::size_t peakBytes;
};

Checked CheckQuietly(const QString& file)
{
    const std::string path = file.toStdString();
    const char* const arguments[] = {KESXML_PATH, "check", "--quiet", path.c_str(), nullptr};
    pid_t process = 0;
    EXPECT_EQ(posix_spawn(&process, KESXML_PATH, nullptr, nullptr,
                          const_cast<char* const*>(arguments), environ),
              0);
    int status = 0;
    rusage usage{};
    EXPECT_EQ(wait4(process, &status, 0, &usage), process);
    EXPECT_TRUE(WIFEXITED(status));
    return {WEXITSTATUS(status), static_cast<std::size_t>(usage.ru_maxrss) * 1024};
}

} // namespace

TEST_F(KesxmlMemory, OfACheckHoldsATreeOnlyToNameTheElementOfAnError)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers hold memory of their own";
#endif
    const QByteArray elements = QByteArray("<a/>").repeated(1'500'000);
    const Checked fine = CheckQuietly(Write("fine.xml", "<r>" + elements + "</r>"));
    const Checked wrong = CheckQuietly(Write("wrong.xml", "<r>" + elements + "</s>"));
    EXPECT_EQ(fine.status, 0);
    EXPECT_EQ(wrong.status, 1);
    // The command and its libraries, the document, and what reads it.
    const std::size_t limit = (100U << 20) + 3 * static_cast<std::size_t>(elements.size());
    EXPECT_LT(fine.peakBytes, limit);
    EXPECT_GT(wrong.peakBytes, limit);
}

#include "support/KesxmlProcess.h"

#include <cstddef>
#include <string>
#include <vector>

#include <fcntl.h>
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

/// What the command says goes nowhere.
Checked RunAndMeasure(std::vector<std::string> words)
{
    words.insert(words.begin(), KESXML_PATH);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t nowhere;
    posix_spawn_file_actions_init(&nowhere);
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&nowhere, stream, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    EXPECT_EQ(posix_spawn(&process, KESXML_PATH, &nowhere, nullptr, arguments.data(), environ), 0);
    posix_spawn_file_actions_destroy(&nowhere);
    int status = 0;
    rusage usage{};
    EXPECT_EQ(wait4(process, &status, 0, &usage), process);
    EXPECT_TRUE(WIFEXITED(status));
    return {WEXITSTATUS(status), static_cast<std::size_t>(usage.ru_maxrss) * 1024};
}

Checked CheckQuietly(const QString& file)
{
    return RunAndMeasure({"check", "--quiet", file.toStdString()});
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

TEST_F(KesxmlMemory, IsWhatIsStated)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers hold memory of their own";
#endif
    struct Figures
    {
        std::vector<std::string> words;
        /// What the documents repeat, and their end.
        const char* part;
        const char* end;
        int documents;
        /// For each byte of them.
        std::size_t bytes;
    };
    constexpr const char* c_open = "<a>";
    constexpr const char* c_openWithAttributes = "<a A=''><a B=''><a C=''><a D=''><a E=''><a F=''>";
    const Figures all[] = {
        {{"check"}, "<a/>", "</s>", 1, 28},
        {{"stats"}, "<a/>", "</r>", 1, 28},
        {{"query", "//b"}, "<a/>", "</r>", 1, 28},
        {{"query", "//a"}, "<a/>", "</r>", 1, 60},
        {{"diff"}, "<a/>", "</r>", 2, 62},
        {{"check"}, c_open, "", 1, 220},
        {{"stats"}, c_open, "", 1, 220},
        {{"query", "//b"}, c_open, "", 1, 220},
        {{"check"}, c_openWithAttributes, "", 1, 115},
    };
    constexpr std::size_t c_fewer = 600'000;
    constexpr std::size_t c_more = 1'800'000;
    for (const Figures& figures : all) {
        SCOPED_TRACE(figures.words.front() + " " + figures.part);
        const auto measure = [&](std::size_t bytes) {
            const QByteArray part = figures.part;
            const QByteArray text =
                "<r>" + part.repeated(static_cast<qsizetype>(bytes) / part.size()) + figures.end;
            std::vector<std::string> words = figures.words;
            for (int i = 0; i < figures.documents; ++i)
                words.push_back(Write("list" + QString::number(i) + ".xml", text).toStdString());
            return RunAndMeasure(words).peakBytes;
        };
        const std::size_t bytes = (c_more - c_fewer) * static_cast<std::size_t>(figures.documents);
        EXPECT_LE(measure(c_more) - measure(c_fewer), figures.bytes * bytes);
    }
}

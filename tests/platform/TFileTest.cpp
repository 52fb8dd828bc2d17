#include <kesplatform/TFile.h>

#include "support/TemporaryFiles.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace std::string_literals;

namespace {

/// Asks the system as a user without rights, which a test that runs as root is not.
class WithoutRights
{
public:
    WithoutRights() : m_user(geteuid())
    {
        if (m_user == 0 && seteuid(65534) != 0)
            throw std::runtime_error("the user cannot be changed");
    }
    ~WithoutRights()
    {
        if (seteuid(m_user) != 0)
            std::abort();
    }
    WithoutRights(const WithoutRights&) = delete;
    WithoutRights& operator=(const WithoutRights&) = delete;

private:
    uid_t m_user;
};

/// Every way of reaching a file by its path.
std::vector<std::function<void(const TPath&)>> AllWays()
{
    return {[](const TPath& path) { TFile(path).Open(); },
            [](const TPath& path) { static_cast<void>(TFile::LoadTextFile(path, 1)); },
            [](const TPath& path) { static_cast<void>(TFile::LoadTextFileAsUtf8(path, 1)); },
            [](const TPath& path) { static_cast<void>(GetFileSize(path)); },
            [](const TPath& path) { static_cast<void>(TFile(path).Size()); }};
}

void ExpectFailure(const TPath& path, const std::string& reason,
                   const std::function<void(const TPath&)>& act)
{
    try {
        act(path);
        ADD_FAILURE() << "nothing was thrown for " << path.GetString();
    } catch (const TIO::Exception& exception) {
        EXPECT_EQ(path, exception.GetPath());
        EXPECT_THAT(exception.what(), testing::StartsWith(path.GetString().toStdString() + ": "));
        EXPECT_THAT(exception.what(), testing::HasSubstr(reason));
    }
}

std::string ReadThrough(TFile& file, std::size_t step)
{
    std::string all;
    std::string piece(step, '\0');
    while (const std::size_t count = file.Read(piece.data(), step))
        all.append(piece, 0, count);
    return all;
}

} // namespace

TEST(TFile, ReadsInPiecesOfAnySize)
{
    const TemporaryFiles files;
    std::string bytes;
    for (int i = 0; i < 5000; ++i)
        bytes += static_cast<char>(i * 7);
    const TPath path = files.Write(u"bytes", bytes);
    for (const std::size_t step : {1U, 7U, 2048U, 5000U, 100000U}) {
        TFile file(path);
        file.Open();
        EXPECT_EQ(path, file.GetPath());
        EXPECT_EQ(5000, file.Size());
        EXPECT_EQ(bytes, ReadThrough(file, step));
        char byte = 'x';
        EXPECT_EQ(0U, file.Read(&byte, 1));
        EXPECT_EQ('x', byte);
    }
}

TEST(TFile, FillsTheRoomThatItIsGiven)
{
    const TemporaryFiles files;
    TFile file(files.Write(u"bytes", std::string(5000, 'x')));
    file.Open();
    char piece[2048];
    EXPECT_EQ(2048U, file.Read(piece, 2048));
    EXPECT_EQ(2048U, file.Read(piece, 2048));
    EXPECT_EQ(904U, file.Read(piece, 2048));
    EXPECT_EQ(0U, file.Read(piece, 0));
}

TEST(TFile, SeeksFromTheStart)
{
    const TemporaryFiles files;
    TFile file(files.Write(u"bytes", "abcdef"));
    file.Open();
    EXPECT_EQ("abcdef", ReadThrough(file, 4));
    file.Seek(0);
    EXPECT_EQ("abcdef", ReadThrough(file, 4));
    file.Seek(4);
    EXPECT_EQ("ef", ReadThrough(file, 4));
    file.Seek(6);
    EXPECT_EQ("", ReadThrough(file, 4));
    ExpectFailure(file.GetPath(), "position", [&file](const TPath&) { file.Seek(-1); });
}

TEST(TFile, OpensAgainFromTheStart)
{
    const TemporaryFiles files;
    TFile file(files.Write(u"bytes", "abc"));
    file.Open();
    EXPECT_EQ("abc", ReadThrough(file, 4));
    file.Open();
    EXPECT_EQ("abc", ReadThrough(file, 4));
}

TEST(TFile, RefusesToReadOrSeekBeforeItIsOpen)
{
    const TemporaryFiles files;
    TFile file(files.Write(u"bytes", "abc"));
    char byte = 0;
    ExpectFailure(file.GetPath(), "not open", [&](const TPath&) { file.Read(&byte, 1); });
    ExpectFailure(file.GetPath(), "not open", [&](const TPath&) { file.Seek(0); });
    EXPECT_EQ(3, file.Size());
}

TEST(TFile, RefusesDirectories)
{
    const TemporaryFiles files;
    for (const auto& act : AllWays())
        ExpectFailure(files.GetDirectory(), "directory", act);
}

TEST(TFile, NamesAFileThatIsMissing)
{
    const TemporaryFiles files;
    std::filesystem::create_symlink("nowhere", files.GetPath(u"broken").GetString().toStdString());
    for (const auto& act : AllWays()) {
        ExpectFailure(files.GetPath(u"missing"), "No such file or directory", act);
        ExpectFailure(files.GetPath(u"no/such/path"), "No such file or directory", act);
        ExpectFailure(files.GetPath(u"broken"), "No such file or directory", act);
    }
    ExpectFailure(TPath(), "", [](const TPath& path) { TFile(path).Open(); });
    ExpectFailure(TPath(), "", [](const TPath& path) { static_cast<void>(GetFileSize(path)); });
}

TEST(TFile, RefusesAFileThatMayNotBeRead)
{
    const TemporaryFiles files;
    const TPath secret = files.Write(u"secret", "text");
    const TPath hidden = files.GetPath(u"hidden");
    ASSERT_EQ(0, chmod(files.GetDirectory().GetString().toStdString().c_str(), 0755));
    ASSERT_EQ(0, chmod(secret.GetString().toStdString().c_str(), 0));
    ASSERT_EQ(0, mkdir(hidden.GetString().toStdString().c_str(), 0700));
    ASSERT_EQ(0, chmod(hidden.GetString().toStdString().c_str(), 0));
    {
        const WithoutRights withoutRights;
        ExpectFailure(secret, "Permission denied", [](const TPath& path) { TFile(path).Open(); });
        ExpectFailure(secret, "Permission denied",
                      [](const TPath& path) { static_cast<void>(TFile::LoadTextFile(path, 1)); });
        EXPECT_EQ(4, GetFileSize(secret)) << "a size is no secret";
        ExpectFailure(hidden / u"file", "Permission denied",
                      [](const TPath& path) { static_cast<void>(GetFileSize(path)); });
        ExpectFailure(hidden / u"file", "Permission denied",
                      [](const TPath& path) { TFile(path).Open(); });
    }
    ASSERT_EQ(0, chmod(hidden.GetString().toStdString().c_str(), 0700));
}

TEST(TFile, ReportsFailuresWhileReading)
{
    // The first page of a process's memory is never mapped: the file opens, but does not read.
    const TPath path(u"/proc/self/mem");
    ExpectFailure(path, "Input/output error",
                  [](const TPath& name) { static_cast<void>(TFile::LoadTextFile(name, 1)); });
    ExpectFailure(path, "Input/output error", [](const TPath& name) {
        TFile file(name);
        file.Open();
        char byte = 0;
        file.Read(&byte, 1);
    });
}

TEST(TFile, RefusesNamesWithZeros)
{
    const TemporaryFiles files;
    const TPath real = files.Write(u"real", "text");
    const TPath cut = TString(real.GetString() + TString(1, u'\0') + u"rest");
    for (const auto& act : AllWays()) {
        EXPECT_THROW(act(cut), TIO::Exception) << "the system would have opened another file";
        EXPECT_NO_THROW(act(real));
    }
}

TEST(TFile, TakesNamesWithColonsForNamesOnDisk)
{
    const TemporaryFiles files;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(files.GetDirectory().GetString().toStdString());
    files.Write(u":name", "on disk");
    EXPECT_EQ("on disk", TFile::LoadTextFileAsUtf8(TPath(u":name"), 1));
    EXPECT_EQ(7, GetFileSize(TPath(u":name")));
    EXPECT_THROW(TFile(TPath(u":/qt-project.org/x")).Open(), TIO::Exception);
    std::filesystem::current_path(before);
}

TEST(TFile, FindsNamesBeyondAscii)
{
    const TemporaryFiles files;
    const TPath path = files.Write(u"caf\u00E9 \U0001F600", "text");
    EXPECT_EQ(TString(u"text"), TFile::LoadTextFile(path, 1));
    EXPECT_EQ(4, GetFileSize(path));
}

TEST(TFile, KnowsSizes)
{
    const TemporaryFiles files;
    EXPECT_EQ(0, GetFileSize(files.Write(u"empty", "")));
    EXPECT_EQ(3, GetFileSize(files.Write(u"three", "a\0b"s)));
    EXPECT_EQ(0, GetFileSize(TPath(u"/dev/null")));
    const TPath sparse = files.Write(u"sparse", "");
    constexpr std::uintmax_t c_beyond32Bits = 5ULL << 30;
    std::filesystem::resize_file(sparse.GetString().toStdString(), c_beyond32Bits);
    EXPECT_EQ(5LL << 30, GetFileSize(sparse));
    TFile file(sparse);
    EXPECT_EQ(5LL << 30, file.Size());
    file.Open();
    EXPECT_EQ(5LL << 30, file.Size());
    file.Seek((5LL << 30) - 2);
    EXPECT_EQ("\0\0"s, ReadThrough(file, 16));
}

TEST(TFile, LoadsEmptyFiles)
{
    const TemporaryFiles files;
    const TPath path = files.Write(u"empty", "");
    EXPECT_TRUE(TFile::LoadTextFile(path, 1).IsEmpty());
    EXPECT_EQ("", TFile::LoadTextFileAsUtf8(path, 1));
}

TEST(TFile, LoadsWhatTellsNoSizeToTheEnd)
{
    const TString status = TFile::LoadTextFile(TPath(u"/proc/self/status"), 1);
    EXPECT_TRUE(status.startsWith(u"Name:")) << status;
    EXPECT_TRUE(status.endsWith(u"\n"));
    EXPECT_EQ(0, GetFileSize(TPath(u"/proc/self/status")));
}

TEST(TFile, LoadsPipesToTheEnd)
{
    const TemporaryFiles files;
    const TPath path = files.GetPath(u"pipe");
    const std::string name = path.GetString().toStdString();
    ASSERT_EQ(0, mkfifo(name.c_str(), 0600));
    EXPECT_EQ(0, GetFileSize(path));
    std::string text;
    for (int i = 0; i < 20000; ++i)
        text += "line " + std::to_string(i) + "\n";
    for (const bool asUtf8 : {false, true}) {
        std::thread writer([&name, &text] {
            const int file = open(name.c_str(), O_WRONLY);
            for (std::size_t at = 0; at < text.size();) {
                const ssize_t count =
                    write(file, text.data() + at, std::min<std::size_t>(1000, text.size() - at));
                if (count < 0)
                    break;
                at += static_cast<std::size_t>(count);
            }
            close(file);
        });
        const std::string loaded = asUtf8 ? TFile::LoadTextFileAsUtf8(path, 1)
                                          : TFile::LoadTextFile(path, 1).toStdString();
        writer.join();
        EXPECT_TRUE(text == loaded);
    }
}

TEST(TFile, RefusesToSeekInPipes)
{
    const TemporaryFiles files;
    const TPath path = files.GetPath(u"pipe");
    const std::string name = path.GetString().toStdString();
    ASSERT_EQ(0, mkfifo(name.c_str(), 0600));
    std::thread writer([&name] {
        const int file = open(name.c_str(), O_WRONLY);
        close(file);
    });
    TFile file(path);
    file.Open();
    writer.join();
    EXPECT_EQ(0, file.Size());
    ExpectFailure(path, "position", [&file](const TPath&) { file.Seek(0); });
}

TEST(TIOException, ClonesAndThrowsItself)
{
    const TIO::Exception original(TPath(u"a/file"), u"reason");
    EXPECT_STREQ("a/file: reason", original.what());
    const CorvinaException& base = original;
    const std::unique_ptr<CorvinaException> clone(base.Clone());
    ASSERT_NE(nullptr, dynamic_cast<const TIO::Exception*>(clone.get()));
    try {
        clone->Throw();
        FAIL() << "nothing was thrown";
    } catch (const TIO::Exception& caught) {
        EXPECT_EQ(TPath(u"a/file"), caught.GetPath());
    }
}

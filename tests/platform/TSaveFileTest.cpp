#include <kesplatform/TSaveFile.h>

#include "support/TemporaryFile.h"

#include <kesplatform/TFile.h>

#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

namespace fs = std::filesystem;

fs::path Disk(const TString& path)
{
    return path.toStdString();
}

std::string BytesOf(const TString& path)
{
    std::ifstream file(Disk(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::size_t CountFiles(const TemporaryFolder& folder)
{
    const fs::directory_iterator files(Disk(folder.GetPath()));
    return static_cast<std::size_t>(std::distance(files, fs::directory_iterator()));
}

void Save(const TString& path, const std::string& bytes)
{
    TSaveFile file(path);
    file.Write(bytes.data(), bytes.size());
    file.Commit();
}

/// What `work` throws as an exception about a file; an empty text when it throws nothing.
template <typename Work>
std::string ReasonOf(Work&& work)
{
    try {
        work();
    } catch (const TIO::Exception& exception) {
        return exception.GetMessagesFront().toStdString();
    }
    return {};
}

/// No file of this process may grow beyond a size, as if the disk were full.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_limit), 0);
        const rlimit limit{bytes, m_limit.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_limit{};
    void (*m_handler)(int);
};

/// While set, this is how synchronising fails for this thread.
thread_local int t_syncError = 0;

} // namespace

/// Stands before the system's own in the order of symbol look-up.
extern "C" [[gnu::visibility("default")]] int fsync(int descriptor)
{
    static const auto original = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fsync"));
    if (t_syncError == 0)
        return original(descriptor);
    errno = t_syncError;
    return -1;
}

TEST(TSaveFile, WritesANewFile)
{
    const TemporaryFolder folder;
    const TString path = folder.GetPath("\xC3\xA9.xml");
    TSaveFile file(path);
    file.Write("one ", 4);
    file.Write("two", 3);
    file.Write(nullptr, 0);
    EXPECT_FALSE(fs::exists(Disk(path))) << "not before it is complete";
    file.Commit();
    EXPECT_EQ(BytesOf(path), "one two");
    EXPECT_EQ(CountFiles(folder), 1U);
}

TEST(TSaveFile, ANewFileHasThePermissionsOfNewFiles)
{
    const TemporaryFolder folder;
    const mode_t mask = umask(027);
    Save(folder.GetPath("a"), "a");
    umask(mask);
    EXPECT_EQ(fs::status(Disk(folder.GetPath("a"))).permissions(), fs::perms(0640));
}

TEST(TSaveFile, TakesThePlaceOfAnOlderFileAndItsPermissions)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a", "a longer text than the new one");
    fs::permissions(Disk(path), fs::perms(0604));
    std::ifstream reader(Disk(path));
    TSaveFile file(path);
    file.Write("new", 3);
    EXPECT_EQ(BytesOf(path), "a longer text than the new one");
    file.Commit();
    EXPECT_EQ(BytesOf(path), "new");
    EXPECT_EQ(fs::status(Disk(path)).permissions(), fs::perms(0604));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}),
              "a longer text than the new one")
        << "who had the older file open still reads that";
}

TEST(TSaveFile, WithoutACommitNothingHappens)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a", "old");
    {
        TSaveFile file(path);
        file.Write("new", 3);
    }
    EXPECT_EQ(BytesOf(path), "old");
    EXPECT_EQ(CountFiles(folder), 1U);
}

TEST(TSaveFile, AFullDiskLosesNothing)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a", "old");
    for (const std::size_t size : {1'001U, 100'000U, 5'000'000U}) {
        std::string reason;
        {
            const FullDisk full(1'000);
            reason = ReasonOf([&] { Save(path, std::string(size, 'x')); });
        }
        EXPECT_EQ(reason, path.toStdString() + ": File too large") << size;
        EXPECT_EQ(BytesOf(path), "old");
        EXPECT_EQ(CountFiles(folder), 1U);
    }
    const FullDisk full(1'000);
    Save(path, std::string(1'000, 'x'));
    EXPECT_EQ(BytesOf(path).size(), 1'000U);
}

TEST(TSaveFile, ADiskThatFailsLosesNothing)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a", "old");
    t_syncError = EIO;
    const std::string reason = ReasonOf([&] { Save(path, "new"); });
    t_syncError = 0;
    EXPECT_EQ(reason, path.toStdString() + ": Input/output error");
    EXPECT_EQ(BytesOf(path), "old");
    EXPECT_EQ(CountFiles(folder), 1U);
}

TEST(TSaveFile, AFileSystemThatCannotSynchroniseWillDo)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a", "old");
    for (const int error : {EINVAL, ENOSYS, ENOTSUP}) {
        t_syncError = error;
        Save(path, std::to_string(error));
        t_syncError = 0;
        EXPECT_EQ(BytesOf(path), std::to_string(error));
    }
}

TEST(TSaveFile, ASymbolicLinkStaysAndWhatItLeadsToIsReplaced)
{
    const TemporaryFolder folder;
    const TString target = folder.Write("target", "old");
    fs::create_symlink("target", Disk(folder.GetPath("link")));
    Save(folder.GetPath("link"), "new");
    EXPECT_TRUE(fs::is_symlink(Disk(folder.GetPath("link"))));
    EXPECT_EQ(BytesOf(target), "new");
}

TEST(TSaveFile, RefusesWhatIsNoRegularFile)
{
    const TemporaryFolder folder;
    const std::string pipe = folder.GetPath("pipe").toStdString();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {pipe, folder.GetPath().toStdString(), std::string("/dev/null")})
        EXPECT_EQ(ReasonOf([&] { Save(path.c_str(), "x"); }),
                  path + ": it is no regular file and cannot be replaced");
    EXPECT_TRUE(fs::is_fifo(pipe));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(TSaveFile, NamesTheFileAndTheReason)
{
    const TemporaryFolder folder;
    const std::string missing = folder.GetPath("none/a").toStdString();
    EXPECT_EQ(ReasonOf([&] { Save(missing.c_str(), "x"); }),
              missing + ": No such file or directory");
    EXPECT_NE(ReasonOf([&] { Save(TString(u"a\0b", 3), "x"); }).find("zero character"),
              std::string::npos);
}

TEST(TSaveFile, ANameThatBeginsWithAColonIsAFile)
{
    const TemporaryFolder folder;
    const fs::path before = fs::current_path();
    fs::current_path(Disk(folder.GetPath()));
    Save(u":a", "x");
    fs::current_path(before);
    EXPECT_EQ(BytesOf(folder.GetPath() + u"/:a"), "x");
}

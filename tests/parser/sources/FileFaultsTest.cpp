// Files that are not what they seem, or do not stay what they are while they are read.

#include "support/TemporaryFile.h"
#include "support/TreeTesting.h"

#include <kescorexml/DOMParser.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/VersionSniffer.h>

#include <kesplatform/TFile.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <thread>

namespace {

namespace fs = std::filesystem;

std::string MakeDocument(std::size_t elements)
{
    std::string text = "<a version='10.4'>";
    for (std::size_t i = 0; i < elements; ++i)
        text += "<b>" + std::to_string(i) + "</b>";
    return text + "</a>";
}

const TString c_error(u"error");

/// Whether the file could not be read, and the document says so.
bool IsUnreadable(const DOM& document)
{
    return document.GetDocumentRoot() != nullptr &&
           document.GetDocumentRoot()->GetName() == c_error && document.HasErrors();
}

/// Writes to a pipe as long as this object lives, at most `text`.
class PipeWriter
{
public:
    PipeWriter(const TString& path, std::string text)
        : m_thread([name = path.toStdString(), text = std::move(text)] {
              const int file = open(name.c_str(), O_WRONLY);
              for (std::size_t at = 0; at < text.size();) {
                  const ssize_t count =
                      write(file, text.data() + at, std::min<std::size_t>(100, text.size() - at));
                  if (count <= 0)
                      break;
                  at += static_cast<std::size_t>(count);
              }
              close(file);
          })
    {
    }
    PipeWriter(const PipeWriter&) = delete;
    PipeWriter& operator=(const PipeWriter&) = delete;
    ~PipeWriter() { m_thread.join(); }

private:
    std::thread m_thread;
};

TString MakePipe(const TemporaryFolder& folder)
{
    const TString path = folder.GetPath("pipe");
    EXPECT_EQ(mkfifo(path.toStdString().c_str(), 0600), 0);
    return path;
}

} // namespace

TEST(FileFaults, AFileThatVanishesAfterItWasOpenedIsReadToItsEnd)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", MakeDocument(2000));
    FileInputSource source(path);
    std::string start;
    ASSERT_TRUE(source.GetBytes(start, 10));
    fs::remove(path.toStdString());
    source.ResetToStart();
    const auto document = DOMParser().ParseXmlInputSource(source, false);
    EXPECT_FALSE(document->HasErrors());
    EXPECT_EQ(document->GetDocumentRoot()->GetChildren().size(), 2000U);
    EXPECT_TRUE(IsUnreadable(*DOMParser().ParseXmlFile(path)));
}

TEST(FileFaults, AFileThatShrinksWhileItIsReadEndsWhereItEnds)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", MakeDocument(2000));
    FileInputSource source(path);
    std::string bytes;
    ASSERT_TRUE(source.GetBytes(bytes, 3000));
    fs::resize_file(path.toStdString(), 5000);
    std::size_t total = bytes.size();
    while (source.GetBytes(bytes, 3000))
        total += bytes.size();
    EXPECT_EQ(total, 5000U);
    EXPECT_EQ(source.Size(), 5000);
    source.ResetToStart();
    const auto document = DOMParser().ParseXmlInputSource(source, false);
    EXPECT_TRUE(document->HasErrors());
    EXPECT_GT(document->GetDocumentRoot()->GetChildren().size(), 100U);

    fs::resize_file(path.toStdString(), 0);
    source.ResetToStart();
    EXPECT_FALSE(source.GetBytes(bytes, 10));
    EXPECT_FALSE(source.GetNextLine(bytes));
    EXPECT_EQ(VersionSniffer(source, TString()), std::nullopt);
}

TEST(FileFaults, AFileThatGrowsWhileItIsReadIsReadToItsNewEnd)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "<a>");
    FileInputSource source(path);
    std::string bytes;
    ASSERT_TRUE(source.GetBytes(bytes, 2));
    folder.Write("a.xml", "<a>more</a>");
    source.ResetToStart();
    const auto document = DOMParser().ParseXmlInputSource(source, false);
    EXPECT_FALSE(document->HasErrors());
    EXPECT_EQ(document->GetDocumentRoot()->GetText(), u"more");
}

TEST(FileFaults, AFileThatIsReplacedIsStillTheOneThatWasOpened)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "<old/>");
    FileInputSource source(path);
    fs::rename(folder.Write("b.xml", "<new/>").toStdString(), path.toStdString());
    const auto document = DOMParser().ParseXmlInputSource(source, false);
    EXPECT_EQ(document->GetDocumentRoot()->GetName(), u"old");
    EXPECT_EQ(DOMParser().ParseXmlFile(path)->GetDocumentRoot()->GetName(), u"new");
}

TEST(FileFaults, APipeIsReadToItsEnd)
{
    const TemporaryFolder folder;
    const TString path = MakePipe(folder);
    const std::string text = MakeDocument(20000);
    {
        const PipeWriter writer(path, text);
        const auto document = DOMParser().ParseXmlFile(path);
        EXPECT_FALSE(document->HasErrors()) << document->GetConcatenatedErrors();
        EXPECT_EQ(document->GetDocumentRoot()->GetChildren().size(), 20000U);
    }
    {
        const PipeWriter writer(path, text);
        const auto result = StandaloneDOMParser().ParseXmlFile(path);
        EXPECT_TRUE(result.errors.empty());
    }
    {
        const PipeWriter writer(path, text);
        FileInputSource source(path);
        const auto document = DOMParser().ParseXmlInputSource(source, false);
        EXPECT_FALSE(document->HasErrors());
        EXPECT_THROW(source.ResetToStart(), TIO::Exception);
    }
}

TEST(FileFaults, APipeCannotBeSniffed)
{
    const TemporaryFolder folder;
    const TString path = MakePipe(folder);
    EXPECT_DEATH(
        {
            const PipeWriter writer(path, "<a version='10.4'/>");
            FileInputSource source(path);
            static_cast<void>(VersionSniffer(source, TString()));
        },
        "terminate called after throwing an instance of .*TIO::Exception");
}

TEST(FileFaults, APipeThatBreaksOffGivesAnErrorOfTheDocument)
{
    const TemporaryFolder folder;
    const TString path = MakePipe(folder);
    for (const std::string& text :
         {std::string(), std::string("<a><b"), std::string("<a>\xE2\x82")}) {
        const PipeWriter writer(path, text);
        EXPECT_TRUE(DOMParser().ParseXmlFile(path)->HasErrors()) << text;
    }
}

TEST(FileFaults, AFileWithoutSizeIsReadAllTheSame)
{
    // Not XML, but longer than nothing.
    const auto document = DOMParser().ParseXmlFile(u"/proc/self/status");
    EXPECT_THAT(JoinErrors(*document), testing::HasSubstr("Fatal Error(1,"));
    const auto standalone = StandaloneDOMParser().ParseXmlFile(u"/proc/self/status");
    EXPECT_EQ(standalone.errors.size(), 1U);
    FileInputSource source(u"/proc/self/status");
    EXPECT_EQ(source.Size(), 0);
    std::string line;
    ASSERT_TRUE(source.GetNextLine(line));
    EXPECT_TRUE(line.starts_with("Name:"));
}

TEST(FileFaults, AFileThatFailsWhileItIsReadIsUnreadable)
{
    // Opens like any file; reading its first byte is an error.
    const TString path(u"/proc/self/mem");
    const auto document = DOMParser().ParseXmlFile(path);
    ASSERT_TRUE(IsUnreadable(*document));
    EXPECT_THAT(JoinErrors(*document), testing::HasSubstr(path.toStdString()));
    EXPECT_THROW(StandaloneDOMParser().ParseXmlFile(path), TIO::Exception);
    FileInputSource source(path);
    std::string bytes;
    EXPECT_THROW(source.GetBytes(bytes, 10), TIO::Exception);
    EXPECT_THROW(source.GetNextLine(bytes), TIO::Exception);
    EXPECT_THROW(DOMParser().ParseXmlInputSource(source, false), TIO::Exception);
    EXPECT_FALSE(DOMParser().ParseXmlString("<a/>", u"id")->HasErrors());
}

TEST(FileFaults, ADirectoryIsUnreadable)
{
    const TemporaryFolder folder;
    for (const TString& path : {folder.GetPath(), TString(u"/"), TString(u"/proc/self/fd")}) {
        EXPECT_TRUE(IsUnreadable(*DOMParser().ParseXmlFile(path))) << path;
        EXPECT_THROW(StandaloneDOMParser().ParseXmlFile(path), TIO::Exception) << path;
        const LogCapture log;
        EXPECT_THROW(FileInputSource source(path), TIO::Exception) << path;
        EXPECT_EQ(log.Count(), 1U);
    }
}

TEST(FileFaults, AnEmptyDeviceIsAnEmptyDocument)
{
    const auto document = DOMParser().ParseXmlFile(u"/dev/null");
    EXPECT_EQ(document->GetDocumentRoot(), nullptr);
    EXPECT_THAT(JoinErrors(*document), testing::HasSubstr("invalid document structure"));
}

TEST(FileFaults, ADeviceThatNeverEndsIsUnreadable)
{
    const auto document = DOMParser().ParseXmlFile(u"/dev/zero");
    ASSERT_TRUE(IsUnreadable(*document));
    EXPECT_THAT(JoinErrors(*document), testing::HasSubstr("does not end"));
}

TEST(FileFaults, ADeviceThatNeverEndsIsUnreadableInChunksToo)
{
    FileInputSource source(u"/dev/zero");
    std::string line;
    EXPECT_THROW(source.GetNextLine(line), TIO::Exception);
    line = std::string();
    EXPECT_THROW(DOMParser().ParseXmlInputSource(source, false), TIO::Exception);
    // In steps it can be read for ever.
    EXPECT_TRUE(source.GetBytes(line, 5000));
    EXPECT_EQ(line, std::string(5000, '\0'));
}

TEST(FileFaults, ALinkThatLeadsNowhereOrToItselfIsUnreadable)
{
    const TemporaryFolder folder;
    const TString nowhere = folder.GetPath("nowhere");
    const TString itself = folder.GetPath("itself");
    fs::create_symlink("missing.xml", nowhere.toStdString());
    fs::create_symlink("itself", itself.toStdString());
    for (const TString& path : {nowhere, itself, folder.GetPath("a.xml/b.xml")})
        EXPECT_TRUE(IsUnreadable(*DOMParser().ParseXmlFile(path))) << path;
}

TEST(FileFaults, AFileThatMayNotBeReadIsUnreadable)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "<a/>");
    fs::permissions(path.toStdString(), fs::perms::none);
    // For root there are no permissions, so somebody else tries.
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (geteuid() == 0 && (chmod(folder.GetPath().toStdString().c_str(), 0755) != 0 ||
                               setgid(65534) != 0 || setuid(65534) != 0))
            _exit(2);
        _exit(IsUnreadable(*DOMParser().ParseXmlFile(path)) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

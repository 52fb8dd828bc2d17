#include "support/RecordingMetrics.h"
#include "support/TemporaryFile.h"

#include <kescorexml/FileInputSource.h>
#include <kescorexml/InputSourceUtils.h>
#include <kescorexml/StringInputSource.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

using InputSourceUtils::InputSourceFromFileName;
using testing::ElementsAre;

std::string ReadAll(InputSource& source)
{
    std::string all;
    std::string bytes;
    while (source.GetBytes(bytes, 10000))
        all += bytes;
    return all;
}

} // namespace

TEST(InputSourceUtils, DecodesAnOrdinaryFileIntoAString)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "  <a>\xC3\xA9</a>");
    const auto source = InputSourceFromFileName(path, false);
    ASSERT_NE(dynamic_cast<StringInputSource*>(source.get()), nullptr);
    EXPECT_EQ(source->Id(), path);
    EXPECT_EQ(ReadAll(*source), "  <a>\xC3\xA9</a>");
    EXPECT_EQ(ReadAll(*InputSourceFromFileName(path, true)), "<a>\xC3\xA9</a>");
    EXPECT_EQ(InputSourceFromFileName(path, true)->Size(), 11);
}

TEST(InputSourceUtils, DecodesByByteOrderMarkAndDeclaration)
{
    const TemporaryFolder folder;
    const std::string latin = "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>";
    EXPECT_EQ(ReadAll(*InputSourceFromFileName(folder.Write("l.xml", latin), false)),
              "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA9</a>");
    const std::string utf16("\xFE\xFF\0<\0a\0>\0\xE9\0<\0/\0a\0>", 18);
    EXPECT_EQ(ReadAll(*InputSourceFromFileName(folder.Write("u.xml", utf16), false)),
              "<a>\xC3\xA9</a>");
}

TEST(InputSourceUtils, TakesOneByteOrderMarkOffUnlessAnotherFollows)
{
    const TemporaryFolder folder;
    const std::string mark = "\xEF\xBB\xBF";
    for (const bool skipsWhitespace : {false, true}) {
        const auto read = [&](const std::string& bytes) {
            return ReadAll(*InputSourceFromFileName(folder.Write("m.xml", bytes), skipsWhitespace));
        };
        EXPECT_EQ(read(mark), "");
        EXPECT_EQ(read(mark + "<a/>"), "<a/>");
        EXPECT_EQ(read(mark + mark + "<a/>"), mark + mark + "<a/>");
    }
}

TEST(InputSourceUtils, TakesAGibibyteForTooLargeAndAByteLessNot)
{
    static_assert(FitsInMemory(0) && FitsInMemory(1073741823));
    static_assert(!FitsInMemory(1073741824) && !FitsInMemory(0x100000000));
    EXPECT_TRUE(FitsInMemory(0x3FFFFFFF));
    EXPECT_FALSE(FitsInMemory(0x40000000));
}

TEST(InputSourceUtils, StreamsWhatIsTooLargeForMemoryAndSkipsNothingThere)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("large.xml", "  <a/>");
    std::filesystem::resize_file(path.toStdString(), 0x40000000);
    const auto source = InputSourceFromFileName(path, true);
    ASSERT_NE(dynamic_cast<FileInputSource*>(source.get()), nullptr);
    EXPECT_EQ(source->Size(), 0x40000000);
    EXPECT_EQ(source->Id(), path);
    std::string bytes;
    EXPECT_TRUE(source->GetBytes(bytes, 6));
    EXPECT_EQ(bytes, "  <a/>");
}

TEST(InputSourceUtils, ReportsTheScopeOfItsWork)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "<a/>");
    const RecordingMetrics metrics;
    static_cast<void>(InputSourceFromFileName(path, false));
    EXPECT_THROW(static_cast<void>(InputSourceFromFileName(folder.GetPath("missing.xml"), false)),
                 TIO::Exception);
    EXPECT_THAT(metrics.GetLines(),
                ElementsAre("+InputSourceFromFileName", "-InputSourceFromFileName",
                            "+InputSourceFromFileName", "-InputSourceFromFileName"));
}

TEST(InputSourceUtils, ThrowsForWhatIsNoReadableFile)
{
    const TemporaryFolder folder;
    EXPECT_THROW(static_cast<void>(InputSourceFromFileName(folder.GetPath("missing.xml"), false)),
                 TIO::Exception);
    EXPECT_THROW(static_cast<void>(InputSourceFromFileName(folder.GetPath(), false)),
                 TIO::Exception);
    EXPECT_THROW(static_cast<void>(InputSourceFromFileName(TString(), false)), TIO::Exception);
    EXPECT_THROW(
        static_cast<void>(InputSourceFromFileName(folder.Write("bad.xml", "<a>\xFF</a>"), false)),
        TIO::Exception);
}

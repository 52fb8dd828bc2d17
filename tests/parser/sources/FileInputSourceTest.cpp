#include "support/ParseOutcome.h"
#include "support/TemporaryFile.h"

#include <kescorexml/FileInputSource.h>

#include <kesplatform/TLog.h>
#include <kesplatform/Unicode.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

std::string ReadAll(InputSource& source, unsigned int step)
{
    std::string all;
    std::string bytes;
    while (source.GetBytes(bytes, step))
        all += bytes;
    return all;
}

/// Lines of different lengths around the size of a chunk.
std::string MakeLongText(std::size_t size)
{
    std::string text;
    for (std::size_t line = 0; text.size() < size; ++line)
        text += std::string(line * 37 % 5000, static_cast<char>('a' + line % 26)) + "\n";
    text.resize(size);
    return text;
}

/// So many letters and then `end`.
std::string PadBefore(std::size_t size, const std::string& end)
{
    std::string text(size, 'x');
    text.append(end);
    return text;
}

void ExpectUnsupportedEncoding(FileInputSource& source)
{
    std::string out = "as before";
    try {
        source.GetBytes(out, 10);
        ADD_FAILURE() << "was read";
    } catch (const CorvinaException& exception) {
        EXPECT_EQ(exception.GetMessagesFront(), u"The XML file is in an unsupported encoding.");
        EXPECT_EQ(exception.GetErrorInfo().GetError().GetCode(), 0xE19C2DF8U);
        EXPECT_EQ(exception.GetErrorInfo().GetError().GetIdentifier(),
                  u"CorvinaException_InvalidEncoding_0xE19C2DF8");
    }
    EXPECT_EQ(out, "as before");
    EXPECT_THROW(source.GetNextLine(out), CorvinaException);
}

} // namespace

TEST(FileInputSource, DeliversTheFileInStepsOfAnySize)
{
    const TemporaryFolder folder;
    for (const std::size_t size : {0U, 1U, 2047U, 2048U, 2049U, 4096U, 10000U}) {
        const std::string text = MakeLongText(size);
        FileInputSource source(folder.Write("a.xml", text));
        EXPECT_EQ(source.Size(), static_cast<std::int64_t>(size));
        for (const unsigned int step : {1U, 7U, 2047U, 2048U, 2049U, 5000U, 20000U}) {
            EXPECT_EQ(ReadAll(source, step), text) << size << " " << step;
            source.ResetToStart();
        }
    }
}

TEST(FileInputSource, IsNamedAfterTheFile)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "<a/>");
    EXPECT_EQ(FileInputSource(path).Id(), path);
}

TEST(FileInputSource, DeliversLinesThatSpanChunks)
{
    const TemporaryFolder folder;
    const std::string text = MakeLongText(20000) + "the last line";
    FileInputSource source(folder.Write("a.xml", text));
    std::string all;
    std::string line;
    while (source.GetNextLine(line)) {
        ASSERT_FALSE(line.empty());
        EXPECT_EQ(line.find('\n'),
                  all.size() + line.size() == text.size() ? std::string::npos : line.size() - 1);
        all += line;
    }
    EXPECT_EQ(all, text);
    line = "as before";
    EXPECT_FALSE(source.GetNextLine(line));
    EXPECT_EQ(line, "as before");
}

TEST(FileInputSource, NormalizesLineEndingsWithinEachCallOnly)
{
    const TemporaryFolder folder;
    FileInputSource source(folder.Write("a.xml", "a\r\nb\rc\n"));
    EXPECT_EQ(ReadAll(source, 100), "a\nb\nc\n");
    source.ResetToStart();
    std::string out;
    EXPECT_TRUE(source.GetBytes(out, 2));
    EXPECT_EQ(out, "a\n");
    EXPECT_TRUE(source.GetBytes(out, 2));
    EXPECT_EQ(out, "\nb");
    source.ResetToStart();
    EXPECT_TRUE(source.GetNextLine(out));
    EXPECT_EQ(out, "a\n");
    EXPECT_TRUE(source.GetNextLine(out));
    EXPECT_EQ(out, "b\nc\n");
}

TEST(FileInputSource, JoinsAPairOfLineEndingsThatChunksPart)
{
    const TemporaryFolder folder;
    FileInputSource source(folder.Write("a.xml", PadBefore(2047, "\r\ny")));
    EXPECT_EQ(ReadAll(source, 10000), PadBefore(2047, "\ny"));
    source.ResetToStart();
    std::string line;
    EXPECT_TRUE(source.GetNextLine(line));
    EXPECT_EQ(line, PadBefore(2047, "\n"));
    EXPECT_TRUE(source.GetNextLine(line));
    EXPECT_EQ(line, "y");
}

TEST(FileInputSource, TakesAPairOfLineEndingsThatCallsPartForTwo)
{
    const TemporaryFolder folder;
    FileInputSource source(folder.Write("a.xml", PadBefore(2047, "\r\ny")));
    std::string bytes;
    EXPECT_TRUE(source.GetBytes(bytes, 2048));
    EXPECT_EQ(bytes, PadBefore(2047, "\n"));
    EXPECT_TRUE(source.GetBytes(bytes, 2048));
    EXPECT_EQ(bytes, "\ny");
}

TEST(FileInputSource, MixesLinesAndBytes)
{
    const TemporaryFolder folder;
    FileInputSource source(folder.Write("a.xml", "one\ntwo\nthree"));
    std::string out = "something";
    EXPECT_TRUE(source.GetBytes(out, 2));
    EXPECT_EQ(out, "on");
    EXPECT_TRUE(source.GetNextLine(out));
    EXPECT_EQ(out, "e\n");
    EXPECT_TRUE(source.GetBytes(out, 0));
    EXPECT_EQ(out, "");
    EXPECT_TRUE(source.GetBytes(out, 100));
    EXPECT_EQ(out, "two\nthree");
    EXPECT_FALSE(source.GetBytes(out, 100));
    source.ResetToStart();
    EXPECT_TRUE(source.GetNextLine(out));
    EXPECT_EQ(out, "one\n");
}

TEST(FileInputSource, RefusesAnotherEncodingAtEveryReadEvenAfterAReset)
{
    const TemporaryFolder folder;
    FileInputSource source(folder.Write("a.xml", std::string("\xFF\xFE<\0a\0/\0>\0", 10)));
    ExpectUnsupportedEncoding(source);
    ExpectUnsupportedEncoding(source);
    source.ResetToStart();
    ExpectUnsupportedEncoding(source);
}

TEST(FileInputSource, LooksAtTheEncodingOfTheFirstChunkOnly)
{
    const TemporaryFolder folder;
    const std::string text = PadBefore(2048, "\xFF\xFE\xFF");
    FileInputSource late(folder.Write("late.xml", text));
    EXPECT_EQ(ReadAll(late, 1000), text);
    FileInputSource early(folder.Write("early.xml", PadBefore(2047, "\xFF\xFE\xFF")));
    ExpectUnsupportedEncoding(early);
}

TEST(FileInputSource, KeepsTheVerdictOnTheEncodingWhateverTheFileBecomes)
{
    const TemporaryFolder folder;
    std::string out;
    FileInputSource accepted(folder.Write("accepted.xml", "<a/>"));
    EXPECT_TRUE(accepted.GetBytes(out, 10));
    folder.Write("accepted.xml", "\xFF\xFE\xFF");
    accepted.ResetToStart();
    EXPECT_EQ(ReadAll(accepted, 10), "\xFF\xFE\xFF");

    FileInputSource refused(folder.Write("refused.xml", "\xFF\xFE\xFF"));
    ExpectUnsupportedEncoding(refused);
    folder.Write("refused.xml", "<a/>");
    refused.ResetToStart();
    ExpectUnsupportedEncoding(refused);
}

TEST(FileInputSource, SaysNothingOfTheEncodingBeforeItHasReadAChunk)
{
    const TemporaryFolder folder;
    const TString path = folder.Write("a.xml", "");
    FileInputSource source(path);
    std::string out = "as before";
    EXPECT_FALSE(source.GetBytes(out, 10));
    EXPECT_FALSE(source.GetNextLine(out));
    source.ResetToStart();
    EXPECT_EQ(out, "as before");
    // Of a file that was empty until now, the first bytes decide all the same.
    folder.Write("a.xml", "\xFF\xFE\xFF");
    ExpectUnsupportedEncoding(source);
    FileInputSource other(folder.Write("b.xml", ""));
    EXPECT_FALSE(other.GetBytes(out, 10));
    folder.Write("b.xml", "<a/>");
    EXPECT_EQ(ReadAll(other, 10), "<a/>");
}

TEST(FileInputSource, IsReadByTheParserInStepsThatMayPartAPairOfLineEndings)
{
    constexpr std::size_t c_step = 0x100000;
    const TemporaryFolder folder;
    const std::string tag = "<a>";
    for (const auto& [before, lines] :
         {std::pair(c_step - 1, "\n\n"), std::pair(c_step - 2, "\n"), std::pair(c_step, "\n"),
          std::pair(2 * c_step - 1, "\n\n")}) {
        const std::string text(before - tag.size(), 'x');
        FileInputSource source(folder.Write("a.xml", tag + text + "\r\ny</a>"));
        const ParseOutcome outcome = ParseSource(source);
        EXPECT_TRUE(outcome.events ==
                    (std::vector<std::string>{"<a>", "'" + text + lines + "y'", "</>"}))
            << before;
    }
}

TEST(FileInputSource, AcceptsACharacterThatTheFirstChunkCuts)
{
    const TemporaryFolder folder;
    const std::string text = PadBefore(2046, "\xE2\x82\xAC");
    FileInputSource source(folder.Write("a.xml", text));
    EXPECT_EQ(ReadAll(source, 10000), text);
}

TEST(FileInputSource, LogsAndRethrowsWhenTheFileCannotBeOpened)
{
    const TemporaryFolder folder;
    const TString path = folder.GetPath("missing.xml");
    std::vector<std::pair<int, TString>> records;
    const TLog::Sink former = TLog::SetSink([&records](const TLog::Record& record) {
        records.emplace_back(record.severity, record.message);
    });
    TString reason;
    try {
        const FileInputSource source(path);
        ADD_FAILURE() << "was opened";
    } catch (const TIO::Exception& exception) {
        reason = exception.GetConcatenatedMessages();
    }
    TLog::SetSink(former);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].first, 3);
    EXPECT_EQ(records[0].second,
              TString(u"FileInputSource::FileInputSource( \"") + path + u"\" ) error: " + reason);
    EXPECT_FALSE(reason.IsEmpty());
}

TEST(FileInputSource, DoesNotOpenAFolder)
{
    const TemporaryFolder folder;
    const TLog::Sink former = TLog::SetSink([](const TLog::Record&) {});
    EXPECT_THROW(FileInputSource{folder.GetPath()}, TIO::Exception);
    TLog::SetSink(former);
}

TEST(FileInputSource, OfAnEmptyFileDeliversNothing)
{
    const TemporaryFolder folder;
    FileInputSource source(folder.Write("a.xml", ""));
    std::string out = "as before";
    EXPECT_FALSE(source.GetBytes(out, 10));
    EXPECT_FALSE(source.GetNextLine(out));
    EXPECT_EQ(out, "as before");
    EXPECT_EQ(source.Size(), 0);
}

#include "bytes/StrictUtf8Source.h"

#include "support/XercesEvents.h"

#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

/// What a stream of `source` shows, read in pieces of `pieceSize`.
std::string ReadAll(const StrictUtf8Source& source, std::size_t pieceSize)
{
    const std::unique_ptr<xercesc::BinInputStream> stream(source.makeStream());
    std::string read;
    std::string piece(pieceSize, '\0');
    for (;;) {
        auto* const to = reinterpret_cast<XMLByte*>(piece.data());
        const std::size_t count = stream->readBytes(to, piece.size());
        if (count == 0)
            return read;
        read.append(piece, 0, count);
        EXPECT_EQ(stream->curPos(), read.size());
    }
}

class StrictUtf8SourceTest : public testing::Test
{
protected:
    StrictUtf8SourceTest() { xercesc::XMLPlatformUtils::Initialize(); }
    ~StrictUtf8SourceTest() override { xercesc::XMLPlatformUtils::Terminate(); }

    static StrictUtf8Source Make(const std::string& bytes)
    {
        return {bytes, u"id", xercesc::XMLPlatformUtils::fgMemoryManager};
    }
};

} // namespace

TEST_F(StrictUtf8SourceTest, ShowsARefusedByteInPlaceOfThoseThatBeginBeyondTheLastCharacter)
{
    const std::string bytes = "a\xF4\xF5\xF6\xF7\xF8\xC3\xA9\xF5";
    for (const std::size_t pieceSize : {1U, 2U, 3U, 100U})
        EXPECT_EQ(ReadAll(Make(bytes), pieceSize), "a\xF4\xFF\xFF\xFF\xF8\xC3\xA9\xFF");
}

TEST_F(StrictUtf8SourceTest, KnowsOnceAllIsReadWhetherThereIsANull)
{
    for (const std::size_t pieceSize : {1U, 4U, 100U}) {
        const std::string without = "0123456789";
        const StrictUtf8Source source = Make(without);
        EXPECT_TRUE(source.MayHoldNull()) << "nothing is read yet";
        EXPECT_EQ(ReadAll(source, pieceSize), without);
        EXPECT_FALSE(source.MayHoldNull()) << pieceSize;
        for (const std::size_t at : {0U, 3U, 4U, 9U}) {
            std::string with = without;
            with[at] = '\0';
            const StrictUtf8Source holding = Make(with);
            EXPECT_EQ(ReadAll(holding, pieceSize), with);
            EXPECT_TRUE(holding.MayHoldNull()) << pieceSize << " " << at;
        }
    }
}

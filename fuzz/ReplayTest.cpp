// Runs what the fuzzers start from and what they have found, as ordinary tests.

#include "Targets.h"

#include "support/Effort.h"
#include "support/ExpatReader.h"
#include "support/RealDocuments.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> ListFiles(const fs::path& folder)
{
    std::vector<fs::path> files;
    if (fs::exists(folder)) {
        for (const auto& entry : fs::directory_iterator(folder))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<unsigned char> ReadFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

class FuzzReplay : public testing::TestWithParam<FuzzTargets::Target>
{
protected:
    static void Replay(const std::vector<fs::path>& files)
    {
        for (const fs::path& path : files) {
            SCOPED_TRACE(path);
            EXPECT_NO_THROW(GetParam().testOneInput(ReadFile(path)));
        }
    }
};

/// In how many parts installed documents are read, side by side.
constexpr std::size_t c_parts = 8;

class SecondReader : public testing::TestWithParam<std::size_t>
{
protected:
    /// Skips when the folder of the package is missing.
    static void ExpectAgreement(const std::string& folder, const char* package)
    {
        if (!RealDocuments::Exists(folder))
            GTEST_SKIP() << package << " is not installed";
        const std::vector<std::string> files = RealDocuments::Find(folder);
        EXPECT_GE(files.size(), 500U) << folder;
        for (std::size_t i = GetParam(); i < files.size(); i += c_parts * Effort::c_stride) {
            SCOPED_TRACE(files[i]);
            const std::vector<unsigned char> bytes = ReadFile(files[i]);
            EXPECT_TRUE(ReadWithExpat({reinterpret_cast<const char*>(bytes.data()), bytes.size()})
                            .error.empty());
            EXPECT_NO_THROW(FuzzTargets::SecondReader(bytes));
        }
    }
};

} // namespace

TEST_P(FuzzReplay, SeedsGiveWhatIsExpected)
{
    const auto seeds = ListFiles(fs::path(FUZZ_SOURCE_DIR) / "corpus" / GetParam().name);
    EXPECT_GE(seeds.size(), 3U);
    Replay(seeds);
}

TEST_P(FuzzReplay, PastFindsGiveWhatIsExpected)
{
    Replay(ListFiles(fs::path(FUZZ_SOURCE_DIR) / "finds" / GetParam().name));
}

/// A second reader agrees on everything that the fuzzers start from or have found, for whatever
/// target.
TEST(SecondReader, AgreesOnAllSeedsAndFinds)
{
    std::size_t count = 0;
    for (const FuzzTargets::Target& target : FuzzTargets::c_all) {
        for (const char* folder : {"corpus", "finds"}) {
            for (const fs::path& path :
                 ListFiles(fs::path(FUZZ_SOURCE_DIR) / folder / target.name)) {
                SCOPED_TRACE(path);
                EXPECT_NO_THROW(FuzzTargets::SecondReader(ReadFile(path)));
                ++count;
            }
        }
    }
    EXPECT_GT(count, 50U);
}

/// The same for documents that Debian's packages install.
TEST_P(SecondReader, AgreesOnTheInstalledMimeDatabase)
{
    ExpectAgreement("/usr/share/mime", "shared-mime-info");
}

TEST_P(SecondReader, AgreesOnTheInstalledLocaleRepository)
{
    ExpectAgreement("/usr/share/unicode/cldr", "unicode-cldr-core");
}

INSTANTIATE_TEST_SUITE_P(Part, SecondReader, testing::Range(std::size_t{0}, c_parts));

INSTANTIATE_TEST_SUITE_P(Of, FuzzReplay, testing::ValuesIn(FuzzTargets::c_all),
                         [](const auto& of) { return std::string(of.param.name); });

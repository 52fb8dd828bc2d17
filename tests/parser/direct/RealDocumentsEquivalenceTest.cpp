// Documents that Debian's packages install, those of this repository, and what the fuzzers start
// from or have found: nobody can tell which scanner has read them.

#include "support/BothScanners.h"
#include "support/ExpectSame.h"
#include "support/RealDocuments.h"

#include <gtest/gtest.h>

namespace {

/// All of a folder when the environment variable KESCOREXML_TEST_ALL_DOCUMENTS is set, else as many
/// as are read in a few seconds.
void CompareFolder(const char* folder, std::size_t minimum, std::size_t maxBytes)
{
    std::vector<std::string> files = RealDocuments::Find(folder);
    ASSERT_GE(files.size(), minimum) << folder;
    if (!RealDocuments::AreAllWanted())
        files = RealDocuments::Sample(files, maxBytes);
    BothScanners both;
    std::size_t turn = 0;
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        ASSERT_TRUE(ExpectSame(both.CompareSome(RealDocuments::Read(file), ++turn)));
    }
}

} // namespace

TEST(DirectEquivalence, DocumentsOfTheMimeDatabaseAreTheSame)
{
    if (!RealDocuments::Exists("/usr/share/mime"))
        GTEST_SKIP() << "shared-mime-info is not installed";
    CompareFolder("/usr/share/mime", 500, 20'000'000);
}

TEST(DirectEquivalence, DocumentsOfTheLocaleRepositoryAreTheSame)
{
    if (!RealDocuments::Exists("/usr/share/unicode/cldr"))
        GTEST_SKIP() << "unicode-cldr-core is not installed";
    CompareFolder("/usr/share/unicode/cldr", 500, 30'000'000);
}

TEST(DirectEquivalence, DocumentsOfThisRepositoryAreTheSame)
{
    CompareFolder(TESTS_SOURCE_DIR "/data/documents", 6, 20'000'000);
}

TEST(DirectEquivalence, WhatFuzzersStartFromOrHaveFoundIsTheSame)
{
    BothScanners both;
    std::size_t count = 0;
    for (const char* folder : {"/../fuzz/corpus", "/../fuzz/finds"}) {
        for (const std::string& file :
             RealDocuments::FindAll(TESTS_SOURCE_DIR + std::string(folder))) {
            const std::string bytes = RealDocuments::Read(file);
            SCOPED_TRACE(file);
            ASSERT_TRUE(ExpectSame(both.CompareAll(bytes)));
            // Many targets take their first byte for something else.
            if (!bytes.empty()) {
                ASSERT_TRUE(ExpectSame(both.CompareAll(bytes.substr(1))));
            }
            ++count;
        }
    }
    EXPECT_GT(count, 80U);
}

// Documents that Debian's packages install, those of this repository, and what the fuzzers start
// from or have found: nobody can tell which scanner has read them.

#include "support/BothScanners.h"
#include "support/RealDocuments.h"

#include <gtest/gtest.h>

namespace {

/// All of a folder when the environment variable KESCOREXML_TEST_ALL_DOCUMENTS is set, else as many
/// as are read in a few seconds.
void ExpectSame(const char* folder, std::size_t least, std::size_t mostBytes)
{
    std::vector<std::string> files = RealDocuments::Find(folder);
    ASSERT_GE(files.size(), least) << folder;
    if (!RealDocuments::AreAllWanted())
        files = RealDocuments::Sample(files, mostBytes);
    BothScanners both;
    std::size_t turn = 0;
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        ASSERT_EQ(both.CompareSome(RealDocuments::Read(file), ++turn), "");
    }
}

} // namespace

TEST(DirectEquivalence, DocumentsOfTheMimeDatabaseAreTheSame)
{
    if (!RealDocuments::Exists("/usr/share/mime"))
        GTEST_SKIP() << "shared-mime-info is not installed";
    ExpectSame("/usr/share/mime", 500, 20'000'000);
}

TEST(DirectEquivalence, DocumentsOfTheLocaleRepositoryAreTheSame)
{
    if (!RealDocuments::Exists("/usr/share/unicode/cldr"))
        GTEST_SKIP() << "unicode-cldr-core is not installed";
    ExpectSame("/usr/share/unicode/cldr", 500, 30'000'000);
}

TEST(DirectEquivalence, DocumentsOfThisRepositoryAreTheSame)
{
    ExpectSame(TESTS_SOURCE_DIR "/data/documents", 6, 20'000'000);
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
            EXPECT_EQ(both.CompareAll(bytes), "");
            // Many targets take their first byte for something else.
            if (!bytes.empty()) {
                EXPECT_EQ(both.CompareAll(bytes.substr(1)), "");
            }
            ++count;
        }
    }
    EXPECT_GT(count, 80U);
}

#include "support/Effort.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementTraversal.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// The documents of this repository, and those of Debian's shared-mime-info and unicode-cldr-core
/// where they are installed.
std::vector<std::string> FindDocuments(const fs::path& directory)
{
    std::vector<std::string> files;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(directory, error), end; entry != end;
         entry.increment(error)) {
        if (entry->path().extension() == ".xml" && entry->is_regular_file())
            files.push_back(entry->path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool HasMixedContent(const DOM& document)
{
    const DOMElementTraversal::ConstPreorderTraversal elements(*document.GetRoot());
    return std::any_of(elements.begin(), elements.end(), [](const DOMElement& element) {
        return element.HasText() && element.HasChildren();
    });
}

/// Parses, writes and parses again. An element keeps one text, so only documents without mixed
/// content can come back as they were.
void ExpectRoundTrip(const DOMParser& parser, const std::string& file)
{
    SCOPED_TRACE(file);
    const std::unique_ptr<DOM> document = parser.ParseXmlFile(file.c_str());
    ASSERT_FALSE(document->HasErrors()) << document->GetConcatenatedErrors();
    ASSERT_NE(document->GetDocumentRoot(), nullptr);

    const TString written = XMLDomFormatter::RenderAsXMLString(*document, nullptr, true);
    const std::unique_ptr<DOM> again = parser.ParseXmlString(written, file.c_str());
    ASSERT_FALSE(again->HasErrors()) << again->GetConcatenatedErrors();
    if (!HasMixedContent(*document)) {
        EXPECT_TRUE(*again == *document);
    }
}

void ExpectRoundTrips(const fs::path& directory, std::size_t minimum)
{
    const std::vector<std::string> files = FindDocuments(directory);
    EXPECT_GE(files.size(), minimum) << directory;
    const DOMParser parser;
    for (std::size_t i = 0; i < files.size(); i += Effort::c_stride)
        ExpectRoundTrip(parser, files[i]);
}

} // namespace

TEST(RealDocuments, OfThisRepositoryComeBackAsTheyWereWritten)
{
    ExpectRoundTrips(TESTS_SOURCE_DIR "/data/documents", 6);
}

TEST(RealDocuments, OfTheMimeDatabaseComeBackAsTheyWereWritten)
{
    const fs::path folder("/usr/share/mime");
    if (!fs::exists(folder))
        GTEST_SKIP() << "shared-mime-info is not installed";
    ExpectRoundTrips(folder, 500);
}

TEST(RealDocuments, OfTheLocaleRepositoryComeBackAsTheyWereWritten)
{
    const fs::path folder("/usr/share/unicode/cldr");
    if (!fs::exists(folder))
        GTEST_SKIP() << "unicode-cldr-core is not installed";
    ExpectRoundTrips(folder, 500);
}

#include "support/KesxmlProcess.h"

#include <map>

namespace {

using ::testing::MatchesRegex;
using ::testing::SizeIs;

class KesxmlStats : public KesxmlTest
{
};

/// The lines by what they are about; a value is followed by its unit.
std::map<std::string, std::string> ToMap(const KesxmlOutcome& outcome)
{
    std::map<std::string, std::string> values;
    for (const std::string& line : outcome.OutLines()) {
        const std::size_t end = line.find("  ");
        values[line.substr(0, end)] = line.substr(line.find_first_not_of(' ', end));
    }
    return values;
}

} // namespace

TEST_F(KesxmlStats, CountsWhatIsInADocument)
{
    const QByteArray document = "<a x='1' y='2'>t\u20AC<b z='3'><c/></b>\n<b/>\U0001F600</a>\n";
    const KesxmlOutcome outcome = RunKesxml({"stats", Write("a.xml", document)});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    auto values = ToMap(outcome);
    EXPECT_EQ(values["elements"], "4");
    EXPECT_EQ(values["attributes"], "3");
    EXPECT_EQ(values["depth"], "3");
    EXPECT_EQ(values["text units"], "4");
    EXPECT_EQ(values["bytes"], std::to_string(document.size()));
    EXPECT_THAT(values["parse time"], MatchesRegex("[0-9]+\\.[0-9][0-9] ms"));
    EXPECT_EQ(ToMap(RunKesxml({"stats", "-"}, document))["bytes"], values["bytes"]);
}

TEST_F(KesxmlStats, CountsTheBytesOfTheFileWhateverItsEncoding)
{
    const QByteArray document = "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9\xE9</a>";
    auto values = ToMap(RunKesxml({"stats", Write("a.xml", document)}));
    EXPECT_EQ(values["bytes"], std::to_string(document.size()));
    EXPECT_EQ(values["text units"], "2");
}

TEST_F(KesxmlStats, AlignsNumbers)
{
    const KesxmlOutcome outcome = RunKesxml({"stats", "-"}, "<a><b/></a>");
    ASSERT_GE(outcome.OutLines().size(), 6U);
    for (const std::string& line : outcome.OutLines())
        EXPECT_THAT(line, MatchesRegex("[a-z ]+ [0-9.]+( [a-z]+)?"));
    for (const std::string& line : outcome.OutLines())
        EXPECT_EQ(line.find_last_of("0123456789"), 25U) << line;
}

TEST_F(KesxmlStats, MeasuresAHeapThatGrowsWithTheDocument)
{
    const auto heap = [](int elements) {
        const QByteArray document = "<r>" + QByteArray("<a x='1'/>").repeated(elements) + "</r>";
        auto values = ToMap(RunKesxml({"stats", "-"}, document));
        return values.contains("heap") ? std::stoull(values["heap"]) : 0;
    };
    const auto small = heap(1000);
    if (small == 0)
        GTEST_SKIP() << "the allocator in use does not tell";
    const auto large = heap(100000);
    EXPECT_GT(large, 50 * small);
    EXPECT_LT(large, 200 * small);
}

TEST_F(KesxmlStats, TakesDocumentsOfAnyDepth)
{
    const QString file =
        Write("deep.xml", QByteArray("<a>").repeated(200000) + QByteArray("</a>").repeated(200000));
    const KesxmlOutcome outcome =
        RunProgram("/bin/sh", {"-c", "ulimit -s 256; '" KESXML_PATH "' stats '" + file + "'"});
    EXPECT_EQ(ToMap(outcome)["depth"], "200000") << outcome.err;
}

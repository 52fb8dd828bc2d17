#include "Documents.h"
#include "Library.h"

#include "support/SmallStack.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <QTemporaryFile>

#include <cstdlib>
#include <functional>
#include <map>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::size_t GetHeapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// The bytes of heap that the tree of a document takes for each byte of it.
double MeasureHeap(Library& library, const std::string& document)
{
    // What the first parse sets up is no part of a tree.
    library.Parse("<a/>", false);
    const std::size_t before = GetHeapInUse();
    const std::shared_ptr<void> tree = library.Parse(document, false);
    const std::size_t after = GetHeapInUse();
    EXPECT_NE(tree, nullptr);
    return static_cast<double>(after - before) / static_cast<double>(document.size());
}

/// What becomes of a document of 10,000 levels on a stack of 256 KiB, in a process of its own.
std::string ReadDeepDocument(Library& library, bool isHuge)
{
    constexpr int c_refused = 2;
    const pid_t child = fork();
    if (child == 0) {
        int status = 0;
        RunOnSmallStack([&] {
            const std::shared_ptr<void> tree = library.Parse(MakeDeep(10'000), isHuge);
            status = tree == nullptr ? c_refused : 0;
        });
        _exit(status);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status))
        return "crashes";
    return WEXITSTATUS(status) == 0 ? "yes" : "no";
}

std::string ReadDeepDocument(Library& library)
{
    const std::string answer = ReadDeepDocument(library, false);
    const bool isLimited = answer == "no" && !library.HugeSetting().empty();
    return isLimited && ReadDeepDocument(library, true) == "yes" ? library.HugeSetting() : answer;
}

std::string ReadEntityOfFile(Library& library)
{
    QTemporaryFile file;
    EXPECT_TRUE(file.open());
    file.write("secret");
    file.close();
    return library.EntityOfFile(file.fileName().toStdString());
}

/// The rows of the table, by their first cells. The heap is compared apart, as a number.
const std::map<std::string, std::function<std::string(Library&)>>& GetRows()
{
    static const std::map<std::string, std::function<std::string(Library&)>> s_rows{
        {"Position of an element", [](Library& l) { return l.PositionOfElement(); }},
        {"Tree of a broken document", [](Library& l) { return l.TreeOfBrokenDocument(); }},
        {"XML Schema", [](Library& l) { return l.SchemaValidation(); }},
        {"Entity that a document defines", [](Library& l) { return l.EntityOfDocument(); }},
        {"File that a document names as entity", ReadEntityOfFile},
        {"10,000 levels on a stack of 256 KiB", [](Library& l) { return ReadDeepDocument(l); }},
        {"Text between elements", [](Library& l) { return l.TextBetweenElements(); }},
        {"Comments", [](Library& l) { return l.Comments(); }},
        {"Queries", [](Library& l) { return l.Queries(); }},
        {"HTML", [](Library& l) { return l.Html(); }},
        {"Text", [](Library& l) { return l.TextUnits(); }},
    };
    return s_rows;
}

/// The rows about memory.
const std::map<std::string, std::string>& GetHeapRows()
{
    static const std::map<std::string, std::string> s_rows{
        {"Heap a byte of source, mostly tags", MakeCatalogue()},
        {"Heap a byte of source, mostly text", MakeArticle()}};
    return s_rows;
}

std::unique_ptr<Library> MakeLibrary(const std::string& name)
{
    static const std::map<std::string, std::unique_ptr<Library> (*)()> s_libraries{
        {"kescorexml", MakeKescorexml},
        {"pugixml", MakePugixml},
        {"libxml2", MakeLibxml2},
        {"Qt XML", MakeQtXml},
        {"Xerces-C DOM", MakeXercesDom}};
    return s_libraries.at(name)();
}

/// The cells of the table in the README, row by row, the head first.
std::vector<std::vector<std::string>> ReadTable()
{
    QFile file(README_PATH);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    std::vector<std::vector<std::string>> rows;
    for (const QString& line : QString(file.readAll()).split('\n')) {
        if (rows.empty() ? !line.startsWith("| | kescorexml |") : !line.startsWith('|')) {
            if (!rows.empty())
                break;
            continue;
        }
        rows.emplace_back();
        for (const QString& cell : line.mid(1, line.size() - 2).split('|'))
            rows.back().push_back(cell.trimmed().toStdString());
    }
    return rows;
}

} // namespace

TEST(Comparison, IsWhatTheLibrariesDo)
{
    const auto table = ReadTable();
    ASSERT_GT(table.size(), 2U);
    std::vector<std::string> names;
    std::vector<std::string> expected;
    for (const auto& row : GetRows())
        expected.push_back(row.first);
    for (const auto& row : GetHeapRows())
        expected.push_back(row.first);
    for (std::size_t row = 2; row < table.size(); ++row) {
        names.push_back(table[row].front());
        ASSERT_EQ(table[row].size(), 6U) << names.back();
        const auto answer = GetRows().find(names.back());
        if (answer == GetRows().end())
            continue;
        for (std::size_t column = 1; column < table[row].size(); ++column) {
            const std::unique_ptr<Library> library = MakeLibrary(table[0][column]);
            EXPECT_EQ(table[row][column], answer->second(*library))
                << names.back() << ", " << table[0][column];
        }
    }
    EXPECT_THAT(names, testing::UnorderedElementsAreArray(expected));
}

TEST(Comparison, TellsTheMemoryOfTrees)
{
    const auto table = ReadTable();
    for (const auto& row : table) {
        const auto document = GetHeapRows().find(row.front());
        if (document == GetHeapRows().end())
            continue;
        for (std::size_t column = 1; column < row.size(); ++column) {
            const std::unique_ptr<Library> library = MakeLibrary(table[0][column]);
            const double told = std::atof(row[column].c_str());
            EXPECT_NEAR(MeasureHeap(*library, document->second), told, 0.05 * told + 0.05)
                << table[0][column];
        }
    }
}

TEST(Comparison, TellsTheMemoryOfTheWorstTree)
{
    std::string document = "<a>";
    for (int i = 0; i < 250'000; ++i)
        document += "<a/>";
    document += "</a>";
    const double measured = MeasureHeap(*MakeKescorexml(), document);
    const auto find = [](const char* page, const char* sentence) {
        QFile file(page);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << page;
        const QRegularExpressionMatch match =
            QRegularExpression(sentence).match(QString(file.readAll()).simplified());
        EXPECT_TRUE(match.hasMatch()) << page;
        return match.captured(1).toDouble();
    };
    const double told = find(SECURITY_PATH, "(\\d+) for a list of `<a/>`");
    EXPECT_NEAR(measured, told, 0.05 * told);
    // The worst of all, which HeapFigures measures.
    EXPECT_EQ(find(README_PATH, "up to (\\d+), if it is nothing but short tags"),
              find(SECURITY_PATH, "that are never closed take up to (\\d+)"));
}

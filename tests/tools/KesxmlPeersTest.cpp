#include "support/KesxmlProcess.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

#include <algorithm>
#include <map>
#include <optional>

namespace {

/// What a command on the page did.
struct Answer
{
    KesxmlOutcome outcome;
    bool hasFormOfItsOwn;
};

/// A page with a table of tasks, in columns for each program, and the files that the commands use.
class Page
{
public:
    explicit Page(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        m_text = QString::fromUtf8(file.readAll());
    }

    std::map<QString, QByteArray> Files() const
    {
        static const QRegularExpression s_file("^`([^`\\n]+)`:\\n\\n```xml\\n(.*?)^```",
                                               QRegularExpression::MultilineOption |
                                                   QRegularExpression::DotMatchesEverythingOption);
        std::map<QString, QByteArray> files;
        for (auto match = s_file.globalMatch(m_text); match.hasNext();) {
            const auto file = match.next();
            files[file.captured(1)] = file.captured(2).toUtf8();
        }
        return files;
    }

    /// The cells of the rows of the table that begins with "Task".
    std::vector<QStringList> Rows() const
    {
        static const QRegularExpression s_cellEnd(" (?<!\\\\)\\|(?: |$)");
        std::vector<QStringList> rows;
        const qsizetype start = m_text.indexOf("\n| Task |");
        const QStringList lines =
            m_text.mid(start + 1, m_text.indexOf("\n\n", start) - start).trimmed().split('\n');
        for (const QString& line : lines.mid(2))
            rows.push_back(line.mid(2).split(s_cellEnd));
        return rows;
    }

private:
    QString m_text;
};

class KesxmlPeers : public ::testing::Test
{
protected:
    /// What the command in a cell does among the files; nothing for a dash, or for a program that
    /// is not there.
    std::optional<Answer> Run(const QString& cell, const QString& program) const
    {
        static const QRegularExpression s_command("^(≠ )?`(.*)`$");
        if (cell == "-" ||
            (program != "kesxml" && QStandardPaths::findExecutable(program).isEmpty()))
            return {};
        const auto command = s_command.match(cell);
        EXPECT_TRUE(command.hasMatch()) << cell.toStdString();
        EXPECT_TRUE(command.captured(2).contains(program + " ")) << cell.toStdString();
        const QTemporaryDir folder;
        for (const auto& [name, content] : m_page.Files()) {
            QFile file(folder.filePath(name));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(content);
        }
        const QString path = QFileInfo(KESXML_PATH).path();
        const QString line =
            "PATH='" + path + "':$PATH\n" + command.captured(2).replace("\\|", "|");
        return Answer{RunProgram("bash", {"-c", line}, {}, folder.path()),
                      !command.captured(1).isEmpty()};
    }

    const Page m_page{TESTS_SOURCE_DIR "/../docs/kesxml.md"};
};

/// What answers are to agree on.
std::string Essence(const KesxmlOutcome& outcome, const QString& kind)
{
    if (kind.startsWith("status"))
        return outcome.status == 0 ? "0" : "not 0";
    // A program that lists what is bad may say by its status that there is some.
    EXPECT_TRUE(outcome.status == 0 || !outcome.out.empty()) << outcome.err;
    if (kind == "output")
        return outcome.out;
    EXPECT_EQ(kind, "document");
    std::string text = outcome.out;
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
    return text;
}

/// Whether nobody but kesxml has an answer that could be compared.
bool IsAlone(const QStringList& row)
{
    return std::all_of(row.begin() + 3, row.begin() + 5,
                       [](const QString& cell) { return cell == "-" || cell.startsWith(u"≠"); });
}

/// The exit status that the command of such a row has.
int StatusOf(const QString& kind)
{
    EXPECT_TRUE(kind == "status 0" || kind == "status 1" || kind == "output") << kind.toStdString();
    return kind == "status 1" ? 1 : 0;
}

} // namespace

TEST_F(KesxmlPeers, DoWhatThePageSays)
{
    const std::vector<QStringList> rows = m_page.Rows();
    ASSERT_GT(rows.size(), 30U);
    const QStringList programs{"kesxml", "xmllint", "xmlstarlet"};
    for (const QStringList& row : rows) {
        ASSERT_GE(row.size(), 5) << row.join('|').toStdString();
        std::optional<std::string> expected;
        for (qsizetype i = 0; i < programs.size(); ++i) {
            const QString& cell = row.at(2 + i);
            const std::optional<Answer> answer = Run(cell, programs.at(i));
            if (!answer)
                continue;
            // "Command not found" of the shell, and wrong arguments of kesxml.
            EXPECT_NE(answer->outcome.status, 127) << answer->outcome.err;
            EXPECT_EQ(answer->outcome.err.find(" --help'"), std::string::npos)
                << answer->outcome.err;
            if (answer->hasFormOfItsOwn)
                continue;
            if (IsAlone(row)) {
                EXPECT_EQ(answer->outcome.status, StatusOf(row.at(1))) << cell.toStdString();
            }
            const std::string essence = Essence(answer->outcome, row.at(1));
            EXPECT_EQ(essence, expected.value_or(essence)) << cell.toStdString();
            expected = essence;
        }
        EXPECT_TRUE(expected || row.at(2) == "-") << row.front().toStdString();
    }
}

TEST_F(KesxmlPeers, AreAskedOfAllTheFilesOfThePage)
{
    QString commands;
    for (const QStringList& row : m_page.Rows())
        commands += row.join(' ');
    for (const auto& [name, content] : m_page.Files())
        EXPECT_TRUE(commands.contains(name)) << name.toStdString();
    EXPECT_EQ(m_page.Files().size(), 9U);
}

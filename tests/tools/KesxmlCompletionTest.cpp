#include "support/KesxmlProcess.h"

#include <QRegularExpression>
#include <QSet>

namespace {

class KesxmlCompletion : public KesxmlTest
{
protected:
    /// What bash offers for the last word of a command line.
    QStringList Complete(const QStringList& words)
    {
        const QString script = ". " TESTS_SOURCE_DIR "/../tools/kesxml/completion.bash\n"
                               "compopt() { :; }\n"
                               "COMP_WORDS=(kesxml \"$@\")\n"
                               "COMP_CWORD=$#\n"
                               "_kesxml\n"
                               "[ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\\n' \"${COMPREPLY[@]}\"\n";
        const KesxmlOutcome outcome = RunProgram(
            "/bin/bash", QStringList{"-c", script, "bash"} + words, {}, m_directory.path());
        EXPECT_EQ(outcome.err, "");
        return QString::fromStdString(outcome.out).split('\n', Qt::SkipEmptyParts);
    }

    static QSet<QString> ToSet(const QStringList& list) { return {list.begin(), list.end()}; }

    /// The long options in the help text of a command.
    static QSet<QString> GetOptions(const QString& command)
    {
        const std::string help = RunKesxml({command, "--help"}).out;
        const QString text = QString::fromStdString(help.substr(0, help.find("Examples:")));
        static const QRegularExpression s_option("^  (?:-[a-z], )?(--[a-z-]+)",
                                                 QRegularExpression::MultilineOption);
        QSet<QString> options;
        for (auto match = s_option.globalMatch(text); match.hasNext();)
            options.insert(match.next().captured(1));
        return options;
    }
};

} // namespace

TEST_F(KesxmlCompletion, OffersTheCommandsOfTheHelp)
{
    QSet<QString> expected = ToSet(GetKesxmlCommands());
    EXPECT_EQ(ToSet(Complete({"help", ""})), expected);
    expected.unite({"help", "--help", "--version"});
    EXPECT_EQ(ToSet(Complete({""})), expected);
    EXPECT_EQ(Complete({"ch"}), QStringList{"check"});
}

TEST_F(KesxmlCompletion, OffersTheOptionsThatTheHelpOfACommandNames)
{
    for (const QString& command : GetKesxmlCommands()) {
        const QSet<QString> options = GetOptions(command);
        EXPECT_GE(options.size(), 2) << command.toStdString();
        EXPECT_EQ(ToSet(Complete({command, "-"})), options) << command.toStdString();
    }
    EXPECT_EQ(Complete({"check", "a.xml", "--x"}), QStringList{"--xsd"});
}

TEST_F(KesxmlCompletion, LeavesFilesToBash)
{
    Write("a.xml", "<a/>");
    EXPECT_TRUE(Complete({"check", ""}).isEmpty());
    EXPECT_TRUE(Complete({"check", "--", "-"}).isEmpty());
    EXPECT_TRUE(Complete({"tree", "--depth", ""}).isEmpty());
    EXPECT_TRUE(Complete({"check", "--max-errors", ""}).isEmpty());
    EXPECT_EQ(Complete({"check", "--color", "n"}), QStringList{"never"});
}

TEST_F(KesxmlCompletion, OffersSchemasAfterXsd)
{
    Write("a.xsd", "");
    Write("b b.xsd", "");
    Write("c.xml", "");
    EXPECT_EQ(ToSet(Complete({"check", "--xsd", ""})), (QSet<QString>{"a.xsd", "b b.xsd"}));
}

TEST_F(KesxmlCompletion, OffersPagesAfterHtml)
{
    Write("old.html", "");
    Write("a.xml", "");
    EXPECT_EQ(Complete({"check", "--html", ""}), QStringList{"old.html"});
}

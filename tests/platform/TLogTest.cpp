#include <kesplatform/TLog.h>

#include <gmock/gmock.h>

#include <QLoggingCategory>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using QtMessage = std::tuple<QtMsgType, std::string, std::string>;

std::vector<QtMessage>& QtMessages()
{
    static std::vector<QtMessage> s_messages;
    return s_messages;
}

/// Collects what reaches Qt's message handler, and takes the platform's sink away at the end.
class TLogTest : public testing::Test
{
protected:
    TLogTest()
    {
        QtMessages().clear();
        m_handler = qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext& context, const QString& text) {
                QtMessages().emplace_back(type, context.category, text.toStdString());
            });
    }
    ~TLogTest() override
    {
        qInstallMessageHandler(m_handler);
        TLog::SetSink({});
    }

private:
    QtMessageHandler m_handler;
};

} // namespace

TEST_F(TLogTest, ReportsToQtByDefault)
{
    LogMessage(TLog::Trace, u"trace");
    LogMessage(TLog::Debug, u"debug");
    LogMessage(TLog::Info, u"info");
    LogMessage(TLog::Warning, u"warning \"quoted\"");
    LogMessage(TLog::Error, u"error");
    LogMessage(TLog::Fatal, u"fatal");
    const std::string category = "kesplatform";
    EXPECT_THAT(QtMessages(),
                testing::ElementsAre(QtMessage(QtDebugMsg, category, "trace"),
                                     QtMessage(QtDebugMsg, category, "debug"),
                                     QtMessage(QtInfoMsg, category, "info"),
                                     QtMessage(QtWarningMsg, category, "warning \"quoted\""),
                                     QtMessage(QtCriticalMsg, category, "error"),
                                     QtMessage(QtCriticalMsg, category, "fatal")));
}

TEST_F(TLogTest, ShowsTheIdentifierToQt)
{
    LogMessage(TLog::Warning, u"text",
               TError::ErrorInfo(CorvinaError(1, u"LogSite_X_0x00000001"), 0, 0));
    ASSERT_EQ(1U, QtMessages().size());
    EXPECT_EQ("text (LogSite_X_0x00000001)", std::get<2>(QtMessages()[0]));
}

TEST_F(TLogTest, ObeysQtFilterRules)
{
    QLoggingCategory::setFilterRules(QStringLiteral("kesplatform.warning=false"));
    LogMessage(TLog::Warning, u"unwanted");
    QLoggingCategory::setFilterRules(QString());
    EXPECT_TRUE(QtMessages().empty());
}

TEST_F(TLogTest, HandsEveryRecordToTheSink)
{
    std::vector<std::tuple<int, TString, TError::ErrorInfo>> records;
    TLog::SetSink([&records](const TLog::Record& record) {
        records.emplace_back(record.severity, record.message, record.info);
    });
    const TError::ErrorInfo info(CorvinaError(7, u"id"), 1, 2);
    LogMessage(TLog::Trace, u"a", TError::ErrorInfo(info));
    LogMessage(TLog::Fatal, u"b");
    TLog::SetSink({});
    EXPECT_THAT(records,
                testing::ElementsAre(std::tuple(0, TString(u"a"), info),
                                     std::tuple(5, TString(u"b"), TError::ErrorInfo::NoError())));
    EXPECT_TRUE(QtMessages().empty());
}

TEST_F(TLogTest, GivesThePreviousSinkBack)
{
    int first = 0;
    EXPECT_FALSE(TLog::SetSink([&first](const TLog::Record&) { ++first; }));
    const TLog::Sink previous = TLog::SetSink([](const TLog::Record&) {});
    LogMessage(TLog::Info, u"to the second");
    EXPECT_EQ(0, first);
    TLog::SetSink(previous);
    LogMessage(TLog::Info, u"to the first");
    EXPECT_EQ(1, first);
    EXPECT_TRUE(TLog::SetSink({}));
    LogMessage(TLog::Info, u"to Qt");
    EXPECT_EQ(1, first);
    EXPECT_EQ(1U, QtMessages().size());
}

TEST_F(TLogTest, DropsWhatASinkThrows)
{
    TLog::SetSink([](const TLog::Record&) { throw std::runtime_error("sink"); });
    LogMessage(TLog::Error, u"text");
    EXPECT_TRUE(QtMessages().empty());
}

TEST_F(TLogTest, LetsASinkLogAndReplaceSinks)
{
    std::vector<TString> seen;
    TLog::SetSink([&seen](const TLog::Record& record) {
        seen.push_back(record.message);
        TLog::SetSink([&seen](const TLog::Record& next) { seen.push_back(next.message); });
        LogMessage(TLog::Info, u"from inside");
        seen.push_back(record.message);
    });
    LogMessage(TLog::Info, u"from outside");
    EXPECT_THAT(seen, testing::ElementsAre(TString(u"from outside"), TString(u"from inside"),
                                           TString(u"from outside")));
}

TEST_F(TLogTest, ReplacesTheSinkWhileOtherThreadsLog)
{
    std::atomic<int> count = 0;
    const auto sink = [&count](const TLog::Record&) { ++count; };
    TLog::SetSink(sink);
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&sink] {
            for (int round = 0; round < 2000; ++round) {
                LogMessage(TLog::Info, u"text");
                if (round % 100 == 0)
                    TLog::SetSink(sink);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(6000, count);
}

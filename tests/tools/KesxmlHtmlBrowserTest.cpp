#include "support/KesxmlProcess.h"

#include <QImage>

#include <algorithm>
#include <atomic>
#include <thread>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// A port of this machine that turns away who comes, and notices.
class PortTrap
{
public:
    PortTrap() : m_socket(socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(bind(m_socket, generic, size), 0);
        EXPECT_EQ(listen(m_socket, 8), 0);
        EXPECT_EQ(getsockname(m_socket, generic, &size), 0);
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { TurnAway(); });
    }
    PortTrap(const PortTrap&) = delete;
    PortTrap& operator=(const PortTrap&) = delete;
    ~PortTrap()
    {
        // Wakes the thread up.
        shutdown(m_socket, SHUT_RDWR);
        m_thread.join();
        close(m_socket);
    }

    QByteArray GetAddress() const { return "http://127.0.0.1:" + QByteArray::number(m_port) + "/"; }
    bool WasTouched() const { return m_wasTouched; }

private:
    void TurnAway()
    {
        for (int visitor = -1; (visitor = accept(m_socket, nullptr, nullptr)) >= 0;) {
            m_wasTouched = true;
            close(visitor);
        }
    }

    int m_socket;
    int m_port = 0;
    std::atomic<bool> m_wasTouched = false;
    std::thread m_thread;
};

/// Pages as a browser shows them.
class KesxmlHtmlBrowser : public KesxmlTest
{
protected:
    KesxmlOutcome Browse(const QStringList& options, const QString& page)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("HOME", m_directory.path());
        QProcess process;
        process.setProcessEnvironment(environment);
        // Browsers refuse to make a sandbox as root, which tests in containers run as.
        process.start(CHROMIUM_PATH,
                      QStringList{"--headless", "--no-sandbox", "--disable-gpu",
                                  "--disable-dev-shm-usage", "--hide-scrollbars", "--no-first-run",
                                  "--user-data-dir=" + m_directory.filePath("profile")} +
                          options + QStringList{"file://" + page});
        EXPECT_TRUE(process.waitForFinished(60000)) << "the browser hangs";
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }

    /// A picture of the page for somebody who likes it dark or not.
    QImage Picture(const QString& page, bool isDark)
    {
        const QString file = m_directory.filePath("picture.png");
        QFile::remove(file);
        const KesxmlOutcome outcome =
            Browse({"--window-size=900,700", "--screenshot=" + file,
                    QString("--blink-settings=preferredColorScheme=%1").arg(isDark ? 0 : 1)},
                   page);
        const QImage picture(file);
        EXPECT_FALSE(picture.isNull()) << outcome.err;
        return picture;
    }

    /// A page with all that there is on one: errors, a long line, long names, and folded documents.
    QString CheckManyDocuments()
    {
        const QString report = m_directory.filePath("report.html");
        QStringList files{
            Write("bad.xml", "<list>\n<" + QByteArray(300, 'n') + "/>\n<item note='" +
                                 QByteArray("word ").repeated(200) + "'></list>\n"),
            Write(QString(120, 'f') + ".xml", "<a>" + QByteArray("<b/>").repeated(123456) + "</a>"),
            Write("entities.xml", "<!DOCTYPE a SYSTEM 'a.dtd'><a>&b;</a>"),
            m_directory.filePath("missing.xml")};
        for (int i = 0; i < 30; ++i)
            files += Write("fine" + QString::number(i) + ".xml", "<a b='c'><d>text</d></a>");
        const KesxmlOutcome outcome =
            RunKesxml(QStringList{"check", "--html", report} + files, {}, m_directory.path());
        EXPECT_EQ(outcome.status, 2) << outcome.err;
        return report;
    }

    /// What a function of a window finds out about a page in windows of these widths, one a line.
    /// Pages run no scripts, and the windows of browsers are never narrow, but frames are.
    std::string Ask(const QString& page, const std::vector<int>& widths, bool isDark,
                    const QByteArray& function)
    {
        QFile file(page);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const QString content = QString::fromUtf8(file.readAll()).toHtmlEscaped();
        QString frames = "<!DOCTYPE html><meta charset='utf-8'>";
        for (const int width : widths)
            frames +=
                QString("<iframe width='%1' height='800' style='border:0' srcdoc=\"").arg(width) +
                content + "\"></iframe>";
        frames += "<pre></pre><script>onload = () => {"
                  " const look = " +
                  function +
                  "; for (const frame of document.querySelectorAll('iframe'))"
                  " document.querySelector('pre').append(look(frame.contentWindow), '\\n');"
                  "};</script>";
        const KesxmlOutcome outcome =
            Browse({"--dump-dom", "--window-size=1500,900",
                    QString("--blink-settings=preferredColorScheme=%1").arg(isDark ? 0 : 1)},
                   Write("frames.html", frames.toUtf8()));
        const std::size_t start = outcome.out.rfind("<pre>") + 5;
        return outcome.out.substr(start, outcome.out.rfind("</pre>") - start);
    }

    QString CheckHostileDocument(const QByteArray& address)
    {
        const QByteArray image = "<img src='" + address + "'/>";
        const QString report = m_directory.filePath("report.html");
        const KesxmlOutcome outcome =
            RunKesxml({"check", "--html", report, Write("a.xml", "<a>" + image + image + "\n</b>"),
                       Write("<img src=x onerror=alert(1)>.xml", "<a/>")});
        EXPECT_EQ(outcome.status, 1) << outcome.err;
        return report;
    }
};

/// The lightness of the darkest and of the lightest pixel.
std::pair<int, int> Range(const QImage& picture)
{
    std::pair<int, int> range{255, 0};
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int grey = qGray(picture.pixel(x, y));
            range.first = std::min(range.first, grey);
            range.second = std::max(range.second, grey);
        }
    }
    return range;
}

} // namespace

TEST_F(KesxmlHtmlBrowser, IsLightOrDarkAsTheReaderLikesIt)
{
    const QString page = CheckHostileDocument("http://127.0.0.1/");
    const QImage light = Picture(page, false);
    const QImage dark = Picture(page, true);
    // The margin is background; text stands out from it.
    EXPECT_GT(qGray(light.pixel(3, 3)), 240);
    EXPECT_LT(Range(light).first, 80);
    EXPECT_LT(qGray(dark.pixel(3, 3)), 40);
    EXPECT_GT(Range(dark).second, 200);
}

TEST_F(KesxmlHtmlBrowser, FitsIntoWindowsOfAllWidths)
{
    const QString page = CheckManyDocuments();
    // Nothing is wider than the window, folded or not, but for tables, which scroll by themselves,
    // and names in charts, which are cut.
    const QByteArray look =
        "view => {"
        " const page = view.document;"
        " page.querySelector('details').open = true;"
        " const scrolls = page.documentElement.scrollWidth > view.innerWidth;"
        " const wide = [...page.querySelectorAll('body *')].filter(e =>"
        "  !e.closest('.documents table, .chart th') && e.getBoundingClientRect().right > "
        "view.innerWidth + "
        "1);"
        " const isDark = view.matchMedia('(prefers-color-scheme: dark)').matches;"
        " return [view.innerWidth, isDark, scrolls, ...wide.map(e => e.className)].join(' ');"
        "}";
    EXPECT_EQ(Ask(page, {360, 800, 1400}, false, look),
              "360 false false\n800 false false\n1400 false false\n");
    EXPECT_EQ(Ask(page, {360, 800, 1400}, true, look),
              "360 true false\n800 true false\n1400 true false\n");
}

TEST_F(KesxmlHtmlBrowser, UnfoldsWhatIsFineWhenAskedTo)
{
    const QByteArray unfold = "view => {"
                              " const details = view.document.querySelector('details');"
                              " const row = details.querySelector('tbody tr');"
                              " const before = row.checkVisibility();"
                              " details.querySelector('summary').click();"
                              " return [before, row.checkVisibility()].join(' ');"
                              "}";
    EXPECT_EQ(Ask(CheckManyDocuments(), {800}, false, unfold), "false true\n");
}

TEST_F(KesxmlHtmlBrowser, ShowsDocumentsAndAsksNobodyForAnything)
{
    PortTrap trap;
    const QString page = CheckHostileDocument(trap.GetAddress());
    const KesxmlOutcome outcome = Browse({"--dump-dom"}, page);
    EXPECT_FALSE(trap.WasTouched());
    EXPECT_THAT(outcome.out, HasSubstr("<h2>Documents with errors or warnings</h2>"));
    EXPECT_THAT(outcome.out, HasSubstr("<mark>"));
    EXPECT_THAT(outcome.out, HasSubstr("&lt;img src='" + trap.GetAddress().toStdString()));
    EXPECT_THAT(outcome.out, Not(HasSubstr("<img")));
    EXPECT_THAT(outcome.out, Not(HasSubstr("<script")));
}

TEST_F(KesxmlHtmlBrowser, LoadsNothingEvenIfMarkupGotThrough)
{
    PortTrap trap;
    const QString report = CheckHostileDocument(trap.GetAddress());
    QFile file(report);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray page = file.readAll();
    const QByteArray image = "<img src='" + trap.GetAddress() + "'>";
    QByteArray injected = page;
    injected.replace("<main>", image + "<script>document.title='owned'</script><main>");
    const KesxmlOutcome outcome = Browse({"--dump-dom"}, Write("injected.html", injected));
    EXPECT_THAT(outcome.out, HasSubstr("<img"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("<title>owned")));
    EXPECT_FALSE(trap.WasTouched());
    // Without the policy of the page the image would be asked for.
    Browse({"--dump-dom"}, Write("other.html", "<!DOCTYPE html>" + image));
    EXPECT_TRUE(trap.WasTouched());
}

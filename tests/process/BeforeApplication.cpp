#include <kescorexml/CoreXml.h>

#include <QCoreApplication>

#include <cstdio>
#include <future>
#include <thread>

// The first look-up of a process happens on a thread that lives on while the main thread makes the
// application object. Qt has nothing to say to that.

namespace {

int s_messages = 0;

void CountMessage(QtMsgType, const QMessageLogContext&, const QString& text)
{
    ++s_messages;
    std::fprintf(stderr, "Qt says: %s\n", qPrintable(text));
}

} // namespace

int main(int count, char** arguments)
{
    qInstallMessageHandler(&CountMessage);
    std::promise<TString> found;
    std::promise<void> end;
    std::thread worker([&] {
        found.set_value(CoreXml::LookupTStr(CoreXml::StringId::IDS_ERR_XML_ENTITY, u"de_DE"));
        end.get_future().wait();
    });
    const TString text = found.get_future().get();
    {
        const QCoreApplication application(count, arguments);
    }
    end.set_value();
    worker.join();
    std::puts(text.toStdString().c_str());
    return s_messages == 0 && text.startsWith(u"Externe") ? 0 : 1;
}

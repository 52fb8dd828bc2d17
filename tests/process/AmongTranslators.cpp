#include <kescorexml/CoreXml.h>

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

#include <clocale>
#include <cstdio>
#include <thread>
#include <vector>

// An application has translators and locales of its own, and changes them while it runs. What the
// library looks up depends on the language that it is asked for, on any thread.

namespace {

/// Knows a translation of everything.
class OwnTranslator : public QTranslator
{
public:
    QString translate(const char*, const char*, const char*, int) const override { return "own"; }
    bool isEmpty() const override { return false; }
};

std::vector<TString> LookUp()
{
    constexpr auto c_id = CoreXml::StringId::IDS_ERR_XML_ENTITY;
    return {CoreXml::LookupTStr(c_id), CoreXml::LookupTStr(c_id, u"de_DE"),
            CoreXml::LookupTStr(c_id, u"fr_FR")};
}

} // namespace

int main(int count, char** arguments)
{
    const QCoreApplication application(count, arguments);
    const std::vector<TString> before = LookUp();
    OwnTranslator own;
    QCoreApplication::installTranslator(&own);
    for (const char* const locale : {"fr_FR", "tr_TR", "C"}) {
        QLocale::setDefault(QLocale(locale));
        std::setlocale(LC_ALL, locale);
        std::vector<TString> onThread;
        std::thread([&] { onThread = LookUp(); }).join();
        if (LookUp() != before || onThread != before) {
            std::printf("something else in %s\n", locale);
            return 1;
        }
    }
    return before[0] != before[1] && before[1] != before[2] && before[0] != u"own" ? 0 : 1;
}

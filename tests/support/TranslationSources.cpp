#include "TranslationSources.h"

#include <QFile>
#include <QXmlStreamReader>

#include <stdexcept>

std::vector<SourceMessage> ReadTranslationSource(const QString& locale)
{
    QFile file(QStringLiteral(TESTS_SOURCE_DIR "/../resources/CoreXml_%1.ts").arg(locale));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error(file.fileName().toStdString());

    std::vector<SourceMessage> messages;
    QString context;
    QXmlStreamReader reader(&file);
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (reader.name() == u"name")
            context = reader.readElementText();
        else if (reader.name() == u"source")
            messages.push_back({context, reader.readElementText(), {}});
        else if (reader.name() == u"translation")
            messages.back().translation = reader.readElementText();
    }
    if (reader.hasError())
        throw std::runtime_error(reader.errorString().toStdString());
    return messages;
}

#include "Json.h"

#include "Console.h"
#include "OneLine.h"

#include <QJsonDocument>

namespace {

/// What would steer a terminal stands only in strings, where it may be escaped.
QString ToText(const QJsonObject& object)
{
    const QString json = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    QString text;
    text.reserve(json.size());
    for (const QChar unit : json) {
        if (IsUnsafeUnit(unit.unicode()))
            text += "\\u" + QString::number(unit.unicode(), 16).rightJustified(4, '0');
        else
            text += unit;
    }
    return text;
}

} // namespace

QCommandLineOption JsonOption()
{
    return {"json", "Print JSON, for programs."};
}

QJsonObject ToJson(const Diagnostic& diagnostic)
{
    QJsonObject object{{"severity", diagnostic.isError ? "error" : "warning"},
                       {"file", QString(diagnostic.file)},
                       {"message", QString(diagnostic.message)}};
    if (diagnostic.line > 0)
        object["line"] = diagnostic.line;
    if (diagnostic.line > 0 && diagnostic.column > 0)
        object["column"] = diagnostic.column;
    if (!diagnostic.path.IsEmpty())
        object["path"] = QString(diagnostic.path);
    if (!diagnostic.attribute.IsEmpty()) {
        object["attribute"] = QString(diagnostic.attribute);
        object["value"] = QString(diagnostic.value);
    }
    return object;
}

void PrintJson(const QJsonObject& object)
{
    Print(ToText(object) + "\n");
}

JsonArray::JsonArray()
{
    Print(u"[");
}

JsonArray::~JsonArray()
{
    Print(u"\n]\n");
}

void JsonArray::Add(const QJsonObject& object)
{
    Print((m_isEmpty ? "\n" : ",\n") + ToText(object));
    m_isEmpty = false;
}

#include "Json.h"

#include "Console.h"

#include <QJsonDocument>

namespace {

QString ToText(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
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

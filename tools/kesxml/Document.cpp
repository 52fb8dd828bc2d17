#include "Document.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOMBuilder.h>
#include <kescorexml/InputSourceUtils.h>
#include <kescorexml/XercesXMLParser.h>
#include <kesplatform/CorvinaException.h>

#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <cstdio>

namespace {

std::vector<unsigned char> ReadStandardInput()
{
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        throw CorvinaException(TString(u"standard input: ") + TString(input.errorString()));
    const QByteArray bytes = input.readAll();
    if (input.error() != QFileDevice::NoError)
        throw CorvinaException(TString(u"standard input: ") + TString(input.errorString()));
    return {bytes.begin(), bytes.end()};
}

/// Takes a message apart: "Fatal Error(3,7): message (id: name)" or "message(3,7) 'entity'".
Diagnostic ToDiagnostic(const TString& text, const TString& id, bool isError)
{
    static const QRegularExpression s_kindAndPosition(
        "^(?:Warning|Error|Fatal Error)(?:\\((\\d+),(\\d+)\\))?: ");
    static const QRegularExpression s_positionAndName("\\((\\d+),(\\d+)\\) '");
    Diagnostic diagnostic;
    diagnostic.isError = isError;
    QString message = text;
    if (const auto match = s_kindAndPosition.match(message); match.hasMatch()) {
        diagnostic.line = match.captured(1).toInt();
        diagnostic.column = match.captured(2).toInt();
        message.remove(0, match.capturedLength());
        const QString name = " (id: " + QString(id) + ")";
        if (message.endsWith(name))
            message.chop(name.size());
    } else if (const auto position = s_positionAndName.match(message); position.hasMatch()) {
        diagnostic.line = position.captured(1).toInt();
        diagnostic.column = position.captured(2).toInt();
        message.replace(position.capturedStart(), position.capturedLength(), " '");
    }
    diagnostic.message = message;
    return diagnostic;
}

} // namespace

bool ReadDocument::HasErrors() const
{
    return std::any_of(diagnostics.begin(), diagnostics.end(),
                       [](const Diagnostic& diagnostic) { return diagnostic.isError; });
}

std::unique_ptr<InputSource> OpenDocument(const QString& file)
{
    if (file == "-")
        return std::make_unique<BinaryInputSource>(ReadStandardInput(), QString("stdin"), false);
    return InputSourceUtils::InputSourceFromFileName(file, true);
}

ReadDocument Read(InputSource& source, const ReadOptions& options)
{
    ReadDocument document;
    document.dom = std::make_unique<DOM>();
    const auto builder = std::make_shared<DOMBuilder>(*document.dom, false);
    const std::unique_ptr<XercesXMLParser> parser = XercesXMLParser::Create(source, builder);
    if (options.allowEntities)
        parser->AllowEntityExpansion_Insecure();
    if (options.lineNumbers)
        builder->SetLocationInterface(parser.get());
    parser->Parse();
    for (const TString& warning : parser->GetWarnings())
        document.diagnostics.push_back(ToDiagnostic(warning, source.Id(), false));
    TString last;
    for (const TString& error : parser->GetErrors()) {
        // A parse that was given up is recorded twice, as error and as fatal error.
        if (!(error == last))
            document.diagnostics.push_back(ToDiagnostic(error, source.Id(), true));
        last = error;
    }
    return document;
}

TString ToText(const QString& file, const Diagnostic& diagnostic)
{
    QString text = file;
    if (diagnostic.line > 0)
        text += ':' + QString::number(diagnostic.line);
    if (diagnostic.line > 0 && diagnostic.column > 0)
        text += ':' + QString::number(diagnostic.column);
    return text + (diagnostic.isError ? ": error: " : ": warning: ") +
           QString(diagnostic.message);
}

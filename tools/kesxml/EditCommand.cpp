#include "Command.h"
#include "Console.h"
#include "Document.h"
#include "MarkupEditor.h"
#include "SavedFile.h"
#include "Utf8Declaration.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/Utf8InputSource.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace {

constexpr const char* c_examples =
    "  kesxml edit --set-attribute unit=K //sensor stations.xml\n"
    "  kesxml edit --in-place --set-text 2 /settings/level settings.xml\n"
    "  kesxml edit --rename item --set-attribute old=yes //entry feed.xml\n"
    "  kesxml edit --remove //note stations.xml >without-notes.xml\n";

/// Reads what attributes are to be set, as NAME=VALUE. The first mistake, or nothing.
QString ReadAttributes(const QStringList& settings, MarkupEdit& edit)
{
    for (const QString& setting : settings) {
        const qsizetype end = setting.indexOf('=');
        if (end < 1)
            return "'" + setting + "' is not NAME=VALUE.";
        edit.attributes.emplace_back(setting.left(end).toStdString(),
                                     setting.mid(end + 1).toStdString());
    }
    return {};
}

QString FindMistake(const QString& path, const MarkupEdit& edit)
{
    if (QString mistake = FindMistakeInPath(path); !mistake.isEmpty())
        return mistake;
    const bool changes =
        edit.text || edit.name || !edit.attributes.empty() || !edit.removedAttributes.empty();
    if (changes && edit.removes)
        return "--remove leaves nothing to change.";
    if (!changes && !edit.removes)
        return "nothing to do: set, rename or remove something.";
    return {};
}

/// The document with the edit done; nothing, after saying why, when it has errors or would have, or
/// when nothing was found.
std::optional<std::string> Edit(InputSource& source, const QString& path, const MarkupEdit& edit)
{
    ReadOptions options;
    // References are written as they stand.
    options.allowEntities = true;
    options.lineNumbers = true;
    DocumentReader reader(options);
    const ReadDocument document = reader.Read(source);
    PrintDiagnostics(document.diagnostics);
    if (HasErrors(document.diagnostics))
        return {};
    std::vector<TextPosition> ends;
    for (const DOMElement* element :
         DOMPath::GetAll<const DOMElement>(*document.dom->GetDocumentRoot(), path))
        ends.push_back({element->GetStartLine(), element->GetStartColumn()});
    std::sort(ends.begin(), ends.end());
    ends.erase(std::unique(ends.begin(), ends.end()), ends.end());
    if (ends.empty()) {
        PrintError(u"kesxml: " + source.Id() + u": '" + TString(path) +
                   u"' finds no element; nothing is written");
        return {};
    }
    const std::string text = ReadText(source);
    std::string edited = ToUtf8Declaration(MarkupEditor(text, edit).Apply(ends));
    Utf8InputSource result(edited, u"the edited document", false);
    const Diagnostics mistakes = reader.Check(result);
    PrintDiagnostics(mistakes);
    if (HasErrors(mistakes))
        return {};
    return edited;
}

} // namespace

int RunEdit(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Changes the elements that a path finds and writes the document to standard\n"
        "output, all else as it was. For paths see 'kesxml help query'.");
    parser.addPositionalArgument("PATH", "The path.");
    parser.addPositionalArgument("FILE", "The document, or - for standard input.");
    const QCommandLineOption text("set-text", "Replace their text.", "TEXT");
    const QCommandLineOption attribute("set-attribute",
                                       "Set an attribute; may be given several "
                                       "times.",
                                       "NAME=VALUE");
    const QCommandLineOption without("remove-attribute",
                                     "Remove an attribute; may be given "
                                     "several times.",
                                     "NAME");
    const QCommandLineOption rename("rename", "Give them another name.", "NAME");
    const QCommandLineOption remove("remove", "Remove them.");
    const QCommandLineOption output({"o", "output"}, "Write to this file.", "FILE");
    const QCommandLineOption inPlace({"i", "in-place"}, "Replace the document.");
    parser.addOptions({text, attribute, without, rename, remove, output, inPlace});
    if (!ReadArguments(parser, arguments, 2, 2, c_examples))
        return UsageOrUnreadable;

    MarkupEdit edit;
    if (parser.isSet(text))
        edit.text = parser.value(text).toStdString();
    if (parser.isSet(rename))
        edit.name = parser.value(rename).toStdString();
    for (const QString& name : parser.values(without))
        edit.removedAttributes.push_back(name.toStdString());
    edit.removes = parser.isSet(remove);
    const QString path = parser.positionalArguments().front();
    const QString file = parser.positionalArguments().back();
    QString mistake = ReadAttributes(parser.values(attribute), edit);
    if (mistake.isEmpty())
        mistake = FindMistake(path, edit);
    if (mistake.isEmpty() && parser.isSet(inPlace) && (parser.isSet(output) || file == "-"))
        mistake = "--in-place is for one file that is there.";
    if (!mistake.isEmpty())
        return FailUsage(arguments, mistake);

    const std::unique_ptr<InputSource> source = OpenDocument(file);
    const std::optional<std::string> edited = Edit(*source, path, edit);
    if (!edited)
        return DocumentHasErrors;
    if (parser.isSet(inPlace) || parser.isSet(output))
        SaveFile(parser.isSet(inPlace) ? file : parser.value(output), *edited);
    else
        PrintDocument(*edited);
    return Fine;
}

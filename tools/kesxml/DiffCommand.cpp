#include "Command.h"
#include "Console.h"
#include "Document.h"
#include "ElementPath.h"
#include "OneLine.h"
#include "TagPositions.h"
#include "TreeComparison.h"

#include <kescorexml/DOM.h>

#include <optional>

namespace {

constexpr const char* c_examples = "  kesxml diff old.xml new.xml\n"
                                   "  kesxml format feed.xml | kesxml diff feed.xml -\n";

/// A document and what is needed to say where its elements are.
class ComparedDocument
{
public:
    ComparedDocument(const QString& file, const ReadOptions& options) : m_name(ToEscaped(file))
    {
        const std::unique_ptr<InputSource> source = OpenDocument(file);
        m_document = DocumentReader(options).Read(*source);
        PrintDiagnostics(m_document.diagnostics);
        if (!HasErrors())
            m_text = ReadTextIfPossible(*source);
        m_positions.emplace(m_text);
    }
    ComparedDocument(const ComparedDocument&) = delete;
    ComparedDocument& operator=(const ComparedDocument&) = delete;

    bool HasErrors() const { return ::HasErrors(m_document.diagnostics); }
    const DOMElement& GetRoot() const { return *m_document.dom->GetDocumentRoot(); }

    /// "FILE:LINE:COLUMN" of the start tag. Elements are asked for in their order.
    TString PlaceOf(const DOMElement& element)
    {
        const TextPosition position =
            m_positions->FindStart({element.GetStartLine(), element.GetStartColumn()});
        return m_name + u":" + TString::number(position.line) + u":" +
               TString::number(position.column);
    }

    ElementPaths& Paths() { return m_paths; }

private:
    TString m_name;
    ReadDocument m_document;
    std::string m_text;
    std::optional<TagPositions> m_positions;
    ElementPaths m_paths;
};

void PrintDifference(const TreeDifference& difference, ComparedDocument& first,
                     ComparedDocument& second)
{
    TString line;
    if (difference.first != nullptr && difference.second != nullptr) {
        line = first.PlaceOf(*difference.first) + u" " + second.PlaceOf(*difference.second) + u" " +
               first.Paths().Get(*difference.first) + u": " + difference.what;
    } else {
        ComparedDocument& only = difference.first != nullptr ? first : second;
        const DOMElement& element =
            difference.first != nullptr ? *difference.first : *difference.second;
        line = only.PlaceOf(element) + u" " + only.Paths().Get(element) + u": only here";
    }
    Print(line + u"\n");
}

} // namespace

int RunDiff(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Prints how two documents differ, one difference a line: where the elements\n"
        "are, their path, and the attribute or text. The order of attributes, white\n"
        "space between elements and comments make no difference.");
    parser.addPositionalArgument("FIRST", "A document, or - for standard input.");
    parser.addPositionalArgument("SECOND", "The other document.");
    const QCommandLineOption allowEntities(
        "allow-entities", "Let the documents use entities that they define themselves.");
    parser.addOption(allowEntities);
    if (!ReadArguments(parser, arguments, 2, 2, c_examples))
        return UsageOrUnreadable;

    ReadOptions options;
    options.allowEntities = parser.isSet(allowEntities);
    options.lineNumbers = true;
    options.hasEntityOption = true;
    ComparedDocument first(parser.positionalArguments().front(), options);
    ComparedDocument second(parser.positionalArguments().back(), options);
    // As for others that compare, documents that cannot be compared are trouble, not a difference.
    if (first.HasErrors() || second.HasErrors())
        return UsageOrUnreadable;
    const std::vector<TreeDifference> differences = CompareTrees(first.GetRoot(), second.GetRoot());
    for (const TreeDifference& difference : differences)
        PrintDifference(difference, first, second);
    return differences.empty() ? Fine : Different;
}

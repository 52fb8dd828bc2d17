#include "Command.h"
#include "Console.h"
#include "Document.h"

#include <kescorexml/FileInputSource.h>
#include <kescorexml/VersionSniffer.h>
#include <kesplatform/CorvinaException.h>

#include <QFileInfo>

namespace {

constexpr const char* c_examples = "  kesxml version workbook.xml\n"
                                   "  kesxml version --attribute schema-version workbook.xml\n";

std::optional<VersionNumber> Sniff(const QString& file, const QString& attribute)
{
    if (file != "-" && QFileInfo(file).isFile()) {
        try {
            // Reads no more of a large file than its first tag.
            FileInputSource source(file);
            return VersionSniffer(source, attribute);
        } catch (const TIO::Exception&) {
            throw;
        } catch (const CorvinaException&) {
            // It is not UTF-8. The whole of it is decoded below.
        }
    }
    const std::unique_ptr<InputSource> source = OpenDocument(file);
    return VersionSniffer(*source, attribute);
}

} // namespace

int RunVersion(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Prints the version that the first tag of a document names. Reads no further.");
    parser.addPositionalArgument("FILE", "The document, or - for standard input.");
    const QCommandLineOption attribute("attribute", "The attribute that holds the version.", "NAME",
                                       "version");
    parser.addOption(attribute);
    if (!ReadArguments(parser, arguments, 1, 1, c_examples))
        return UsageOrUnreadable;

    const QString file = parser.positionalArguments().front();
    const std::optional<VersionNumber> version = Sniff(file, parser.value(attribute));
    if (!version) {
        PrintError("kesxml: " + file + ": no first tag with an attribute '" +
                   parser.value(attribute) + "'");
        return NothingFound;
    }
    Print(version->GetAsString() + u"\n");
    return Fine;
}

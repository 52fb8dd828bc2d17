#include "Command.h"
#include "Console.h"
#include "Document.h"

#include <kescorexml/FileInputSource.h>
#include <kescorexml/VersionSniffer.h>
#include <kescorexml/XMLUtils.h>
#include <kesplatform/CorvinaException.h>

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>

#include <poll.h>
#include <unistd.h>

namespace {

constexpr const char* c_examples = "  kesxml version workbook.xml\n"
                                   "  kesxml version --attribute schema-version workbook.xml\n";

/// How much is read at a time, at most.
constexpr std::size_t c_pieceBytes = 65536;

bool HasMore(int descriptor)
{
    pollfd waiting{descriptor, POLLIN, 0};
    return poll(&waiting, 1, 0) > 0;
}

bool HoldsRootTag(InputSource& source)
{
    return XmlUtils::FindRootTag(ReadTextIfPossible(source)).start != std::string::npos;
}

/// The document up to the end of its first tag, and what came together with that; all of it when
/// there is no such tag.
std::unique_ptr<InputSource> ReadFirstTag(int descriptor, const QString& name)
{
    QByteArray bytes;
    qsizetype looked = 0;
    for (;;) {
        QByteArray piece(c_pieceBytes, Qt::Uninitialized);
        const ssize_t count = read(descriptor, piece.data(), c_pieceBytes);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw CorvinaException(TString(name + ": " + std::strerror(errno)));
        bytes += piece.first(count);
        // Looking at ever more of it costs linear time, unless it comes slowly.
        const bool isMuchMore = bytes.size() - looked > looked / 4;
        if (count > 0 && !isMuchMore && HasMore(descriptor))
            continue;
        looked = bytes.size();
        std::unique_ptr<InputSource> source = MakeDocument(bytes, name);
        if (count == 0 || HoldsRootTag(*source))
            return source;
    }
}

std::unique_ptr<InputSource> ReadFirstTag(const QString& file)
{
    if (file == "-")
        return ReadFirstTag(STDIN_FILENO, "standard input");
    QFile opened(file);
    if (QFileInfo(file).isFile() && opened.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        std::unique_ptr<InputSource> source = ReadFirstTag(opened.handle(), file);
        if (HoldsRootTag(*source))
            return source;
    }
    // Says what is wrong with it.
    return OpenDocument(file);
}

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
            // It is not UTF-8, and is decoded as far as it is read below.
        }
    }
    return VersionSniffer(*ReadFirstTag(file), attribute);
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

#include "Targets.h"

#include "support/ByteReader.h"
#include "support/ParseOutcome.h"
#include "support/Require.h"
#include "support/TemporaryFiles.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/FileInputSource.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kesplatform/CorvinaException.h>

#include <algorithm>
#include <cstddef>

namespace {

/// All that can be seen of a document.
struct Seen
{
    TString tree;
    TString errors;

    bool operator==(const Seen&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Seen& seen)
    {
        return out << seen.tree << seen.errors;
    }
};

Seen See(const std::unique_ptr<DOM>& document)
{
    return {XMLDomFormatter::RenderAsXMLString(*document->GetRoot(), nullptr, false),
            document->GetConcatenatedErrors()};
}

std::string ReadByPieces(InputSource& source, unsigned int most)
{
    std::string all;
    std::string piece;
    source.ResetToStart();
    while (source.GetBytes(piece, most)) {
        Require(!piece.empty() && piece.size() <= most, "a piece is as long as was asked for");
        all += piece;
    }
    source.ResetToStart();
    return all;
}

std::string ReadByLines(InputSource& source)
{
    std::string all;
    std::string line;
    source.ResetToStart();
    while (source.GetNextLine(line)) {
        Require(line.find('\n') >= line.size() - 1, "a line ends at its first line feed");
        all += line;
    }
    source.ResetToStart();
    return all;
}

bool IsUtf8(const std::string& text)
{
    return TString::fromStdString(text).toStdString() == text;
}

/// Whether bytes are read as UTF-8 without anybody saying so. Four-byte units show by zeros.
bool IsUtf8ByItself(const std::string& text)
{
    return text.find("encoding") == std::string::npos && text.find('\0') == std::string::npos;
}

/// Whether the scanner, when it is not told the encoding, gives up before it knows where it is: it
/// reads the declaration as ASCII.
bool HasForeignDeclaration(const std::string& text)
{
    const std::size_t start = text.find("<?xml");
    const std::string declaration = text.substr(0, text.find('>'));
    return start < declaration.size() &&
           std::any_of(declaration.begin() + static_cast<std::ptrdiff_t>(start), declaration.end(),
                       [](char c) { return static_cast<signed char>(c) < 0; });
}

void RequireSameByKind(const std::string& text)
{
    Utf8InputSource utf8(text, u"id", false);
    const ParseOutcome expected = ParseSource(utf8);
    RequireEqual(ParseSource(utf8), expected, "a second parse gives what the first gave");
    if (IsUtf8(text)) {
        StringInputSource string(TString::fromStdString(text), u"id", false);
        RequireEqual(ParseSource(string), expected, "a string gives what its UTF-8 gives");
    }
    if (IsUtf8ByItself(text)) {
        BinaryInputSource binary({text.begin(), text.end()}, u"id", false);
        const ParseOutcome outcome = ParseSource(binary);
        // What is wrong with bytes that are no UTF-8 depends on what they might have been.
        if (IsUtf8(text) && !HasForeignDeclaration(text))
            RequireEqual(outcome, expected, "bytes give what the same UTF-8 gives");
        else
            RequireEqual(outcome.errors.empty(), expected.errors.empty(),
                         "bytes are refused as the same UTF-8 is");
    }
}

void RequireSameByFile(const std::string& text, unsigned int most)
{
    static const TemporaryFiles s_files;
    const TString path = s_files.Write(u"document.xml", text).GetString();
    Utf8InputSource utf8(text, path, true);
    FileInputSource file(path);
    const bool mayBeRefused = !IsUtf8(text.substr(0, 2048)) || !IsUtf8ByItself(text);
    try {
        if (text.find('\r') == std::string::npos) {
            Utf8InputSource whole(text, path, false);
            Require(ReadByPieces(file, most) == text, "a file in pieces is the file");
            Require(ReadByLines(file) == text, "a file by lines is the file");
        }
        if (IsUtf8(text) && IsUtf8ByItself(text) && !HasForeignDeclaration(text))
            RequireEqual(ParseSource(file), ParseSource(utf8), "a file gives what its text gives");
    } catch (const CorvinaException&) {
        Require(mayBeRefused, "UTF-8 is accepted");
    }
    if (!IsUtf8(text) || !IsUtf8ByItself(text))
        return;
    const DOMParser parser;
    const Seen seen = See(parser.ParseXmlString(text, path));
    // The byte-order mark is no part of a file's text; a second one is, but would be taken for the
    // first if the text began with it.
    const std::string mark = "\xEF\xBB\xBF";
    if (!text.starts_with(mark + mark)) {
        const std::string unmarked = text.starts_with(mark) ? text.substr(mark.size()) : text;
        RequireEqual(See(parser.ParseXmlFile(path)), See(parser.ParseXmlString(unmarked, path)),
                     "a file gives the document of its text");
    }
    RequireEqual(See(parser.ParseXmlString(TString::fromStdString(text), path)), seen,
                 "a string gives the document of its UTF-8");
}

} // namespace

/// The same bytes through every kind of source. The first byte says how long the pieces are.
void FuzzTargets::Sources(Bytes bytes)
{
    ByteReader reader(bytes);
    const unsigned int most = 1U + reader.Byte();
    const std::string text = reader.Rest();
    Utf8InputSource source(text, u"id", false);
    Require(ReadByPieces(source, most) == text, "a text in pieces is the text");
    Require(ReadByLines(source) == text, "a text by lines is the text");
    RequireSameByKind(text);
    RequireSameByFile(text, most);
}

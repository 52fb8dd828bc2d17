#include <kescorexml/XMLOutput.h>

#include "writing/IndentUnit.h"
#include "writing/XMLTreeWriter.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLStringFormatter.h>
#include <kesplatform/TSaveFile.h>

#include <ostream>
#include <string>
#include <string_view>

namespace {

/// In units.
constexpr std::size_t c_pieceLength = 32 * 1024;

/// Hands the text of a tree to `take` in pieces of UTF-8 until that returns false. No pair of units
/// is parted: pieces begin and end with tags.
template <typename Take>
void WriteInPieces(const DOMElement* root, bool header, Take&& take)
{
    if (header) {
        XMLStringFormatter prolog(c_indentUnit, false);
        prolog.OutputHeader();
        if (!take(prolog.GetOutput().toStdString()))
            return;
    }
    if (root == nullptr)
        return;
    TString text;
    XMLTreeWriter writer(text, {FormatMode::Content, {}, c_indentUnit, u"\n", nullptr});
    writer.WriteInPieces(*root, c_pieceLength, [&take](std::u16string_view piece) {
        return take(TString(piece).toStdString());
    });
}

void Save(const DOMElement* root, const TString& fileName, bool header)
{
    TSaveFile file(fileName);
    WriteInPieces(root, header, [&file](const std::string& piece) {
        file.Write(piece.data(), piece.size());
        return true;
    });
    file.Commit();
}

void Write(const DOMElement* root, std::ostream& stream, bool header)
{
    WriteInPieces(root, header, [&stream](const std::string& piece) {
        stream.write(piece.data(), static_cast<std::streamsize>(piece.size()));
        return stream.good();
    });
}

} // namespace

void XMLOutput::SaveXmlFile(const DOM& document, const TString& fileName, bool header)
{
    Save(document.GetDocumentRoot(), fileName, header);
}

void XMLOutput::SaveXmlFile(const DOMElement& element, const TString& fileName, bool header)
{
    Save(&element, fileName, header);
}

void XMLOutput::WriteXml(const DOM& document, std::ostream& stream, bool header)
{
    Write(document.GetDocumentRoot(), stream, header);
}

void XMLOutput::WriteXml(const DOMElement& element, std::ostream& stream, bool header)
{
    Write(&element, stream, header);
}

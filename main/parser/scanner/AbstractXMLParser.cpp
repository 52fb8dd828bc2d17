#include <kescorexml/AbstractXMLParser.h>

#include <kescorexml/StringInputSource.h>

#include <kesplatform/EncodingTable.h>
#include <kesplatform/TFile.h>

AbstractXMLParser::AbstractXMLParser(InputSource& source, std::shared_ptr<SAXInterface> sink)
    : m_sink(std::move(sink)), m_source(&source)
{
}

AbstractXMLParser::~AbstractXMLParser() = default;

void AbstractXMLParser::LoadXSDString(const TString& xsdText, const TString& id)
{
    StringInputSource source(xsdText, id, false);
    LoadXSDSource(source);
}

void AbstractXMLParser::LoadXSDString(const std::string& utf8, const TString& id)
{
    Utf8InputSource source(utf8, id, false);
    LoadXSDSource(source);
}

void AbstractXMLParser::LoadXSDString(const char* utf8, const TString& id)
{
    LoadXSDString(std::string(utf8 == nullptr ? "" : utf8), id);
}

void AbstractXMLParser::LoadXSDFile(const TString& path)
{
    const TString byteOrderMark(1, EncodingTable::c_byteOrderMark);
    TString text = TFile::LoadTextFile(TPath(path), 1);
    // One was taken off. The parser takes off the first that it gets to see, and refuses a second.
    if (text.startsWith(byteOrderMark))
        text = byteOrderMark + text;
    LoadXSDString(text, path);
}

void AbstractXMLParser::GetCurrentLocation(int& /*line*/, int& /*column*/) {}

void AbstractXMLParser::Reload(InputSource& source, std::shared_ptr<SAXInterface> sink)
{
    m_source = &source;
    m_sink = std::move(sink);
}

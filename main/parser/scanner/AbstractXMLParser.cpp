#include <kescorexml/AbstractXMLParser.h>

#include <kescorexml/StringInputSource.h>

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

void AbstractXMLParser::LoadXSDFile(const TString& path)
{
    LoadXSDString(TFile::LoadTextFile(TPath(path), 1), path);
}

void AbstractXMLParser::GetCurrentLocation(int& /*line*/, int& /*column*/) {}

void AbstractXMLParser::Reload(InputSource& source, std::shared_ptr<SAXInterface> sink)
{
    m_source = &source;
    m_sink = std::move(sink);
}

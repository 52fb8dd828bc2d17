#pragma once

#include <kescorexml/InputSource.h>
#include <kescorexml/Parser.h>
#include <kescorexml/SAXFileLocation.h>
#include <kescorexml/SAXInterface.h>

#include <kesplatform/OtherText.h>

#include <memory>
#include <string>

/// A parser that reads one source and reports to one sink. A byte-order mark counts as the very
/// first of a document, before any declaration, and says how its bytes are to be read, whatever is
/// declared; one anywhere else is a character, which only text may hold.
/// Different objects may be used from different threads.
class KESCOREXML_EXPORT AbstractXMLParser : public Parser, public SAXFileLocation
{
public:
    /// `source` must live as long as it may be parsed: until this object ends or is reloaded.
    AbstractXMLParser(InputSource& source, std::shared_ptr<SAXInterface> sink);
    ~AbstractXMLParser() override;

protected:
    /// Parses the source and tells the sink.
    void ParseImpl() override = 0;

public:
    /// Loads an XML Schema to validate against; `id`, not empty, names it in diagnostics. What is
    /// wrong with the schema is recorded among the warnings and errors.
    virtual void LoadXSDString(const TString& xsdText, const TString& id);
    /// The same for UTF-8, whatever the declaration names. Bytes that are none are an error, and
    /// not, as in a TString that is made of them, replaced.
    void LoadXSDString(const std::string& utf8, const TString& id);
    void LoadXSDString(const char* utf8, const TString& id);
    template <OtherText::Utf8 T>
    void LoadXSDString(const T& utf8, const TString& id)
    {
        LoadXSDString(std::string(OtherText::View(utf8)), id);
    }
    /// The same for a file. TIO::Exception when it cannot be read.
    virtual void LoadXSDFile(const TString& path);
    /// The same for a source, which is not needed afterwards. One in memory is read from its start,
    /// a file from where it stands.
    virtual void LoadXSDSource(InputSource& xsdSource) = 0;

    /// Leaves both as they are unless overridden.
    void GetCurrentLocation(int& line, int& column) override;

    /// Binds another source and another sink for the next parse. This and loading a schema are
    /// logic assertions in an event of the parser's own, and while it reads a schema.
    virtual void Reload(InputSource& source, std::shared_ptr<SAXInterface> sink);

protected:
    /// What is told of the next parse.
    const std::shared_ptr<SAXInterface>& GetSink() const noexcept { return m_sink; }
    /// What the next parse reads.
    InputSource& GetSource() const noexcept { return *m_source; }

private:
    std::shared_ptr<SAXInterface> m_sink;
    InputSource* m_source;
};

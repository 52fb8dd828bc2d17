#pragma once

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParserStatistics.h>
#include <kescorexml/Export.h>
#include <kescorexml/InputSource.h>
#include <kescorexml/ParseLimits.h>
#include <kescorexml/QtKesResourceId.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Turns XML into documents.
///
/// Whatever is wrong with a document, or with a schema that it is checked against, becomes an error
/// on the root element of the DOM that is returned, in the order reported; none of it is thrown.
/// The tree then holds what came before the parse stopped. Warnings are dropped. The caller owns
/// the DOM. Where a document type is declared elsewhere, a reference to an entity that the document
/// does not declare itself is no error: nothing is read in its place, and the DOM lists it among
/// its skipped entities. There are limits on what a parse may cost. White space alone between tags
/// is dropped unless stated. With schemas, attributes with default values are added, and the white
/// space of texts and attributes is treated as their types demand.
///
/// Parsing many documents with one object is cheaper than with many, unless schemas are in use.
/// An object is for one thread at a time, even for const operations.
/// Different objects may be used from different threads.
///
/// @code
/// const DOMParser parser;
/// const auto good = parser.ParseXmlString("<list><item>tea</item></list>", "good");
/// std::cout << good->GetDocumentRoot()->GetRequiredChild(u"item").GetText() << '\n'; // tea
/// const auto bad = parser.ParseXmlString("<list><item></list>", "bad");
/// std::cout << bad->HasErrors() << '\n'; // 1
/// @endcode
class KESCOREXML_EXPORT DOMParser : public ParseLimits
{
public:
    DOMParser();
    ~DOMParser();
    DOMParser(const DOMParser&) = delete;
    DOMParser& operator=(const DOMParser&) = delete;
    /// Parsers are not compared; their limits can be.
    bool operator==(const DOMParser&) const = delete;

    /// Adds a compiled-in schema that every further parse validates against. CorvinaException when
    /// there is none for `id`.
    void AddXSDResourceId(QtKesResourceId id);
    /// Adds a schema of the caller, which each parse reads; all but the first rewind it. What it
    /// throws passes through. REQUIRES: a source, with an identifier that is not empty.
    void AddXSDInputSource(std::unique_ptr<InputSource> source);

    /// Whether elements record line and column of the ends of their tags. Off at first; costs a few
    /// percent.
    void SetEnableLineNumbersOnElements(bool enable);
    [[nodiscard]] bool GetEnableLineNumbersOnElements() const;
    /// The flag that every DOM is made with; this class does not act on it. False at first.
    void SetRestrictExternalPaths(bool restrict);
    [[nodiscard]] bool GetRestrictExternalPaths() const;
    /// Called at the end of every parse, on the thread that parses, within the parse's metrics;
    /// what it throws passes through. An empty function switches it off.
    void SetStatisticsEventHandler(std::function<void(const DOMParserStatistics&)> handler);

    // Not [[nodiscard]]: what is wrong with a document stands on its tree, and is gone with it,
    // which does not matter to who parses for the statistics alone.

    /// Parses a source: one in memory from its start, a file from where it stands. What the source
    /// throws passes through.
    std::unique_ptr<DOM> ParseXmlInputSource(InputSource& source, bool keepWhitespaceText) const;
    /// Parses a text; `id` names it in messages. White space at its start is skipped, and the
    /// encoding that its declaration names does not matter.
    std::unique_ptr<DOM> ParseXmlString(const TString& text, const TString& id) const;
    std::unique_ptr<DOM> ParseXmlString(TString&& text, const TString& id) const;
    std::unique_ptr<DOM> ParseXmlString(const std::string& utf8, const TString& id) const;
    std::unique_ptr<DOM> ParseXmlString(std::string&& utf8, const TString& id) const;
    std::unique_ptr<DOM> ParseXmlString(const char* utf8, const TString& id) const;
    template <OtherText::Utf8 T>
    std::unique_ptr<DOM> ParseXmlString(const T& utf8, const TString& id) const
    {
        return ParseXmlString(std::string(OtherText::View(utf8)), id);
    }
    /// Parses the bytes of a file in the encoding that their byte-order mark or their declaration
    /// names.
    std::unique_ptr<DOM> ParseXmlBytes(const std::vector<unsigned char>& bytes) const;
    std::unique_ptr<DOM> ParseXmlBytes(std::vector<unsigned char>&& bytes) const;
    /// Parses a file, white space at its start skipped. One that cannot be read gives a document
    /// with a single element "error" that carries the reason as its error. A file above 1 GiB whose
    /// start is not UTF-8 is a CorvinaException.
    std::unique_ptr<DOM> ParseXmlFile(const TString& fileName) const;

private:
    class Impl;

    std::unique_ptr<Impl> m_impl;
};

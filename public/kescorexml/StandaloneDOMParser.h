#pragma once

#include <kescorexml/DOMParserStatistics.h>
#include <kescorexml/Export.h>
#include <kescorexml/InputSource.h>
#include <kescorexml/ParseLimits.h>
#include <kescorexml/QtKesResourceId.h>
#include <kescorexml/SkippedEntity.h>
#include <kescorexml/StandaloneDOMElement.h>
#include <kescorexml/XMLDiagnostic.h>

#include <kesplatform/TString.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// What a parse gave; owns all of it. Const operations may run side by side.
struct StandaloneParseResult
{
    /// An element "Document" that holds what the document has at its top level; never null. After
    /// an error it holds what had been read until then.
    std::unique_ptr<StandaloneDOMElement> root;
    /// The messages of the parse, in order; empty on success.
    std::vector<TString> errors;
    /// The same taken apart, one for each message.
    std::vector<XMLDiagnostic> diagnostics;
    /// The entities to which the document refers although nobody declares them, in the order of
    /// their first references: the tree lacks what they stand for. Empty when the document was not
    /// read to its end.
    std::vector<SkippedEntity> skippedEntities;
};

/// Parses XML into a StandaloneDOMElement tree, without DOM, diagnostics by element and positions.
///
/// Problems of a document are listed in the result, those of a schema are not (DOMParser lists
/// both). What is thrown is what a source throws while it is read (a file that cannot be, for
/// example) or a schema while it is loaded; no statistics are reported then. External entities fail
/// the parse, and so do references to internal ones unless expansion is allowed. What a parse may
/// cost is limited. Text that is white space alone is dropped unless a call says otherwise, other
/// text is kept whole. An object is for one thread at a time, its const operations too.
/// Different objects may be used from different threads.
///
/// @code
/// const auto result = StandaloneDOMParser().ParseXmlString("<p>some <b>bold</b> text</p>", u"p");
/// const StandaloneDOMElement& paragraph = *result.root->GetChild(u"p");
/// paragraph.WalkNodes([](const StandaloneDOMElement& child) { std::cout << child.GetAllText(); },
///                     [](const TString& text) { std::cout << text; });
/// std::cout << '\n'; // some bold text
/// @endcode
class KESCOREXML_EXPORT StandaloneDOMParser : public ParseLimits
{
public:
    StandaloneDOMParser();
    ~StandaloneDOMParser();
    StandaloneDOMParser(const StandaloneDOMParser&) = delete;
    StandaloneDOMParser& operator=(const StandaloneDOMParser&) = delete;
    /// Parsers are not compared; their limits can be.
    bool operator==(const StandaloneDOMParser&) const = delete;

    /// Adds a compiled-in schema that every further parse validates against. CorvinaException when
    /// there is none for `id`.
    void AddXSDResourceId(QtKesResourceId id);
    /// Adds a schema of the caller. Its identifier must not be empty; each parse reads it, and all
    /// but the first rewind it.
    void AddXSDInputSource(std::unique_ptr<InputSource> source);
    /// Called at the end of every parse, on the thread that parses; what it throws passes through.
    /// An empty function switches it off.
    void SetStatisticsEventHandler(std::function<void(const DOMParserStatistics&)> handler);
    /// Lets documents expand internal entities, which can cost much time and memory. There is no
    /// way back.
    void AllowEntityExpansion_Insecure();

    // Not [[nodiscard]], for the same reason as those of DOMParser.

    /// Parses a source: one in memory from its start, a file from where it stands.
    StandaloneParseResult ParseXmlInputSource(InputSource& source, bool keepWhitespaceText) const;
    /// Parses a file, white space at its start skipped.
    StandaloneParseResult ParseXmlFile(const TString& path) const;
    /// Parses a text, white space at its start skipped, whatever encoding its declaration names.
    /// `id` names it in messages.
    StandaloneParseResult ParseXmlString(const TString& xml, TString id) const;
    StandaloneParseResult ParseXmlString(const std::string& utf8, TString id) const;
    StandaloneParseResult ParseXmlString(const char* utf8, TString id) const;
    template <OtherText::Utf8 T>
    StandaloneParseResult ParseXmlString(const T& utf8, TString id) const
    {
        return ParseXmlString(std::string(OtherText::View(utf8)), std::move(id));
    }
    /// Parses the bytes of a file in the encoding that their byte-order mark or their declaration
    /// names.
    StandaloneParseResult ParseXmlBytes(const std::vector<unsigned char>& bytes) const;

private:
    struct State;

    std::unique_ptr<State> m_state;
};

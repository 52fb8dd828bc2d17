#pragma once

#include "direct/AttributeDeclarations.h"
#include "direct/DirectScanning.h"
#include "direct/DocumentPosition.h"
#include "direct/NameTable.h"
#include "direct/WideBuffer.h"
#include "sinks/ScanSink.h"

#include <cstdint>
#include <string_view>
#include <vector>

/// Reads plain documents straight from their bytes: UTF-8, XML 1.0 (fifth edition), well-formed, no
/// entities but the predefined ones. It never reports anything: at the first byte that it does not
/// know for certain to be fine it declines, and Xerces is to read the document from its first byte.
/// What it accepts Xerces accepts without a single diagnostic and with the same events.
///
/// For one thread at a time; one object reads many documents, one after the other.
class DirectScanner
{
public:
    struct Document
    {
        /// UTF-8, whatever they declare. Must be followed by a readable zero byte.
        std::string_view bytes;
        /// How many units may reach the sink, and how much work declared attributes and content
        /// models may make; see ParseLimits.
        std::uint64_t maxOutput;
        std::uint64_t maxDeclared;
    };

    /// `names` must outlive the scanner.
    explicit DirectScanner(ParsedNames& names) : m_table(names), m_names(names) {}
    DirectScanner(const DirectScanner&) = delete;
    DirectScanner& operator=(const DirectScanner&) = delete;

    /// Sends the events of the document to `sink`, up to its end or to where the sink is done.
    /// Accepted, or else the reason why the document is to be read by Xerces; events may have been
    /// sent then. What the sink throws passes through; the next document is read as ever.
    DirectScanning::Verdict Scan(const Document& document, ScanSink& sink);

    /// Whether the last scan has sent an event.
    bool HasSentEvent() const noexcept { return m_eventEnd != nullptr; }
    /// No event was sent, as far as anybody will ask.
    void ForgetEvents() noexcept { m_eventEnd = nullptr; }
    /// Where the last event ends: behind its tag; from 1. REQUIRES: HasSentEvent, and the document
    /// still is where it was scanned.
    void GetCurrentLocation(int& line, int& column) noexcept;

private:
    /// What a reference or a run of characters may write without asking for room.
    static constexpr std::size_t c_slack = 64;

    /// Gives back what a scan took, on every way out of it.
    class Return
    {
    public:
        explicit Return(DirectScanner& scanner) noexcept : m_scanner(scanner) {}
        ~Return() { m_scanner.GiveBack(); }
        Return(const Return&) = delete;
        Return& operator=(const Return&) = delete;

    private:
        DirectScanner& m_scanner;
    };

    /// An open element's name, as its start tag has it.
    struct OpenTag
    {
        const char* name;
        std::size_t length;
    };

    // Each of these takes the place where something begins and returns the place behind it; null
    // when the scanner declines.

    const char* Decline(DirectScanning::Verdict verdict) noexcept
    {
        m_verdict = verdict;
        return nullptr;
    }

    const char* ScanProlog(const char* at);
    const char* ScanXmlDeclaration(const char* at);
    const char* ScanDocumentType(const char* at);
    /// Comments, processing instructions and white space outside of the root element.
    const char* ScanMisc(const char* at);

    const char* ScanInternalSubset(const char* at);
    const char* ScanDeclaredName(const char* at, NameTable::Name*& name);
    const char* ScanElementDeclaration(const char* at);
    const char* ScanMixedModel(const char* at);
    const char* ScanModel(const char* at);
    bool AddParticle() noexcept;
    const char* ScanAttributeList(const char* at);
    const char* ScanAttributeDeclaration(const char* at, const NameTable::Name& element);
    const char* ScanAttributeType(const char* at, bool& isTokenized);
    const char* ScanDefault(const char* at, AttributeDeclarations::Attribute& attribute);

    const char* ScanElements(const char* at);
    const char* ScanStartTag(const char* at);
    const char* ScanElementName(const char* at, NameTable::Name*& element);
    const char* ScanAttribute(const char* at, NameTable::Name& element);
    const char* ScanAttributeName(const char* at, const NameTable::Name& element);
    const char* ScanAttributeValue(const char* at);
    const char* StartElement(const char* at, NameTable::Name& element, bool isEmpty);
    /// What the document type says about the attributes of the tag. False when Xerces is to do it.
    bool ApplyDeclarations(const NameTable::Name& element);
    bool CollapseBlanks(const NameTable::Name& attribute);
    void BeginValues() noexcept;
    /// The value of that attribute of the tag.
    const char16_t* GetValue(std::size_t index) noexcept
    {
        return m_units.Begin() + m_values[index].offset;
    }
    const char* ScanEndTag(const char* at);

    const char* ScanText(const char* at);
    const char* ScanCData(const char* at);
    const char* ScanComment(const char* at);
    const char* ScanInstruction(const char* at);
    /// What stands between the tags of an element and begins with "<!".
    const char* ScanMarkupInContent(const char* at);

    // These write what they read behind m_to, where the caller has made room.

    const char* ScanReference(const char* at) noexcept;
    const char* ScanCharacterReference(const char* at) noexcept;
    const char* ScanCharacters(const char* at) noexcept;

    /// Passes over characters up to the byte `stop`.
    const char* SkipTo(const char* at, char stop) noexcept;
    const char* ScanName(const char* at) noexcept;
    /// One that has characters beyond ASCII.
    const char* ScanLongName(const char* at) noexcept;

    void GiveBack() noexcept;
    void ReserveText();
    void PassText();
    /// Before an event that nobody can take back: what Xerces would have decoded by then must be
    /// valid.
    bool IsValidAround(const char* at) noexcept;

    NameTable m_table;
    ParsedNames& m_names;
    ScanSink* m_sink = nullptr;
    DirectScanning::Verdict m_verdict = DirectScanning::Verdict::None;
    const char* m_end = nullptr;
    bool m_isDone = false;
    bool m_passesOn = false;
    const char* m_validated = nullptr;

    std::vector<OpenTag> m_open;
    std::uint64_t m_tag = 0;
    std::vector<NameTable::Name*> m_attributes;
    struct Value
    {
        /// Where it begins among m_units.
        std::size_t offset;
        std::size_t length;
        bool hasReference;
    };
    std::vector<Value> m_values;
    std::vector<const char16_t*> m_attributeNames;
    std::vector<std::u16string_view> m_attributeValues;
    /// Values of a tag, or a piece of text.
    WideBuffer m_units;
    char16_t* m_to = nullptr;

    AttributeDeclarations m_declarations;
    std::uint64_t m_output = 0;
    std::uint64_t m_maxOutput = 0;
    std::uint64_t m_particles = 0;
    std::uint64_t m_declared = 0;
    std::uint64_t m_maxDeclared = 0;

    const char* m_eventEnd = nullptr;
    DocumentPosition m_position;
};

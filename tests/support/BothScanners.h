#pragma once

#include "direct/DirectScanning.h"
#include "support/ParseTrace.h"
#include "support/TemporaryFiles.h"

#include <kescorexml/DOMParser.h>
#include <kescorexml/InputSource.h>
#include <kescorexml/ParseLimits.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/XercesXMLParser.h>

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// Reads documents with the direct scanner on and off, and compares all that a caller can see.
///
/// Each comparison returns what differs, for people to read, and nothing when all is equal. Parsers
/// are made when they are first needed, one for each way, and used again, so that a document also
/// shows what the one before has left behind in them. Deterministic: the same comparisons, in the
/// same order, of a new object give the same.
class BothScanners
{
public:
    /// What hands the bytes to a parser.
    enum class Source
    {
        Utf8,
        Utf8Skipping,
        Binary,
        BinarySkipping,
        /// Made of the text that the bytes are as UTF-8.
        String,
        StringSkipping,
        /// A file, read by InputSourceFromFileName.
        File,
        /// A FileInputSource.
        OpenFile
    };
    static constexpr std::array c_sources{
        Source::Utf8,   Source::Utf8Skipping,   Source::Binary, Source::BinarySkipping,
        Source::String, Source::StringSkipping, Source::File,   Source::OpenFile};

    /// What holds for all parsers.
    struct Settings
    {
        ParseLimits limits{};
        bool expandsEntities = false;
        /// Those with sinks have loaded a schema.
        bool validates = false;
    };

    /// What a tree is to be like.
    struct Tree
    {
        bool hasLineNumbers = false;
        bool keepsWhitespace = false;
    };

    BothScanners() = default;
    explicit BothScanners(const Settings& settings) : m_settings(settings) {}

    /// Events, positions and messages, with a parser that is used again.
    std::string CompareEvents(const std::string& bytes, Source source = Source::Utf8,
                              const SinkPlan& plan = {});
    /// The same with a new parser that parses twice, while metrics are recorded.
    std::string CompareNewParser(const std::string& bytes, Source source = Source::Utf8,
                                 const SinkPlan& plan = {});
    /// The same with the parser that is used again, while metrics are recorded.
    std::string CompareMetrics(const std::string& bytes, Source source = Source::Utf8);
    /// The document of a DOMParser, its statistics and its text.
    std::string CompareDom(const std::string& bytes, Source source, Tree tree);
    /// The result of a StandaloneDOMParser and its statistics.
    std::string CompareStandalone(const std::string& bytes, Source source, bool keepsWhitespace);
    /// Whatever else documents are handed to: strings, bytes and files to both kinds of parsers,
    /// new ones, while metrics and activities are recorded.
    std::string CompareFrontDoors(const std::string& bytes);

    /// The same for a text as it is, which may hold halves of surrogate pairs: a StringInputSource,
    /// and both kinds of parsers that are handed the text.
    std::string CompareText(const std::u16string& text);

    /// Every comparison of bytes above with every source, up to the first source that shows a
    /// difference.
    std::string CompareAll(const std::string& bytes);
    /// The events of UTF-8, and one of the others: `turn` chooses which.
    std::string CompareSome(const std::string& bytes, std::size_t turn);
    /// Sinks that stop, stop once or throw at each of the events, `maxEvents` at most, up to the
    /// first event that shows a difference.
    std::string CompareSinks(const std::string& bytes, std::size_t maxEvents);

    /// How often the direct scanner came to that verdict in these comparisons.
    std::size_t Count(DirectScanning::Verdict verdict) const;
    /// Of the last comparison's last parse with the direct scanner.
    DirectScanning::Verdict GetLastVerdict() const { return m_lastVerdict; }

private:
    /// The parsers of one way.
    struct Side
    {
        std::unique_ptr<XercesXMLParser> parser;
        /// With and without line numbers.
        std::array<std::optional<DOMParser>, 2> domParsers;
        std::optional<StandaloneDOMParser> standaloneParser;
    };

    template <typename Work>
    std::string Compare(std::string_view what, const std::string& bytes, const Work& work);
    template <typename Work>
    void RunOn(std::size_t side, ParseTrace& trace, const Work& work);
    void Prepare(XercesXMLParser& parser) const;
    XercesXMLParser& GetParser(Side& side) const;
    DOMParser& GetDomParser(Side& side, bool hasLineNumbers) const;
    StandaloneDOMParser& GetStandaloneParser(Side& side) const;
    std::unique_ptr<InputSource> MakeSource(const std::string& bytes, Source source);
    const TString& WriteFile(const std::string& bytes);
    std::string CompareWith(const std::string& bytes, Source source);
    static void RunParser(XercesXMLParser& parser, InputSource& source, const SinkPlan& plan,
                          ParseTrace& trace);

    Settings m_settings;
    std::array<Side, 2> m_sides;
    std::array<std::size_t, 16> m_verdicts{};
    DirectScanning::Verdict m_lastVerdict = DirectScanning::Verdict::None;
    std::optional<TemporaryFiles> m_files;
    TString m_path;
    std::optional<std::string> m_written;
};

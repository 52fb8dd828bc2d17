#pragma once

#include "support/RecordingSink.h"

#include <kescorexml/StringInputSource.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <ostream>

/// All that a parse tells its caller.
struct ParseOutcome
{
    std::vector<std::string> events;
    std::vector<std::string> errors;
    std::vector<std::string> warnings;
    bool fatal = false;

    bool operator==(const ParseOutcome&) const = default;

    friend std::ostream& operator<<(std::ostream& out, const ParseOutcome& outcome)
    {
        for (const auto* list : {&outcome.events, &outcome.errors, &outcome.warnings})
            for (const std::string& line : *list)
                out << line << "\n";
        return out << (outcome.fatal ? "fatal" : "not fatal");
    }
};

inline std::vector<std::string> ToUtf8(const std::vector<TString>& texts)
{
    std::vector<std::string> result;
    for (const TString& text : texts)
        result.push_back(text.toStdString());
    return result;
}

inline ParseOutcome GetOutcome(const Parser& parser, const RecordingSink& sink)
{
    return {sink.events, ToUtf8(parser.GetErrors()), ToUtf8(parser.GetWarnings()),
            parser.HasFatallyErrored()};
}

/// Parses with a parser of its own.
inline ParseOutcome ParseSource(InputSource& source)
{
    const auto sink = std::make_shared<RecordingSink>();
    const auto parser = XercesXMLParser::Create(source, sink);
    parser->Parse();
    return GetOutcome(*parser, *sink);
}

inline ParseOutcome ParseUtf8(const std::string& text)
{
    Utf8InputSource source(text, u"id", false);
    return ParseSource(source);
}

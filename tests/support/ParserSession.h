#pragma once

#include "support/ParseOutcome.h"
#include "support/RecordingSink.h"

#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <memory>
#include <string>

/// A parser of one document, with all that it needs.
struct ParserSession
{
    explicit ParserSession(const std::string& text)
        : source(text, u"id", false), sink(std::make_shared<RecordingSink>()),
          parser(XercesXMLParser::Create(source, sink))
    {
    }
    /// What loading a schema has found, which is forgotten then.
    ParseOutcome Load(const std::string& schema)
    {
        parser->LoadXSDString(TString::fromStdString(schema), u"s.xsd");
        const ParseOutcome outcome = GetOutcome(*parser, *sink);
        parser->ClearErrorsAndWarnings();
        return outcome;
    }
    ParseOutcome Parse()
    {
        parser->Parse();
        return GetOutcome(*parser, *sink);
    }

    Utf8InputSource source;
    std::shared_ptr<RecordingSink> sink;
    std::unique_ptr<XercesXMLParser> parser;
};

#pragma once

#include "support/RecordingSink.h"

#include <functional>
#include <string>
#include <vector>

/// Serves the schema documents that it is told to and writes down what it is asked.
class ServingSink : public BasicRecordingSink<SAXInterfaceExtension>
{
public:
    TString ResolveSchemaLocation(const TString& baseUri, const TString& systemId) override
    {
        requests.push_back(baseUri.toStdString() + " asks for " + systemId.toStdString());
        return resolve ? resolve(systemId) : TString();
    }
    TString FilterSchemaText(const TString& text, const TString& path) override
    {
        filtered.push_back(path.toStdString() + ": " + text.toStdString());
        return filter ? filter(text) : text;
    }

    std::function<TString(const TString&)> resolve;
    std::function<TString(const TString&)> filter;
    std::vector<std::string> requests;
    std::vector<std::string> filtered;
};

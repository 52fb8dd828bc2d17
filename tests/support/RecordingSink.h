#pragma once

#include <kescorexml/SAXInterface.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

/// Writes down the events of a parse: "<name key=value>" with the attributes sorted, "</>" and
/// "'text'".
template <typename Base>
class BasicRecordingSink : public Base
{
public:
    void StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes) override
    {
        std::string event = "<" + name.toStdString();
        const std::map<TString, TString> sorted(attributes.begin(), attributes.end());
        for (const auto& [key, value] : sorted)
            event += " " + key.toStdString() + "=" + value.toStdString();
        Add(event + ">");
    }
    void EndElement() override { Add("</>"); }
    void TextContent(const TString& text) override { Add("'" + text.toStdString() + "'"); }
    bool IsDone() override
    {
        ++isDoneCalls;
        return stopAfter != 0 && events.size() >= stopAfter;
    }

    std::vector<std::string> events;
    /// 0 never stops.
    std::size_t stopAfter = 0;
    int isDoneCalls = 0;
    /// Called after each event is written down; may throw.
    std::function<void(const std::string&)> onEvent;

private:
    void Add(const std::string& event)
    {
        events.push_back(event);
        if (onEvent)
            onEvent(event);
    }
};

using RecordingSink = BasicRecordingSink<SAXInterface>;

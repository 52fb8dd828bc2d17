#include <kescorexml/StringInputSource.h>

#include <kesplatform/Unicode.h>

StringInputSource::StringInputSource(const TString& text, const TString& id,
                                     bool skipLeadingWhitespace)
    : Utf8InputSource(Unicode::toUtf8KeepingHalves(text.view()), id, skipLeadingWhitespace)
{
}

StringInputSource::StringInputSource(FromUtf8, std::string&& utf8, const TString& id,
                                     bool skipLeadingWhitespace)
    : Utf8InputSource(std::move(utf8), id, skipLeadingWhitespace)
{
}

StringInputSource::~StringInputSource() = default;

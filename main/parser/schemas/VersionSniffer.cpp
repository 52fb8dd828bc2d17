#include <kescorexml/VersionSniffer.h>

#include "markup/RootTagFinder.h"

#include <kescorexml/InputSourceResetter.h>
#include <kescorexml/XMLUtils.h>

namespace {

constexpr unsigned int c_chunkSize = 512;

/// The root start tag's text; nothing when the document ends before that tag does.
std::optional<std::string> ReadRootTag(InputSource& document)
{
    std::string head;
    std::string chunk;
    RootTagFinder finder;
    XmlUtils::StringRange tag;
    do {
        if (!document.GetBytes(chunk, c_chunkSize) || chunk.empty())
            return std::nullopt;
        head += chunk;
        tag = finder.Feed(head);
    } while (tag.start == std::string::npos);
    return head.substr(tag.start, tag.length);
}

} // namespace

std::optional<VersionNumber> VersionSniffer(InputSource& document, const TString& attributeName)
{
    const InputSourceResetter resetter(document);
    const std::optional<std::string> tag = ReadRootTag(document);
    if (!tag)
        return std::nullopt;
    const std::string attribute = attributeName.IsEmpty() ? "version" : attributeName.toStdString();
    const std::optional<std::string> value =
        XmlUtils::FindAttributeValue(*tag, attribute, {0, tag->size()});
    if (!value)
        return std::nullopt;
    return VersionNumber(TString::fromStdString(*value), u'.', u'-', 0);
}

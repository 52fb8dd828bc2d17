#pragma once

#include "ScannerModel.h"

#include <kescorexml/XMLRangeTable.h>
#include <kescorexml/XMLUtils.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The encoding of colon names once more: the textual test, and a plain reading of the markup that
/// tells for each byte whether it may begin an attribute's name in a start tag.
namespace ColonModel {

constexpr std::size_t c_npos = std::string::npos;

/// Whether the bytes around the colon at `idx` look like an attribute in a tag.
inline bool LooksLikeAttribute(const std::string& xml, std::size_t idx)
{
    if (idx == 0 || xml[idx] != ':' || !ScannerModel::IsSpace(xml[idx - 1]))
        return false;
    std::size_t pos = idx + 1;
    while (pos < xml.size() && XmlUtils::IsNameChar(xml[pos]))
        ++pos;
    while (pos < xml.size() && ScannerModel::IsSpace(xml[pos]))
        ++pos;
    if (pos == xml.size() || xml[pos] != '=')
        return false;
    std::size_t rangeEnd = 0;
    if (XMLRangeTable(xml).GetRangeTypeAt(idx, rangeEnd) != XMLRangeType::None)
        return false;
    const std::size_t gt = xml.find('>', idx);
    if (gt == c_npos)
        return false;
    const std::size_t lt = xml.find('<', idx);
    const bool isInTag = lt == c_npos ? xml[gt - 1] == '/' : lt > gt;
    return isInTag && ScannerModel::AreQuotesMatching(xml, idx, gt);
}

/// The ">" of the comment at `start`, or npos; the dashes that open it do not close it.
inline std::size_t FindEndOfComment(const std::string& xml, std::size_t start)
{
    const std::size_t close = xml.find("-->", start + 4);
    return close == c_npos ? c_npos : close + 2;
}

/// The end of a document type declaration that opens at `start`, one past its ">", or npos.
inline std::size_t FindEndOfDoctype(const std::string& xml, std::size_t start)
{
    bool isInSubset = false;
    for (std::size_t pos = start + 1; pos < xml.size(); ++pos) {
        std::string_view closer;
        if (xml.compare(pos, 4, "<!--") == 0) {
            pos = FindEndOfComment(xml, pos);
            if (pos == c_npos)
                return c_npos;
            continue;
        }
        if (xml.compare(pos, 2, "<?") == 0)
            closer = "?>";
        else if (xml[pos] == '\'' || xml[pos] == '"')
            closer = xml[pos] == '"' ? "\"" : "'";
        else if (xml[pos] == '[' || xml[pos] == ']')
            isInSubset = xml[pos] == '[';
        else if (xml[pos] == '>' && !isInSubset)
            return pos + 1;
        if (!closer.empty()) {
            const std::size_t close = xml.find(closer, pos + 1);
            if (close == c_npos)
                return c_npos;
            pos = close + closer.size() - 1;
        }
    }
    return c_npos;
}

/// The start tags of a text, up to the first construct that is not closed.
inline std::vector<XmlUtils::StringRange> ListStartTags(const std::string& xml)
{
    std::vector<XmlUtils::StringRange> tags;
    for (std::size_t pos = 0;;) {
        const std::size_t open = xml.find('<', pos);
        if (open == c_npos)
            return tags;
        if (xml.compare(open, 9, "<!DOCTYPE") == 0) {
            pos = FindEndOfDoctype(xml, open);
        } else {
            const bool isComment = xml.compare(open, 4, "<!--") == 0;
            pos = isComment ? FindEndOfComment(xml, open) : ScannerModel::CloseBrace(xml, open);
            pos += pos == c_npos ? 0 : 1;
        }
        if (pos == c_npos)
            return tags;
        if (xml[open + 1] != '!' && xml[open + 1] != '?' && xml[open + 1] != '/')
            tags.push_back({open, pos - open});
    }
}

/// The text with its colon names encoded.
inline std::string Encode(const std::string& xml)
{
    const std::vector<XmlUtils::StringRange> tags = ListStartTags(xml);
    if (tags.empty())
        return xml;
    std::size_t insertPoint = tags[0].start + 1;
    while (ScannerModel::IsSpace(xml[insertPoint]))
        ++insertPoint;
    while (XmlUtils::IsNameChar(xml[insertPoint]))
        ++insertPoint;
    std::string encoded = xml;
    bool isChanged = false;
    for (std::size_t i = tags.size(); i-- > 0;) {
        for (std::size_t idx = tags[i].start + tags[i].length; idx-- > tags[i].start;) {
            if (idx >= insertPoint && LooksLikeAttribute(xml, idx) &&
                ScannerModel::AreQuotesMatching(xml, tags[i].start, idx)) {
                encoded.replace(idx, 1, "IllegalColon:");
                isChanged = true;
            }
        }
    }
    if (isChanged)
        encoded.insert(insertPoint,
                       " xmlns:IllegalColon='http://kescorexml.invalid/xml/ThisShouldNotAppear'");
    return encoded;
}

} // namespace ColonModel

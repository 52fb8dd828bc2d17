#include "Targets.h"

#include "support/ByteReader.h"
#include "support/Require.h"
#include "support/ScannerModel.h"

#include <kescorexml/XMLUtils.h>

#include <algorithm>

namespace {

constexpr std::size_t c_npos = std::string::npos;

std::size_t FindInRangeByModel(const std::string& text, const std::string& sub, std::size_t from,
                               std::size_t to)
{
    if (to <= from || to >= text.size() || to - from + 1 < sub.size())
        return c_npos;
    for (std::size_t pos = from; pos + sub.size() <= to + 1; ++pos) {
        if (text.substr(pos, sub.size()) == sub)
            return pos;
    }
    return c_npos;
}

/// The same question about bytes and about the units that they are widened to.
void RequireSearches(const std::string& text, const std::string& sub, std::size_t from,
                     std::size_t to)
{
    const TString wideText(std::u16string(text.begin(), text.end()));
    const TString wideSub(std::u16string(sub.begin(), sub.end()));
    const std::size_t found = from > text.size() ? c_npos : text.find(sub, from);
    Require(XmlUtils::Find(text, sub, from) == found, "Find in bytes");
    Require(XmlUtils::Find(wideText, wideSub, from) == found, "Find in units");
    const bool isThere = from <= text.size() && text.compare(from, sub.size(), sub) == 0;
    Require(XmlUtils::ContainsSubstringAt(text, sub, from) == isThere, "ContainsSubstringAt bytes");
    Require(XmlUtils::ContainsSubstringAt(wideText, wideSub, from) == isThere,
            "ContainsSubstringAt units");
    const std::size_t inRange = FindInRangeByModel(text, sub, from, to);
    Require(XmlUtils::FindInRange(text, sub, from, to) == inRange, "FindInRange in bytes");
    Require(XmlUtils::FindInRange(wideText, wideSub, from, to) == inRange, "FindInRange in units");
    if (sub.size() != 1)
        return;
    Require(XmlUtils::Find(text, sub[0], from) == found, "Find a byte");
    Require(XmlUtils::Find(wideText, wideSub[0], from) == found, "Find a unit");
    Require(XmlUtils::FindInRange(text, sub[0], from, to) == inRange, "FindInRange a byte");
    Require(XmlUtils::FindInRange(wideText, wideSub[0], from, to) == inRange, "FindInRange a unit");
}

void RequireTags(const std::string& text, const std::string& name)
{
    for (std::size_t open = text.find('<'); open != c_npos; open = text.find('<', open + 1)) {
        const std::size_t close = XmlUtils::AdvanceFromOpenToCloseBrace(text, open);
        RequireEqual(close, ScannerModel::CloseBrace(text, open), "AdvanceFromOpenToCloseBrace");
        if (close == c_npos || name.empty())
            continue;
        const XmlUtils::StringRange tag{open, close - open + 1};
        Require(XmlUtils::FindAttributeValue(text, name, tag) ==
                    ScannerModel::AttributeValue(text, name, tag),
                "FindAttributeValue");
    }
    Require(XmlUtils::FindRootTag(text) == ScannerModel::RootTag(text), "FindRootTag");
}

} // namespace

/// Two positions, the length of what is searched for, that text, and the text to search in.
void FuzzTargets::Scanners(Bytes bytes)
{
    ByteReader reader(bytes);
    const std::size_t from = reader.Position();
    const std::size_t to = reader.Position();
    std::string sub;
    for (std::size_t count = reader.Below(12); count > 0 && !reader.IsAtEnd(); --count)
        sub += static_cast<char>(reader.Byte());
    const std::string text = reader.Rest();
    RequireSearches(text, sub, from, to);
    Require(XmlUtils::AreQuotesMatchingInRange(text, from, to) ==
                ScannerModel::AreQuotesMatching(text, from, to),
            "AreQuotesMatchingInRange");
    RequireTags(text, sub);
}

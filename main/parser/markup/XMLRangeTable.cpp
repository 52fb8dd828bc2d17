#include <kescorexml/XMLRangeTable.h>

#include "base/Assertion.h"
#include "base/ByteScan.h"
#include "base/KesErrors.h"

#include <array>
#include <cstdint>
#include <deque>
#include <string_view>

namespace {

constexpr std::string_view c_cdataStart = "<![CDATA[";
constexpr std::string_view c_commentStart = "<!--";

/// The terminators, by type.
constexpr std::array<std::string_view, 3> c_regionEnds = {"]]>", "-->", ">"};

/// Small, for there may be as many as a text has bytes.
class Range
{
public:
    /// `start` is the index of the "<".
    Range(std::size_t start, std::size_t end, XMLRangeType type) noexcept
        : m_start(start), m_endAndType(std::uint64_t{end} << 2 | static_cast<std::uint64_t>(type))
    {
    }

    std::size_t GetStart() const noexcept { return m_start; }
    std::size_t GetEnd() const noexcept { return static_cast<std::size_t>(m_endAndType >> 2); }
    XMLRangeType GetType() const noexcept { return static_cast<XMLRangeType>(m_endAndType & 3); }

private:
    std::size_t m_start;
    std::uint64_t m_endAndType;
};

XMLRangeType GetType(std::string_view region) noexcept
{
    return region.starts_with(c_cdataStart)     ? XMLRangeType::CData
           : region.starts_with(c_commentStart) ? XMLRangeType::Comment
                                                : XMLRangeType::Declaration;
}

} // namespace

struct KESCOREXML_NO_EXPORT XMLRangeTable::XMLRangeTableImpl
{
    /// Index of the first range that may still hold a position.
    std::size_t cursor = 0;
    std::size_t lastPosition = 0;
    /// In text order, without overlap. A vector would copy them again and again while it grows.
    std::deque<Range> ranges;

    void Build(std::string_view xml);
};

void XMLRangeTable::XMLRangeTableImpl::Build(std::string_view xml)
{
    if (xml.starts_with('!'))
        return;
    std::size_t end = 0;
    while (end < xml.size()) {
        const std::size_t start = ByteScan::FindText(xml, "<!", end);
        if (start == ByteScan::c_npos)
            return;
        const XMLRangeType type = GetType(xml.substr(start));
        const std::string_view terminator = c_regionEnds[static_cast<std::size_t>(type)];
        const std::size_t found = ByteScan::FindText(xml, terminator, start + 1);
        end = found == ByteScan::c_npos ? xml.size() : found + terminator.size();
        ranges.emplace_back(start, end, type);
    }
}

XMLRangeTable::XMLRangeTable() : m_pImpl(std::make_unique<XMLRangeTableImpl>()) {}

XMLRangeTable::XMLRangeTable(const std::string& xml) : XMLRangeTable()
{
    m_pImpl->Build(xml);
}

XMLRangeTable::XMLRangeTable(const XMLRangeTable& other)
{
    if (other.m_pImpl == nullptr)
        ThrowAssertion(u"XMLRangeTable", __LINE__, u"other.m_pImpl != nullptr",
                       KesErrorsError::LogicAssert_0x7DE85DF8());
    m_pImpl = std::make_unique<XMLRangeTableImpl>(*other.m_pImpl);
}

XMLRangeTable::XMLRangeTable(XMLRangeTable&& other) noexcept = default;

XMLRangeTable::~XMLRangeTable() = default;

XMLRangeTable& XMLRangeTable::operator=(const XMLRangeTable& other)
{
    if (other.m_pImpl == nullptr)
        ThrowAssertion(u"XMLRangeTable", __LINE__, u"other.m_pImpl != nullptr",
                       KesErrorsError::LogicAssert_0x9D698885());
    m_pImpl = std::make_unique<XMLRangeTableImpl>(*other.m_pImpl);
    return *this;
}

XMLRangeTable& XMLRangeTable::operator=(XMLRangeTable&& other) noexcept = default;

XMLRangeType XMLRangeTable::GetRangeTypeAt(std::size_t position, std::size_t& end)
{
    XMLRangeTableImpl& table = *m_pImpl;
    if (position < table.lastPosition)
        ThrowAssertion(u"XMLRangeTable", __LINE__,
                       u"GetRangeTypeAt must be called with increasing positions",
                       KesErrorsError::LogicAssert_0x1A238B43());
    table.lastPosition = position;
    while (table.cursor < table.ranges.size() && table.ranges[table.cursor].GetEnd() <= position)
        ++table.cursor;
    if (table.cursor == table.ranges.size())
        return XMLRangeType::None;
    const Range& range = table.ranges[table.cursor];
    if (range.GetStart() > position)
        return XMLRangeType::None;
    end = range.GetEnd();
    return range.GetType();
}

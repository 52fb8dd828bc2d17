#pragma once

#include <kescorexml/XMLRangeTable.h>

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace RangeModel {

/// What `end` is where a table must leave it alone.
constexpr std::size_t c_untouched = 12345;

/// What a table says of a position.
struct Answer
{
    XMLRangeType type;
    std::size_t end;

    friend bool operator==(const Answer&, const Answer&) = default;
    friend void PrintTo(const Answer& answer, std::ostream* out)
    {
        *out << static_cast<std::uint32_t>(answer.type) << " to " << answer.end;
    }
};

inline Answer Ask(XMLRangeTable& table, std::size_t position)
{
    std::size_t end = c_untouched;
    const XMLRangeType type = table.GetRangeTypeAt(position, end);
    return {type, end};
}

constexpr Answer c_none{XMLRangeType::None, c_untouched};

/// The answers for all positions of a text, by definition.
inline std::vector<Answer> ListAnswers(const std::string& xml)
{
    std::vector<Answer> answers(xml.size() + 2, c_none);
    for (std::size_t from = 0; from < xml.size();) {
        std::size_t mark = xml.find('!', from);
        while (mark != std::string::npos && mark > 0 && xml[mark - 1] != '<')
            mark = xml.find('!', mark + 1);
        if (mark == std::string::npos || mark == 0)
            break;
        const std::string rest = xml.substr(mark - 1);
        XMLRangeType type = XMLRangeType::Declaration;
        std::string terminator = ">";
        if (rest.starts_with("<![CDATA[")) {
            type = XMLRangeType::CData;
            terminator = "]]>";
        } else if (rest.starts_with("<!--")) {
            type = XMLRangeType::Comment;
            terminator = "-->";
        }
        const std::size_t found = xml.find(terminator, mark);
        const std::size_t end = found == std::string::npos ? xml.size() : found + terminator.size();
        for (std::size_t i = mark - 1; i < end; ++i)
            answers[i] = {type, end};
        from = end;
    }
    return answers;
}

} // namespace RangeModel

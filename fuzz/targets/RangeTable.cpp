#include "Targets.h"

#include "support/ByteReader.h"
#include "support/RangeModel.h"
#include "support/Require.h"

#include <kescorexml/XMLRangeTable.h>

/// The first byte says how far apart the positions are that are asked for.
void FuzzTargets::RangeTable(Bytes bytes)
{
    ByteReader reader(bytes);
    const std::size_t step = 1 + reader.Below(8);
    const std::string xml = reader.Rest();
    const std::vector<RangeModel::Answer> expected = RangeModel::ListAnswers(xml);
    XMLRangeTable table(xml);
    for (std::size_t position = 0; position < expected.size(); position += step) {
        RangeModel::Answer answer = RangeModel::c_none;
        answer.type = table.GetRangeTypeAt(position, answer.end);
        Require(answer == expected[position], "a position is in the range that the model says");
        XMLRangeTable copy(table);
        Require(copy.GetRangeTypeAt(position, answer.end) == answer.type,
                "a copy goes on where the original stands");
    }
}

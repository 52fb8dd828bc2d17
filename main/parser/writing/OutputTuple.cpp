#include <kescorexml/OutputTuple.h>

#include <kescorexml/XMLFormatter.h>
#include <kescorexml/XMLTokens.h>

#include <kesplatform/Tuple.h>

void OutputTuple(XMLFormatter& formatter, const Tuple& tuple)
{
    const XMLFormatter::AttributeMap noAttributes;
    const TString value(XMLTokens::tagValue);
    const XMLFormatter::Indenter indenter(formatter, XMLTokens::tagTuple);
    for (std::uint32_t i = 0; i < tuple.GetSize(); ++i)
        formatter.OutputContentTag(value, noAttributes,
                                   XMLFormatter::FormatDataValueAttribute(tuple.GetDataValue(i)));
}

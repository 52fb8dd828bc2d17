#include "support/RecordingFormatter.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/OutputTuple.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLStringFormatter.h>
#include <kesplatform/Tuple.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

TString Write(const Tuple& tuple, FormatMode mode = FormatMode::EscapeAll)
{
    XMLStringFormatter formatter(u"  ", false);
    formatter.SetFormatMode(mode);
    OutputTuple(formatter, tuple);
    return formatter.GetOutput();
}

TEST(OutputTuple, WritesOneElementForEachValue)
{
    EXPECT_EQ(Write({DataValue(1), DataValue(u"a<b")}),
              u"<tuple>\n  <value>1</value>\n  <value>a&lt;b</value>\n</tuple>\n");
}

TEST(OutputTuple, WritesAnEmptyTupleAsItsTags)
{
    EXPECT_EQ(Write({}), u"<tuple>\n</tuple>\n");
}

TEST(OutputTuple, WritesNullAsEmptyValue)
{
    EXPECT_EQ(Write({DataValue()}), u"<tuple>\n  <value></value>\n</tuple>\n");
}

TEST(OutputTuple, WritesTheSameTextsAsAttributesHave)
{
    for (const DataValue& value :
         {DataValue(true), DataValue(1234567), DataValue(0.1), DataValue(1e22),
          DataValue(DataDate{2024, 2, 29}), DataValue(DataDateTime{{2024, 2, 29}, 13, 5, 0, 7})})
        EXPECT_EQ(Write({value}), u"<tuple>\n  <value>" +
                                      XMLFormatter::FormatDataValueAttribute(value) +
                                      u"</value>\n</tuple>\n");
}

TEST(OutputTuple, EscapesAsTheModeSays)
{
    const TString text = TString(32, u'x') + u"<&";
    const DataValue value(text);
    EXPECT_EQ(Write({value}),
              u"<tuple>\n  <value>" + TString(32, u'x') + u"&lt;&amp;</value>\n</tuple>\n");
    EXPECT_EQ(Write({value}, FormatMode::Content),
              u"<tuple>\n  <value><![CDATA[" + text + u"]]></value>\n</tuple>\n");
}

TEST(OutputTuple, BuildsATree)
{
    XMLDomFormatter formatter;
    OutputTuple(formatter, {DataValue(1), DataValue(u"a<b")});
    DOMElement expected(u"tuple");
    expected.AddNewChild(u"value", nullptr)->SetText(u"1");
    expected.AddNewChild(u"value", nullptr)->SetText(u"a<b");
    ASSERT_NE(formatter.GetDocumentRoot(), nullptr);
    EXPECT_TRUE(*formatter.GetDocumentRoot() == expected);
}

/// Takes the three-argument form only, and breaks at the second value.
class BreakingAtSecondValue : public RecordingFormatter
{
public:
    using XMLFormatter::OutputContentTag;
    void OutputContentTag(const TString& name, const AttributeMap& attributes,
                          const TString& text) override
    {
        EXPECT_TRUE(attributes.empty());
        if (++m_values == 2)
            throw std::runtime_error("broken");
        RecordingFormatter::OutputContentTag(name, attributes, text);
    }

private:
    int m_values = 0;
};

TEST(OutputTuple, ClosesItsElementWhileAnErrorPasses)
{
    BreakingAtSecondValue formatter;
    EXPECT_THROW(OutputTuple(formatter, {DataValue(1), DataValue(2)}), std::runtime_error);
    EXPECT_EQ(formatter.GetText(), u"<tuple>\n  <value>1</value>\n</tuple>\n");
    EXPECT_TRUE(formatter.GetIndent().IsEmpty());
}

} // namespace

#include <kesplatform/Tuple.h>

#include <gtest/gtest.h>

#include <stdexcept>

TEST(Tuple, StartsEmpty)
{
    const Tuple tuple;
    EXPECT_EQ(tuple.GetSize(), 0U);
    EXPECT_THROW(static_cast<void>(tuple.GetDataValue(0)), std::out_of_range);
}

TEST(Tuple, KeepsValuesInOrder)
{
    const Tuple tuple{DataValue(1), DataValue(u"two"), DataValue(), DataValue(4.0)};
    ASSERT_EQ(tuple.GetSize(), 4U);
    EXPECT_EQ(tuple.GetDataValue(0), DataValue(1));
    EXPECT_EQ(tuple.GetDataValue(1), DataValue(u"two"));
    EXPECT_TRUE(tuple.GetDataValue(2).IsNull());
    EXPECT_EQ(tuple.GetDataValue(3), DataValue(4.0));
    EXPECT_THROW(static_cast<void>(tuple.GetDataValue(4)), std::out_of_range);
}

TEST(Tuple, IsMadeOfAVectorToo)
{
    const Tuple tuple(std::vector<DataValue>(3, DataValue(true)));
    EXPECT_EQ(tuple.GetSize(), 3U);
    EXPECT_EQ(tuple.GetDataValue(2), DataValue(true));
}

TEST(Tuple, CopiesAreIndependentValues)
{
    Tuple tuple{DataValue(u"a")};
    const Tuple copy = tuple;
    tuple = Tuple{DataValue(u"b"), DataValue(u"c")};
    ASSERT_EQ(copy.GetSize(), 1U);
    EXPECT_EQ(copy.GetDataValue(0), DataValue(u"a"));
}

#include <kescorexml/XMLParseException.h>

#include <gtest/gtest.h>

#include <memory>

TEST(XMLParseException, OfAMessageAloneNamesNoError)
{
    const XMLParseException exception(u"what is wrong");
    EXPECT_EQ(exception.GetConcatenatedMessages(), u"what is wrong");
    EXPECT_EQ(exception.GetMessagesFront(), u"what is wrong");
    EXPECT_EQ(exception.GetErrorInfo(), TError::ErrorInfo::NoError());
    EXPECT_STREQ(exception.what(), "what is wrong");
}

TEST(XMLParseException, WrapsAnErrorWithSourceFourAndStatusTwo)
{
    const CorvinaError error(7, u"Identifier");
    const XMLParseException exception(u"what is wrong", error);
    EXPECT_EQ(exception.GetErrorInfo(), TError::ErrorInfo(error, 4, 2));
    EXPECT_EQ(exception.GetMessagesFront(), u"what is wrong");
}

TEST(XMLParseException, IsClonedAsItself)
{
    const XMLParseException exception(u"what is wrong", CorvinaError(7, u"Identifier"));
    const CorvinaException& base = exception;
    const std::unique_ptr<CorvinaException> clone(base.Clone());
    EXPECT_NE(dynamic_cast<XMLParseException*>(clone.get()), nullptr);
    EXPECT_NE(clone.get(), &exception);
    EXPECT_EQ(clone->GetConcatenatedMessages(), u"what is wrong");
    EXPECT_EQ(clone->GetErrorInfo(), exception.GetErrorInfo());
}

TEST(XMLParseException, IsThrownAsACopyOfItself)
{
    const XMLParseException exception(u"what is wrong");
    const CorvinaException& base = exception;
    try {
        base.Throw();
    } catch (const XMLParseException& thrown) {
        EXPECT_NE(&thrown, &exception);
        EXPECT_EQ(thrown.GetMessagesFront(), u"what is wrong");
    }
    EXPECT_THROW(base.Throw(), XMLParseException);
}

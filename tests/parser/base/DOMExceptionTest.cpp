#include <kescorexml/DOMException.h>

#include <gtest/gtest.h>

#include <memory>

namespace {

const TError::ErrorInfo c_info(CorvinaError(7, u"Identifier"), 1, 2);

} // namespace

TEST(DOMException, HoldsMessageAndRecord)
{
    const DOMException exception(u"name", c_info);
    EXPECT_EQ(exception.GetMessagesFront(), u"name");
    EXPECT_EQ(exception.GetErrorInfo(), c_info);
    EXPECT_STREQ(exception.what(), "name");
}

TEST(DOMException, IsClonedAsItself)
{
    const DOMException exception(u"name", c_info);
    const CorvinaException& base = exception;
    const std::unique_ptr<CorvinaException> clone(base.Clone());
    EXPECT_NE(dynamic_cast<DOMException*>(clone.get()), nullptr);
    EXPECT_NE(clone.get(), &exception);
    EXPECT_EQ(clone->GetMessagesFront(), u"name");
    EXPECT_EQ(clone->GetErrorInfo(), c_info);
}

TEST(DOMException, IsThrownAsACopyOfItself)
{
    const DOMException exception(u"name", c_info);
    const CorvinaException& base = exception;
    try {
        base.Throw();
    } catch (const DOMException& thrown) {
        EXPECT_NE(&thrown, &exception);
        EXPECT_EQ(thrown.GetErrorInfo(), c_info);
    }
    EXPECT_THROW(base.Throw(), DOMException);
}

#include <kesplatform/LogicException.h>

#include <gtest/gtest.h>

#include <memory>

namespace {

const CorvinaError& Error()
{
    static const CorvinaError s_error(0xD5E47E3EU, u"LogicException_LogicAssert_0xD5E47E3E");
    return s_error;
}

void ExpectComplete(const LogicException& exception)
{
    EXPECT_EQ(TString(u"modules/a/B"), exception.GetFile());
    EXPECT_EQ(123, exception.GetLine());
    EXPECT_EQ(TString(u"m_stack.top() != nullptr"), exception.GetText());
    EXPECT_EQ(exception.GetText(), exception.GetMessagesFront());
    EXPECT_STREQ("m_stack.top() != nullptr", exception.what());
    EXPECT_EQ(TError::ErrorInfo(Error(), 1, 2), exception.GetErrorInfo());
    EXPECT_EQ(nullptr, exception.GetCause());
}

} // namespace

TEST(LogicException, NamesThePlaceThatNoticed)
{
    ExpectComplete(LogicException(u"modules/a/B", 123, u"m_stack.top() != nullptr", Error()));
}

TEST(LogicException, IsThrownByItsFunction)
{
    try {
        ThrowLogicException(u"modules/a/B", 123, u"m_stack.top() != nullptr", Error());
        FAIL() << "nothing was thrown";
    } catch (const LogicException& caught) {
        ExpectComplete(caught);
    }
    EXPECT_THROW(ThrowLogicException(u"f", 1, u"t", Error()), CorvinaException);
}

TEST(LogicException, ClonesAndThrowsItself)
{
    const LogicException original(u"modules/a/B", 123, u"m_stack.top() != nullptr", Error());
    const CorvinaException& base = original;
    const std::unique_ptr<CorvinaException> clone(base.Clone());
    const auto* copy = dynamic_cast<const LogicException*>(clone.get());
    ASSERT_NE(nullptr, copy);
    ExpectComplete(*copy);
    try {
        clone->Throw();
        FAIL() << "nothing was thrown";
    } catch (const LogicException& caught) {
        ExpectComplete(caught);
    }
}

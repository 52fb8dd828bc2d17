#include <kesplatform/CorvinaException.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace {

class DerivedException : public CorvinaException
{
public:
    DerivedException(const TString& message, int detail)
        : CorvinaException(message), m_detail(detail)
    {
    }
    DerivedException* Clone() const override { return new DerivedException(*this); }
    [[noreturn]] void Throw() const override { throw *this; }
    TString GetMessagesFront() const override
    {
        return CorvinaException::GetMessagesFront() + u"!";
    }
    int GetDetail() const { return m_detail; }

private:
    int m_detail;
};

const TError::ErrorInfo& OuterInfo()
{
    static const TError::ErrorInfo s_info(CorvinaError(0x10, u"Outer_0x00000010"), 3, 4);
    return s_info;
}

CorvinaException MakeChain()
{
    const CorvinaException root(u"root");
    const CorvinaException middle(
        u"mid\ndle", TError::ErrorInfo(CorvinaError(0x20, u"Middle_0x00000020"), 0, 0), root);
    return {u"outer", OuterInfo(), middle};
}

} // namespace

TEST(CorvinaException, CarriesMessageAndRecord)
{
    const CorvinaException plain(u"caf\u00E9");
    EXPECT_EQ(TString(u"caf\u00E9"), plain.GetMessagesFront());
    EXPECT_EQ(TString(u"caf\u00E9"), plain.GetConcatenatedMessages());
    EXPECT_STREQ("caf\xC3\xA9", plain.what());
    EXPECT_EQ(TError::ErrorInfo::NoError(), plain.GetErrorInfo());
    EXPECT_EQ(nullptr, plain.GetCause());
    const CorvinaException informed(u"text", OuterInfo());
    EXPECT_EQ(OuterInfo(), informed.GetErrorInfo());
}

TEST(ErrorInfo, TellsTheSourceAndTheStateItWasMadeOf)
{
    EXPECT_EQ(OuterInfo().GetErrorSource(), 3);
    EXPECT_EQ(OuterInfo().GetStatusCode(), 4);
    EXPECT_EQ(OuterInfo().GetError().GetCode(), 0x10U);
    EXPECT_EQ(TError::ErrorInfo::NoError().GetErrorSource(), 0);
    EXPECT_EQ(TError::ErrorInfo::NoError().GetStatusCode(), 0);
    EXPECT_EQ(TError::ErrorInfo::NoError().GetError(), CorvinaError());
    EXPECT_EQ(CorvinaError().GetCode(), 0U);
}

TEST(CorvinaException, ConcatenatesTheMessagesOfItsCauses)
{
    const CorvinaException chain = MakeChain();
    EXPECT_EQ(TString(u"outer\nmid\ndle\nroot"), chain.GetConcatenatedMessages());
    EXPECT_EQ(TString(u"outer"), chain.GetMessagesFront());
    EXPECT_STREQ("outer\nmid\ndle\nroot", chain.what());
}

TEST(CorvinaException, CollatesItsMessagesOnOneLine)
{
    EXPECT_EQ(TString(u"outer (Outer_0x00000010); mid dle (Middle_0x00000020); root"),
              MakeChain().CollateMessagesForLog());
    EXPECT_EQ(TString(u"a  b"), CorvinaException(u"a\r\nb").CollateMessagesForLog());
}

TEST(CorvinaException, KeepsTheTypeOfItsCause)
{
    std::optional<CorvinaException> outer;
    {
        const DerivedException cause(u"cause", 42);
        outer.emplace(u"outer", OuterInfo(), cause);
    }
    const auto* cause = dynamic_cast<const DerivedException*>(outer->GetCause());
    ASSERT_NE(nullptr, cause);
    EXPECT_EQ(42, cause->GetDetail());
    EXPECT_EQ(TString(u"outer\ncause!"), outer->GetConcatenatedMessages());
}

TEST(CorvinaException, SharesItsCausesWithCopies)
{
    std::optional<CorvinaException> copy;
    {
        const CorvinaException chain = MakeChain();
        copy.emplace(chain);
        EXPECT_EQ(chain.GetCause(), copy->GetCause());
    }
    EXPECT_EQ(TString(u"outer\nmid\ndle\nroot"), copy->GetConcatenatedMessages());
    EXPECT_EQ(OuterInfo(), copy->GetErrorInfo());
    *copy = CorvinaException(u"other");
    EXPECT_STREQ("other", copy->what());
    EXPECT_EQ(nullptr, copy->GetCause());
}

TEST(CorvinaException, ClonesItsDynamicType)
{
    const DerivedException derived(u"text", 42);
    const CorvinaException& base = derived;
    const std::unique_ptr<CorvinaException> clone(base.Clone());
    const auto* copy = dynamic_cast<const DerivedException*>(clone.get());
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(42, copy->GetDetail());
    const std::unique_ptr<CorvinaException> plain(CorvinaException(u"x").Clone());
    EXPECT_EQ(TString(u"x"), plain->GetMessagesFront());
}

TEST(CorvinaException, ThrowsItsDynamicType)
{
    const DerivedException derived(u"text", 42);
    const CorvinaException& base = derived;
    try {
        base.Throw();
        FAIL() << "nothing was thrown";
    } catch (const DerivedException& caught) {
        EXPECT_EQ(42, caught.GetDetail());
        EXPECT_NE(&derived, &caught);
    }
    EXPECT_THROW(CorvinaException(u"x").Throw(), CorvinaException);
    EXPECT_THROW(base.Throw(), std::exception);
}

TEST(TError, NoErrorIsTheRecordOfNothing)
{
    const TError::ErrorInfo none = TError::ErrorInfo::NoError();
    EXPECT_EQ(TError::ErrorInfo(), none);
    EXPECT_EQ(CorvinaError(), none.GetError());
    EXPECT_EQ(0U, none.GetError().GetCode());
    EXPECT_TRUE(none.GetError().GetIdentifier().IsEmpty());
    EXPECT_EQ(0, none.GetErrorSource());
    EXPECT_EQ(0, none.GetStatusCode());
}

TEST(TError, RecordsAreEqualWhenAllTheirPartsAre)
{
    const CorvinaError error(1, u"id");
    const TError::ErrorInfo info(error, 2, 3);
    EXPECT_EQ(error, info.GetError());
    EXPECT_EQ(1U, info.GetError().GetCode());
    EXPECT_EQ(TString(u"id"), info.GetError().GetIdentifier());
    EXPECT_EQ(2, info.GetErrorSource());
    EXPECT_EQ(3, info.GetStatusCode());
    EXPECT_EQ(info, TError::ErrorInfo(error, 2, 3));
    EXPECT_NE(info, TError::ErrorInfo(error, 9, 3));
    EXPECT_NE(info, TError::ErrorInfo(error, 2, 9));
    EXPECT_NE(info, TError::ErrorInfo(CorvinaError(9, u"id"), 2, 3));
    EXPECT_NE(info, TError::ErrorInfo(CorvinaError(1, u"other"), 2, 3));
}

#include <kescorexml/XMLDiagnostic.h>

#include <gtest/gtest.h>

#include <limits>

using Kind = XMLDiagnostic::Kind;

TEST(XMLDiagnostic, MakesItsMessageOfKindPositionTextAndIdentifier)
{
    EXPECT_EQ(XMLDiagnostic(Kind::Warning, u"text", u"id", 1, 2).GetMessage(),
              u"Warning(1,2): text (id: id)");
    EXPECT_EQ(XMLDiagnostic(Kind::Error, u"%1 %4", u"%3", 30, 40).GetMessage(),
              u"Error(30,40): %1 %4 (id: %3)");
    EXPECT_EQ(XMLDiagnostic(Kind::FatalError, u"", u"", 3, 7).GetMessage(),
              u"Fatal Error(3,7):  (id: )");
}

TEST(XMLDiagnostic, LeavesOutAPositionThatIsNone)
{
    EXPECT_EQ(XMLDiagnostic(Kind::Error, u"text", u"id", 0, 0).GetMessage(),
              u"Error: text (id: id)");
    EXPECT_EQ(XMLDiagnostic(Kind::Error, u"text", u"id", 0, 1).GetMessage(),
              u"Error(0,1): text (id: id)");
    EXPECT_EQ(XMLDiagnostic(Kind::Error, u"text", u"id", 1, 0).GetMessage(),
              u"Error(1,0): text (id: id)");
}

TEST(XMLDiagnostic, TellsItsPartsApart)
{
    const XMLDiagnostic diagnostic(Kind::FatalError, u"text", u"id", 3, 7);
    EXPECT_EQ(diagnostic.GetKind(), Kind::FatalError);
    EXPECT_EQ(diagnostic.GetLine(), 3);
    EXPECT_EQ(diagnostic.GetColumn(), 7);
    EXPECT_EQ(diagnostic.GetId(), u"id");
    EXPECT_EQ(diagnostic.GetText(), u"text");
    EXPECT_FALSE(diagnostic.IsInvalidUtf8());
    EXPECT_FALSE(diagnostic.IsEntityRefused());
}

TEST(XMLDiagnostic, TheMessageOfAProgramIsItsTextAndHasNoPosition)
{
    for (const char16_t* message : {u"", u"Error(1,2): text (id: id)"}) {
        const XMLDiagnostic diagnostic(Kind::Error, message);
        EXPECT_EQ(diagnostic.GetMessage(), message);
        EXPECT_EQ(diagnostic.GetText(), message);
        EXPECT_EQ(diagnostic.GetKind(), Kind::Error);
        EXPECT_EQ(diagnostic.GetLine(), 0);
        EXPECT_EQ(diagnostic.GetColumn(), 0);
        EXPECT_TRUE(diagnostic.GetId().IsEmpty());
    }
}

TEST(XMLDiagnostic, MayHaveAMessageOfItsOwn)
{
    const XMLDiagnostic diagnostic =
        XMLDiagnostic(Kind::Error, u"text", u"id", 3, 7).WithMessage(u"te(3,7)xt");
    EXPECT_EQ(diagnostic.GetMessage(), u"te(3,7)xt");
    EXPECT_EQ(diagnostic.GetText(), u"text");
    EXPECT_EQ(diagnostic.GetLine(), 3);
    EXPECT_TRUE(XMLDiagnostic(Kind::Error, u"text", u"id", 3, 7).WithMessage(u"").GetMessage() ==
                u"");
}

TEST(XMLDiagnostic, TheMessageHasPositionsThatAreTooLargeForAnElement)
{
    const XMLDiagnostic diagnostic(Kind::Error, u"text", u"id", 1, 1ULL << 40);
    EXPECT_EQ(diagnostic.GetMessage(), u"Error(1,1099511627776): text (id: id)");
    EXPECT_EQ(diagnostic.GetLine(), 1);
    EXPECT_EQ(diagnostic.GetColumn(), std::numeric_limits<int>::max());
}

TEST(XMLDiagnostic, AMessageTakesNoMoreThanItsLength)
{
    const TString text(2000, u'x');
    const TString message = XMLDiagnostic(Kind::Error, text, u"id", 3, 7).GetMessage();
    EXPECT_EQ(message.capacity(), message.length());
}

#include <kescorexml/Parser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ScriptedParser : public Parser
{
public:
    std::function<void(ScriptedParser&)> script = [](ScriptedParser&) {};

protected:
    void ParseImpl() override { script(*this); }
};

TError::ErrorInfo Info(std::uint32_t code)
{
    return {CorvinaError(code, u"Identifier"), 1, 2};
}

} // namespace

TEST(Parser, StartsWithNothingRecorded)
{
    const ScriptedParser parser;
    EXPECT_FALSE(parser.HasErrors());
    EXPECT_FALSE(parser.HasWarnings());
    EXPECT_FALSE(parser.HasFatallyErrored());
    EXPECT_THAT(parser.GetErrors(), IsEmpty());
    EXPECT_THAT(parser.GetWarnings(), IsEmpty());
    EXPECT_THAT(parser.GetMetadataForErrors(), IsEmpty());
    EXPECT_THAT(parser.GetMetadataForWarnings(), IsEmpty());
}

TEST(Parser, KeepsMessagesAndTheirRecordsInOrderAndNeverDropsRepetitions)
{
    ScriptedParser parser;
    parser.script = [](ScriptedParser& self) {
        self.Error(u"e1", Info(1));
        self.Warning(u"w1", Info(2));
        self.FatalError(u"f1", Info(3));
        self.Error(u"e1", Info(1));
        self.Warning(u"w1", Info(4));
    };
    parser.Parse();
    EXPECT_THAT(parser.GetErrors(), ElementsAre(u"e1", u"f1", u"e1"));
    EXPECT_THAT(parser.GetMetadataForErrors(), ElementsAre(Info(1), Info(3), Info(1)));
    EXPECT_THAT(parser.GetWarnings(), ElementsAre(u"w1", u"w1"));
    EXPECT_THAT(parser.GetMetadataForWarnings(), ElementsAre(Info(2), Info(4)));
}

TEST(Parser, AFatalErrorIsAnErrorToo)
{
    ScriptedParser parser;
    parser.script = [](ScriptedParser& self) { self.FatalError(u"f", Info(1)); };
    parser.Parse();
    EXPECT_TRUE(parser.HasErrors());
    EXPECT_TRUE(parser.HasFatallyErrored());
    EXPECT_FALSE(parser.HasWarnings());
    EXPECT_THAT(parser.GetErrors(), ElementsAre(u"f"));
}

TEST(Parser, ErrorsAndWarningsAreNotFatal)
{
    ScriptedParser parser;
    parser.Error(u"e", Info(1));
    parser.Warning(u"w", Info(1));
    EXPECT_FALSE(parser.HasFatallyErrored());
    EXPECT_TRUE(parser.HasErrors());
    EXPECT_TRUE(parser.HasWarnings());
}

TEST(Parser, StartsEachParseAfresh)
{
    ScriptedParser parser;
    parser.Warning(u"before", Info(1));
    parser.FatalError(u"before", Info(1));
    parser.script = [](ScriptedParser& self) {
        EXPECT_FALSE(self.HasErrors());
        EXPECT_FALSE(self.HasWarnings());
        EXPECT_FALSE(self.HasFatallyErrored());
    };
    parser.Parse();
    EXPECT_FALSE(parser.HasErrors());
    EXPECT_FALSE(parser.HasFatallyErrored());
    EXPECT_THAT(parser.GetMetadataForErrors(), IsEmpty());
    EXPECT_THAT(parser.GetMetadataForWarnings(), IsEmpty());
}

TEST(Parser, ClearingLeavesTheFatalFlag)
{
    ScriptedParser parser;
    parser.Warning(u"w", Info(1));
    parser.FatalError(u"f", Info(1));
    parser.ClearErrorsAndWarnings();
    EXPECT_FALSE(parser.HasErrors());
    EXPECT_FALSE(parser.HasWarnings());
    EXPECT_THAT(parser.GetMetadataForErrors(), IsEmpty());
    EXPECT_THAT(parser.GetMetadataForWarnings(), IsEmpty());
    EXPECT_TRUE(parser.HasFatallyErrored());
}

TEST(Parser, GivesWhatWasRecordedTakenApart)
{
    using Kind = XMLDiagnostic::Kind;
    ScriptedParser parser;
    parser.script = [](ScriptedParser& self) {
        self.Error(u"e", Info(1));
        self.Warning(u"w", Info(2));
        self.FatalError(u"f", Info(3));
    };
    parser.Parse();
    const std::vector<XMLDiagnostic>& errors = parser.GetErrorDiagnostics();
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0].GetKind(), Kind::Error);
    EXPECT_EQ(errors[0].GetText(), u"e");
    EXPECT_EQ(errors[1].GetKind(), Kind::FatalError);
    EXPECT_EQ(errors[1].GetText(), u"f");
    EXPECT_EQ(errors[1].GetLine(), 0);
    ASSERT_EQ(parser.GetWarningDiagnostics().size(), 1u);
    EXPECT_EQ(parser.GetWarningDiagnostics()[0].GetKind(), Kind::Warning);
    EXPECT_EQ(parser.GetWarningDiagnostics()[0].GetText(), u"w");
    parser.ClearErrorsAndWarnings();
    EXPECT_THAT(parser.GetErrorDiagnostics(), IsEmpty());
    EXPECT_THAT(parser.GetWarningDiagnostics(), IsEmpty());
}

TEST(Parser, ListsThatWereAskedForBeforeAParseShowWhatItRecords)
{
    ScriptedParser parser;
    const std::vector<TString>& errors = parser.GetErrors();
    const std::vector<TString>& warnings = parser.GetWarnings();
    parser.script = [](ScriptedParser& self) {
        self.Error(u"e", Info(1));
        self.Warning(u"w", Info(2));
    };
    parser.Parse();
    EXPECT_THAT(errors, ElementsAre(u"e"));
    EXPECT_THAT(warnings, ElementsAre(u"w"));
}

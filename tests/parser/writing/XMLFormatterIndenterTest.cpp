#include "support/RecordingFormatter.h"

#include <kescorexml/XMLFormatter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Attributes = XMLFormatter::AttributeMap;

const TString c_empty;

/// Writes the names of the operations that an Indenter calls, and fails where it is told to.
class IndenterTarget : public RecordingFormatter
{
public:
    void Indent() override { Call(u"Indent"); }
    void Undent() override { Call(u"Undent"); }
    void OutputOpenTag(const TString& name, const Attributes& attributes) override
    {
        Call(u"Open " + name + TString::number(static_cast<int>(attributes.size())));
    }
    void OutputCloseTag(const TString& name) override { Call(u"Close " + name); }

    TString failing;

private:
    void Call(const TString& call)
    {
        OutputString(call);
        if (!failing.IsEmpty() && call.startsWith(failing))
            throw std::runtime_error("told to fail");
    }
};

TEST(XMLFormatterIndenter, OpensIndentsUndentsAndCloses)
{
    IndenterTarget target;
    {
        TString name(u"a");
        const XMLFormatter::Indenter indenter(target, name, {{u"k", u"v"}});
        name = u"changed";
        const XMLFormatter::Indenter inner(target, u"b");
    }
    EXPECT_THAT(target.GetPieces(), ElementsAre(u"Open a1", u"Indent", u"Open b0", u"Indent",
                                                u"Undent", u"Close b", u"Undent", u"Close a"));
}

TEST(XMLFormatterIndenter, SwallowsAnErrorOfUndentAndDropsTheCloseTag)
{
    IndenterTarget target;
    target.failing = u"Undent";
    EXPECT_NO_THROW(XMLFormatter::Indenter(target, u"a"));
    EXPECT_THAT(target.GetPieces(), ElementsAre(u"Open a0", u"Indent", u"Undent"));
}

TEST(XMLFormatterIndenter, SwallowsAnErrorOfTheCloseTag)
{
    IndenterTarget target;
    target.failing = u"Close";
    EXPECT_NO_THROW(XMLFormatter::Indenter(target, u"a"));
    EXPECT_THAT(target.GetPieces(), ElementsAre(u"Open a0", u"Indent", u"Undent", u"Close a"));
}

TEST(XMLFormatterIndenter, LetsAnErrorOfTheOpenTagOutAndWritesNoMore)
{
    IndenterTarget target;
    target.failing = u"Open";
    EXPECT_THROW(XMLFormatter::Indenter(target, u"a"), std::runtime_error);
    EXPECT_THAT(target.GetPieces(), ElementsAre(u"Open a0"));
}

TEST(XMLFormatterIndenter, LeavesTheTagOpenWhenItCannotIndent)
{
    IndenterTarget target;
    target.failing = u"Indent";
    EXPECT_THROW(XMLFormatter::Indenter(target, u"a"), std::runtime_error);
    EXPECT_THAT(target.GetPieces(), ElementsAre(u"Open a0", u"Indent"));
}

TEST(XMLFormatterIndenter, ClosesTheTagWhileAnExceptionPasses)
{
    RecordingFormatter target;
    const auto fail = [&] {
        const XMLFormatter::Indenter indenter(target, u"a");
        throw std::runtime_error("passing");
    };
    EXPECT_THROW(fail(), std::runtime_error);
    EXPECT_EQ(target.GetText(), TString(u"<a>\n</a>\n"));
    EXPECT_EQ(target.GetIndent(), c_empty);
}

} // namespace

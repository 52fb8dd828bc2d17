#include <kescorexml/DOMElement.h>

#include "support/TreeTesting.h"

#include <QString>

#include <functional>
#include <set>

namespace {

struct Operation
{
    const char* name;
    std::function<void(DOMElement&)> call;
};

const std::vector<Operation>& ForwardedOperations()
{
    static const std::vector<Operation> s_operations{
        {"AddFieldRename", [](DOMElement& e) { e.AddFieldRename(FieldName(), FieldName()); }},
        {"AddCaptionRename", [](DOMElement& e) { e.AddCaptionRename(u"a", u"b"); }},
        {"ClearErrors", [](DOMElement& e) { e.ClearErrors(); }},
        {"Error", [](DOMElement& e) { e.Error(u"m", MakeInfo(1), false, false); }},
        {"PrefixError", [](DOMElement& e) { e.PrefixError(u"m", MakeInfo(1), false); }},
        {"HasErrors", [](DOMElement& e) { e.HasErrors(); }},
        {"HasUnreportedErrors", [](DOMElement& e) { e.HasUnreportedErrors(); }},
        {"HasCancelErrors", [](DOMElement& e) { e.HasCancelErrors(); }},
        {"HasOnlyCancelErrors", [](DOMElement& e) { e.HasOnlyCancelErrors(); }},
        {"GetErrors",
         [](DOMElement& e) {
             std::list<TString> out;
             e.GetErrors(out);
         }},
        {"GetMetadataForErrors",
         [](DOMElement& e) {
             std::list<TError::ErrorInfo> out;
             e.GetMetadataForErrors(out);
         }},
        {"ClearWarnings", [](DOMElement& e) { e.ClearWarnings(); }},
        {"Warning", [](DOMElement& e) { e.Warning(u"m", MakeInfo(1)); }},
        {"PrefixWarning", [](DOMElement& e) { e.PrefixWarning(u"m", MakeInfo(1)); }},
        {"HasWarnings", [](DOMElement& e) { e.HasWarnings(); }},
        {"GetWarnings",
         [](DOMElement& e) {
             std::list<TString> out;
             e.GetWarnings(out);
         }},
        {"GetMetadataForWarnings",
         [](DOMElement& e) {
             std::list<TError::ErrorInfo> out;
             e.GetMetadataForWarnings(out);
         }},
    };
    return s_operations;
}

} // namespace

TEST(DOMElementForwarding, EachOperationNeedsADocumentAndSaysSo)
{
    ASSERT_EQ(ForwardedOperations().size(), 17U);
    std::set<std::uint32_t> codes;
    std::set<int> lines;
    for (const Operation& operation : ForwardedOperations()) {
        DOMElement element(TString(u"a"));
        const auto assertion = CatchAssertion([&] { operation.call(element); });
        ASSERT_TRUE(assertion.has_value()) << operation.name;
        EXPECT_EQ(assertion->GetText().toStdString(),
                  std::string("DOMElement::") + operation.name +
                      " can only be called on a DOMElement that is attached to a DOM");
        EXPECT_EQ(assertion->GetFile(),
                  TString(u"modules/platform/kescorexml/main/parser/DOMElement"));
        const CorvinaError& error = assertion->GetErrorInfo().GetError();
        EXPECT_TRUE(error.GetIdentifier().startsWith(u"LogicException_LogicAssert_0x"));
        EXPECT_EQ(
            error.GetIdentifier().right(8).toStdString(),
            QString::number(error.GetCode(), 16).toUpper().rightJustified(8, u'0').toStdString());
        codes.insert(error.GetCode());
        EXPECT_GT(assertion->GetLine(), 0);
        lines.insert(assertion->GetLine());
    }
    EXPECT_EQ(codes.size(), 17U) << "each site has a code of its own";
    EXPECT_EQ(lines.size(), 17U) << "each site has a line of its own";
}

TEST(DOMElementForwarding, NoOperationAssertsOnAnAttachedElement)
{
    for (const Operation& operation : ForwardedOperations()) {
        DOM dom;
        EXPECT_NO_THROW(operation.call(*dom.GetRoot()->AddNewChild(u"a"))) << operation.name;
    }
}

TEST(DOMElementForwarding, DiagnosticsGoToTheDocumentOfTheElement)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a(b),c");
    DOMElement& a = Find(dom, "a");
    DOMElement& b = Find(dom, "b");
    b.Error(u"pushed", MakeInfo(1), true, true);
    b.PrefixError(u"prefixed", MakeInfo(2), false);
    b.Warning(u"pushed", MakeInfo(3));
    b.PrefixWarning(u"prefixed", MakeInfo(4));

    std::list<TString> messages{u"kept"};
    a.GetErrors(messages);
    EXPECT_EQ(JoinMessages(messages), "kept prefixed pushed");
    messages = {u"kept"};
    a.GetWarnings(messages);
    EXPECT_EQ(JoinMessages(messages), "kept prefixed pushed");
    std::list<TError::ErrorInfo> infos{MakeInfo(9)};
    a.GetMetadataForErrors(infos);
    EXPECT_THAT(infos, testing::ElementsAre(MakeInfo(9), MakeInfo(2), MakeInfo(1)));
    infos = {MakeInfo(9)};
    a.GetMetadataForWarnings(infos);
    EXPECT_THAT(infos, testing::ElementsAre(MakeInfo(9), MakeInfo(4), MakeInfo(3)));

    EXPECT_TRUE(a.HasErrors());
    EXPECT_TRUE(a.HasUnreportedErrors());
    EXPECT_TRUE(a.HasCancelErrors());
    EXPECT_FALSE(a.HasOnlyCancelErrors());
    EXPECT_TRUE(a.HasWarnings());
    DOMElement& c = Find(dom, "c");
    EXPECT_FALSE(c.HasErrors());
    EXPECT_FALSE(c.HasUnreportedErrors());
    EXPECT_FALSE(c.HasCancelErrors());
    EXPECT_TRUE(c.HasOnlyCancelErrors());
    EXPECT_FALSE(c.HasWarnings());
    EXPECT_EQ(JoinErrors(dom), "prefixed pushed");

    a.ClearErrors();
    EXPECT_EQ(JoinErrors(dom), "");
    EXPECT_EQ(JoinWarnings(dom), "prefixed pushed");
    a.ClearWarnings();
    EXPECT_EQ(JoinWarnings(dom), "");
}

TEST(DOMElementForwarding, FlagsOfErrorsArePassedOn)
{
    DOM dom;
    DOMElement* a = dom.GetRoot()->AddNewChild(u"a");
    a->Error(u"m", MakeInfo(1), true, true);
    EXPECT_FALSE(a->HasUnreportedErrors());
    EXPECT_TRUE(a->HasCancelErrors());
    EXPECT_TRUE(a->HasOnlyCancelErrors());
    a->PrefixError(u"m", MakeInfo(1), true);
    EXPECT_FALSE(a->HasUnreportedErrors());
    EXPECT_FALSE(a->HasOnlyCancelErrors());
    a->PrefixError(u"m", MakeInfo(1), false);
    EXPECT_TRUE(a->HasUnreportedErrors());
}

// What a message is, besides its text, wherever it is moved

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>

#include "support/TreeWithMessages.h"

#include <functional>
#include <list>

namespace {

class DOMDiagnosticsFlags : public TreeWithMessages
{
};

/// One message of each kind of error, with a record of its own, and a warning.
void RecordWithEveryFlag(const DOMElement& element)
{
    element.Error(u"open", MakeInfo(11), false, false);
    element.Error(u"reported", MakeInfo(12), true, false);
    element.Error(u"cancelled", MakeInfo(13), false, true);
    element.Error(u"both", MakeInfo(14), true, true);
    element.Warning(u"w1", MakeInfo(15));
    element.Warning(u"w2", MakeInfo(16));
}

/// Takes the messages of `element` apart, which hold what RecordWithEveryFlag has recorded.
void ExpectEveryFlag(const DOM& dom, const DOMElement& element)
{
    std::list<TString> texts;
    dom.GetErrors(element, texts);
    EXPECT_EQ(JoinMessages(texts), "open reported cancelled both");
    std::list<TError::ErrorInfo> infos;
    dom.GetErrors(element, infos);
    EXPECT_THAT(infos,
                testing::ElementsAre(MakeInfo(11), MakeInfo(12), MakeInfo(13), MakeInfo(14)));
    texts.clear();
    dom.GetWarnings(element, texts);
    EXPECT_EQ(JoinMessages(texts), "w1 w2");
    infos.clear();
    dom.GetWarnings(element, infos);
    EXPECT_THAT(infos, testing::ElementsAre(MakeInfo(15), MakeInfo(16)));
}

/// Records one error, lets `transfer` take it to the element that it returns, and asks there.
void ExpectFlagsSurvive(
    const std::function<const DOMElement&(DOM& from, DOMElement& source, DOM& to)>& transfer)
{
    for (const bool reported : {false, true}) {
        for (const bool cancel : {false, true}) {
            DOM from;
            DOM to;
            AddChildren(*from.GetRoot(), "p(source)");
            AddChildren(*to.GetRoot(), "q");
            DOMElement& source = Find(from, "source");
            source.Error(u"m", MakeInfo(21), reported, cancel);
            const DOMElement& target = transfer(from, source, to);
            EXPECT_TRUE(to.HasErrors(target));
            EXPECT_EQ(to.HasUnreportedErrors(target), !reported);
            EXPECT_EQ(to.HasCancelErrors(target), cancel);
            EXPECT_EQ(to.HasOnlyCancelErrors(target), cancel);
        }
    }
    DOM from;
    DOM to;
    AddChildren(*from.GetRoot(), "p(source)");
    AddChildren(*to.GetRoot(), "q");
    RecordWithEveryFlag(Find(from, "source"));
    ExpectEveryFlag(to, transfer(from, Find(from, "source"), to));
}

} // namespace

TEST_F(DOMDiagnosticsFlags, FlagsAndRecordsSurviveAdoption)
{
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        const DOMElement& target = Find(to, "q");
        to.AdoptErrorsAndWarningsForNode(source, &target);
        return target;
    });
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        to.AdoptErrorsAndWarningsForNode(source, nullptr);
        return source;
    });
}

TEST_F(DOMDiagnosticsFlags, FlagsAndRecordsSurviveInsertionIntoAnotherDocument)
{
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        source.Move(Find(to, "q"), nullptr);
        return source;
    });
    ExpectFlagsSurvive([](DOM& from, DOMElement& source, DOM& to) -> const DOMElement& {
        Find(to, "q").AdoptChildren(Find(from, "p"), nullptr);
        return source;
    });
}

TEST_F(DOMDiagnosticsFlags, FlagsAndRecordsSurviveCopies)
{
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        const DOMElement& target = Find(to, "q");
        to.CopyErrorsAndWarningsForNode(source, &target);
        return target;
    });
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        return *Find(to, "q").AppendChild(std::make_unique<DOMElement>(source));
    });
    ExpectFlagsSurvive([](DOM& from, DOMElement&, DOM& to) -> const DOMElement& {
        return Find(*Find(to, "q").AppendChild(std::make_unique<DOMElement>(Find(from, "p"))),
                    "source");
    });
}

TEST_F(DOMDiagnosticsFlags, FlagsAndRecordsSurviveAssignmentAndDeepCopy)
{
    ExpectFlagsSurvive([](DOM&, DOMElement& source, DOM& to) -> const DOMElement& {
        DOMElement& target = Find(to, "q");
        target = source;
        return target;
    });
    ExpectFlagsSurvive([](DOM& from, DOMElement&, DOM& to) -> const DOMElement& {
        Find(to, "q") = Find(from, "p");
        return Find(to, "source");
    });
    ExpectFlagsSurvive([](DOM& from, DOMElement&, DOM& to) -> const DOMElement& {
        to.DeepCopy(from);
        return Find(to, "source");
    });
}

TEST_F(DOMDiagnosticsFlags, FlagsAndRecordsSurviveTheMoveOfEverything)
{
    ExpectFlagsSurvive([](DOM& from, DOMElement& source, DOM& to) -> const DOMElement& {
        from.MoveErrorsAndWarningsTo(to);
        return source;
    });
}

TEST_F(DOMDiagnosticsFlags, WhatAParserKnowsSurvivesCopyAndMove)
{
    const auto parsed = DOMParser().ParseXmlString("<a>\n<b></a>", "a.xml");
    const auto expectPosition = [](const DOM& document, const DOMElement& element) {
        const std::vector<XMLDiagnostic> errors = document.GetErrorDiagnostics(element);
        ASSERT_EQ(errors.size(), 1u);
        EXPECT_EQ(errors[0].GetKind(), XMLDiagnostic::Kind::FatalError);
        EXPECT_EQ(errors[0].GetLine(), 2);
        EXPECT_EQ(errors[0].GetColumn(), 6);
        EXPECT_EQ(errors[0].GetId(), u"a.xml");
        EXPECT_EQ(errors[0].GetText(), u"expected end of tag 'b'");
        std::list<TString> messages;
        document.GetErrors(element, messages);
        EXPECT_EQ(messages.front(), u"Fatal Error(2,6): expected end of tag 'b' (id: a.xml)");
    };
    expectPosition(*parsed, *parsed->GetRoot());
    DOM copy;
    copy.DeepCopy(*parsed);
    expectPosition(copy, *copy.GetRoot());
    m_dom.CopyErrorsAndWarningsForNode(*parsed->GetRoot(), &At("b"));
    expectPosition(m_dom, At("b"));
    m_dom.AdoptErrorsAndWarningsForNode(*parsed->GetRoot(), &At("e"));
    expectPosition(m_dom, At("e"));
    EXPECT_TRUE(parsed->GetErrorDiagnostics().empty());
}

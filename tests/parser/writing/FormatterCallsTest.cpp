#include "support/FormatterOperations.h"
#include "support/RandomTree.h"

#include <kescorexml/Base64.h>
#include <kescorexml/OutputTuple.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kesplatform/Tuple.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

// Which operations a formatter calls on itself, and on another one, is a promise: subclasses
// replace some of them. Here each is replaced in turn.

namespace {

using Attributes = XMLFormatter::AttributeMap;

/// The same work done by a formatter and by the model.
struct Work
{
    std::function<void(XMLFormatter&)> ofFormatter;
    std::function<void(FormatterModel&)> ofModel;
};

/// Indented once by both, so that an indentation shows.
void ExpectSameNotes(Operation replaced, const Work& work)
{
    for (const bool suppressNewlines : {false, true}) {
        for (const FormatMode mode : {FormatMode::EscapeAll, FormatMode::Content}) {
            ReplacingFormatter formatter(replaced, suppressNewlines);
            formatter.SetFormatMode(mode);
            formatter.Indent();
            work.ofFormatter(formatter);
            FormatterModel model(replaced, suppressNewlines);
            model.SetFormatMode(mode);
            model.Indent();
            work.ofModel(model);
            ASSERT_EQ(formatter.Get(), model.Get());
        }
    }
}

class FormatterCalls : public testing::TestWithParam<Operation>
{
protected:
    FormatterCalls() : m_random(2024), m_tree(m_random.Tree(30)) {}

    RandomTree m_random;
    std::unique_ptr<DOMElement> m_tree;
    const Attributes m_attributes{{u"b", u"<\n"}, {u"a", u"'"}};
};

TEST_P(FormatterCalls, OfTagsAreThoseOfTheTable)
{
    const auto calls = [this](auto& f) {
        f.OutputTag(u"t", m_attributes);
        f.OutputOpenTag(u"t", m_attributes);
        f.OutputAttributes(m_attributes);
        f.OutputAttributes({});
        f.OutputCloseTag(u"t");
        f.OutputHeader();
        f.OutputComment(u"a--b");
        f.OutputLine(u"line");
        f.OutputString(u"piece");
    };
    ExpectSameNotes(GetParam(), {calls, calls});
}

TEST_P(FormatterCalls, OfContentAreThoseOfTheTable)
{
    const TString longText = TString(40, u'x') + u"<\n";
    const auto calls = [&](auto& f) {
        for (const TString& text : {TString(u"x<"), TString(u"\nx\n"), longText, TString()}) {
            f.OutputContent(text);
            f.OutputContent(text, false);
            f.OutputContent(text, true);
            f.OutputContentTag(u"t", m_attributes, text);
            f.OutputContentTag(u"t", m_attributes, text, true);
            f.OutputContentTag(u"t", m_attributes, text, false);
        }
    };
    ExpectSameNotes(GetParam(), {calls, calls});
}

TEST_P(FormatterCalls, OfBytesAreThoseOfTheTable)
{
    for (const unsigned int count : {0U, 1U, 54U, 55U, 200U}) {
        const std::vector<unsigned char> bytes(count, 7);
        std::vector<TString> lines;
        Base64Encode(bytes.data(), count, lines, true);
        ExpectSameNotes(GetParam(), {[&](XMLFormatter& f) { f.OutputBinary(bytes.data(), count); },
                                     [&](FormatterModel& f) { f.OutputBinary(lines, count); }});
    }
}

TEST_P(FormatterCalls, OfElementsAreThoseOfTheTable)
{
    const auto calls = [this](auto& f) {
        f.OutputDOMElement(*m_tree);
        f.OutputDOMElements(std::as_const(*m_tree).GetChildren());
    };
    ExpectSameNotes(GetParam(), {calls, calls});
}

TEST_P(FormatterCalls, OfFormatDOMAreThoseOfTheTable)
{
    DOM empty(false);
    DOM dom(false);
    *dom.GetRoot()->AddNewChild(u"root") = *m_tree;
    const DOMElement& element = *dom.GetDocumentRoot();
    TString text(u"note");
    for (const bool header : {false, true}) {
        for (TString* const comment : std::initializer_list<TString*>{nullptr, &text}) {
            const auto ofModel = [&](const DOMElement* e) {
                return [&, e](FormatterModel& f) { f.FormatDOM(e, comment, header); };
            };
            ExpectSameNotes(GetParam(), {[&](XMLFormatter& f) {
                                             XMLFormatter::FormatDOM(f, dom, comment, header);
                                         },
                                         ofModel(&element)});
            ExpectSameNotes(GetParam(), {[&](XMLFormatter& f) {
                                             XMLFormatter::FormatDOM(f, element, comment, header);
                                         },
                                         ofModel(&element)});
            ExpectSameNotes(GetParam(), {[&](XMLFormatter& f) {
                                             XMLFormatter::FormatDOM(f, empty, comment, header);
                                         },
                                         ofModel(nullptr)});
        }
    }
}

TEST_P(FormatterCalls, OfFormatAreThoseOfTheTable)
{
    XMLDomFormatter other;
    for (int depth = 0; depth < 2; ++depth) {
        ExpectSameNotes(GetParam(),
                        {[&](XMLFormatter& f) { other.Format(f, *m_tree); },
                         [&](FormatterModel& f) { f.Format(*m_tree, other.GetIndent()); }});
        other.Indent();
    }
}

TEST_P(FormatterCalls, OfATupleAreThoseOfTheTable)
{
    const Tuple tuple{DataValue(1), DataValue(u"a<b")};
    ExpectSameNotes(GetParam(), {[&](XMLFormatter& f) { OutputTuple(f, tuple); },
                                 [&](FormatterModel& f) {
                                     f.OutputOpenTag(u"tuple", {});
                                     f.Indent();
                                     f.OutputContentTag(u"value", {}, u"1");
                                     f.OutputContentTag(u"value", {}, u"a<b");
                                     f.Undent();
                                     f.OutputCloseTag(u"tuple");
                                 }});
}

INSTANTIATE_TEST_SUITE_P(WithEachReplaced, FormatterCalls, testing::ValuesIn([] {
                             std::vector<Operation> operations;
                             for (int i = 0; i < static_cast<int>(Operation::Count); ++i)
                                 operations.push_back(static_cast<Operation>(i));
                             return operations;
                         }()),
                         [](const auto& test) {
                             return "Operation" + std::to_string(static_cast<int>(test.param));
                         });

} // namespace

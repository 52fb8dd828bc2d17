// What is left of a change when memory runs out in the middle of it: all of it or nothing.

#include "support/AllOrNothing.h"
#include "support/FailingAllocations.h"
#include "support/TreeTesting.h"
#include "tree/DiagnosticsAccess.h"

#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>

#include <functional>
#include <new>

namespace {

/// Two documents with something to lose, and an element that belongs to neither tree.
class World
{
public:
    World()
    {
        for (DOM* dom : {&first, &second}) {
            AddChildren(*dom->GetRoot(), "p(a(b(c),d),e,empty),q(f)");
            for (const char* name : {"p", "a", "b", "c", "d", "e", "q", "f"}) {
                DOMElement& element = Find(*dom, name);
                element.SetText(TString(u"a text that is not short: ") + TString(name));
                element.SetAttributes({{u"name", TString(name)}, {u"k", u"v"}});
                AddError(element, name);
                AddWarning(element, name);
            }
            AddError(*dom->GetRoot(), "root");
            dom->AddCaptionRename(u"caption", u"renamed");
        }
        second.AddDataSourceRename(u"x", u"y");
        loose = second.GetRoot()->RemoveChild(u"q");
    }

    DOMElement& A() { return first.GetRoot()->GetChildren()[0].GetChildren()[0]; }
    DOMElement& SecondP() { return second.GetRoot()->GetChildren()[0]; }

    /// Everything that a caller can see.
    std::string Describe() const
    {
        std::string text;
        for (const DOM* dom : {&first, &second}) {
            Describe(*dom->GetRoot(), *dom, text);
            text += " errors: " + JoinErrors(*dom) + " warnings: " + JoinWarnings(*dom);
            text += dom->RenameDataSource(u"x").toStdString();
            text += dom->HasErrors() ? " has errors\n" : " has none\n";
        }
        if (loose != nullptr) {
            Describe(*loose, second, text);
            text += loose->GetParent() == second.GetRoot() ? " of root" : " of none";
            text += loose->GetDOMManager() != nullptr && loose->HasErrors() ? "!" : "";
        }
        if (copy != nullptr) {
            Describe(*copy, *copy->GetDOMManager(), text);
            std::list<TString> errors;
            copy->GetErrors(errors);
            text += " errors: " + JoinMessages(errors);
        }
        return text;
    }

    DOM first;
    DOM second;
    std::unique_ptr<DOMElement> loose;
    std::unique_ptr<DOMElement> copy;

private:
    static void Describe(const DOMElement& element, const DOM& dom, std::string& text)
    {
        text += element.GetName().toStdString() + "[" + element.GetText().toStdString() +
                (element.IsEncoded() ? "+" : "") + "|" + element.GetAttribute(u"k").toStdString() +
                std::to_string(element.GetAttributes().size()) +
                (element.GetDOMManager() == &dom ? "" : "foreign") + "](";
        for (const auto& child : element.GetChildren()) {
            EXPECT_EQ(child->GetParent(), &element);
            Describe(*child, dom, text);
        }
        text += ")";
    }
};

/// The same, and nothing may be left on the heap.
void ExpectNoLeak(const std::function<void(World&)>& change)
{
    // Once without looking, for what stays allocated on first use.
    ExpectAllOrNothing<World>(change);
    const std::ptrdiff_t before = CountLiveAllocations();
    ExpectAllOrNothing<World>(change);
    EXPECT_EQ(CountLiveAllocations(), before);
}

const TString c_new(u"new");

} // namespace

TEST(DOMTreeFailure, MemoryReallyRunsOut)
{
    void* first = nullptr;
    bool hasThrown = false;
    {
        const FailingAllocations failing(1);
        first = ::operator new(8);
        try {
            ::operator delete(::operator new(8));
        } catch (const std::bad_alloc&) {
            hasThrown = true;
        }
    }
    EXPECT_TRUE(hasThrown);
    EXPECT_TRUE(FailingAllocations::HasFailed());
    ::operator delete(first);
    EXPECT_NO_THROW(::operator delete(::operator new(8)));
}

TEST(DOMTreeFailure, InsertChildAcrossDocuments)
{
    ExpectNoLeak([](World& w) { w.A().InsertChild(std::move(w.loose), nullptr); });
    ExpectNoLeak([](World& w) { w.A().InsertChild(std::move(w.loose), &w.A().GetChildren()[0]); });
}

TEST(DOMTreeFailure, AppendChild)
{
    ExpectNoLeak([](World& w) { w.A().AppendChild(std::move(w.loose)); });
}

TEST(DOMTreeFailure, AddNewChild)
{
    ExpectNoLeak([](World& w) { w.A().AddNewChild(c_new, nullptr); });
    ExpectNoLeak([](World& w) { w.A().GetOrNewChild(c_new); });
}

TEST(DOMTreeFailure, RemoveChild)
{
    ExpectNoLeak([](World& w) { w.loose = w.A().RemoveChild(w.A().GetChildren()[0]); });
    ExpectNoLeak([](World& w) { w.loose = w.A().RemoveChild(u"d"); });
    ExpectNoLeak([](World& w) { w.A().RemoveChildren(); });
    ExpectNoLeak([](World& w) { w.loose = w.A().GetParent()->RemoveIfEmpty(u"empty"); });
}

TEST(DOMTreeFailure, Move)
{
    ExpectNoLeak([](World& w) { w.A().Move(w.SecondP(), nullptr); });
    ExpectNoLeak([](World& w) { w.A().Move(*w.first.GetRoot(), w.first.GetDocumentRoot()); });
    ExpectNoLeak([](World& w) { w.first.GetDocumentRoot()->Move(w.SecondP(), nullptr); });
    ExpectNoLeak([](World& w) { w.SecondP().Adopt(w.A(), &w.SecondP().GetChildren()[1]); });
}

TEST(DOMTreeFailure, ErrorsOfAParse)
{
    const std::vector<XMLDiagnostic> errors(
        3, {XMLDiagnostic::Kind::FatalError, u"a message that is not short", u"id", 1, 2});
    const std::vector<TError::ErrorInfo> infos(3, TError::ErrorInfo::NoError());
    ExpectNoLeak([&](World& w) { DiagnosticsAccess::PushErrors(w.A(), errors, infos); });
    ExpectNoLeak([&](World& w) {
        DiagnosticsAccess::PushErrors(w.second.GetRoot()->GetChildren()[0].GetChildren()[2], errors,
                                      infos);
    });
}

TEST(DOMTreeFailure, MoveToTheEndForWantOfAnInsertionPoint)
{
    const LogCapture log;
    ExpectAllOrNothing<World>([](World& w) { w.A().MoveToFront(); });
    ExpectAllOrNothing<World>([](World& w) { w.SecondP().Adopt(w.A(), &w.A()); });
}

TEST(DOMTreeFailure, AdoptChildren)
{
    ExpectNoLeak([](World& w) { w.SecondP().AdoptChildren(w.A(), nullptr); });
    ExpectNoLeak([](World& w) { w.SecondP().AdoptChildren(*w.first.GetRoot(), nullptr); });
    ExpectNoLeak([](World& w) { w.first.GetRoot()->AdoptChildren(w.A(), nullptr); });
    const LogCapture log;
    ExpectAllOrNothing<World>([](World& w) { w.SecondP().AdoptChildren(w.A(), &w.A()); });
}

TEST(DOMTreeFailure, AdoptAttributes)
{
    ExpectNoLeak([](World& w) { w.SecondP().AdoptAttributes(w.A(), true); });
    ExpectNoLeak([](World& w) { w.SecondP().AdoptAttributes(w.A(), false); });
    ExpectNoLeak([](World& w) { w.SecondP().AdoptAttribute(w.A(), u"name"); });
    ExpectNoLeak([](World& w) { w.first.GetRoot()->AdoptAttribute(w.A(), u"name"); });
}

TEST(DOMTreeFailure, SetAttributes)
{
    static const DOMElement::AttributeMap s_attributes{{u"k", u"1"}, {u"l", u"2"}};
    ExpectNoLeak([](World& w) { w.A().SetAttributes(s_attributes); });
    ExpectNoLeak([](World& w) { w.first.GetRoot()->SetAttributes(s_attributes); });
    ExpectNoLeak([](World& w) { w.A().SetAttribute(c_new, c_new); });
    ExpectNoLeak([](World& w) { w.first.GetRoot()->SetAttribute(c_new, c_new); });
    ExpectNoLeak([](World& w) { w.A().SetAttributes(DOMElement::AttributeMap(s_attributes)); });
    ExpectNoLeak([](World& w) { w.A().RemoveAttribute(u"k"); });
}

TEST(DOMTreeFailure, AppendText)
{
    ExpectNoLeak([](World& w) { w.A().AppendText(c_new); });
}

TEST(DOMTreeFailure, CopyConstruction)
{
    ExpectNoLeak([](World& w) { w.copy = std::make_unique<DOMElement>(w.SecondP()); });
    ExpectNoLeak([](World& w) { w.copy = std::make_unique<DOMElement>(*w.first.GetRoot()); });
    ExpectNoLeak([](World& w) { w.copy = std::make_unique<DOMElement>(*w.loose); });
}

TEST(DOMTreeFailure, Assignment)
{
    ExpectNoLeak([](World& w) { w.A() = w.SecondP(); });
    ExpectNoLeak([](World& w) { w.A() = w.A().GetChildren()[0]; });
    ExpectNoLeak([](World& w) { w.A() = *w.first.GetRoot(); });
    ExpectNoLeak([](World& w) { *w.first.GetRoot() = *w.second.GetRoot(); });
}

TEST(DOMTreeFailure, DeepCopy)
{
    ExpectNoLeak([](World& w) { w.first.DeepCopy(w.second); });
}

TEST(DOMTreeFailure, Recording)
{
    static const TError::ErrorInfo s_info = MakeInfo(1);
    ExpectNoLeak([](World& w) { w.A().Error(c_new, s_info, true, true); });
    ExpectNoLeak([](World& w) { w.A().PrefixError(c_new, s_info, true); });
    ExpectNoLeak([](World& w) { w.first.GetRoot()->Warning(c_new, s_info); });
    ExpectNoLeak([](World& w) { w.first.GetRoot()->PrefixWarning(c_new, s_info); });
}

TEST(DOMTreeFailure, AdoptingAndCopyingDiagnostics)
{
    ExpectNoLeak([](World& w) { w.second.AdoptErrorsAndWarningsForNode(w.A(), nullptr); });
    ExpectNoLeak(
        [](World& w) { w.second.AdoptErrorsAndWarningsForNode(w.A(), w.second.GetRoot()); });
    ExpectNoLeak(
        [](World& w) { w.second.CopyErrorsAndWarningsForNode(w.A(), w.second.GetRoot()); });
}

TEST(DOMTreeFailure, ClearingAndMovingDiagnostics)
{
    ExpectNoLeak([](World& w) { w.A().ClearErrors(); });
    ExpectNoLeak([](World& w) { w.A().ClearWarnings(); });
    ExpectNoLeak([](World& w) { w.first.EraseErrorsAndWarningsForNode(w.A()); });
    ExpectNoLeak([](World& w) { w.first.MoveErrorsAndWarningsTo(w.second); });
    ExpectNoLeak([](World& w) { w.first.ClearAllErrorsAndWarnings(); });
}

TEST(DOMTreeFailure, ChangesOfAParsedElement)
{
    // Its attributes lie packed in the memory of the parse until they are changed.
    const std::function<void(DOMElement&)> changes[] = {
        [](DOMElement& e) { e.SetAttribute(u"k", c_new); },
        [](DOMElement& e) { e.SetAttribute(c_new, c_new); },
        [](DOMElement& e) { e.RemoveAttribute(u"k"); },
        [](DOMElement& e) { e.GetAttributes()[c_new] = c_new; },
        [](DOMElement& e) {
            e.SetAttributes(DOMElement::AttributeMap{{u"k", u"1"}});
        },
        [](DOMElement& e) { e.AdoptAttributes(e.GetChildren()[0]); },
        [](DOMElement& e) { e.AppendText(u"a text that is not short"); },
        [](DOMElement& e) { e.AddNewChild(c_new, &e.GetChildren()[0]); },
        [](DOMElement& e) { e.GetChildren()[1].MoveToFront(); },
        [](DOMElement& e) { e.AdoptChildren(e.GetChildren()[0], nullptr); },
        [](DOMElement& e) { e = e.GetChildren()[0]; },
    };
    for (std::size_t index = 0; index < std::size(changes); ++index) {
        SCOPED_TRACE(index);
        const auto parse = [] {
            return DOMParser().ParseXmlString(
                "<a k='v' l='a longer value of it'>text<b m='n'><c/></b><d/></a>", u"id");
        };
        const auto describe = [](const DOM& dom) {
            return XMLDomFormatter::RenderAsXMLString(dom, nullptr, false);
        };
        const TString before = describe(*parse());
        const auto model = parse();
        changes[index](*model->GetDocumentRoot());
        const TString after = describe(*model);
        EXPECT_NE(after, before);
        for (std::size_t allowed = 0;; ++allowed) {
            const auto dom = parse();
            bool done = true;
            {
                const FailingAllocations failing(allowed);
                try {
                    changes[index](*dom->GetDocumentRoot());
                } catch (const std::bad_alloc&) {
                    done = false;
                }
            }
            const bool hasFailed = FailingAllocations::HasFailed();
            EXPECT_TRUE(done || hasFailed);
            ASSERT_EQ(describe(*dom), done ? after : before) << "after " << allowed;
            if (!hasFailed)
                break;
        }
    }
}

// Everything that may be done from several threads at once, at once.

#include "support/TreeTesting.h"

#include <kescorexml/CoreXml.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/XMLDomFormatter.h>

#include <array>
#include <atomic>
#include <barrier>
#include <functional>
#include <thread>

namespace {

constexpr std::size_t c_threads = 8;
constexpr int c_rounds = 150;

void RunOnThreads(const std::function<void(std::size_t)>& work)
{
    std::atomic<std::size_t> ready = 0;
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < c_threads; ++i) {
        threads.emplace_back([&, i] {
            ++ready;
            while (ready < c_threads)
                std::this_thread::yield();
            for (int round = 0; round < c_rounds; ++round)
                work(i);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

/// Documents whose trees nobody changes, with an element of its own in each for every thread.
class Documents
{
public:
    Documents()
    {
        for (DOM& dom : m_doms) {
            DOMElement* const top = dom.GetRoot()->AddNewChild(u"top");
            for (std::size_t i = 0; i < c_threads; ++i)
                top->AddNewChild(TString::number(static_cast<unsigned>(i)));
        }
    }

    DOM& Get(std::size_t document) { return m_doms[document % m_doms.size()]; }
    DOMElement& Own(std::size_t document, std::size_t thread)
    {
        return Get(document).GetDocumentRoot()->GetChildren()[thread];
    }

private:
    std::array<DOM, 3> m_doms;
};

} // namespace

TEST(Threads, RecordAskAndMoveDiagnosticsInOppositeDirections)
{
    Documents documents;
    RunOnThreads([&](std::size_t thread) {
        // Even threads go round one way, odd ones the other.
        const std::size_t first = thread;
        const std::size_t second = thread + (thread % 2 == 0 ? 1 : 2);
        const DOMElement& here = documents.Own(first, thread);
        const DOMElement& there = documents.Own(second, thread);
        here.Error(u"error", MakeInfo(1), false, false);
        here.PrefixWarning(u"warning", MakeInfo(1));
        documents.Get(first).GetDocumentRoot()->Error(u"shared", MakeInfo(1), false, true);
        EXPECT_TRUE(documents.Get(first).HasErrors(here));
        documents.Get(second).AdoptErrorsAndWarningsForNode(here, &there);
        EXPECT_TRUE(documents.Get(second).HasErrors(there));
        documents.Get(first).CopyErrorsAndWarningsForNode(there, &here);
        static_cast<void>(documents.Get(first).GetErrors());
        static_cast<void>(documents.Get(second).GetConcatenatedWarnings());
        documents.Get(second).HasUnreportedErrors();
        documents.Get(first).EraseErrorsAndWarningsForNode(here);
        documents.Get(second).EraseErrorsAndWarningsForNode(there);
        EXPECT_FALSE(documents.Get(second).HasErrors(there));
        documents.Get(second).AddDataSourceRename(here.GetName(), u"renamed");
        EXPECT_EQ(documents.Get(second).RenameDataSource(here.GetName()), u"renamed");
    });
    for (std::size_t thread = 0; thread < c_threads; ++thread) {
        for (std::size_t document = 0; document < 3; ++document)
            EXPECT_FALSE(documents.Own(document, thread).HasErrors());
    }
    std::size_t shared = 0;
    for (std::size_t document = 0; document < 3; ++document)
        shared += documents.Get(document).GetErrors().size();
    EXPECT_EQ(shared, c_threads * c_rounds);
}

TEST(Threads, HandAllDiagnosticsOverInOppositeDirections)
{
    Documents documents;
    RunOnThreads([&](std::size_t thread) {
        const std::size_t other = thread + (thread % 2 == 0 ? 1 : 2);
        documents.Own(thread, thread).Error(u"error", MakeInfo(1), false, false);
        documents.Get(thread).MoveErrorsAndWarningsTo(documents.Get(other));
        documents.Get(other).HasErrors();
        static_cast<void>(documents.Get(other).GetErrors());
        documents.Get(thread).ClearWarnings();
    });
    for (std::size_t document = 0; document < 3; ++document) {
        for (std::size_t thread = 0; thread < c_threads; ++thread)
            documents.Own(document, thread).Error(u"last", MakeInfo(1), false, false);
        EXPECT_TRUE(documents.Get(document).HasErrors());
        documents.Get(document).ClearAllErrorsAndWarnings();
        EXPECT_FALSE(documents.Get(document).HasErrors());
    }
}

TEST(Threads, MoveSubtreesOfTheirOwnBetweenSharedDocuments)
{
    // Each thread edits a tree of its own while its diagnostics go to documents that all share.
    Documents documents;
    RunOnThreads([&](std::size_t thread) {
        DOM own;
        DOMElement& parent = *own.GetRoot()->AddNewChild(u"parent");
        DOMElement* const child = parent.AddNewChild(u"child");
        child->Error(u"error", MakeInfo(1), false, false);
        DOM other;
        child->Move(*other.GetRoot(), nullptr);
        EXPECT_FALSE(own.HasErrors());
        EXPECT_TRUE(other.HasErrors());
        const DOMElement& target = documents.Own(thread, thread);
        documents.Get(thread).AdoptErrorsAndWarningsForNode(*child, &target);
        EXPECT_TRUE(documents.Get(thread).HasErrors(target));
        documents.Get(thread).EraseErrorsAndWarningsForNode(target);
    });
    for (std::size_t document = 0; document < 3; ++document)
        EXPECT_FALSE(documents.Get(document).HasErrors());
}

TEST(Threads, LookUpStringsInManyLanguages)
{
    static constexpr const char16_t* c_languages[] = {u"zh_CN", u"sv_SE", u"th_TH", u"pt_BR",
                                                      u"fr_FR", u"ko_KR", u"it_IT", u"en_US",
                                                      u"ja_JP", u"es_ES", u"de_DE"};
    using CoreXml::StringId;
    std::array<std::atomic<int>, std::size(c_languages)> found{};
    RunOnThreads([&](std::size_t thread) {
        for (std::size_t i = 0; i < std::size(c_languages); ++i) {
            const std::size_t index = (thread + i) % std::size(c_languages);
            const TString text =
                CoreXml::LookupTStr(StringId::IDS_ERR_XML_ENTITY, c_languages[index]);
            found[index] +=
                text == CoreXml::LookupTStr(StringId::IDS_ERR_XML_ENTITY, c_languages[index]) &&
                !text.IsEmpty();
        }
    });
    for (const auto& count : found)
        EXPECT_EQ(count, static_cast<int>(c_threads) * c_rounds);
}

TEST(Threads, ParseWithOneParserEach)
{
    std::vector<std::unique_ptr<DOMParser>> parsers;
    for (std::size_t i = 0; i < c_threads; ++i)
        parsers.push_back(std::make_unique<DOMParser>());
    std::atomic<int> good = 0;
    RunOnThreads([&](std::size_t thread) {
        const std::string text =
            "<a n='" + std::to_string(thread) + "'><b>text</b><b :c='1'><!-- --></b></a>";
        const auto document = parsers[thread]->ParseXmlString(text, u"id");
        const auto bad =
            parsers[thread]->ParseXmlString("<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a/>", u"id");
        const auto standalone = StandaloneDOMParser().ParseXmlString(text, u"id");
        const TString written = XMLDomFormatter::RenderAsXMLString(*document, nullptr, true);
        const auto again = parsers[thread]->ParseXmlString(written, u"id");
        good += !document->HasErrors() && bad->HasErrors() && standalone.errors.empty() &&
                *again == *document && DOMPath::GetAll(*again->GetRoot(), u"//b").size() == 2 &&
                again->GetDocumentRoot()->GetAttribute(u"n") ==
                    TString::number(static_cast<unsigned>(thread));
    });
    EXPECT_EQ(good, static_cast<int>(c_threads) * c_rounds);
}

TEST(Threads, ReadOneTreeSideBySide)
{
    const auto parse = [] {
        return DOMParser().ParseXmlString("<a x='1' y='2'><b x='3'>text</b><c><b y='4'/></c></a>",
                                          u"id");
    };
    const auto model = parse();
    const TString expected = XMLDomFormatter::RenderAsXMLString(*model, nullptr, false);
    // What a tree makes only once it is asked for is made by all threads at once, in each round.
    std::unique_ptr<const DOM> fresh;
    std::barrier round(static_cast<std::ptrdiff_t>(c_threads), [&]() noexcept { fresh = parse(); });
    std::atomic<int> good = 0;
    RunOnThreads([&](std::size_t) {
        round.arrive_and_wait();
        const DOM& tree = *fresh;
        good += tree.GetDocumentRoot()->GetAttributes().size() == 2 &&
                tree.GetElement(u"c")->GetChildren()[0].GetParentAttr(u"x") == u"1" &&
                DOMPath::GetAll(*tree.GetRoot(), u"//b").size() == 2 &&
                XMLDomFormatter::RenderAsXMLString(tree, nullptr, false) == expected &&
                tree == *model;
    });
    EXPECT_EQ(good, static_cast<int>(c_threads) * c_rounds);
}

// What callers see when memory runs out in the middle of reading, checking, asking and writing. For
// what is left of a change to a tree see DOMTreeFailureTest.cpp.

#include "support/FailingAllocations.h"
#include "support/RandomTree.h"

#include <kescorexml/Base64.h>
#include <kescorexml/CoreXml.h>
#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/DOMPathCanopy.h>
#include <kescorexml/LookupResource.h>
#include <kescorexml/PathRenames.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/VersionSniffer.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLLookupTable.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <new>
#include <optional>
#include <string>

namespace {

/// Does something and returns what came of it; nothing when the operation itself said that it
/// failed.
using Operation = std::function<std::optional<std::string>()>;

/// Where the memory for the reader of a document fails, which takes some ten allocations, the
/// scanner forgets the stream that it was to read: a block of 48 bytes for each.
constexpr std::ptrdiff_t c_maximumForgotten = 10;

constexpr std::size_t c_all = std::numeric_limits<std::size_t>::max();

std::optional<std::string> RunWith(const Operation& operation, std::size_t allowed,
                                   std::size_t failures)
{
    const FailingAllocations failing(allowed, failures);
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

/// Runs the operation again and again, allowing it one allocation more each time before `failures`
/// of them fail, until none does:
/// it has to give the whole result or to say that it failed, and must work afterwards. Nothing may
/// be left on the heap, but for what the scanner forgets of as many documents as the operation
/// parses.
void ExpectReported(const Operation& operation, std::size_t failures, int documents)
{
    // The first call also makes what stays for the life of the process.
    const std::optional<std::string> expected = operation();
    ASSERT_TRUE(expected);
    const std::ptrdiff_t before = CountLiveAllocations();
    for (std::size_t allowed = 0;; ++allowed) {
        ASSERT_LT(allowed, 100'000U);
        {
            const std::optional<std::string> result = RunWith(operation, allowed, failures);
            const bool hasFailed = FailingAllocations::HasFailed();
            EXPECT_TRUE(result || hasFailed) << "after " << allowed;
            ASSERT_TRUE(!result || result == expected) << "after " << allowed << ": " << *result;
            if (!hasFailed)
                break;
        }
        if (allowed % 16 == 0) {
            ASSERT_EQ(operation(), expected) << "after " << allowed;
        }
    }
    EXPECT_LE(CountLiveAllocations(), before + documents * c_maximumForgotten);
}

/// The same for a single failure and for all memory.
void ExpectReported(const Operation& operation, int documents = 0)
{
    ExpectReported(operation, 1, documents);
    ExpectReported(operation, c_all, documents);
}

const char* const c_document =
    "<?xml version='1.0'?><r version='10.4' :colon='1'><!-- comment --><a x='1' y='&amp;'>text "
    "that "
    "is not short<b/><b>more text</b></a><![CDATA[a section]]><a><a><b z='a longer value that is "
    "on the heap'/></a></a></r>";

std::optional<std::string> Describe(const std::unique_ptr<DOM>& document)
{
    if (document->HasErrors())
        return std::nullopt;
    return XMLDomFormatter::RenderAsXMLString(*document, nullptr, true).toStdString();
}

} // namespace

#if defined(__SANITIZE_ADDRESS__)
/// See c_maximumForgotten.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions()
{
    return "leak:ReaderMgr::createReader\n";
}
#endif

TEST(MemoryFailure, OfAParseIsReported)
{
    static const std::string s_text(c_document);
    static const TString s_id(u"an identifier that is not short");
    ExpectReported([] { return Describe(DOMParser().ParseXmlString(s_text, s_id)); }, 1);
    static const TString s_wide = TString::fromStdString(s_text);
    ExpectReported([] { return Describe(DOMParser().ParseXmlString(s_wide, s_id)); }, 1);
    const DOMParser reused;
    // Where memory fails, the direct scanner may leave the document to the other one, whose reader
    // stays, with the names of the document, once it was needed.
    std::string leftToXerces = s_text;
    leftToXerces.insert(leftToXerces.find("<r "), "<!DOCTYPE r [<!ENTITY e 'x'>]>");
    static_cast<void>(reused.ParseXmlString(leftToXerces, s_id));
    // It keeps a little more than after its first document.
    ExpectReported([&] { return Describe(reused.ParseXmlString(s_text, s_id)); }, 2);
}

TEST(MemoryFailure, OfAParseOfABadDocumentIsReported)
{
    static const TString s_id(u"an identifier that is not short");
    // After the second one, the parser needs a new reader.
    static const std::string s_texts[] = {"<a>text<b></a>",
                                          "<!DOCTYPE a [<!ELEMENT a (b,c|d)>]><a/>"};
    for (const std::string& text : s_texts) {
        SCOPED_TRACE(text);
        const DOMParser parser;
        ExpectReported(
            [&]() -> std::optional<std::string> {
                const auto document = parser.ParseXmlString(text, s_id);
                const std::string errors = document->GetConcatenatedErrors().toStdString();
                EXPECT_NE(errors, "") << "a bad document passes for a good one";
                if (errors.find("Fatal Error(") != 0)
                    return std::nullopt;
                return errors;
            },
            1);
    }
}

TEST(MemoryFailure, OfAParseIntoAStandaloneTreeIsReported)
{
    static const TString s_text = TString::fromUtf8(c_document);
    static const TString s_id(u"an identifier that is not short");
    const StandaloneDOMParser parser;
    ExpectReported(
        [&]() -> std::optional<std::string> {
            const StandaloneParseResult result = parser.ParseXmlString(s_text, s_id);
            if (!result.errors.empty())
                return std::nullopt;
            const auto& r = result.root->GetChildren()[0].get();
            return r.GetAllText().toStdString() + r.GetAttribute(u"version").toStdString() +
                   std::to_string(r.Clone()->GetChildren().size());
        },
        1);
}

TEST(MemoryFailure, OfAnEditOfAStandaloneTreeLeavesItAsItWas)
{
    using Element = StandaloneDOMElement;
    const std::function<void(Element&)> changes[] = {
        [](Element& e) { e.AppendText(u"more text", true); },
        [](Element& e) { e.SetAttribute(u"new", u"value"); },
        [](Element& e) {
            e.SetAttributes(Element::AttributeMap{{u"k", u"v"}, {u"l", u"w"}});
        },
        [](Element& e) { e.AppendChild(std::make_unique<Element>(u"new")); },
        [](Element& e) {
            e.InsertChildBefore(std::make_unique<Element>(u"new"), e.GetChildren()[1]);
        },
        [](Element& e) { e.RemoveChild(e.GetChildren()[0]); },
        [](Element& e) { e.RemoveChildren(); },
    };
    const auto result = StandaloneDOMParser().ParseXmlString(c_document, u"id");
    const Element& original = result.root->GetChildren()[0];
    for (const auto& change : changes) {
        ExpectReported([&]() -> std::optional<std::string> {
            const auto element = original.Clone();
            try {
                change(*element);
            } catch (const std::bad_alloc&) {
                // Comparing needs no memory.
                EXPECT_TRUE(*element == original);
                EXPECT_FALSE(element->IsEncoded());
                throw;
            }
            return element->GetAllText().toStdString() +
                   std::to_string(element->GetChildren().size() * 100 +
                                  element->GetAttributes().size());
        });
    }
}

TEST(MemoryFailure, OfAQueryIsReported)
{
    const auto document = DOMParser().ParseXmlString(c_document, u"id");
    const DOMElement& root = *document->GetRoot();
    TString longPath(u"//*");
    for (int i = 0; i < 70; ++i)
        longPath += u"/";
    longPath += u"b";
    for (const TString& path : {TString(u"//b"), TString(u"/r/a//*"), longPath}) {
        ExpectReported([&] {
            std::string names;
            for (const DOMElement& match : DOMPath::Walk(root, path))
                names += match.GetName().toStdString();
            for (const DOMElement* match : DOMPath::GetAll(root, path))
                names += match->GetName().toStdString();
            return std::optional(names);
        });
    }
    ExpectReported([&] {
        return std::optional(
            std::to_string(DOMPathCanopy::WithinCanopy(root, u"//a", u"a").size() * 100 +
                           DOMPathCanopy::UnderneathCanopy(root, u"//a", u"b").size()));
    });
}

TEST(MemoryFailure, OfWritingIsReported)
{
    RandomTree random(5);
    const auto tree = random.Tree(40);
    TString comment(u"a comment -- with hyphens");
    ExpectReported([&] {
        return std::optional(
            XMLDomFormatter::RenderAsXMLString(*tree, &comment, true).toStdString());
    });
}

TEST(MemoryFailure, OfACallOfATreeFormatterLeavesTheTreeAsItWas)
{
    const DOMElement::AttributeMap attributes{{u"k", u"v"}, {u"l", u"a longer value of it"}};
    DOMElement element(u"element");
    element.AddNewChild(u"child")->SetAttributes(attributes);
    const std::vector<unsigned char> bytes(100, 7);
    const std::function<void(XMLDomFormatter&)> calls[] = {
        [&](XMLDomFormatter& f) { f.OutputOpenTag(u"new", attributes); },
        [&](XMLDomFormatter& f) { f.OutputTag(u"new", attributes); },
        [&](XMLDomFormatter& f) { f.OutputContentTag(u"new", attributes, u"text"); },
        [&](XMLDomFormatter& f) { f.OutputAttributes(attributes); },
        [&](XMLDomFormatter& f) { f.OutputContent(u"text", false); },
        [&](XMLDomFormatter& f) { f.OutputString(u"some more text"); },
        [&](XMLDomFormatter& f) { f.OutputLine(u"some more text"); },
        [&](XMLDomFormatter& f) { f.OutputDOMElement(element); },
        [&](XMLDomFormatter& f) { f.OutputDOMElements(std::as_const(element).GetChildren()); },
        [&](XMLDomFormatter& f) { f.OutputContent(u"raw &amp; text", true); },
        [&](XMLDomFormatter& f) { f.OutputHeader(); },
        [&](XMLDomFormatter& f) { f.OutputBinary(bytes.data(), 100); },
        [&](XMLDomFormatter& f) { f.OutputComment(u"comment"); },
    };
    for (const auto& call : calls) {
        ExpectReported([&] {
            XMLDomFormatter formatter;
            formatter.OutputOpenTag(u"a", {});
            try {
                call(formatter);
            } catch (const std::bad_alloc&) {
                const DOMElement& a = *formatter.GetDocumentRoot();
                EXPECT_TRUE(a.IsEmpty());
                // Nothing but "a" is open.
                formatter.OutputCloseTag(u"a");
                throw;
            }
            return std::optional(formatter.GetOutput(FormatMode::Content).toStdString());
        });
    }
}

TEST(MemoryFailure, OfARenameLeavesTheNamesAsTheyWere)
{
    const FieldName from = FieldName::ParseGlobal(u"source.field");
    const FieldName to = FieldName::ParseGlobal(u"target.another");
    const std::function<void(DOM&)> changes[] = {
        [&](DOM& dom) { dom.AddFieldRename(from, to); },
        [](DOM& dom) { dom.AddCaptionRename(u"old caption", u"new caption"); },
        [](DOM& dom) { dom.AddDataSourceRename(u"source", u"new source"); },
        [](DOM& dom) { dom.AddDataConnectionRename(u"connection", u"new one"); },
        [](DOM& dom) { dom.AddMapSourceRename(u"map", u"new map"); },
    };
    const auto describe = [&](const DOM& dom) {
        return dom.RenameField(from).GetFullValue().toStdString() +
               dom.GetCaptionRenameIfItExists(u"old caption").toStdString() +
               dom.RenameDataSource(u"source").toStdString() +
               dom.RenameDataConnection(u"connection").toStdString() +
               dom.RenameMapSource(u"map").toStdString();
    };
    const std::string untouched = describe(DOM());
    for (const auto& change : changes) {
        ExpectReported([&] {
            DOM dom;
            change(dom);
            return std::optional(describe(dom));
        });
        // What has failed may be tried again: a caption that had been added would be refused.
        for (std::size_t allowed = 0;; ++allowed) {
            DOM dom;
            const bool done = RunWith(
                                  [&] {
                                      change(dom);
                                      return std::optional(std::string());
                                  },
                                  allowed, c_all)
                                  .has_value();
            if (done)
                break;
            ASSERT_EQ(describe(dom), untouched) << "after " << allowed;
            change(dom);
        }
    }
}

TEST(MemoryFailure, OfARenameOfPathsIsReported)
{
    ExpectReported([] {
        PathRenames renames;
        renames.SetRename(TPath(u"an/old/path"), TPath(u"a/new/path"));
        renames.SetCRC(TPath(u"a/file/of/it"), TPath(u"another/file"), 17);
        const PathRenames copy = renames;
        return std::optional(
            copy.RenamePath(TPath(u"an/old/path")).GetString().toStdString() +
            copy.ReverseRenamePath(TPath(u"a/new/path")).GetString().toStdString());
    });
}

TEST(MemoryFailure, OfALookUpIsReported)
{
    for (const char16_t* locale : {u"de_DE", u"fr_FR", u"ja_JP"}) {
        ExpectReported([=] {
            return std::optional(
                CoreXml::LookupTStr(CoreXml::StringId::IDS_ERR_XML_ENTITY, locale).toStdString());
        });
    }
    ExpectReported([] {
        return std::optional(LookupResource(QtKesResourceId::FileformatXmlXsd).toStdString());
    });
}

TEST(MemoryFailure, OfScanningAndPackingIsReported)
{
    ExpectReported([]() -> std::optional<std::string> {
        StringInputSource source(TString::fromUtf8(c_document), u"id", false);
        const auto version = VersionSniffer(source, u"version");
        return version ? std::optional(version->GetAsString().toStdString()) : std::nullopt;
    });
    ExpectReported([] {
        std::vector<TString> lines;
        const std::vector<unsigned char> bytes(500, 3);
        Base64Encode(bytes.data(), 500, lines, true);
        TString text;
        for (const TString& line : lines)
            text += line;
        return std::optional(std::to_string(Base64Decode(text).size()) + text.toStdString());
    });
    ExpectReported([] {
        return std::optional(
            XmlUtils::PackStringLookupTableIntoXML({{u"a", u"1"}, {u"b", u"x<y"}}, false)
                .toStdString());
    });
}

namespace {

constexpr const char16_t* c_schema =
    uR"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema"><xs:element name="r">
    <xs:complexType><xs:sequence><xs:element name="a" type="xs:int" maxOccurs="3"/></xs:sequence>
    </xs:complexType></xs:element></xs:schema>)";

} // namespace

TEST(MemoryFailure, OfAValidationIsReported)
{
    static const std::string s_text("<r><a>1</a><a>two</a></r>");
    const auto validate = []() -> std::optional<std::string> {
        DOMParser parser;
        parser.AddXSDInputSource(std::make_unique<StringInputSource>(c_schema, u"schema", false));
        return parser.ParseXmlString(s_text, u"id")->GetConcatenatedErrors().toStdString();
    };
    const std::optional<std::string> expected = validate();
    const std::ptrdiff_t before = CountLiveAllocations();
    for (const std::size_t failures : {std::size_t(1), c_all}) {
        std::size_t reported = 0;
        std::size_t allowed = 0;
        for (bool isOver = false; !isOver; ++allowed) {
            const std::optional<std::string> errors = RunWith(validate, allowed, failures);
            isOver = !FailingAllocations::HasFailed();
            // The document is invalid; whatever fails, it must not pass.
            EXPECT_NE(errors, "") << "after " << allowed;
            reported += errors == expected ? 0U : 1U;
            if (allowed % 64 == 0) {
                ASSERT_EQ(validate(), expected) << "after " << allowed;
            }
        }
        EXPECT_GT(reported, 1000U);
    }
    // The schema, the two that all schemas stand on, and the document.
    EXPECT_LE(CountLiveAllocations(), before + 2 * 4 * c_maximumForgotten);
}

TEST(MemoryFailure, OfAValidationOfAValidDocumentIsReported)
{
    static const std::string s_text("<r><a>1</a><a>22</a></r>");
    ExpectReported(
        [] {
            DOMParser parser;
            parser.AddXSDInputSource(
                std::make_unique<StringInputSource>(c_schema, u"schema", false));
            return Describe(parser.ParseXmlString(s_text, u"id"));
        },
        4);
    DOMParser reused;
    reused.AddXSDInputSource(std::make_unique<StringInputSource>(c_schema, u"schema", false));
    ExpectReported([&] { return Describe(reused.ParseXmlString(s_text, u"id")); }, 4);
}

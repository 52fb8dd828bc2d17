#include "load/Worker.h"

#include "Targets.h"

#include "support/FailingAllocations.h"
#include "support/Require.h"

#include <kescorexml/DOMPath.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/XMLDomFormatter.h>

#include <new>
#include <utility>

namespace {

/// Those that share nothing: neither the switch of the scanners nor a file.
constexpr void (*c_targets[])(FuzzTargets::Bytes) = {
    FuzzTargets::Base64,         FuzzTargets::FormatterCalls, FuzzTargets::ParseAndWrite,
    FuzzTargets::Paths,          FuzzTargets::RangeTable,     FuzzTargets::Sanitizer,
    FuzzTargets::StandaloneTree, FuzzTargets::VersionSniffing};

const char* const c_schema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
    "<xs:element name='a'><xs:complexType><xs:sequence>"
    "<xs:element name='n' type='xs:int' minOccurs='0' maxOccurs='unbounded'/>"
    "<xs:element name='s' minOccurs='0'><xs:simpleType><xs:restriction base='xs:string'>"
    "<xs:enumeration value='one'/><xs:enumeration value='two'/></xs:restriction></xs:simpleType>"
    "</xs:element></xs:sequence><xs:attribute name='d' type='xs:date' default='2000-01-01'/>"
    "</xs:complexType></xs:element></xs:schema>";

const char* const c_instances[] = {"<a/>",
                                   "<a d='2024-02-29'><n>1</n><n>-2</n><s>two</s></a>",
                                   "<a><n>1</n><n>x</n></a>",
                                   "<a d='2023-02-29'><s>three</s></a>",
                                   "<a><s>one</s><s>one</s></a>",
                                   "<b/>",
                                   "<a><n>1</n>"};

std::string Describe(const DOM& document)
{
    return XMLDomFormatter::RenderAsXMLString(document, nullptr, true).toStdString() +
           document.GetConcatenatedErrors().toStdString();
}

} // namespace

Worker::Worker(const std::vector<std::string>& corpus, SharedDocuments& shared, std::size_t thread)
    : m_corpus(corpus), m_shared(shared), m_thread(thread), m_random(static_cast<unsigned>(thread))
{
    m_validator.AddXSDInputSource(std::make_unique<StringInputSource>(
        TString::fromStdString(c_schema), TString(u"schema.xsd"), false));
}

void Worker::Step()
{
    using Task = void (Worker::*)();
    constexpr Task c_tasks[] = {&Worker::ParseWriteAndAsk, &Worker::ParseStandalone,
                                &Worker::Validate,         &Worker::Exchange,
                                &Worker::ReadSharedTree,   &Worker::RunFuzzTarget};
    (this->*c_tasks[m_random.Below(std::size(c_tasks))])();
}

const std::string& Worker::PickDocument()
{
    return m_corpus[m_random.Below(m_corpus.size())];
}

bool Worker::RunWithLittleMemory(const Work& work, std::optional<std::string>& result)
{
    // Most of what there is to fail comes early.
    const std::size_t allowed = m_random.Below(std::size_t{1} << m_random.Below(14));
    const std::size_t failures = m_random.Below(2) == 0 ? 1 : 1'000'000;
    const FailingAllocations failing(allowed, failures);
    try {
        result = work();
    } catch (const std::bad_alloc&) {
        result = std::nullopt;
    }
    if (!FailingAllocations::HasFailed())
        return true;
    ++m_failures;
    return false;
}

void Worker::RequireSameOrReported(const Work& work)
{
    const std::optional<std::string> expected = work();
    std::optional<std::string> result;
    if (RunWithLittleMemory(work, result))
        RequireEqual(result.has_value(), expected.has_value(), "it fails as before");
    if (result)
        Require(result == expected, "the same is done twice alike");
}

void Worker::ParseWriteAndAsk()
{
    const std::string& bytes = PickDocument();
    RequireSameOrReported([&]() -> std::optional<std::string> {
        const auto document = m_parser.ParseXmlBytes({bytes.begin(), bytes.end()});
        if (document->HasErrors())
            return std::nullopt;
        return Describe(*document) +
               std::to_string(DOMPath::GetAll(*document->GetRoot(), u"//*").size());
    });
}

void Worker::ParseStandalone()
{
    const std::string& bytes = PickDocument();
    RequireSameOrReported([&]() -> std::optional<std::string> {
        const StandaloneParseResult result = m_standaloneParser.ParseXmlString(bytes, u"id");
        if (!result.errors.empty())
            return std::nullopt;
        return result.root->GetAllText().toStdString();
    });
}

void Worker::Validate()
{
    const std::size_t index = m_random.Below(std::size(c_instances));
    const bool isValid = index < 2;
    const auto validate = [&] { return m_validator.ParseXmlString(c_instances[index], u"id"); };
    Require(validate()->HasErrors() != isValid, "a document is judged as its schema has it");
    if (isValid) {
        RequireSameOrReported([&]() -> std::optional<std::string> {
            const auto document = validate();
            if (document->HasErrors())
                return std::nullopt;
            return Describe(*document);
        });
        return;
    }
    std::optional<std::string> result;
    RunWithLittleMemory(
        [&]() -> std::optional<std::string> {
            Require(validate()->HasErrors(), "no bad document passes for a good one");
            return std::nullopt;
        },
        result);
}

/// Even threads hand diagnostics on in one direction, odd ones in the other.
void Worker::Exchange()
{
    const std::size_t first = m_random.Below(3);
    const std::size_t second = first + (m_thread % 2 == 0 ? 1 : 2);
    const DOMElement& here = m_shared.GetOwn(first, m_thread);
    const DOMElement& there = m_shared.GetOwn(second, m_thread);
    DOM& from = m_shared.Get(first);
    DOM& to = m_shared.Get(second);
    std::optional<std::string> result;
    const bool hadEnough = RunWithLittleMemory(
        [&]() -> std::optional<std::string> {
            RecordAndExchange(here, there, from, to);
            return std::string();
        },
        result);
    if (hadEnough)
        Require(to.HasErrors(there) && !from.HasErrors(here), "errors lie where they were put");
    from.EraseErrorsAndWarningsForNode(here);
    to.EraseErrorsAndWarningsForNode(there);
    Require(!from.HasErrors(here) && !to.HasErrors(there), "errors that were erased are gone");
}

void Worker::RecordAndExchange(const DOMElement& here, const DOMElement& there, DOM& first,
                               DOM& second)
{
    const TError::ErrorInfo info;
    here.Error(u"an error of a text that is not short", info, false, false);
    here.PrefixWarning(u"a warning", info);
    second.AdoptErrorsAndWarningsForNode(here, &there);
    static_cast<void>(first.GetErrors());
    static_cast<void>(second.GetConcatenatedWarnings());
    second.HasUnreportedErrors();
    second.AddDataSourceRename(u"one", u"other");
    RequireEqual(second.RenameDataSource(u"one"), TString(u"other"), "names are renamed");
}

void Worker::ReadSharedTree()
{
    const DOM& tree = m_shared.GetTree();
    RequireSameOrReported([&] {
        std::string found;
        for (const DOMElement* const element : DOMPath::GetAll(*tree.GetRoot(), u"//b"))
            found += element->GetParentAttr(u"x").toStdString() + ',';
        Require(XMLDomFormatter::RenderAsXMLString(tree, nullptr, true) == m_shared.GetWritten(),
                "a tree is written alike by all threads");
        return std::optional(found);
    });
}

void Worker::RunFuzzTarget()
{
    const std::string& bytes = PickDocument();
    c_targets[m_random.Below(std::size(c_targets))](
        {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
}

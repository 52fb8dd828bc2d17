#include "scanner/XercesXMLParserImpl.h"

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "bytes/XercesInputSource.h"
#include "bytes/XercesMemory.h"

#include <kescorexml/IXercesInputSourceProvider.h>
#include <kescorexml/LookupResource.h>

#include <kesplatform/Metrics.h>

#include <xercesc/util/XMLUni.hpp>

#include <utility>

namespace {

void SetValidatingFeatures(xercesc::SAX2XMLReader& reader)
{
    const std::pair<const XMLCh*, bool> features[] = {
        {xercesc::XMLUni::fgSAX2CoreNameSpaces, true},
        {xercesc::XMLUni::fgSAX2CoreNameSpacePrefixes, true},
        {xercesc::XMLUni::fgSAX2CoreValidation, true},
        {xercesc::XMLUni::fgXercesIdentityConstraintChecking, true},
        {xercesc::XMLUni::fgXercesSkipDTDValidation, false},
        {xercesc::XMLUni::fgXercesSchemaFullChecking, true},
        {xercesc::XMLUni::fgXercesHandleMultipleImports, true},
        {xercesc::XMLUni::fgXercesSchema, true},
        {xercesc::XMLUni::fgXercesUseCachedGrammarInParse, true},
        {xercesc::XMLUni::fgXercesValidationErrorAsFatal, false}};
    for (const auto& [name, value] : features)
        reader.setFeature(name, value);
}

class LoadingSchemaScope
{
public:
    explicit LoadingSchemaScope(XercesXMLHandler& handler) noexcept : m_handler(handler)
    {
        m_handler.SetLoadingSchema(true);
    }
    ~LoadingSchemaScope() { m_handler.SetLoadingSchema(false); }
    LoadingSchemaScope(const LoadingSchemaScope&) = delete;
    LoadingSchemaScope& operator=(const LoadingSchemaScope&) = delete;

private:
    XercesXMLHandler& m_handler;
};

} // namespace

void XercesXMLParserImpl::SwitchToValidating()
{
    if (m_reader == nullptr || m_remains == Remains::Damage)
        MakeReader();
    m_memory->PrepareForSchemas();
    m_noSchemaLoaded = false;
    const Metrics::Scope scope("XercesXMLParser_PrepareParserState");
    try {
        m_reader->resetCachedGrammarPool();
        LoadXSDResource(LookupResource(QtKesResourceId::FileformatXmlXsd));
        LoadXSDResource(LookupResource(QtKesResourceId::FileformatUserXsd));
        SetValidatingFeatures(*m_reader);
    } catch (...) {
        // A parser that went on without the base schemas would not validate, and say nothing.
        m_noSchemaLoaded = true;
        m_schemas.clear();
        DropReader();
        throw;
    }
}

void XercesXMLParserImpl::LoadXSDSource(InputSource& xsdSource)
{
    RequireOutsideOfEvents();
    const Metrics::Scope scope("XercesXMLParser_LoadXSDSource");
    const bool isFirst = m_noSchemaLoaded;
    try {
        WithXercesMemory([&] { LoadSchema(xsdSource); });
    } catch (const std::bad_alloc&) {
        if (isFirst) {
            m_noSchemaLoaded = true;
            m_schemas.clear();
        }
        // The reader takes itself to be still at it, and has half of a schema.
        DropReader();
        throw;
    }
}

void XercesXMLParserImpl::LoadSchema(InputSource& source)
{
    if (m_noSchemaLoaded)
        SwitchToValidating();
    if (source.Id().IsEmpty())
        ThrowAssertion(u"XercesXMLParser", PublishedLine(302), u"!xsdSource.Id().IsEmpty()",
                       KesErrorsError::LogicAssert_0xC83A570E());
    auto* const xercesableSource = dynamic_cast<IXercesInputSourceProvider*>(&source);
    if (xercesableSource == nullptr)
        ThrowAssertion(u"XercesXMLParser", PublishedLine(305), u"xercesableSource != nullptr",
                       KesErrorsError::LogicAssert_0xAB95E4EA());
    Schema loaded{source.Id(), nullptr};
    {
        const ParseInProgress inProgress(m_isParsing);
        if (m_reader == nullptr && !RestoreSchemas()) {
            CollectHandlerErrors();
            return;
        }
        const XercesInputSource schema =
            xercesableSource->GetXercesInputSource(ColonProcessingMode::None);
        if (!schema.GetRefusal())
            loaded.text = std::make_shared<const std::string>(schema.GetBytes());
        CompileSchema(schema, loaded.id);
        loaded.errors = m_handler->GetErrors().size();
    }
    CollectHandlerErrors();
    m_schemas.push_back(std::move(loaded));
}

void XercesXMLParserImpl::CompileSchema(const XercesInputSource& schema, const TString& id)
{
    // What a schema that could not be loaded has left belongs to no other.
    m_handler->resetErrors();
    const LoadingSchemaScope loading(*m_handler);
    BeginBudget(schema, false);
    if (schema.GetRefusal()) {
        RecordRefusal(schema, id);
        return;
    }
    const LocatingReader::Scope located(*m_reader, schema);
    try {
        m_reader->loadGrammar(schema(), xercesc::Grammar::SchemaGrammarType, true);
    } catch (const SinkException& exception) {
        std::rethrow_exception(exception.thrown);
    } catch (const LimitExceeded& exceeded) {
        RecordLimit(exceeded, id);
    }
}

bool XercesXMLParserImpl::RestoreSchemas()
{
    constexpr std::size_t c_baseSchemas = 2;
    try {
        MakeReader();
        m_memory->PrepareForSchemas();
        const std::span<const Schema> schemas(m_schemas);
        bool isDone = CompileAgain(schemas.first(c_baseSchemas));
        SetValidatingFeatures(*m_reader);
        isDone = isDone && CompileAgain(schemas.subspan(c_baseSchemas));
        if (!isDone)
            DropReader();
        return isDone;
    } catch (...) {
        DropReader();
        throw;
    }
}

bool XercesXMLParserImpl::CompileAgain(std::span<const Schema> schemas)
{
    for (const Schema& schema : schemas) {
        if (schema.text == nullptr)
            continue;
        CompileSchema(XercesInputSource(schema.text, 0, schema.id, ColonProcessingMode::None,
                                        XercesEncoding::Utf8),
                      schema.id);
        // An extension may serve something else than before, and limits may have changed.
        if (m_handler->GetErrors().size() != schema.errors) {
            m_handler->RecordFatalError(u"the schema cannot be loaded as before", schema.id, 0, 0);
            return false;
        }
    }
    m_handler->resetErrors();
    return true;
}

std::vector<TString> XercesXMLParserImpl::GetXSDNames() const
{
    std::vector<TString> names;
    names.reserve(m_schemas.size());
    for (const Schema& schema : m_schemas)
        names.push_back(schema.id);
    return names;
}

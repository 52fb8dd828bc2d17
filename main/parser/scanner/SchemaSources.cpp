#include "scanner/SchemaSources.h"

#include "scanner/XercesXMLParserImpl.h"

#include <kescorexml/LookupResource.h>
#include <kescorexml/StringInputSource.h>

#include <kesplatform/Resources.h>

#include <utility>

void SchemaSources::Add(std::unique_ptr<InputSource> source)
{
    m_schemas.push_back({std::move(source)});
}

void SchemaSources::AddResource(QtKesResourceId id)
{
    const TString name = LookupResource(id);
    const UTF8StringTResource resource(name);
    Add(std::make_unique<StringInputSource>(resource.GetString(), name, false));
}

void SchemaSources::LoadInto(XercesXMLParserImpl& parser)
{
    for (Schema& schema : m_schemas) {
        // Not before the first time: a source may have no way back.
        if (std::exchange(schema.wasRead, true))
            schema.source->ResetToStart();
        parser.LoadXSDSource(*schema.source);
    }
}

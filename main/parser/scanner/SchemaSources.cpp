#include "scanner/SchemaSources.h"

#include "scanner/XercesXMLParserImpl.h"

#include <kescorexml/LookupResource.h>
#include <kescorexml/StringInputSource.h>

#include <kesplatform/Resources.h>

#include <cstddef>
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
    // A source may add others while it is read; these are for the next document.
    const std::size_t count = m_schemas.size();
    for (std::size_t i = 0; i < count; ++i) {
        InputSource& source = *m_schemas[i].source;
        // Not before the first time: a source may have no way back.
        if (std::exchange(m_schemas[i].wasRead, true))
            source.ResetToStart();
        parser.LoadXSDSource(source);
    }
}

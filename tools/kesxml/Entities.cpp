#include "Entities.h"

namespace {

TString MessageOf(const SkippedEntity& entity)
{
    const TString references = entity.references == 1 ? TString(u"1 reference to it is left out")
                                                      : TString::number(entity.references) +
                                                            u" references to it are left out";
    return u"the entity '" + entity.name + u"' is declared nowhere in the document: " + references;
}

} // namespace

Diagnostics DescribeSkippedEntities(const std::vector<SkippedEntity>& entities, const TString& file)
{
    Diagnostics diagnostics;
    for (const SkippedEntity& entity : entities)
        diagnostics.push_back({false, file, entity.line, entity.column, MessageOf(entity), {}});
    return diagnostics;
}

void NameEntityOption(Diagnostics& diagnostics)
{
    for (Diagnostic& diagnostic : diagnostics) {
        if (diagnostic.isEntityRefused)
            diagnostic.message += u"; --allow-entities lifts it";
    }
}

#pragma once

#include <kescorexml/SkippedEntity.h>
#include <kescorexml/XMLDiagnostic.h>

#include <kesplatform/TError.h>

#include <vector>

class DOM;
class DOMElement;

/// Has a document keep what its parser has to say as it is, rather than as messages.
class DiagnosticsAccess
{
public:
    /// Adds errors behind those of an element, which nobody was told of and which are no
    /// cancellations: all of them, or none when memory runs out. Takes time in the number of those
    /// that the element has, too. REQUIRES: the element is attached, and there are as many records
    /// as errors.
    static void PushErrors(DOMElement& element, const std::vector<XMLDiagnostic>& errors,
                           const std::vector<TError::ErrorInfo>& infos);
    /// What DOM::GetSkippedEntities gives.
    static void SetSkippedEntities(DOM& document, const std::vector<SkippedEntity>& entities);
};

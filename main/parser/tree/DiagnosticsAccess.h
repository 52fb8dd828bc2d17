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
    /// cancellations. REQUIRES: the element is attached, and there are as many records as errors.
    static void PushErrors(const DOMElement& element, const std::vector<XMLDiagnostic>& errors,
                           const std::vector<TError::ErrorInfo>& infos);
    /// What DOM::GetSkippedEntities gives.
    static void SetSkippedEntities(DOM& document, const std::vector<SkippedEntity>& entities);
};

#pragma once

#include "scanner/ParseBudget.h"

#include <xercesc/sax/DTDHandler.hpp>
#include <xercesc/sax2/LexicalHandler.hpp>

/// What Xerces calls back while it reads a document type. The scanner takes any character in a
/// system identifier; this refuses what is none in XML, by an exception of Xerces's kind for fatal
/// errors. From here on, the memory of a parse that validates counts.
class DocumentTypeGuard final : public xercesc::LexicalHandler, public xercesc::DTDHandler
{
public:
    /// `budget`, which knows where the scanner is, must outlive the guard.
    explicit DocumentTypeGuard(ParseBudget& budget) noexcept : m_budget(budget) {}

    /// Call it before each parse.
    void Reset() noexcept { m_hasBegun = false; }
    /// Whether the document has a document type.
    bool HasBegun() const noexcept { return m_hasBegun; }

    void startDTD(const XMLCh* name, const XMLCh* publicId, const XMLCh* systemId) override;
    void notationDecl(const XMLCh* name, const XMLCh* publicId, const XMLCh* systemId) override;
    void unparsedEntityDecl(const XMLCh* name, const XMLCh* publicId, const XMLCh* systemId,
                            const XMLCh* notationName) override;

    void endDTD() override { m_budget.EndDocumentType(); }
    void resetDocType() override {}
    void comment(const XMLCh*, XMLSize_t) override {}
    void startCDATA() override {}
    void endCDATA() override {}
    void startEntity(const XMLCh*) override {}
    void endEntity(const XMLCh*) override {}

private:
    void RefuseInvalidCharacters(const XMLCh* systemId) const;

    ParseBudget& m_budget;
    bool m_hasBegun = false;
};

#pragma once

#include "bytes/Utf8Faults.h"
#include "scanner/ParseBudget.h"

#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax/SAXParseException.hpp>

#include <optional>

class AttributeErrors;
class XercesInputSource;

/// The scanner came upon bytes that are no UTF-8; the position is theirs.
class InvalidUtf8 final : public xercesc::SAXParseException
{
public:
    using SAXParseException::SAXParseException;
};

/// The scanner came upon a reference to an entity that the document declares, and may not expand
/// it.
class EntityRefused final : public xercesc::SAXParseException
{
public:
    using SAXParseException::SAXParseException;
};

/// The reader of Xerces, reporting bytes that are no UTF-8 where they stand. The scanner decodes
/// ahead of what it reads and would report where it was then; of a character that the end of the
/// document cuts off it would say that the document ended. The former are an InvalidUtf8 to the
/// error handler, and entities that are not expanded an EntityRefused. It also tells the budget
/// which attributes do not stand in their tag, and whether a schema declares the element, which no
/// handler can see.
class LocatingReader final : public xercesc::SAX2XMLReaderImpl
{
public:
    /// `budget` must outlive the reader.
    LocatingReader(xercesc::MemoryManager* manager, ParseBudget& budget);

    /// A document or schema of which faults are placed while this object lives.
    class Scope
    {
    public:
        /// Both must outlive the scope.
        Scope(LocatingReader& reader, const XercesInputSource& input) noexcept : m_reader(reader)
        {
            m_reader.m_input = &input;
        }
        ~Scope() { m_reader.m_input = nullptr; }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        LocatingReader& m_reader;
    };

    /// Who is told of errors and of tags, each before the handlers are; null for nobody.
    void SetAttributeErrors(AttributeErrors* errors) noexcept { m_attributeErrors = errors; }

    /// The first fault of the document or schema; nothing outside of a scope.
    std::optional<Utf8Faults::InvalidBytes> FindFault() const;

    void error(unsigned int code, const XMLCh* domain, xercesc::XMLErrorReporter::ErrTypes type,
               const XMLCh* text, const XMLCh* systemId, const XMLCh* publicId, XMLFileLoc line,
               XMLFileLoc column) override;

    void startElement(const xercesc::XMLElementDecl& declaration, unsigned int uri,
                      const XMLCh* prefix, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                      XMLSize_t count, bool isEmpty, bool isRoot) override;
    void endElement(const xercesc::XMLElementDecl& declaration, unsigned int uri, bool isRoot,
                    const XMLCh* prefix) override;

private:
    bool IsRefusal(unsigned int code, const XMLCh* domain) const;
    /// Of what the reader is given, not of what that refers to.
    bool IsInput(const XMLCh* systemId) const;

    xercesc::MemoryManager* m_manager;
    ParseBudget& m_budget;
    const XercesInputSource* m_input = nullptr;
    AttributeErrors* m_attributeErrors = nullptr;
};

#pragma once

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/framework/XMLErrorReporter.hpp>
#include <xercesc/framework/psvi/PSVIHandler.hpp>
#include <xercesc/util/RefVectorOf.hpp>

#include <cstddef>
#include <vector>

class LocatingReader;
class XercesXMLHandler;

/// Finds out which attribute of its tag an error of validation is about, which the scanner does not
/// say, and has the handler name it. The scanner reports what is wrong with the attributes of a tag
/// in their order, tells of the tag, and then, to whom asks, which of them are invalid. Where the
/// numbers of both do not match, nothing is named.
///
/// The scanner is asked only when there is something wrong with an attribute. Else it would also
/// make the canonical form of each element's value, which takes time and has faults of its own.
class AttributeErrors final : public xercesc::PSVIHandler
{
public:
    /// Watches one document, of which the prolog comes first. Both must outlive the object.
    AttributeErrors(LocatingReader& reader, XercesXMLHandler& handler);
    ~AttributeErrors() override;
    AttributeErrors(const AttributeErrors&) = delete;
    AttributeErrors& operator=(const AttributeErrors&) = delete;

    /// The prolog is over.
    void BeginContent();
    /// An error is about to be reported to the handler.
    void Meet(unsigned int code, const XMLCh* domain, xercesc::XMLErrorReporter::ErrTypes type);
    /// A start tag, of which all errors were met. Its attributes stay until the next one.
    void StartElement(const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t count);
    void EndElement();

    void handleAttributesPSVI(const XMLCh* localName, const XMLCh* uri,
                              xercesc::PSVIAttributeList* attributes) override;
    void handleElementPSVI(const XMLCh* localName, const XMLCh* uri,
                           xercesc::PSVIElement* element) override;

private:
    /// What may be wrong with an attribute. The scanner reports of one attribute the last three in
    /// this order, each once at most; an attribute that is not declared has no other error.
    enum class Fault
    {
        None,
        Declaration,
        Namespace,
        FixedValue,
        Value
    };
    struct Error
    {
        Fault fault;
        /// Among the errors of the handler, if it kept this one.
        std::size_t index;
    };

    static Fault FindFault(unsigned int code, const XMLCh* domain,
                           xercesc::XMLErrorReporter::ErrTypes type);
    /// Whether an error can be about the attribute that the error before it is about.
    static bool CanBeOfTheSame(Fault before, Fault fault) noexcept;
    /// An error because of which the numbers may match by chance.
    void MeetSpoiler(unsigned int code);
    void Ask();
    /// No more of this tag, and nothing of another before something is wrong with it.
    void Finish();
    void NameAttributes(xercesc::PSVIAttributeList& attributes);
    /// `invalid` are indices of attributes of the tag.
    void NameInOrder(const std::vector<XMLSize_t>& invalid, bool mayShare);

    LocatingReader& m_reader;
    XercesXMLHandler& m_handler;
    /// Because of an error.
    bool m_isAsking = false;
    /// Whether the scanner's list of attributes is empty where it is not asked. Another document
    /// may have left some there; when it is asked before a tag, it empties the list, so it is until
    /// then.
    bool m_isListEmpty = false;
    /// The scanner was asked too late to say so.
    bool m_isFirstInvalid = false;
    /// The scanner says too little of the attributes of the tag.
    bool m_isSpoilt = false;
    /// Of the tag that is being read.
    std::vector<Error> m_errors;
    /// Null while a tag is being read.
    const xercesc::RefVectorOf<xercesc::XMLAttr>* m_attributes = nullptr;
    XMLSize_t m_count = 0;
};

#pragma once

#include <kescorexml/AbstractXMLParser.h>
#include <kescorexml/ParseLimits.h>

/// The library's parser. It checks documents for well-formedness and, from the first schema that
/// it loads on, validates them; there is no way back from that.
///
/// Nothing is read but the source: external DTDs are not loaded, external entity declarations fail
/// the parse, and so do references to internal entities unless expansion is allowed. A sink that is
/// done stops the parse where it is. There are limits on what a parse may cost; one that is set
/// applies from the next parse or load of a schema on. Problems of a document are never thrown;
/// what a source throws while it is read passes through. Different objects may be used from
/// different threads.
///
/// When memory runs out while a schema is loaded, std::bad_alloc is thrown and the parser is as
/// before: it has the schemas that it had, and one that had none does not validate. When memory
/// runs out while it validates, or a limit ends that in the middle of a tag, the next parse or load
/// of a schema compiles the schemas once more, from their texts, which the parser keeps; a sink
/// that supplies imports and includes is asked for them again then. Should a schema not compile as
/// it did before, nothing is read and a fatal error says so, until it does: no document passes
/// unvalidated.
class KESCOREXML_EXPORT XercesXMLParser : public AbstractXMLParser, public ParseLimits
{
public:
    /// See AbstractXMLParser for how long `source` must live.
    static std::unique_ptr<XercesXMLParser> Create(InputSource& source,
                                                   std::shared_ptr<SAXInterface> sink);
    ~XercesXMLParser() override;

    /// Parsers are not compared; their limits can be.
    bool operator==(const XercesXMLParser&) const = delete;

    /// The identifiers of the schemas loaded, in load order; the two base schemas, which the first
    /// schema brings with it, come first.
    virtual std::vector<TString> GetXSDNames() const = 0;
    /// Lets a document expand up to 50000 internal entity references instead of none. Documents of
    /// unknown origin can then cost much time and memory.
    virtual void AllowEntityExpansion_Insecure() = 0;

    /// Loads a schema from the compiled-in resource of that name. CorvinaException when there is
    /// none.
    void LoadXSDResource(const TString& resourceAlias);

protected:
    using AbstractXMLParser::AbstractXMLParser;
};

#pragma once

#include <kescorexml/Export.h>

#include <kesplatform/TString.h>

#include <unordered_map>

/// Receives the events of one parse, one after the other on the thread that parses; the parser
/// keeps it alive until it is given another one or ends itself. What an operation throws abandons
/// the parse and is recorded by the parser as an error. Different objects may be used from
/// different threads.
class KESCOREXML_EXPORT SAXInterface
{
public:
    virtual ~SAXInterface();

    /// Names are qualified names as written, prefix included. Both arguments may be taken.
    virtual void StartElement(TString&& name,
                              std::unordered_map<TString, TString>&& attributes) = 0;
    /// The element that was started last, and not ended yet, ends.
    virtual void EndElement() = 0;
    /// One run of text up to the next tag, never empty; valid during the call, copies share it.
    virtual void TextContent(const TString& text) = 0;
    /// Asked after each tag. True stops the parse without an error. False unless overridden.
    virtual bool IsDone();
};

/// A sink that also supplies the schema documents which a schema imports or includes, while a
/// schema is loaded, on the thread that loads it.
class KESCOREXML_EXPORT SAXInterfaceExtension : public SAXInterface
{
public:
    ~SAXInterfaceExtension() override;

    /// The path of the schema file for a location named by the document at `baseUri`, empty for
    /// none.
    virtual TString ResolveSchemaLocation(const TString& baseUri, const TString& systemId) = 0;
    /// Receives the text of that file and returns the text to compile. REQUIRES: ASCII. As many
    /// bytes of its UTF-8 are compiled as it has UTF-16 code units; other characters, in a comment
    /// too, make it end too early.
    virtual TString FilterSchemaText(const TString& text, const TString& path) = 0;
};

/// A further base of a sink that wants to know which attributes a schema finds wrong: the errors of
/// its parser then name them (XMLDiagnostic::GetAttribute and GetValue). That is so for values that
/// their type refuses, also the default ones of the schema, for others than the fixed one, and for
/// attributes that the schema does not declare or wants with another namespace.
///
/// Nothing is named where it is not certain which attribute is meant, as where two have a fixed
/// value and one of them two errors; in a tag with a prohibited attribute, with two identifiers or
/// with a wrong value of xsi:nil; and in errors about what is missing, and about references, which
/// are checked at the end of the document.
///
/// Messages, their order and their positions are the same as for another sink. Names and values
/// count as messages (ParseLimits::SetMessageLimit); where there is no room, none is kept.
class KESCOREXML_EXPORT SAXAttributeErrors
{
public:
    virtual ~SAXAttributeErrors();
};

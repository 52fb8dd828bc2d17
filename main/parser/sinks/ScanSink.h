#pragma once

#include "sinks/ParsedNames.h"

#include <span>
#include <string_view>

/// A start tag. Valid during the call that it is handed to.
struct StartTag
{
    /// All names that the parser has met, and among them that of the element.
    ParsedNames& names;
    ParsedNames::Entry& element;
    /// The attributes in the order of the document; as many values as names, which are
    /// zero-terminated. Names may be those that the colon sanitizer put in place of others; of
    /// equal names the first one counts.
    std::span<const char16_t* const> attributeNames;
    std::span<const std::u16string_view> attributeValues;
};

/// What a scanner talks to. The events come balanced and in the order of the document; text comes
/// in pieces, and those between two tags make one run.
///
/// For one thread at a time. What an event throws ends the parse.
class ScanSink
{
public:
    virtual ~ScanSink() = default;

    virtual void StartElement(const StartTag& tag) = 0;
    /// `piece` is copied.
    virtual void AppendText(std::u16string_view piece) = 0;
    /// The run of text, if there is one, is whole: a tag comes next. Start and end of an element
    /// say so, too.
    virtual void EndText() = 0;
    virtual void EndElement() = 0;
    /// The sink wants no more events of this document or of those after it. Asked behind each tag;
    /// an empty element counts as one.
    virtual bool IsDone() const noexcept = 0;

    /// A document begins: text that an abandoned parse has left behind is forgotten, where a sink
    /// serves more than one parse.
    virtual void BeginDocument() {}
    /// The events of the document will come again from the first one on, more of them. What grew of
    /// them is dropped; a sink that has passed them on passes on only those that follow them.
    virtual void Restart() = 0;
    /// Whether events are passed on at once to somebody from whom they cannot be taken back; where
    /// a tree grows, they are not.
    virtual bool PassesOn() const noexcept { return false; }
    /// Whether the parser may be asked, now or later, where events were.
    virtual bool AsksForLocations() const noexcept = 0;
    /// Whether errors of validation are to name the attributes that they are about.
    virtual bool AsksForAttributeErrors() const noexcept { return false; }
};

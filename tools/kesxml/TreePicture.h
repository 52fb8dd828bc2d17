#pragma once

#include <kescorexml/StandaloneDOMElement.h>
#include <kesplatform/TString.h>

#include <cstddef>
#include <vector>

/// Draws an element and all below it, one line for each element and each text. Long texts and
/// attribute values are cut, and so is what lies deeper than `maxDepth` levels (at least 1, the
/// element itself being the first). Does not recurse.
class TreePicture
{
public:
    TreePicture(std::size_t maxDepth, bool hasColours)
        : m_maxDepth(maxDepth), m_hasColours(hasColours)
    {
    }

    /// Prints the picture.
    void Draw(const StandaloneDOMElement& top);

private:
    struct Node
    {
        /// Exactly one of them is set.
        const StandaloneDOMElement* element;
        const TString* text;
    };

    struct Level
    {
        std::vector<Node> nodes;
        std::size_t next;
        /// The length of the indentation of the level above.
        TString::size_type indentBefore;
    };

    static std::vector<Node> GetNodes(const StandaloneDOMElement& element);
    static std::size_t CountBelow(const StandaloneDOMElement& element);
    TString Colour(const char16_t* code, const TString& text) const;
    TString Describe(const StandaloneDOMElement& element) const;
    void DrawNext(std::vector<Level>& levels);
    /// Draws what is below an element whose own line has been drawn, or says how much it is.
    void Open(std::vector<Level>& levels, const StandaloneDOMElement& element,
              const char16_t* indent);

    std::size_t m_maxDepth;
    bool m_hasColours;
    TString m_indent;
};

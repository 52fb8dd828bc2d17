#include "ElementLocator.h"

#include "ElementPath.h"

#include <kescorexml/DOMElement.h>

#include <algorithm>
#include <compare>
#include <cstddef>
#include <vector>

namespace {

struct Position
{
    int line;
    int column;

    friend auto operator<=>(const Position&, const Position&) = default;
};

Position PositionOf(const Diagnostic& diagnostic)
{
    return {diagnostic.line, diagnostic.column};
}

/// Walks through a document once, from the start to the end.
class Walk
{
public:
    explicit Walk(const DOMElement& root) : m_open{{&root, 0}} {}

    /// The innermost element at a position, which is not before the one asked for last.
    const DOMElement& GoTo(Position position)
    {
        while (true) {
            OpenElement& innermost = m_open.back();
            const DOMElement& element = *innermost.element;
            const auto children = element.GetChildren();
            if (innermost.nextChild < children.size()) {
                const DOMElement& child = children[innermost.nextChild];
                if (Position{child.GetStartLine(), child.GetStartColumn()} <= position) {
                    ++innermost.nextChild;
                    m_open.push_back({&child, 0});
                    continue;
                }
            }
            const bool isClosed = element.GetEndLine() != 0;
            if (!isClosed || position <= Position{element.GetEndLine(), element.GetEndColumn()})
                return element;
            m_open.pop_back();
        }
    }

private:
    struct OpenElement
    {
        const DOMElement* element;
        std::size_t nextChild;
    };

    /// The document itself has no end, so that it is never taken away.
    std::vector<OpenElement> m_open;
};

} // namespace

void NameElements(Diagnostics& diagnostics, const TString& file, const DOM& document)
{
    std::vector<Diagnostic*> inOrder;
    for (Diagnostic& diagnostic : diagnostics) {
        if (diagnostic.line > 0 && !diagnostic.isInvalidUtf8 && diagnostic.file == file)
            inOrder.push_back(&diagnostic);
    }
    std::stable_sort(inOrder.begin(), inOrder.end(), [](const Diagnostic* a, const Diagnostic* b) {
        return PositionOf(*a) < PositionOf(*b);
    });
    Walk walk(*document.GetRoot());
    ElementPaths paths;
    for (Diagnostic* const diagnostic : inOrder) {
        diagnostic->path = paths.Get(walk.GoTo(PositionOf(*diagnostic)));
        if (!diagnostic->attribute.IsEmpty())
            diagnostic->path += u"/@" + diagnostic->attribute;
    }
}

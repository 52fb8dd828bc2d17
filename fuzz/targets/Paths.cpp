#include "Targets.h"

#include "support/ByteReader.h"
#include "support/PathModel.h"
#include "support/Require.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMPath.h>

#include <algorithm>
#include <iterator>

namespace {

const TString c_names[] = {u"a", u"b", u"c", u"*", u""};
const TString c_steps[] = {u"", u"a", u"b", u"c", u"*"};

TString ReadPath(ByteReader& reader)
{
    TString path;
    for (std::size_t steps = 1 + reader.Below(80); steps > 0; --steps) {
        path += reader.Pick(c_steps);
        if (steps > 1)
            path += u"/";
    }
    return path;
}

/// Each byte goes one level down or up, or adds an element.
std::vector<DOMElement*> ReadTree(ByteReader& reader, DOMElement& root)
{
    std::vector<DOMElement*> all{&root};
    DOMElement* current = &root;
    while (!reader.IsAtEnd()) {
        const std::size_t choice = reader.Below(std::size(c_names) * 2 + 1);
        if (choice == 0) {
            if (current != &root)
                current = current->GetParent();
            continue;
        }
        DOMElement* child = current->AddNewChild(c_names[choice % std::size(c_names)], nullptr);
        all.push_back(child);
        if (choice > std::size(c_names))
            current = child;
    }
    return all;
}

} // namespace

/// A path, the element to start at, and a tree.
void FuzzTargets::Paths(Bytes bytes)
{
    ByteReader reader(bytes);
    const TString path = ReadPath(reader);
    const std::size_t position = reader.Position();
    DOM document;
    const std::vector<DOMElement*> all = ReadTree(reader, *document.GetRoot());
    DOMElement& start = *all[position % all.size()];
    const DOMElement& constant = start;

    const std::vector<const DOMElement*> expected = PathModel(start, path).Matches();
    Require(DOMPath::GetAll(constant, path) == expected, "GetAll gives what the model gives");
    std::vector<const DOMElement*> walked;
    for (DOMElement& match : DOMPath::Walk(start, path))
        walked.push_back(&match);
    Require(walked == expected, "Walk gives what the model gives");
    Require(DOMPath::GetFirst(start, path) == (expected.empty() ? nullptr : expected[0]),
            "GetFirst gives the first of all");
}

#pragma once

#include "support/TreeTesting.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

/// A plain model of two documents.
namespace TreeModel {

inline constexpr int c_nobody = -1;
inline constexpr int c_gone = -2;

/// An element, known by a number that is never used again.
struct ModelElement
{
    int id = 0;
    std::string name;
    std::string text;
    std::map<std::string, std::string> attributes;
    std::vector<std::unique_ptr<ModelElement>> children;
    /// What the element names as its parent.
    int parent = c_nobody;
    /// Whether it is among the children of that.
    bool isHeld = false;
    /// The index of its document, or c_nobody.
    int document = c_nobody;
    DOMElement* real = nullptr;
};

/// An error; a warning is one whose flags nobody asks for.
struct ModelMessage
{
    std::string text;
    unsigned info = 0;
    bool isReported = false;
    bool isCancel = false;
};

using Owner = std::unique_ptr<ModelElement>;
using Messages = std::map<int, std::vector<ModelMessage>>;

struct ModelDocument
{
    Owner root;
    Messages errors;
    Messages warnings;
};

/// Follows the definitions of all operations step by step, without a thought of speed.
class Model
{
public:
    Model()
    {
        for (ModelDocument& document : documents) {
            document.root = Make("Document");
            document.root->document = static_cast<int>(&document - documents);
        }
    }

    Owner Make(const std::string& name)
    {
        auto made = std::make_unique<ModelElement>();
        made->id = m_nextId++;
        made->name = name;
        living[made->id] = made.get();
        return made;
    }

    ModelElement* Parent(const ModelElement& element) const
    {
        const auto found = living.find(element.parent);
        return found == living.end() ? nullptr : found->second;
    }

    bool IsChildOf(const ModelElement& element, const ModelElement& other) const
    {
        const ModelElement* ancestor = Parent(element);
        while (ancestor != nullptr && ancestor != &other)
            ancestor = Parent(*ancestor);
        return ancestor != nullptr;
    }

    bool IsInTreeOf(const ModelElement& element, const ModelElement& top) const
    {
        const ModelElement* ancestor = &element;
        while (ancestor != &top && ancestor->isHeld)
            ancestor = Parent(*ancestor);
        return ancestor == &top;
    }

    static std::size_t IndexOf(const ModelElement& parent, const ModelElement* child)
    {
        std::size_t index = 0;
        while (index < parent.children.size() && parent.children[index].get() != child)
            ++index;
        return index;
    }

    static void WalkBackwards(ModelElement& top, const std::function<void(ModelElement&)>& visit)
    {
        visit(top);
        for (auto child = top.children.rbegin(); child != top.children.rend(); ++child)
            WalkBackwards(**child, visit);
    }

    void AdoptOrCopy(int to, const ModelElement& node, int key, bool adopt)
    {
        if (node.document == c_nobody)
            return;
        ModelDocument& from = documents[node.document];
        for (Messages ModelDocument::*kind : {&ModelDocument::errors, &ModelDocument::warnings}) {
            const auto entry = (from.*kind).find(node.id);
            if (entry == (from.*kind).end())
                continue;
            const auto messages = entry->second;
            (documents[to].*kind).try_emplace(key, messages);
            if (adopt)
                (from.*kind).erase(node.id);
        }
    }

    ModelElement* Insert(ModelElement& parent, Owner child, const ModelElement* before)
    {
        BreakCircle(parent, *child);
        const int from = child->document;
        const int to = parent.document;
        if (from != to) {
            WalkBackwards(*child, [&](ModelElement& element) {
                if (to != c_nobody)
                    AdoptOrCopy(to, element, element.id, true);
                element.document = to;
            });
            if (from != c_nobody && to != c_nobody && child->parent == documents[from].root->id)
                AdoptOrCopy(to, *documents[from].root, documents[to].root->id, true);
        }
        std::size_t index = parent.children.size();
        if (before != nullptr) {
            index = IndexOf(parent, before);
            if (index == parent.children.size())
                ++misses;
        }
        child->parent = parent.id;
        child->isHeld = true;
        ModelElement* inserted = child.get();
        parent.children.insert(parent.children.begin() + static_cast<std::ptrdiff_t>(index),
                               std::move(child));
        return inserted;
    }

    Owner Remove(ModelElement& child)
    {
        ModelElement& parent = *Parent(child);
        const std::size_t index = IndexOf(parent, &child);
        Owner removed = std::move(parent.children[index]);
        parent.children.erase(parent.children.begin() + static_cast<std::ptrdiff_t>(index));
        removed->isHeld = false;
        return removed;
    }

    void Destroy(Owner element)
    {
        if (element->document != c_nobody) {
            ModelDocument& document = documents[element->document];
            if (element->parent == c_nobody) {
                document.errors.clear();
                document.warnings.clear();
            } else {
                document.errors.erase(element->id);
                document.warnings.erase(element->id);
            }
        }
        while (!element->children.empty()) {
            Owner last = std::move(element->children.back());
            element->children.pop_back();
            Destroy(std::move(last));
        }
        living.erase(element->id);
    }

    Owner Copy(const ModelElement& source, int document)
    {
        Owner copy = Make(source.name);
        copy->document = document;
        copy->text = source.text;
        copy->attributes = source.attributes;
        if (document != c_nobody)
            AdoptOrCopy(document, source, copy->id, false);
        for (const Owner& child : source.children) {
            Owner childCopy = Copy(*child, document);
            childCopy->parent = copy->id;
            childCopy->isHeld = true;
            copy->children.push_back(std::move(childCopy));
        }
        return copy;
    }

    void Assign(ModelElement& target, const ModelElement& source)
    {
        if (&target == &source)
            return;
        // As from a copy made beforehand, whose diagnostics are those of the source.
        std::vector<Owner> children;
        for (const Owner& child : source.children)
            children.push_back(Copy(*child, target.document));
        if (target.document != c_nobody)
            AdoptOrCopy(target.document, source, target.id, false);
        target.name = source.name;
        target.text = source.text;
        target.attributes = std::map(source.attributes);
        while (!target.children.empty()) {
            Owner last = std::move(target.children.back());
            target.children.pop_back();
            Destroy(std::move(last));
        }
        for (Owner& child : children) {
            child->parent = target.id;
            child->isHeld = true;
            target.children.push_back(std::move(child));
        }
    }

    static std::vector<ModelMessage> List(const Messages& messages, ModelElement& top)
    {
        std::vector<ModelMessage> list;
        WalkBackwards(top, [&](const ModelElement& element) {
            const auto entry = messages.find(element.id);
            if (entry != messages.end())
                list.insert(list.end(), entry->second.begin(), entry->second.end());
        });
        return list;
    }

    /// Whether a message of the subtree is such; entries of elements that are gone count for an
    /// element without parent.
    template <typename Qualifies>
    bool HasAny(const Messages& messages, const ModelElement& top, Qualifies&& qualifies) const
    {
        return std::any_of(messages.begin(), messages.end(), [&](const auto& entry) {
            if (std::none_of(entry.second.begin(), entry.second.end(), qualifies))
                return false;
            if (top.parent == c_nobody)
                return true;
            const auto element = living.find(entry.first);
            return element != living.end() &&
                   (element->second == &top || IsChildOf(*element->second, top));
        });
    }

    ModelDocument documents[2];
    std::map<int, ModelElement*> living;
    std::size_t misses = 0;

private:
    /// A removed element forgets its former parent when that gets below it.
    void BreakCircle(ModelElement& parent, const ModelElement& child)
    {
        ModelElement* removed = nullptr;
        for (ModelElement* element = &parent; element != nullptr; element = Parent(*element)) {
            if (element == &child) {
                removed->parent = c_gone;
                return;
            }
            if (!element->isHeld && element->parent != c_nobody)
                removed = element;
        }
    }

    int m_nextId = 0;
};

} // namespace TreeModel

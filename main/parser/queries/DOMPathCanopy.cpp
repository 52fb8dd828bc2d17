#include <kescorexml/DOMPathCanopy.h>

#include "tree/TreeWalk.h"

#include <kescorexml/DOMPath.h>

#include <cstddef>

namespace DOMPathCanopy {

namespace {

/// How many levels below a canopy element are searched.
constexpr std::size_t c_maxLevels = 1024;

/// Hands the children of `canopy` to `visit`, and below each for which that returns true the same
/// again, until the lowest level allowed. `walk` is one that is over.
template <typename T, typename Visit>
void SearchChains(TreeWalk<T>& walk, T& canopy, Visit&& visit)
{
    walk.Enter(canopy);
    while (T* element = walk.Next()) {
        if (visit(*element) && walk.Depth() < c_maxLevels)
            walk.Enter(*element);
    }
}

template <typename T>
void WithinCanopySearch(std::vector<T*>& results, TreeWalk<T>& walk, T& canopy, const TString& name)
{
    SearchChains(walk, canopy, [&](T& child) {
        if (child.GetName() != name)
            return false;
        results.push_back(&child);
        return true;
    });
}

template <typename T>
void UnderneathCanopySearch(std::vector<T*>& results, TreeWalk<T>& walk, T& canopy,
                            const TString& name)
{
    const bool isAny = name.view() == u"*";
    SearchChains(walk, canopy, [&](T& child) {
        if (child.GetName() == canopy.GetName())
            return true;
        if (isAny || child.GetName() == name)
            results.push_back(&child);
        return false;
    });
}

template <typename T>
std::vector<T*> FindWithin(T& start, const TString& canopyPath, const TString& name)
{
    std::vector<T*> results;
    if (name.view() == u"*")
        return results;
    TreeWalk<T> walk;
    for (T* canopy : DOMPath::GetAll(start, canopyPath))
        WithinCanopySearch(results, walk, *canopy, name);
    return results;
}

template <typename T>
std::vector<T*> FindUnderneath(T& start, const TString& canopyPath, const TString& path)
{
    const TString::size_type separator = path.indexOf(u'/');
    if (separator == 0 || path.IsEmpty())
        return {};
    // Without a separator its position is -1, for which left() gives the whole path.
    const TString head = path.left(separator);
    std::vector<T*> heads;
    TreeWalk<T> walk;
    for (T* canopy : DOMPath::GetAll(start, canopyPath))
        UnderneathCanopySearch(heads, walk, *canopy, head);
    std::vector<T*> results;
    for (T* element : heads) {
        const std::vector<T*> matches = DOMPath::GetAll(*element, path);
        results.insert(results.end(), matches.begin(), matches.end());
    }
    return results;
}

} // namespace

std::vector<DOMElement*> WithinCanopy(DOMElement& start, const TString& canopyPath,
                                      const TString& name)
{
    return FindWithin(start, canopyPath, name);
}

std::vector<DOMElement const*> WithinCanopy(DOMElement const& start, const TString& canopyPath,
                                            const TString& name)
{
    return FindWithin(start, canopyPath, name);
}

std::vector<DOMElement*> UnderneathCanopy(DOMElement& start, const TString& canopyPath,
                                          const TString& path)
{
    return FindUnderneath(start, canopyPath, path);
}

std::vector<DOMElement const*> UnderneathCanopy(DOMElement const& start, const TString& canopyPath,
                                                const TString& path)
{
    return FindUnderneath(start, canopyPath, path);
}

} // namespace DOMPathCanopy

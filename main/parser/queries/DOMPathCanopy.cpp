#include <kescorexml/DOMPathCanopy.h>

#include "tree/DOMElementAccess.h"

#include <kescorexml/DOMPath.h>

#include <cstddef>
#include <utility>

namespace DOMPathCanopy {

namespace {

/// How many levels below a canopy element are searched.
constexpr std::size_t c_maxLevels = 1024;

/// Walks down the chains below an element, in document order.
template <typename T>
class ChainSearch
{
public:
    /// Hands the children of `top` to `visit`, and below each for which that returns true the same
    /// again, until the lowest level allowed.
    template <typename Visit>
    void Run(T& top, Visit&& visit)
    {
        Enter(top);
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (level.next == level.children->size()) {
                m_levels.pop_back();
                continue;
            }
            T& child = *(*level.children)[level.next++];
            if (visit(child) && m_levels.size() < c_maxLevels)
                Enter(child);
        }
    }

private:
    struct Level
    {
        const ElementList* children;
        std::size_t next;
    };

    void Enter(T& element)
    {
        m_levels.push_back({&DOMElementAccess::Children(std::as_const(element)), 0});
    }

    std::vector<Level> m_levels;
};

template <typename T>
void WithinCanopySearch(std::vector<T*>& results, ChainSearch<T>& search, T& canopy,
                        const TString& name)
{
    search.Run(canopy, [&](T& child) {
        if (child.GetName() != name)
            return false;
        results.push_back(&child);
        return true;
    });
}

template <typename T>
void UnderneathCanopySearch(std::vector<T*>& results, ChainSearch<T>& search, T& canopy,
                            const TString& name)
{
    const bool isAny = name.view() == u"*";
    search.Run(canopy, [&](T& child) {
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
    ChainSearch<T> search;
    for (T* canopy : DOMPath::GetAll(start, canopyPath))
        WithinCanopySearch(results, search, *canopy, name);
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
    ChainSearch<T> search;
    for (T* canopy : DOMPath::GetAll(start, canopyPath))
        UnderneathCanopySearch(heads, search, *canopy, head);
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

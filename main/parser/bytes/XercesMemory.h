#pragma once

#include <xercesc/util/OutOfMemoryException.hpp>

#include <new>

/// Runs `work` and returns what it returns. When Xerces runs out of memory it throws a type that is
/// no std::exception and that callers of the library do not know; it becomes std::bad_alloc.
template <typename Work>
decltype(auto) WithXercesMemory(Work&& work)
{
    try {
        return work();
    } catch (const xercesc::OutOfMemoryException&) {
        throw std::bad_alloc();
    }
}

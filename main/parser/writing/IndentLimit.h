#pragma once

#include <kescorexml/XMLFormatter.h>

#include <stdexcept>

/// std::length_error when an indentation is longer than a text that is kept may have it.
inline void RequireIndentLength(TString::size_type length)
{
    if (length > XMLFormatter::c_maxIndentLength)
        throw std::length_error("XMLFormatter: the indentation is too deep");
}

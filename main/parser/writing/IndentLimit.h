#pragma once

#include <kescorexml/XMLFormatter.h>

#include <stdexcept>

/// std::length_error when an indentation would be longer than a formatter may have it.
inline void RequireIndentLength(TString::size_type length)
{
    if (length > XMLFormatter::c_maxIndentLength)
        throw std::length_error("XMLFormatter: the indentation is too deep");
}

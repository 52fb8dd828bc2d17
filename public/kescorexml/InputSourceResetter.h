#pragma once

#include <kescorexml/Export.h>
#include <kescorexml/InputSource.h>

/// Rewinds a source at the end of a scope. A source that cannot be rewound ends the process.
/// Different objects may be used from different threads.
class KESCOREXML_EXPORT InputSourceResetter
{
public:
    /// `source` must outlive this object.
    explicit InputSourceResetter(InputSource& source) noexcept : m_source(source) {}
    ~InputSourceResetter();
    InputSourceResetter(const InputSourceResetter&) = delete;
    InputSourceResetter& operator=(const InputSourceResetter&) = delete;

private:
    InputSource& m_source;
};

#pragma once

#include <kescorexml/InputSource.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

/// A source that delivers a given text, a limited number of bytes a call, fails where it is told to
/// and keeps a record of what was asked of it.
class ScriptedInputSource : public InputSource
{
public:
    explicit ScriptedInputSource(std::string text)
        : InputSource(u"scripted"), m_text(std::move(text))
    {
    }

    /// Delivers at most `count` bytes a call, whatever is asked for.
    void DeliverAtMost(std::size_t count) { m_maxAtOnce = count; }
    /// Throws std::runtime_error instead of delivering anything from `position` on.
    void FailAt(std::size_t position) { m_failurePosition = position; }

    bool GetNextLine(std::string&) override { throw std::logic_error("lines are not asked for"); }
    bool GetBytes(std::string& out, unsigned int maxBytes) override
    {
        m_largestRequest = std::max(m_largestRequest, maxBytes);
        if (m_position >= m_failurePosition)
            throw std::runtime_error("scripted failure");
        if (m_position == m_text.size())
            return false;
        out = m_text.substr(m_position, std::min<std::size_t>(maxBytes, m_maxAtOnce));
        m_position += out.size();
        m_furthest = std::max(m_furthest, m_position);
        return true;
    }
    void ResetToStart() override
    {
        m_position = 0;
        ++m_resets;
    }
    std::int64_t Size() const override { return static_cast<std::int64_t>(m_text.size()); }

    std::size_t Position() const { return m_position; }
    /// The end of the bytes that were delivered at any time.
    std::size_t Furthest() const { return m_furthest; }
    unsigned int LargestRequest() const { return m_largestRequest; }
    int Resets() const { return m_resets; }

private:
    std::string m_text;
    std::size_t m_maxAtOnce = std::numeric_limits<std::size_t>::max();
    std::size_t m_failurePosition = std::numeric_limits<std::size_t>::max();
    std::size_t m_position = 0;
    std::size_t m_furthest = 0;
    unsigned int m_largestRequest = 0;
    int m_resets = 0;
};

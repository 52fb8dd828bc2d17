#pragma once

#include "support/RandomBytes.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Makes documents out of a grammar that favours the odd: names of every script, references and
/// brackets everywhere, all line ends, white space wherever it may stand. Most are well-formed;
/// `faults` of 100 places where something may be wrong are.
class RandomDocument
{
public:
    RandomDocument(unsigned seed, std::size_t faults) : m_random(seed), m_faults(faults) {}

    /// The next one; a few hundred bytes.
    std::string Next();

private:
    bool IsFault() { return m_random.Below(100) < m_faults; }
    bool OneIn(std::size_t count) { return m_random.Below(count) == 0; }
    std::string_view Pick(const std::vector<std::string_view>& choices);

    std::string Blank();
    std::string OptionalBlank() { return OneIn(4) ? Blank() : std::string(); }
    std::string Name();
    std::string Value();
    std::string Attributes();
    std::string Text();
    std::string Miscellaneous();
    std::string Declaration();
    std::string DocumentType();
    std::string DeclaredAttribute();
    void AppendElement(std::string& document, std::size_t depth);

    RandomBytes m_random;
    std::size_t m_faults;
};

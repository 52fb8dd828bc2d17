#pragma once

#include "load/SharedDocuments.h"

#include "support/RandomBytes.h"

#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// What one of the threads does: one thing after the other, as a seed has it, on documents of a
/// corpus and on what it shares with the others, with memory that fails now and then.
class Worker
{
public:
    /// Refers to both as long as it lives. `thread` counts from 0.
    Worker(const std::vector<std::string>& corpus, SharedDocuments& shared, std::size_t thread);

    /// Throws when something is not as it must be.
    void Step();

    /// In how many steps memory has failed.
    std::size_t CountFailures() const noexcept { return m_failures; }

private:
    /// What came of a piece of work; nothing when it has said that it failed.
    using Work = std::function<std::optional<std::string>()>;

    const std::string& PickDocument();
    /// Runs the work, more often than not with enough memory. Returns whether it had enough.
    bool RunWithLittleMemory(const Work& work, std::optional<std::string>& result);
    /// The work gives the same whenever it is done, or says that it failed.
    void RequireSameOrReported(const Work& work);

    void ParseWriteAndAsk();
    void ParseStandalone();
    void Validate();
    void Exchange();
    void RecordAndExchange(const DOMElement& here, const DOMElement& there, DOM& first,
                           DOM& second);
    void ReadSharedTree();
    void RunFuzzTarget();

    const std::vector<std::string>& m_corpus;
    SharedDocuments& m_shared;
    std::size_t m_thread;
    RandomBytes m_random;
    std::size_t m_failures = 0;
    DOMParser m_parser;
    StandaloneDOMParser m_standaloneParser;
    DOMParser m_validator;
};

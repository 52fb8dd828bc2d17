#pragma once

#include "scanner/MemoryReserve.h"
#include "scanner/ParseBudget.h"

#include <xercesc/framework/MemoryManager.hpp>

#include <cstddef>
#include <vector>

/// The memory of one scanner: all of it comes from Xerces's own memory manager. On the way it sees
/// what no event tells, every entity that the scanner begins to read, and puts it on the account of
/// the parse, with the memory that it takes. What the scanner has not given back when it is gone,
/// this object frees: some errors make it forget what it was working on. Others make it give back
/// twice what it needs for schemas; so once it was refused memory while it has some, nothing that
/// it gives back is freed before this object ends.
class ScannerMemory final : public xercesc::MemoryManager
{
public:
    /// `budget` must outlive this object, and this object all that is allocated. Xerces must be
    /// initialised.
    explicit ScannerMemory(ParseBudget& budget);
    ScannerMemory(const ScannerMemory&) = delete;
    ScannerMemory& operator=(const ScannerMemory&) = delete;
    ~ScannerMemory() override;

    /// No entity is open. Call it between parses.
    void Reset() noexcept;

    /// Call it before the first schema: where memory fails while it compiles one, the scanner
    /// destroys what it has not initialised. From now on memory begins as zeros,
    /// but for what the reserve gives once it has run out, and for readers.
    void PrepareForSchemas() noexcept { m_hasSchemas = true; }

    /// Whether the scanner did not get a block since the last Reset, because there was no memory or
    /// the budget did not allow it. What it was working on may be half done: where it has schemas,
    /// it must not be used again, nor may Reset be called.
    bool HasRefused() const noexcept { return m_hasRefused; }

    /// All blocks that are not given back, in bytes.
    std::size_t GetHeld() const noexcept { return m_held; }

    xercesc::MemoryManager* getExceptionMemoryManager() override;
    /// LimitExceeded when the block, or the entity that it is for, is more than the budget allows.
    void* allocate(XMLSize_t size) override;
    void deallocate(void* block) override;

private:
    /// Stands before each block, so that all can be found.
    struct alignas(std::max_align_t) Link
    {
        Link* previous;
        Link* next;
        /// Of the block, in bytes.
        XMLSize_t size;
        /// As memory of the parse.
        bool isCounted;
        /// Given back, but not freed.
        bool isReturned;
    };

    void* AllocateBlock(XMLSize_t size, bool isCounted);
    void* AllocateLinked(XMLSize_t size, bool isCounted);
    void FreeLinked(void* block) noexcept;
    /// Calls `add`, which puts something on the account of the parse.
    template <typename Add>
    void AskBudget(Add&& add);
    void ReserveForModelNode();
    /// Looks at the node before, which is complete by now, if it is still there.
    void MeetNameOfModelNode();
    /// Tells the scanner that there is no memory.
    [[noreturn]] void FailMemory();
    /// Whether a block of that size is for the stack of a destructor.
    bool IsDestructionStack(XMLSize_t size) const noexcept;
    void OpenReader();
    void NoteReader(void* block);
    bool IsStreamOfEntity() const noexcept;

    ParseBudget& m_budget;
    /// Before the first block and behind the last.
    Link m_blocks{&m_blocks, &m_blocks, 0, false, false};
    std::size_t m_held = 0;
    /// What an object of the type of an entity's stream begins with.
    const void* m_streamType;
    /// The same of a node of a content model.
    const void* m_modelNodeType;
    /// The block allocated last, unless it is gone.
    void* m_latest = nullptr;
    XMLSize_t m_latestSize = 0;
    bool m_latestIsStack = false;
    /// The node of a content model that was allocated last, unless it is gone.
    const void* m_latestModelNode = nullptr;
    std::vector<void*> m_readers;
    /// The last of m_readers, or null.
    void* m_topReader = nullptr;
    bool m_hasSchemas = false;
    bool m_hasRefused = false;
    /// The scanner allocates in destructors of content models; that must not fail, before or after
    /// it has been told that memory ran out.
    MemoryReserve m_reserve;
    /// Blocks of the size of a node of a content model.
    std::size_t m_modelNodes = 0;
    /// Whether the scanner has been told that memory ran out, and is cleaning up.
    bool m_hasFailed = false;
    /// A stream that nobody took over because its entity was refused.
    void* m_refusedStream = nullptr;
};

#include "itempool.h"

#include <QtGlobal>

#include <cstdint>
#include <mutex>
#include <new>
#include <vector>

#include <sys/mman.h>

#if defined(__SANITIZE_ADDRESS__)
#define ZAT16_ITEMPOOL_DIRECT 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZAT16_ITEMPOOL_DIRECT 1
#endif
#endif

namespace ZAT16 {

namespace {

// Blocks are cut from arenas: aligned stretches of address space taken from the system in one
// mapping each, so that a file of millions of items costs a handful of mappings. A block whose
// items are all freed gives its pages back and is reused before the arena grows; an arena
// whose blocks are all free is unmapped, unless it is the last one.
constexpr std::size_t arenaSize = std::size_t(64) * 1024 * 1024;
constexpr std::size_t blocksPerArena = arenaSize / ItemPool::blockSize;

struct FreeSlot {
    FreeSlot *next;
};

struct Arena;

// Lives in the first slot of its block.
struct Block {
    Arena *arena;
    Block *prev; ///< in the list of blocks with free slots
    Block *next;
    FreeSlot *free; ///< slots given back
    std::uint32_t used; ///< slots handed out
    std::uint32_t cut; ///< slots handed out at least once; the rest were never touched
    bool listed; ///< in the list of blocks with free slots
};
static_assert(sizeof(Block) <= ItemPool::slotSize, "the block header takes one slot");
static_assert(ItemPool::slotSize % alignof(std::max_align_t) == 0, "slots keep the alignment of new");

struct Arena {
    char *base = nullptr;
    std::size_t cut = 0; ///< blocks handed out at least once
    std::size_t used = 0; ///< blocks in use
    std::vector<Block *> released; ///< blocks given back, to be handed out again first
};

struct Pool {
    std::mutex mutex;
    std::vector<Arena *> arenas;
    Block *current = nullptr; ///< where slots are taken from
    Block *partial = nullptr; ///< other blocks with free slots
    std::size_t blocks = 0;
    std::size_t slots = 0;

    void *allocate();
    void release(void *slot);

    Block *newBlock();
    void freeBlock(Block *block);
    void link(Block *block);
    void unlink(Block *block);
};

Pool &pool()
{
    // Never destroyed: items may still be freed while static objects go away at exit.
    static Pool *instance = new Pool;
    return *instance;
}

Arena *mapArena()
{
    // Twice the size is mapped, and what lies outside the aligned middle is unmapped again.
    const std::size_t length = 2 * arenaSize;
    void *mapped = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped == MAP_FAILED)
        return nullptr;
    char *start = static_cast<char *>(mapped);
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(start);
    char *aligned = start + ((arenaSize - address % arenaSize) % arenaSize);
    if (aligned > start)
        munmap(start, std::size_t(aligned - start));
    char *end = aligned + arenaSize;
    if (start + length > end)
        munmap(end, std::size_t(start + length - end));
    Arena *arena = new (std::nothrow) Arena;
    if (!arena) {
        munmap(aligned, arenaSize);
        return nullptr;
    }
    arena->base = aligned;
    return arena;
}

Block *Pool::newBlock()
{
    Arena *arena = nullptr;
    for (auto it = arenas.rbegin(); it != arenas.rend() && !arena; ++it) {
        if (!(*it)->released.empty() || (*it)->cut < blocksPerArena)
            arena = *it;
    }
    if (!arena) {
        arena = mapArena();
        if (!arena)
            return nullptr;
        arenas.push_back(arena);
    }
    Block *block;
    if (!arena->released.empty()) {
        block = arena->released.back();
        arena->released.pop_back();
    } else {
        block = reinterpret_cast<Block *>(arena->base + arena->cut * ItemPool::blockSize);
        ++arena->cut;
    }
    ++arena->used;
    ++blocks;
    *block = Block { arena, nullptr, nullptr, nullptr, 0, 0, false };
    return block;
}

void Pool::freeBlock(Block *block)
{
    Arena *arena = block->arena;
    --arena->used;
    --blocks;
    if (arena->used == 0 && arenas.size() > 1) {
        for (auto it = arenas.begin(); it != arenas.end(); ++it) {
            if (*it == arena) {
                arenas.erase(it);
                break;
            }
        }
        munmap(arena->base, arenaSize);
        delete arena;
        return;
    }
    // The pages go back to the system; the block reads as zeros when it is handed out again.
    madvise(block, ItemPool::blockSize, MADV_DONTNEED);
    arena->released.push_back(block);
}

void Pool::link(Block *block)
{
    block->prev = nullptr;
    block->next = partial;
    if (partial)
        partial->prev = block;
    partial = block;
    block->listed = true;
}

void Pool::unlink(Block *block)
{
    if (block->prev)
        block->prev->next = block->next;
    else
        partial = block->next;
    if (block->next)
        block->next->prev = block->prev;
    block->prev = block->next = nullptr;
    block->listed = false;
}

void *Pool::allocate()
{
    std::lock_guard<std::mutex> lock(mutex);
    Block *block = current;
    if (!block || (!block->free && block->cut == ItemPool::slotsPerBlock)) {
        // The full block is left alone until one of its slots is given back.
        if (partial) {
            block = partial;
            unlink(block);
        } else {
            block = newBlock();
            if (!block)
                return nullptr;
        }
        current = block;
    }
    void *slot;
    if (block->free) {
        slot = block->free;
        block->free = block->free->next;
    } else {
        ++block->cut;
        slot = reinterpret_cast<char *>(block) + block->cut * ItemPool::slotSize;
    }
    ++block->used;
    ++slots;
    return slot;
}

void Pool::release(void *slot)
{
    std::lock_guard<std::mutex> lock(mutex);
    Block *block
        = reinterpret_cast<Block *>(reinterpret_cast<std::uintptr_t>(slot) & ~std::uintptr_t(ItemPool::blockSize - 1));
    Q_ASSERT(block->used > 0);
    FreeSlot *freed = static_cast<FreeSlot *>(slot);
    freed->next = block->free;
    block->free = freed;
    --block->used;
    --slots;
    if (block == current)
        return;
    if (block->used == 0) {
        if (block->listed)
            unlink(block);
        freeBlock(block);
    } else if (!block->listed) {
        link(block);
    }
}

} // namespace

#ifdef ZAT16_ITEMPOOL_DIRECT
const bool ItemPool::pooled = false;

void *ItemPool::allocate()
{
    return ::operator new(slotSize);
}

void ItemPool::release(void *slot)
{
    ::operator delete(slot);
}
#else
const bool ItemPool::pooled = true;

void *ItemPool::allocate()
{
    void *slot = pool().allocate();
    if (!slot)
        qBadAlloc();
    return slot;
}

void ItemPool::release(void *slot)
{
    if (slot)
        pool().release(slot);
}
#endif

std::size_t ItemPool::blockCount()
{
    Pool &p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    return p.blocks;
}

std::size_t ItemPool::slotsInUse()
{
    Pool &p = pool();
    std::lock_guard<std::mutex> lock(p.mutex);
    return p.slots;
}

} // namespace ZAT16

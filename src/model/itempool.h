#pragma once

#include <cstddef>

namespace ZAT16 {

/// Storage for items, which a loaded file holds by the million: slots of one size cut from
/// aligned blocks of 64 KiB, without the bookkeeping of a general allocator per item. A block
/// whose last item is freed goes back to the system at once, so that closing a large file
/// returns its memory. Safe to use from several threads.
///
/// In builds with AddressSanitizer every slot is an ordinary allocation of its own, so that the
/// sanitizer still sees each item's lifetime.
class ItemPool
{
public:
    /// A slot of `slotSize` bytes.
    static void *allocate();
    /// Gives back a slot that allocate() returned.
    static void release(void *slot);

    /// Blocks currently held from the system, and slots currently handed out.
    static std::size_t blockCount();
    static std::size_t slotsInUse();

    static constexpr std::size_t blockSize = 64 * 1024;
    static constexpr std::size_t slotSize = 112;
    /// Slots in one block; the block's header takes the space of the first.
    static constexpr std::size_t slotsPerBlock = blockSize / slotSize - 1;
    /// False in builds with AddressSanitizer.
    static const bool pooled;
};

} // namespace ZAT16

/** How slots are filled so that a reader sees whether they are whole. */
#ifndef PLATFORM_RECORDING_SLOTS_H
#define PLATFORM_RECORDING_SLOTS_H

#include "recording/RecordingFormat.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Recording {

inline std::atomic<std::uint32_t>& commitOf(Slot& slot) {
    return reinterpret_cast<std::atomic<std::uint32_t>&>(slot.commit);
}

/** From here to the closing of it, a reader takes the slot for unfinished. */
inline void openSlot(Slot& slot) {
    commitOf(slot).store(0, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
}

inline void closeSlot(Slot& slot, std::uint64_t sequence, bool isContinuation) {
    commitOf(slot).store(commitMark(sequence, isContinuation), std::memory_order_release);
}

/** With as many bytes as it holds. */
inline void fillContinuation(Slot& slot, std::uint64_t sequence, const char* bytes) {
    openSlot(slot);
    std::memcpy(&slot.kind, bytes, continuationBytes);
    closeSlot(slot, sequence, true);
}

/** With less, and zeros behind them. */
inline void fillContinuation(Slot& slot, std::uint64_t sequence, const char* bytes, std::size_t count) {
    std::array<char, continuationBytes> whole{};
    std::memcpy(whole.data(), bytes, count);
    fillContinuation(slot, sequence, whole.data());
}

constexpr std::size_t continuationsOf(std::size_t bytes) {
    return (bytes + continuationBytes - 1) / continuationBytes;
}

} // namespace Recording

#endif

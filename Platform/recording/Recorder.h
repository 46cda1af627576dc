#ifndef PLATFORM_RECORDING_RECORDER_H
#define PLATFORM_RECORDING_RECORDER_H

#include "Slots.h"
#include "Threads.h"
#include "recording/RecordingFormat.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Recording {

/** A record on its way. */
struct Entry {
    Kind kind{};
    std::uint16_t object = 0;
    std::int32_t code = 0;
    std::int32_t a = 0;
    std::int32_t b = 0;
    std::int32_t c = 0;
    std::int32_t d = 0;
    Outcome outcome = Outcome::returned;
};

/**
 * The file in memory. Whoever has something to record claims slots with one atomic addition and fills them;
 * nobody waits for anybody. Without a file nothing is recorded.
 */
class Recorder {
public:
    /** The library has been loaded whose code has `address` in it; the first one is recorded. */
    static void meet(const void* address);
    /** Begins to record if the environment wants it, the first time only: nothing is touched by a process
     * that has the library and no radio. */
    static void begin();
    /** The same when it is the library that calls from `caller`; whether it is recorded now. */
    static bool beginFor(const void* caller);
    /** The library has not done anything yet. */
    static bool isAwaited() { return s_isAwaited.load(std::memory_order_relaxed); }

    static bool isOn() { return s_size.load(std::memory_order_relaxed) != 0; }
    /** The library's code has it in it; never while nothing is recorded. */
    static bool isLibrary(const void* address) {
        return reinterpret_cast<std::uintptr_t>(address) - s_begin < s_size.load(std::memory_order_relaxed);
    }

    static void write(const Entry& entry) {
        const std::uint64_t sequence = claim(1);
        fill(at(sequence), sequence, entry, 0, secondOf(entry.outcome, 0));
    }
    /** The same with bytes, which are cut to what a record holds. */
    static void write(const Entry& entry, const void* bytes, std::size_t count);
    /** The same with bytes behind which there are zeros up to the end of a slot, which costs less. */
    static void writePadded(const Entry& entry, const char* bytes, std::size_t count) {
        const std::size_t more = continuationsOf(count);
        const std::uint64_t sequence = claim(static_cast<std::uint32_t>(more) + 1);
        for (std::size_t index = 0; index < more; ++index) {
            const std::uint64_t behind = sequence + 1 + index;
            fillContinuation(at(behind), behind, bytes + index * continuationBytes);
        }
        fill(at(sequence), sequence, entry, more, secondOf(entry.outcome, count));
    }

    /** Something could not be recorded for want of room. */
    static void passOver();
    /** Since the beginning, in nanoseconds. */
    static std::uint64_t now();

private:
    static void stop();
    static void leaveToTheParent();
    static void describe(char* file, std::size_t bytes);

    static std::uint64_t claim(std::uint32_t slots) {
        return s_claimed->fetch_add(slots, std::memory_order_relaxed);
    }
    static Slot& at(std::uint64_t sequence) {
        return s_slots[sequence < s_beginning ? sequence : s_beginning + ((sequence - s_beginning) & s_mask)];
    }
    static void fill(Slot& slot, std::uint64_t sequence, const Entry& entry, std::size_t more,
                     std::uint16_t second) {
        openSlot(slot);
        const Thread& thread = t_thread;
        slot.kind = static_cast<std::uint8_t>(entry.kind);
        slot.thread = thread.number != 0 ? thread.number : Threads::takeNumber();
        slot.depth = thread.depth;
        slot.more = static_cast<std::uint8_t>(more);
        slot.object = entry.object;
        slot.second = second;
        slot.code = entry.code;
        slot.a = entry.a;
        slot.b = entry.b;
        slot.c = entry.c;
        slot.d = entry.d;
        closeSlot(slot, sequence, false);
    }

    static std::atomic<bool> s_isAwaited;
    /** Where the library's code lies, and how long it is while it is recorded. */
    static std::uintptr_t s_begin;
    static std::atomic<std::size_t> s_size;
    static std::atomic<std::uint64_t>* s_claimed;
    static std::atomic<std::uint32_t>* s_passedOver;
    static Slot* s_slots;
    static std::uint64_t s_beginning;
    static std::uint64_t s_mask;
    static std::uint64_t s_started;
};

} // namespace Recording

#endif

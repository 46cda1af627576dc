#ifndef PLATFORM_RECORDING_RECORDER_H
#define PLATFORM_RECORDING_RECORDER_H

#include "recording/RecordingFormat.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Recording {

/** What is known of a thread. */
struct Thread {
    /** The library is at work on it, and not the platform that it called. */
    bool isInLibrary;
    std::uint8_t number;
    std::uint8_t depth;
    /** What the operation belongs to that is going on. */
    std::uint16_t object;
    /** The message that it is writing, as Trace.cpp has it. */
    void* message;
};
extern __thread Thread t_thread __attribute__((tls_model("initial-exec")));

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
    /** Begins to record what the library does whose code has `address` in it, if the environment wants it;
     * the first time only. */
    static void begin(const void* address);

    static bool isOn() { return s_text.size != 0; }
    /** The library's code has it in it; never while nothing is recorded. */
    static bool isLibrary(const void* address) {
        return reinterpret_cast<std::uintptr_t>(address) - s_text.begin < s_text.size;
    }

    static void write(const Entry& entry) {
        const std::uint64_t sequence = claim(1);
        fill(at(sequence), sequence, entry, 0, secondOf(entry.outcome, 0));
    }
    /** The same with bytes, which are cut to what a record holds. */
    static void write(const Entry& entry, const void* bytes, std::size_t count);

    /** The number of a name; 0 when there is no room for more. */
    static std::uint16_t name(ObjectKind kind, std::string_view text, std::int32_t first = 0,
                              std::int32_t second = 0);

    /** Something could not be recorded for want of room. */
    static void passOver();
    /** Since the beginning, in nanoseconds. */
    static std::uint64_t now();

private:
    struct Text {
        std::uintptr_t begin;
        std::size_t size;
    };

    static bool open(const void* library);
    static void leaveToTheParent();
    static void describe(std::size_t bytes, const void* library);

    static std::uint64_t claim(std::uint32_t slots) {
        return s_claimed->fetch_add(slots, std::memory_order_relaxed);
    }
    static Slot& at(std::uint64_t sequence) {
        return s_slots[sequence < s_beginning ? sequence : s_beginning + ((sequence - s_beginning) & s_mask)];
    }
    static std::atomic<std::uint32_t>& commitOf(Slot& slot) {
        return reinterpret_cast<std::atomic<std::uint32_t>&>(slot.commit);
    }
    static void fill(Slot& slot, std::uint64_t sequence, const Entry& entry, std::size_t more,
                     std::uint16_t second) {
        commitOf(slot).store(0, std::memory_order_relaxed);
        std::atomic_thread_fence(std::memory_order_release);
        const Thread& thread = t_thread;
        slot.kind = static_cast<std::uint8_t>(entry.kind);
        slot.thread = thread.number != 0 ? thread.number : numberThread();
        slot.depth = thread.depth;
        slot.more = static_cast<std::uint8_t>(more);
        slot.object = entry.object;
        slot.second = second;
        slot.code = entry.code;
        slot.a = entry.a;
        slot.b = entry.b;
        slot.c = entry.c;
        slot.d = entry.d;
        commitOf(slot).store(commitMark(sequence, false), std::memory_order_release);
    }
    static void fillContinuation(Slot& slot, std::uint64_t sequence, const char* bytes, std::size_t count);
    static std::uint8_t numberThread();
    static bool writeName(std::uint16_t number, ObjectKind kind, std::string_view text, std::int32_t first,
                          std::int32_t second);

    static Text s_text;
    static std::atomic<std::uint64_t>* s_claimed;
    static Slot* s_slots;
    static std::uint64_t s_beginning;
    static std::uint64_t s_mask;
    static char* s_file;
    static std::size_t s_fileBytes;
    static std::size_t s_nameSlots;
    static std::uint64_t s_started;
};

} // namespace Recording

#endif

/**
 * The two directions of a call. What the platform throws, and the unwinding of a cancelled thread, is
 * recorded and passes.
 */
#ifndef PLATFORM_RECORDING_CALLS_H
#define PLATFORM_RECORDING_CALLS_H

#include "Recorder.h"

#include <cxxabi.h>

#include <cstdint>

namespace Recording {

/** Whether a call from `caller` is the library's: its code stands there, or it is what is at work on this
 * thread, for when its last call left no trace of it. With the first such call the recording begins. */
inline bool isFromLibrary(const void* caller) {
    return Recorder::isLibrary(caller) || t_thread.isInLibrary ||
           (Recorder::isAwaited() && Recorder::beginFor(caller));
}

/** In a handler for whatever was thrown, other than the unwinding of a cancelled thread: writes the record.
 */
[[gnu::cold, gnu::noinline]] void writeThrown(Entry entry);
[[gnu::cold, gnu::noinline]] void writeUnwound(Entry entry);

/** As long as it lives, the platform is at work on this thread. */
class InPlatform {
public:
    InPlatform() : m_before(t_thread.isInLibrary) { t_thread.isInLibrary = false; }
    InPlatform(const InPlatform&) = delete;
    InPlatform& operator=(const InPlatform&) = delete;
    ~InPlatform() { t_thread.isInLibrary = m_before; }

private:
    bool m_before;
};

/** Calls the platform. What it answers is left to the caller to be written; what it throws is written here.
 */
// Of the unwinding there is no object to refer to on 32-bit ARM, and none is looked at.
template <typename Call>
__attribute__((no_sanitize("undefined"))) inline auto outgoing(const Entry& entry, Call call) {
    try {
        const InPlatform inside;
        return call();
    } catch (const abi::__forced_unwind&) {
        writeUnwound(entry);
        throw;
    } catch (...) {
        writeThrown(entry);
        throw;
    }
}

/** An operation of the library that goes on on this thread; writes its beginning. */
class Visit {
public:
    Visit(Kind kind, std::uint16_t object, std::int32_t a, std::int32_t b, bool isInLibrary = true);
    Visit(Kind kind, std::uint16_t object, const void* bytes, std::size_t count);
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    void finish(std::int32_t code) { write(leave(code)); }
    void finish(std::int32_t code, const void* bytes, std::size_t count);
    /** The object of the operation was not known when it began. */
    void setObject(std::uint16_t object) { m_object = object; }
    [[gnu::cold]] void throwOut() { writeThrown(leave(0)); }
    [[gnu::cold]] void unwind() { writeUnwound(leave(0)); }

private:
    static void write(const Entry& entry) { Recorder::write(entry); }
    void enter(std::uint16_t object, bool isInLibrary);
    Entry leave(std::int32_t code);

    Kind m_kind;
    std::uint16_t m_object;
    std::uint16_t m_objectBefore = 0;
    bool m_wasInLibrary = false;
};

/** Makes what goes on in `visit`; `finish` writes what it answers, and what it throws is written here. */
template <typename Call, typename Finish>
__attribute__((no_sanitize("undefined"))) inline auto make(Visit& visit, Call call, Finish finish) {
    try {
        const auto code = call();
        finish(code);
        return code;
    } catch (const abi::__forced_unwind&) {
        visit.unwind();
        throw;
    } catch (...) {
        visit.throwOut();
        throw;
    }
}

/** An operation of the library that somebody calls. What the library calls of itself is not recorded. */
template <typename Call>
inline auto incoming(Kind kind, std::uint16_t object, std::int32_t a, std::int32_t b, Call call) {
    if (t_thread.isInLibrary || !Recorder::isOn()) {
        return call();
    }
    Visit visit(kind, object, a, b);
    return make(visit, call, [&](auto code) { visit.finish(static_cast<std::int32_t>(code)); });
}

/** The lower and the upper half of a number that has 64 bits on some processors. */
constexpr std::int32_t lower(std::uint64_t number) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}
constexpr std::int32_t upper(std::uint64_t number) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number >> 32U));
}

} // namespace Recording

#endif

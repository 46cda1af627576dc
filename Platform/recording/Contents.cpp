#include "Contents.h"

#include "Recorder.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

namespace Recording::Contents {

namespace {

/** What ends the name of the variable that says how long an array is. */
constexpr std::string_view size = ".arraysize";
constexpr std::int32_t mostInts = mostBytes / sizeof(std::int32_t);

/** The numbers of an array as they were recorded last. */
struct Copy {
    std::atomic<bool> isTaken;
    std::int32_t count;
    std::array<std::int32_t, mostInts> values;
};
std::array<Copy, 64> s_copies;

Copy* takeCopy() {
    for (Copy& copy : s_copies) {
        if (!copy.isTaken.exchange(true)) {
            copy.count = 0;
            return &copy;
        }
    }
    Recorder::passOver();
    return nullptr;
}

struct Watched {
    /** Null: free. */
    std::atomic<const std::int32_t*> address;
    std::uint16_t variable;
    /** The one that the same module asked for before it, from 1. */
    std::uint16_t before;
    /** Of an array: where its length is. */
    const Watched* length;
    bool isArray;
    bool isLength;
    /** Of anything but an array: what it was. */
    std::int32_t value;
    /** Of an array: where its numbers are kept; null when there was no room. */
    Copy* copy;
};

/** Stands for an address that the library was not given any more. */
constexpr std::int32_t s_nothing = 0;

constexpr std::size_t mostWatched = 512;
std::array<Watched, mostWatched> s_watched;
/** The one that each module asked for last, from 1. */
std::array<std::atomic<std::uint16_t>, 8193> s_lastOf;

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::int32_t read(const std::int32_t* address) {
    return address != nullptr ? *static_cast<const volatile std::int32_t*>(address) : 0;
}

/** As many ints of an array as the library reads. */
std::int32_t lengthOf(const Watched& watched) {
    return watched.length == nullptr
               ? 0
               : std::clamp(read(watched.length->address.load(std::memory_order_relaxed)), 0, mostInts);
}

void write(const Watched& watched, const std::int32_t* values, std::int32_t count) {
    Recorder::write({Kind::variableContent, watched.variable, 0, count}, values,
                    static_cast<std::size_t>(count) * sizeof *values);
}

void writeIfChanged(Watched& watched, const std::int32_t* value) {
    const std::int32_t now = read(value);
    if (now != watched.value) {
        watched.value = now;
        write(watched, &now, 1);
    }
}

/** An array is compared as a whole, and then taken over: what is recorded is what the next one is compared
 * with. */
void writeArrayIfChanged(const Watched& watched, const std::int32_t* values) {
    const std::int32_t count = lengthOf(watched);
    const auto bytes = static_cast<std::size_t>(count) * sizeof *values;
    Copy* const copy = watched.copy;
    if (copy != nullptr && (copy->count != count || std::memcmp(copy->values.data(), values, bytes) != 0)) {
        copy->count = count;
        std::memcpy(copy->values.data(), values, bytes);
        write(watched, copy->values.data(), count);
    }
}

/** The one of those that `owner` asked for which `isIt` says; null when there is none. */
template <typename Condition>
Watched* findOf(std::uint16_t owner, Condition isIt) {
    for (std::size_t next = s_lastOf[owner].load(std::memory_order_acquire); next != 0;
         next = s_watched[next - 1].before) {
        if (isIt(s_watched[next - 1])) {
            return &s_watched[next - 1];
        }
    }
    return nullptr;
}

/** A free one, which stands for `address` from now on. */
Watched* freeFor(const std::int32_t* address, std::uint16_t owner) {
    for (Watched& watched : s_watched) {
        const std::int32_t* none = nullptr;
        if (watched.address.compare_exchange_strong(none, address)) {
            watched.before =
                s_lastOf[owner].exchange(static_cast<std::uint16_t>(&watched - s_watched.data() + 1));
            return &watched;
        }
    }
    Recorder::passOver();
    return nullptr;
}

} // namespace

void watch(std::uint16_t variable, std::string_view name, std::uint16_t owner, const void* address) {
    if (owner == 0) {
        return; // nobody would say when its end has come
    }
    const auto* const content = static_cast<const std::int32_t*>(address);
    Watched* watched = findOf(owner, [&](const Watched& other) { return other.variable == variable; });
    if (watched == nullptr && content != nullptr) {
        watched = freeFor(content, owner);
    }
    if (watched == nullptr) {
        return;
    }
    watched->variable = variable;
    watched->isArray = isArray(name);
    watched->isLength = endsWith(name, size);
    // The library asks for the length first. The content of anything else is in the record of the call.
    watched->length =
        watched->isArray ? findOf(owner, [](const Watched& other) { return other.isLength; }) : nullptr;
    watched->value = read(content);
    if (watched->isArray && watched->copy == nullptr) {
        watched->copy = takeCopy();
    }
    watched->address.store(content != nullptr ? content : &s_nothing, std::memory_order_release);
}

void forget(std::uint16_t owner) {
    std::size_t next = owner != 0 ? s_lastOf[owner].exchange(0) : 0;
    while (next != 0) {
        Watched& watched = s_watched[next - 1];
        next = watched.before;
        if (watched.copy != nullptr) {
            watched.copy->isTaken.store(false);
            watched.copy = nullptr;
        }
        watched.address.store(nullptr);
    }
}

void writeChanges(std::uint16_t owner) {
    for (std::size_t next = s_lastOf[owner].load(std::memory_order_acquire); next != 0;
         next = s_watched[next - 1].before) {
        Watched& watched = s_watched[next - 1];
        const std::int32_t* const values = watched.address.load(std::memory_order_relaxed);
        if (values == &s_nothing) {
            continue;
        }
        if (watched.isArray) {
            writeArrayIfChanged(watched, values);
        } else {
            writeIfChanged(watched, values);
        }
    }
}

} // namespace Recording::Contents

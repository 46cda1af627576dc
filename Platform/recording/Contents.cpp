#include "Contents.h"

#include "Recorder.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

namespace Recording::Contents {

namespace {

/** What ends the name of an array, and of the variable that says how long it is. */
constexpr std::string_view array = ".array";
constexpr std::string_view size = ".arraysize";
constexpr std::int32_t mostInts = mostBytes / sizeof(std::int32_t);

struct Watched {
    std::atomic<const std::int32_t*> address;
    std::uint16_t variable;
    std::uint16_t owner;
    /** Of an array: where its length is. */
    const Watched* length;
    bool isArray;
    bool isLength;
    std::uint32_t hash;
};

constexpr std::size_t mostWatched = 512;
std::array<Watched, mostWatched> s_watched;
std::atomic<std::size_t> s_count;

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::int32_t read(const std::int32_t* address) {
    return address != nullptr ? *static_cast<const volatile std::int32_t*>(address) : 0;
}

/** As many ints as the library reads. */
std::int32_t lengthOf(const Watched& watched) {
    if (!watched.isArray) {
        return 1;
    }
    return watched.length == nullptr
               ? 0
               : std::clamp(read(watched.length->address.load(std::memory_order_relaxed)), 0, mostInts);
}

std::uint32_t hashOf(const std::int32_t* values, std::int32_t count) {
    std::uint32_t hash = static_cast<std::uint32_t>(count);
    for (std::int32_t index = 0; index < count; ++index) {
        hash = (hash ^ static_cast<std::uint32_t>(read(values + index))) * 16777619U;
    }
    return hash;
}

void write(const Watched& watched, const std::int32_t* values, std::int32_t count) {
    Recorder::write({Kind::variableContent, watched.variable, 0, count}, values,
                    static_cast<std::size_t>(count) * sizeof *values);
}

Watched* placeOf(std::uint16_t variable, std::uint16_t owner) {
    const std::size_t count = std::min(s_count.load(std::memory_order_acquire), mostWatched);
    auto* const end = s_watched.begin() + count;
    auto* const found = std::find_if(s_watched.begin(), end, [&](const Watched& watched) {
        return watched.variable == variable && watched.owner == owner;
    });
    if (found != end) {
        return found;
    }
    const std::size_t place = s_count.fetch_add(1);
    return place < mostWatched ? &s_watched[place] : nullptr;
}

} // namespace

void watch(std::uint16_t variable, std::string_view name, std::uint16_t owner, const void* address) {
    if (owner == 0) {
        return; // nobody would say when its end has come
    }
    Watched* const watched = placeOf(variable, owner);
    if (watched == nullptr) {
        Recorder::passOver();
        return;
    }
    const auto* const content = static_cast<const std::int32_t*>(address);
    watched->variable = variable;
    watched->owner = owner;
    watched->isArray = endsWith(name, array);
    watched->isLength = endsWith(name, size);
    watched->hash = 0;
    if (watched->isArray) {
        // The library asks for the length first.
        const Watched* const end = s_watched.data() + std::min(s_count.load(), mostWatched);
        watched->length =
            std::find_if(static_cast<const Watched*>(s_watched.data()), end,
                         [&](const Watched& other) { return other.isLength && other.owner == owner; });
        watched->length = watched->length == end ? nullptr : watched->length;
    } else if (content != nullptr) {
        watched->hash = hashOf(content, 1); // the record of the call has it
    }
    watched->address.store(content, std::memory_order_release);
}

void forget(std::uint16_t owner) {
    const std::size_t count = std::min(s_count.load(std::memory_order_acquire), mostWatched);
    for (std::size_t index = 0; index < count; ++index) {
        if (s_watched[index].owner == owner) {
            s_watched[index].address.store(nullptr, std::memory_order_relaxed);
        }
    }
}

void writeChanges() {
    const std::size_t count = std::min(s_count.load(std::memory_order_acquire), mostWatched);
    for (std::size_t index = 0; index < count; ++index) {
        Watched& watched = s_watched[index];
        const std::int32_t* const values = watched.address.load(std::memory_order_acquire);
        if (values == nullptr) {
            continue;
        }
        const std::int32_t length = lengthOf(watched);
        const std::uint32_t hash = hashOf(values, length);
        if (hash != watched.hash) {
            watched.hash = hash;
            write(watched, values, length);
        }
    }
}

} // namespace Recording::Contents

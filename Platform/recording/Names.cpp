#include "Names.h"

#include "Recorder.h"
#include "Slots.h"

#include <array>

namespace Recording::Names {

namespace {

struct Name {
    std::atomic<bool> isThere;
    ObjectKind kind;
    std::uint32_t hash;
    std::int32_t first;
    std::int32_t second;
    std::size_t text;
    std::size_t length;
};

constexpr std::size_t mostNames = 8192;
constexpr std::size_t mostLength = 1024;
std::array<Name, mostNames> s_names;
std::atomic<std::size_t> s_count;
std::array<char, std::size_t{512} << 10U> s_texts;
std::atomic<std::size_t> s_textCount;
/** The numbers of names, from where their hash points to; 0: free. Half of it stays free. */
std::array<std::atomic<std::uint16_t>, mostNames * 2> s_places;

Slot* s_slots;
std::size_t s_slotCount;
std::atomic<std::uint32_t>* s_claimed;

std::uint32_t hashOf(const Name& name, std::string_view text) {
    std::uint32_t hash = 2166136261U + static_cast<unsigned>(name.kind);
    for (const std::int32_t word : {name.first, name.second}) {
        hash = (hash ^ static_cast<std::uint32_t>(word)) * 16777619U;
    }
    for (const char character : text) {
        hash = (hash ^ static_cast<unsigned char>(character)) * 16777619U;
    }
    return hash;
}

bool isSame(const Name& name, const Name& other, std::string_view text) {
    return name.isThere.load(std::memory_order_acquire) && name.hash == other.hash &&
           name.kind == other.kind && name.first == other.first && name.second == other.second &&
           std::string_view(&s_texts[name.text], name.length) == text;
}

/** Takes so many of something of which there are `most`; false when they are not there. */
template <typename Count>
bool take(std::atomic<Count>& count, Count wanted, Count most, Count& place) {
    place = count.load(std::memory_order_relaxed);
    do {
        if (wanted > most - place) {
            return false;
        }
    } while (!count.compare_exchange_weak(place, place + wanted));
    return true;
}

bool writeName(std::uint16_t number, const Name& name, std::string_view text) {
    const std::size_t more = continuationsOf(text.size());
    std::uint32_t sequence = 0;
    if (!take(*s_claimed, static_cast<std::uint32_t>(more + 1), static_cast<std::uint32_t>(s_slotCount),
              sequence)) {
        return false;
    }
    for (std::size_t index = 0; index < more; ++index) {
        const std::string_view here = text.substr(index * continuationBytes, continuationBytes);
        const std::size_t behind = sequence + 1 + index;
        fillContinuation(s_slots[behind], behind, here.data(), here.size());
    }
    Slot& head = s_slots[sequence];
    head.kind = static_cast<std::uint8_t>(name.kind);
    head.more = static_cast<std::uint8_t>(more);
    head.object = number;
    head.second = static_cast<std::uint16_t>(text.size());
    head.a = name.first;
    head.b = name.second;
    closeSlot(head, sequence, false);
    return true;
}

/** Gives it a number, which nobody else has had. */
std::uint16_t add(const Name& wanted, std::string_view text) {
    std::size_t index = 0;
    std::size_t place = 0;
    if (!take(s_count, std::size_t{1}, mostNames, index)) {
        return 0;
    }
    const auto number = static_cast<std::uint16_t>(index + 1);
    if (!take(s_textCount, text.size(), s_texts.size(), place) || !writeName(number, wanted, text)) {
        return 0;
    }
    Name& name = s_names[index];
    text.copy(&s_texts[place], text.size());
    name.kind = wanted.kind;
    name.hash = wanted.hash;
    name.first = wanted.first;
    name.second = wanted.second;
    name.text = place;
    name.length = text.size();
    name.isThere.store(true, std::memory_order_release);
    return number;
}

} // namespace

void begin(Slot* slots, std::size_t count, std::atomic<std::uint32_t>& claimed) {
    s_slots = slots;
    s_slotCount = count;
    s_claimed = &claimed;
}

std::uint16_t numberOf(ObjectKind kind, std::string_view text, std::int32_t first, std::int32_t second) {
    text = text.substr(0, mostLength);
    Name wanted{};
    wanted.kind = kind;
    wanted.first = first;
    wanted.second = second;
    wanted.hash = hashOf(wanted, text);
    // Two threads that meet a name for the first time at once give it two numbers, which does no harm.
    std::uint16_t added = 0;
    for (std::size_t step = 0; step < s_places.size(); ++step) {
        std::atomic<std::uint16_t>& place = s_places[(wanted.hash + step) % s_places.size()];
        std::uint16_t there = place.load(std::memory_order_acquire);
        if (there == 0 && added == 0) {
            added = add(wanted, text);
            if (added == 0) {
                break;
            }
        }
        if (there == 0 && place.compare_exchange_strong(there, added)) {
            return added;
        }
        if (added == 0 && isSame(s_names[there - 1U], wanted, text)) {
            return there;
        }
    }
    if (added == 0) {
        Recorder::passOver();
    }
    return added;
}

} // namespace Recording::Names

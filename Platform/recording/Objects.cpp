#include "Objects.h"

#include "Calls.h"
#include "Clients.h"
#include "Contents.h"
#include "Drivers.h"
#include "LibraryDoors.h"
#include "Names.h"
#include "Rau.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

namespace Recording::Objects {

namespace {

/** Where the operations of the interfaces stand in the tables; tests hold the library to that. */
struct Operation {
    std::size_t slot;
    void* function;
};

struct Object {
    /** Null: never taken; s_gone: free again. */
    std::atomic<const void*> address;
    ObjectKind kind;
    std::uint16_t number;
    /** What the broker has it under; empty for modules. */
    std::array<char, 48> name;
    /** The thread on which it is being built; 0 once it has its table. */
    std::atomic<std::uint8_t> builder;
};
constexpr unsigned placeBits = 10;
std::array<Object, 1U << placeBits> s_objects;
/** So many places, from where its address points to, an object can be in. */
constexpr std::size_t mostSteps = 64;
constexpr char s_gone = 0;

Object& placeOf(const void* address, std::size_t step) {
    const auto hash = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(address) >> 4U) *
                      2654435769U; // the golden section of a word: near addresses come to lie far apart
    return s_objects[((hash >> (32U - placeBits)) + step) % s_objects.size()];
}

Object* find(const void* address) {
    for (std::size_t step = 0; step < mostSteps; ++step) {
        Object& object = placeOf(address, step);
        const void* const there = object.address.load(std::memory_order_relaxed);
        if (there == address) {
            return &object;
        }
        if (there == nullptr) {
            break;
        }
    }
    return nullptr;
}

/** A free place for it; null when there is none. */
Object* take(const void* address) {
    for (std::size_t step = 0; step < mostSteps; ++step) {
        Object& object = placeOf(address, step);
        for (const void* free : {static_cast<const void*>(nullptr), static_cast<const void*>(&s_gone)}) {
            if (object.address.compare_exchange_strong(free, address)) {
                return &object;
            }
        }
    }
    Recorder::passOver();
    return nullptr;
}

Object* add(const void* address, ObjectKind kind, std::uint16_t number) {
    Object* const there = find(address);
    Object* const object = there != nullptr ? there : take(address);
    if (object != nullptr) {
        object->kind = kind;
        object->number = number;
        object->name = {};
        object->builder = 0;
    }
    return object;
}

bool isThere(const Object& object) {
    const void* const address = object.address.load();
    return address != nullptr && address != &s_gone;
}

void remove(Object& object) {
    object.builder = 0;
    object.address.store(&s_gone);
}

/** What was kept for the objects of this number is given back with the last of them. */
void giveBack(std::uint16_t number) {
    const bool isLast = std::none_of(s_objects.begin(), s_objects.end(), [&](const Object& object) {
        return isThere(object) && object.number == number;
    });
    if (isLast && number != 0) {
        Contents::forget(number);
        Drivers::forget(number);
        Rau::forget(number);
        Clients::forgetOwner(number);
    }
}

// Tables

/** A copy of a table, word by word, as long as the library's symbol says that it is. */
struct Table {
    std::atomic<bool> isReady;
    const void* const* original;
    std::size_t words;
    const void** copy;
};
std::array<Table, 32> s_tables;
std::atomic<std::size_t> s_tableCount;
std::array<const void*, 8192> s_words;
/** What stands in the library's own tables in their place. */
std::array<const void*, s_words.size()> s_originals;
std::atomic<std::size_t> s_wordCount;

/** Fills in a copy of the table that `table` points into. */
bool copyTable(const void* const* table, Table& copy) {
    Dl_info info{};
    ElfW(Sym)* symbol = nullptr;
    if (dladdr1(static_cast<const void*>(table), &info, reinterpret_cast<void**>(&symbol), RTLD_DL_SYMENT) ==
            0 ||
        symbol == nullptr || info.dli_sname == nullptr || std::strncmp(info.dli_sname, "_ZTV", 4) != 0) {
        return false;
    }
    copy.original = static_cast<const void* const*>(info.dli_saddr);
    copy.words = symbol->st_size / sizeof(void*);
    const std::size_t place = s_wordCount.fetch_add(copy.words);
    if (table >= copy.original + copy.words || place + copy.words > s_words.size()) {
        return false;
    }
    copy.copy = &s_words[place];
    std::copy(copy.original, copy.original + copy.words, copy.copy);
    std::copy(copy.original, copy.original + copy.words, &s_originals[place]);
    return true;
}

template <std::size_t count>
const void** tableFor(const void* const* table, const std::array<Operation, count>& operations) {
    const std::size_t known = std::min(s_tableCount.load(), s_tables.size());
    for (std::size_t index = 0; index < known; ++index) {
        const Table& there = s_tables[index];
        if (there.isReady.load(std::memory_order_acquire) &&
            static_cast<std::size_t>(table - there.original) < there.words) {
            return there.copy + (table - there.original);
        }
    }
    const std::size_t place = s_tableCount.fetch_add(1);
    if (place >= s_tables.size() || !copyTable(table, s_tables[place])) {
        return nullptr;
    }
    Table& made = s_tables[place];
    const void** const copy = made.copy + (table - made.original);
    for (const Operation& operation : operations) {
        copy[operation.slot] = operation.function;
    }
    made.isReady.store(true, std::memory_order_release);
    return copy;
}

template <std::size_t count>
void follow(const void* object, const std::array<Operation, count>& operations) {
    const void* const*& table = *static_cast<const void* const**>(const_cast<void*>(object));
    const bool isFollowed = static_cast<std::size_t>(table - s_words.data()) < s_words.size();
    const void** const copy = isFollowed ? nullptr : tableFor(table, operations);
    if (copy != nullptr) {
        table = copy;
    } else if (!isFollowed) {
        Recorder::passOver();
    }
}

void followHandler(const void* address) {
    static const std::array<Operation, 1> s_operations{{{3, LibraryDoors::registerObserver()}}};
    follow(address, s_operations);
    auto* const handler = static_cast<IFrequencyHandler*>(const_cast<void*>(address));
    if (auto* const record = static_cast<FrequencyHandlerCStruct*>(handler->getCStruct())) {
        LibraryDoors::replaceRegistration(*record);
    }
}

void followBuiltHandlers() {
    for (Object& object : s_objects) {
        if (object.builder.load(std::memory_order_relaxed) == t_thread.number && t_thread.number != 0 &&
            isThere(object)) {
            object.builder.store(0);
            followHandler(object.address.load());
        }
    }
}

void keepName(Object& object, const char* name) {
    std::strncpy(object.name.data(), name, object.name.size() - 1);
}

void publishCanceller(ILoCancellation& canceller, const char* name) {
    static const std::array<Operation, 3> s_operations{{{2, LibraryDoors::initializeCanceller()},
                                                        {3, LibraryDoors::cancel()},
                                                        {4, LibraryDoors::calibrate()}}};
    if (Object* const object =
            add(&canceller, ObjectKind::canceller, Names::numberOf(ObjectKind::canceller, name))) {
        keepName(*object, name);
        follow(&canceller, s_operations);
    }
}

/** Its operations, its end among them, are recorded from now on. */
void followCompensation(const void* compensation) {
    static const std::array<Operation, 4> s_operations{{{0, LibraryDoors::destroyCompensation(0)},
                                                        {1, LibraryDoors::destroyCompensation(1)},
                                                        {2, LibraryDoors::compensate()},
                                                        {3, LibraryDoors::compensationCarrier()}}};
    follow(compensation, s_operations);
}

void publishCompensation(ITxIQImbalanceHandler& compensation) {
    if (find(&compensation) == nullptr) {
        add(&compensation, ObjectKind::compensation, Names::numberOf(ObjectKind::compensation, "", -1));
    }
    followCompensation(&compensation);
}

} // namespace

std::uint16_t addModule(void* address, std::int32_t channel, std::int32_t type) {
    const std::uint16_t number = Names::numberOf(ObjectKind::module, "FrequencyHandler", channel, type);
    add(address, ObjectKind::module, number);
    return number;
}

std::uint16_t addCompensation(void* address, std::int32_t channel) {
    const std::uint16_t number = Names::numberOf(ObjectKind::compensation, "", channel);
    add(address, ObjectKind::compensation, number);
    return number;
}

void followBuiltCompensation(const void* address) {
    followCompensation(address);
}

void publish(IInterface* object, const char* name) {
    if (auto* const handler = dynamic_cast<IFrequencyHandler*>(object)) {
        if (Object* const added =
                add(handler, ObjectKind::handler, Names::numberOf(ObjectKind::handler, name))) {
            keepName(*added, name);
            added->builder = t_thread.number;
        }
    } else if (auto* const canceller = dynamic_cast<ILoCancellation*>(object)) {
        publishCanceller(*canceller, name);
    } else if (auto* const compensation = dynamic_cast<ITxIQImbalanceHandler*>(object)) {
        publishCompensation(*compensation);
    }
}

std::uint16_t followBuilt(void* module, std::int32_t channel) {
    static const std::array<Operation, 7> s_operations{{{0, LibraryDoors::destroyModule(0)},
                                                        {1, LibraryDoors::destroyModule(1)},
                                                        {3, LibraryDoors::moduleInit()},
                                                        {4, LibraryDoors::storageRetrieved()},
                                                        {5, LibraryDoors::postFrameformat()},
                                                        {12, LibraryDoors::setTx()},
                                                        {13, LibraryDoors::setRx()}}};
    Object* there = find(module);
    if (there == nullptr) {
        addModule(module, channel, -1);
    }
    followBuiltHandlers();
    follow(module, s_operations);
    return numberOf(module);
}

void withdraw(const char* name) {
    for (Object& object : s_objects) {
        if (isThere(object) && std::strncmp(object.name.data(), name, object.name.size() - 1) == 0) {
            Clients::forget(object.address.load());
            remove(object);
        }
    }
}

void forget(const void* address) {
    if (Object* const object = find(address)) {
        remove(*object);
        giveBack(object->number);
    }
}

std::uint16_t numberOf(const void* address) {
    const Object* const object = find(address);
    return object != nullptr ? object->number : 0;
}

void* originalOf(const void* object, std::size_t slot) {
    const void* const* const table = *static_cast<const void* const* const*>(object);
    const auto place = static_cast<std::size_t>(table - s_words.data());
    return const_cast<void*>(place < s_words.size() ? s_originals[place + slot] : table[slot]);
}

} // namespace Recording::Objects

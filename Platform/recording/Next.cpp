#include "Next.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

// The linker knows where a section begins and ends.
extern "C" {
extern __attribute__((visibility("hidden")))
Recording::NextPlace firstNext[] __asm__("__start_recording_next"); // NOLINT(*-avoid-c-arrays)
extern __attribute__((visibility("hidden")))
Recording::NextPlace endOfNexts[] __asm__("__stop_recording_next"); // NOLINT(*-avoid-c-arrays)
}

namespace Recording {

namespace {

/** Something that only the library defines, and something that its platform does. */
constexpr const char* ofTheLibrary = "_ZTV16FrequencyHandler";
constexpr const char* ofThePlatform = "_ZN9OrbiTraceC1EPKc14OrbiTraceLevel";

/** An object that was loaded with library and platform behind it, for itself alone; null: they are where
 * everybody finds them. */
std::atomic<void*> s_scope;

/** Where what has `address` in it was loaded; null: nowhere. */
const void* baseOf(const void* address) {
    Dl_info info{};
    return address != nullptr && dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

const void* ownBase() {
    return baseOf(reinterpret_cast<const void*>(&findNext));
}

link_map* firstLoaded() {
    Dl_info info{};
    link_map* map = nullptr;
    if (dladdr1(reinterpret_cast<const void*>(&findNext), &info, reinterpret_cast<void**>(&map),
                RTLD_DL_LINKMAP) == 0) {
        return nullptr;
    }
    while (map != nullptr && map->l_prev != nullptr) {
        map = map->l_prev;
    }
    return map;
}

/** Whether library and platform are found in what was loaded with `object`. */
bool hasBoth(void* object, const void* library) {
    const void* const platform = baseOf(dlsym(object, ofThePlatform));
    return baseOf(dlsym(object, ofTheLibrary)) == library && platform != nullptr && platform != ownBase();
}

/** Finds the object that the library was loaded with. It happens while the library is loaded: nobody else
 * loads anything meanwhile. What is found is kept, and with it what it has loaded. */
void* scopeOf(const void* library) {
    for (const link_map* map = firstLoaded(); map != nullptr; map = map->l_next) {
        void* const object = *map->l_name != '\0' ? dlopen(map->l_name, RTLD_LAZY | RTLD_NOLOAD) : nullptr;
        if (object != nullptr && hasBoth(object, library)) {
            return object;
        }
        if (object != nullptr) {
            static_cast<void>(dlclose(object));
        }
    }
    return nullptr;
}

/** What has `address` in it stays loaded: the recorder knows addresses in it. */
void pin(const void* address) {
    Dl_info info{};
    if (address != nullptr && dladdr(address, &info) != 0 && info.dli_fname != nullptr) {
        static_cast<void>(dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE));
    }
}

/** Null when there is none. */
void* lookForNext(const char* name) {
    void* volatile found = dlsym(RTLD_NEXT, name); // not as a last call: it looks at who calls
    if (found == nullptr && s_scope.load() != nullptr) {
        found = dlsym(s_scope.load(), name);
    }
    return found != nullptr && baseOf(found) != ownBase() ? found : nullptr;
}

} // namespace

void findAllNext(const void* address) {
    void* volatile platform = dlsym(RTLD_NEXT, ofThePlatform);
    if (platform == nullptr) {
        s_scope = scopeOf(baseOf(address));
    }
    for (NextPlace* place = firstNext; place != endOfNexts; ++place) {
        place->found.store(lookForNext(place->name), std::memory_order_relaxed);
    }
    pin(address);
    pin(platform);
}

void* findNext(const char* name) {
    void* const found = lookForNext(name);
    if (found == nullptr) {
        static_cast<void>(dprintf(STDERR_FILENO, "librecordingplatform.so: undefined symbol: %s\n", name));
        std::abort();
    }
    return found;
}

} // namespace Recording

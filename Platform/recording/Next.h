#ifndef PLATFORM_RECORDING_NEXT_H
#define PLATFORM_RECORDING_NEXT_H

#include <atomic>

namespace Recording {

/** The library has `address` in it: looks up all that stands behind the recorder, so that no call does later,
 * and has it stay where it is. */
void findAllNext(const void* address);
/** Where the definition of `name` is that stands behind the recorder's. Without one, a line says so and the
 * process ends, which without the recorder would not have loaded the library. */
[[gnu::cold, gnu::noinline]] void* findNext(const char* name);

/** What every Next has; they stand in a section of their own, one behind the other. */
struct NextPlace {
    const char* name;
    std::atomic<void*> found;
};
/** In front of each Next. */
#define RECORDING_NEXT __attribute__((section("recording_next")))

/** The definition behind the recorder's, looked up when it is first called if that was not possible before.
 */
template <typename Function>
class Next;

template <typename Result, typename... Arguments>
class Next<Result(Arguments...)> {
public:
    constexpr explicit Next(const char* name) : m_place{name, {nullptr}} {}

    Result operator()(Arguments... arguments) { return function()(arguments...); }

private:
    using Function = Result (*)(Arguments...);

    Function function() {
        void* found = m_place.found.load(std::memory_order_relaxed);
        if (found == nullptr) {
            found = findNext(m_place.name);
            m_place.found.store(found, std::memory_order_relaxed);
        }
        return reinterpret_cast<Function>(found);
    }

    NextPlace m_place;
};

} // namespace Recording

#endif

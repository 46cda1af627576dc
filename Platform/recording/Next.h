#ifndef PLATFORM_RECORDING_NEXT_H
#define PLATFORM_RECORDING_NEXT_H

#include <atomic>

namespace Recording {

/** Where the definition of `name` is that stands behind the recorder's. Without one, a line says so and the
 * process ends, which without the recorder would not have loaded the library. */
[[gnu::cold, gnu::noinline]] void* findNext(const char* name);
/** The same; null when there is none. */
void* lookForNext(const char* name);

/** The definition behind the recorder's, looked up when it is first called. */
template <typename Function>
class Next;

template <typename Result, typename... Arguments>
class Next<Result(Arguments...)> {
public:
    constexpr explicit Next(const char* name) : m_name(name) {}

    Result operator()(Arguments... arguments) { return function()(arguments...); }

private:
    using Function = Result (*)(Arguments...);

    Function function() {
        void* found = m_found.load(std::memory_order_relaxed);
        if (found == nullptr) {
            found = findNext(m_name);
            m_found.store(found, std::memory_order_relaxed);
        }
        return reinterpret_cast<Function>(found);
    }

    const char* m_name;
    std::atomic<void*> m_found{nullptr};
};

} // namespace Recording

#endif

#ifndef TESTS_CARRIERS_SWEEP_H
#define TESTS_CARRIERS_SWEEP_H

#include "Difference.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace Carriers {

/** The carriers `first`, `first` + `stride`, ... below `end`, in kHz; `stride` is not 0. */
struct CarrierRange {
    std::uint64_t first = 0;
    std::uint64_t end = std::uint64_t{1} << 32U;
    std::uint64_t stride = 1;

    std::uint64_t count() const { return first < end ? (end - first - 1) / stride + 1 : 0; }
};

/** Looks at carriers of a range, on any thread, and gives the first difference that it finds. */
using Check = std::function<std::optional<Difference>(const CarrierRange&)>;
/** Is told how many carriers are done, on the thread that called sweep(). */
using Progress = std::function<void(std::uint64_t)>;

/**
 * Has `check` look at all `carriers`, in parts, on so many threads at a time, and gives the difference at the
 * lowest of them. `progress` is called about twice in a second.
 */
std::optional<Difference> sweep(const CarrierRange& carriers, const Check& check, unsigned threads,
                                const Progress& progress);

} // namespace Carriers

#endif

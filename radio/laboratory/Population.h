#ifndef RADIO_LABORATORY_POPULATION_H
#define RADIO_LABORATORY_POPULATION_H

#include "radio/laboratory/Distribution.h"
#include "radio/model/LeakageModel.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Radio::Laboratory {

/** One quantity of a transmitter that differs from one to the next. */
struct Quantity {
    /** The keys that lead to it, such as "paths.1.level": what its random numbers are drawn for. */
    std::string name;
    Distribution distribution;
    /** Where it belongs. */
    std::function<double&(LeakageDescription&)> of;
};

/** Transmitters of one design. */
class Population {
public:
    /** What is said of none of its quantities is as in `base`. */
    explicit Population(LeakageDescription base = {}) : m_base(std::move(base)) {}

    const LeakageDescription& base() const { return m_base; }
    /** Has the transmitters leak on so many paths; new ones are like no leakage at all. */
    void setPaths(std::size_t count) { m_base.paths.resize(count); }
    void add(Quantity quantity) { m_quantities.push_back(std::move(quantity)); }
    /** Path `path` is there in this part of the transmitters. */
    void addChance(std::size_t path, double chance) { m_chances.push_back({path, chance}); }

    /**
     * The transmitter `number` of those that `seed` draws. It depends on these two alone, and so does the
     * noise of its detectors. One that would leak on no path leaks on the first.
     */
    LeakageDescription draw(std::uint64_t seed, std::uint32_t number) const {
        return draw(m_base, seed, number);
    }
    /** The same, with `like`, which has as many paths and detectors, in place of the base; of a population
     * that says nothing of paths `like` may have any number of them. */
    LeakageDescription draw(const LeakageDescription& like, std::uint64_t seed, std::uint32_t number) const;

private:
    struct Chance {
        std::size_t path;
        double chance;
    };

    LeakageDescription m_base;
    std::vector<Quantity> m_quantities;
    std::vector<Chance> m_chances;
};

} // namespace Radio::Laboratory

#endif

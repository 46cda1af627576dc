#include "radio/laboratory/Population.h"

#include <utility>

namespace Radio::Laboratory {

LeakageDescription Population::draw(const LeakageDescription& like, std::uint64_t seed,
                                    std::uint32_t number) const {
    LeakageDescription drawn = like;
    for (const Quantity& quantity : m_quantities) {
        quantity.of(drawn) = quantity.distribution.draw(Draws(seed, number, quantity.name));
    }
    std::vector<bool> isThere(drawn.paths.size(), true);
    for (const auto& [path, chance] : m_chances) {
        Draws draws(seed, number, "paths." + std::to_string(path + 1) + ".chance");
        isThere[path] = draws.uniform() < chance;
    }
    std::vector<LeakagePath> paths;
    for (std::size_t path = 0; path < drawn.paths.size(); ++path) {
        if (isThere[path]) {
            paths.push_back(drawn.paths[path]);
        }
    }
    if (paths.empty()) {
        paths.push_back(drawn.paths.front());
    }
    drawn.paths = std::move(paths);
    drawn.seed = static_cast<std::uint32_t>(Draws(seed, number, "seed").bits() >> 33U);
    return drawn;
}

} // namespace Radio::Laboratory

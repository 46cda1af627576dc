#include "devices/NearNames.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace Devices {

namespace {

/** How many characters have to be changed, added or taken away to make one name of the other. */
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

} // namespace

std::string alternatives(const std::string& wanted, std::vector<std::string> names) {
    constexpr std::size_t shown = 5;
    if (names.empty()) {
        return "; there is none";
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    std::stable_sort(names.begin(), names.end(), [&](const std::string& a, const std::string& b) {
        return distance(wanted, a) < distance(wanted, b);
    });
    std::string text = names.size() == 1 ? "; there is " : "; there are ";
    for (std::size_t i = 0; i < std::min(shown, names.size()); ++i) {
        const bool isLast = i + 1 == names.size();
        text += (i == 0 ? "" : isLast ? " and " : ", ") + names[i];
    }
    if (names.size() > shown) {
        text += " and " + std::to_string(names.size() - shown) + " more";
    }
    return text;
}

} // namespace Devices

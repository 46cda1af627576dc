#ifndef RADIO_TEXT_MEDIAN_H
#define RADIO_TEXT_MEDIAN_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Radio {

/** The number in the middle, of two the lower one; 0 for none. */
template <typename Number>
Number median(std::vector<Number> numbers) {
    if (numbers.empty()) {
        return Number{};
    }
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>((numbers.size() - 1) / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    return *middle;
}

} // namespace Radio

#endif

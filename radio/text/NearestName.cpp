#include "radio/text/NearestName.h"

#include "radio/text/Words.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace Radio {

namespace {

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

/** Takes away what both begin with and what both end with. */
void trimCommon(std::string_view& a, std::string_view& b) {
    const auto front = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    const auto begin = static_cast<std::size_t>(front.first - a.begin());
    a.remove_prefix(begin);
    b.remove_prefix(begin);
    const auto back = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend());
    const auto end = static_cast<std::size_t>(back.first - a.rbegin());
    a.remove_suffix(end);
    b.remove_suffix(end);
}

/**
 * How many letters must be added, dropped, replaced or swapped with their neighbour to turn `a` into `b`; of
 * more than `most` only that they are more.
 */
std::size_t slips(std::string_view a, std::string_view b, std::size_t most) {
    trimCommon(a, b);
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    std::size_t leastOfLast = 0;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        beforeLast.swap(last);
        last.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
        const std::size_t least = *std::min_element(row.begin(), row.end());
        if (least > most && leastOfLast > most) {
            return least;
        }
        leastOfLast = least;
    }
    return row[b.size()];
}

} // namespace

std::optional<std::string> nearestName(std::string_view word, const std::vector<std::string>& candidates) {
    const std::size_t allowed = std::clamp<std::size_t>((word.size() + 2) / 4, 1, 3);
    const std::string lowerWord = lowerCase(word);
    std::optional<std::string> nearest;
    std::pair<std::size_t, std::size_t> fewest{allowed + 1, 0};
    for (const std::string& candidate : candidates) {
        if (candidate.size() > word.size() + allowed || candidate.size() + allowed < word.size()) {
            continue;
        }
        const std::size_t found = slips(lowerWord, lowerCase(candidate), fewest.first);
        if (found > fewest.first) {
            continue;
        }
        const std::pair<std::size_t, std::size_t> both{found, slips(word, candidate, word.size() + allowed)};
        if (both < fewest) {
            fewest = both;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string didYouMean(std::string_view word, const std::vector<std::string>& candidates) {
    const std::optional<std::string> nearest = nearestName(word, candidates);
    return nearest.has_value() ? " (did you mean " + inQuotes(*nearest) + "?)" : "";
}

} // namespace Radio

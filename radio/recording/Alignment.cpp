#include "radio/recording/Alignment.h"

#include <algorithm>
#include <utility>

namespace Radio::Recordings {

namespace {

/** Items of either side, as half-open ranges. */
struct Area {
    std::size_t before;
    std::size_t beforeEnd;
    std::size_t after;
    std::size_t afterEnd;

    bool isEmpty() const { return before == beforeEnd || after == afterEnd; }
    std::size_t size() const { return beforeEnd - before + (afterEnd - after); }
};

struct Place {
    std::size_t before;
    std::size_t after;
};

/** So often an area is divided at items that are there once. */
constexpr int mostDivisions = 8;

/** The differences that one search goes through, such that all searches take so many steps in all. */
std::size_t reachFor(std::size_t items) {
    constexpr std::size_t steps = std::size_t{1} << 27U;
    constexpr std::size_t least = 64;
    constexpr std::size_t most = 2048;
    return std::clamp(steps / std::max<std::size_t>(items, 1), least, most);
}

/** How far one comes with 0, 1, 2... differences: the greedy algorithm of Myers. Diagonal k is where `before`
 * is k ahead of `after`. */
class Search {
public:
    using Equal = bool (*)(const Item& one, const Item& other);

    Search(const Item* before, const Item* after, const Area& area, Equal isEqual)
        : m_before(before + area.before),
          m_after(after + area.after),
          m_beforeCount(static_cast<std::ptrdiff_t>(area.beforeEnd - area.before)),
          m_afterCount(static_cast<std::ptrdiff_t>(area.afterEnd - area.after)),
          m_isEqual(isEqual) {}

    /** True when it comes to the end of both. */
    bool run(std::size_t reach) {
        for (std::ptrdiff_t differences = 0; differences <= static_cast<std::ptrdiff_t>(reach);
             ++differences) {
            m_farthest.emplace_back();
            for (std::ptrdiff_t diagonal = -differences; diagonal <= differences; diagonal += 2) {
                const std::ptrdiff_t x = follow(begin(differences, diagonal), diagonal);
                m_farthest.back().push_back(static_cast<std::int32_t>(x));
                if (x == m_beforeCount && x - diagonal == m_afterCount) {
                    m_end = diagonal;
                    return true;
                }
            }
        }
        m_end = bestDiagonal();
        return false;
    }

    /** Where it came to. */
    Place end() const {
        const std::ptrdiff_t x = farthest(last(), m_end);
        return {static_cast<std::size_t>(x), static_cast<std::size_t>(x - m_end)};
    }

    /** What is equal on the way there. */
    std::vector<Match> path() const {
        std::vector<Match> matches;
        std::ptrdiff_t diagonal = m_end;
        for (std::ptrdiff_t differences = last(); differences >= 0; --differences) {
            const std::ptrdiff_t x = farthest(differences, diagonal);
            const std::ptrdiff_t from = begin(differences, diagonal);
            if (x > from) {
                matches.push_back({static_cast<std::size_t>(from), static_cast<std::size_t>(from - diagonal),
                                   static_cast<std::size_t>(x - from)});
            }
            diagonal += differences > 0 && comesFromAbove(differences, diagonal) ? 1 : -1;
        }
        std::reverse(matches.begin(), matches.end());
        return matches;
    }

private:
    std::ptrdiff_t last() const { return static_cast<std::ptrdiff_t>(m_farthest.size()) - 1; }

    std::ptrdiff_t farthest(std::ptrdiff_t differences, std::ptrdiff_t diagonal) const {
        return m_farthest[static_cast<std::size_t>(differences)]
                         [static_cast<std::size_t>((diagonal + differences) / 2)];
    }

    /** One comes onto the diagonal by an item that only `after` has. */
    bool comesFromAbove(std::ptrdiff_t differences, std::ptrdiff_t diagonal) const {
        return diagonal == -differences ||
               (diagonal != differences &&
                farthest(differences - 1, diagonal - 1) < farthest(differences - 1, diagonal + 1));
    }

    std::ptrdiff_t begin(std::ptrdiff_t differences, std::ptrdiff_t diagonal) const {
        if (differences == 0) {
            return 0;
        }
        return comesFromAbove(differences, diagonal) ? farthest(differences - 1, diagonal + 1)
                                                     : farthest(differences - 1, diagonal - 1) + 1;
    }

    std::ptrdiff_t follow(std::ptrdiff_t x, std::ptrdiff_t diagonal) const {
        while (x < m_beforeCount && x - diagonal < m_afterCount &&
               m_isEqual(m_before[x], m_after[x - diagonal])) {
            ++x;
        }
        return x;
    }

    bool isInside(std::ptrdiff_t x, std::ptrdiff_t diagonal) const {
        return x <= m_beforeCount && x - diagonal <= m_afterCount;
    }

    /** On which one came farthest. */
    std::ptrdiff_t bestDiagonal() const {
        std::ptrdiff_t best = -last();
        std::ptrdiff_t most = -1;
        for (std::ptrdiff_t diagonal = -last(); diagonal <= last(); diagonal += 2) {
            const std::ptrdiff_t x = farthest(last(), diagonal);
            if (isInside(x, diagonal) && x + x - diagonal > most) {
                most = x + x - diagonal;
                best = diagonal;
            }
        }
        return best;
    }

    const Item* m_before;
    const Item* m_after;
    std::ptrdiff_t m_beforeCount;
    std::ptrdiff_t m_afterCount;
    Equal m_isEqual;
    /** For each number of differences, for every second diagonal, how far one comes in `before`. */
    std::vector<std::vector<std::int32_t>> m_farthest;
    std::ptrdiff_t m_end = 0;
};

bool isFullyEqual(const Item& one, const Item& other) {
    return one.full == other.full;
}

bool isRoughlyEqual(const Item& one, const Item& other) {
    return one.rough == other.rough;
}

using Keyed = std::vector<std::pair<std::uint64_t, std::size_t>>;

/** The places of keys that are there once, in the order of the keys. */
Keyed onlyOnes(const std::vector<Item>& items, std::size_t begin, std::size_t end) {
    Keyed keyed;
    keyed.reserve(end - begin);
    for (std::size_t place = begin; place < end; ++place) {
        keyed.emplace_back(items[place].full, place);
    }
    std::sort(keyed.begin(), keyed.end());
    Keyed ones;
    for (std::size_t place = 0; place < keyed.size(); ++place) {
        const bool isLikeBefore = place > 0 && keyed[place - 1].first == keyed[place].first;
        const bool isLikeNext = place + 1 < keyed.size() && keyed[place + 1].first == keyed[place].first;
        if (!isLikeBefore && !isLikeNext) {
            ones.push_back(keyed[place]);
        }
    }
    return ones;
}

/** The longest part of `places`, which ascend in `before`, that ascends in `after`, too. */
std::vector<Place> ascending(const std::vector<Place>& places) {
    constexpr std::size_t none = ~std::size_t{0};
    std::vector<std::size_t> ends;
    std::vector<std::size_t> previous(places.size(), none);
    for (std::size_t index = 0; index < places.size(); ++index) {
        const auto end = std::lower_bound(
            ends.begin(), ends.end(), places[index].after,
            [&places](std::size_t other, std::size_t after) { return places[other].after < after; });
        previous[index] = end != ends.begin() ? *(end - 1) : none;
        if (end == ends.end()) {
            ends.push_back(index);
        } else {
            *end = index;
        }
    }
    std::vector<Place> chosen;
    for (std::size_t index = ends.empty() ? none : ends.back(); index != none; index = previous[index]) {
        chosen.push_back(places[index]);
    }
    std::reverse(chosen.begin(), chosen.end());
    return chosen;
}

class Aligner {
public:
    Aligner(const std::vector<Item>& before, const std::vector<Item>& after, Search::Equal isEqual,
            std::size_t reach)
        : m_before(before),
          m_after(after),
          m_isEqual(isEqual),
          m_reach(reach) {}

    void align(Area area, int divisions) {
        bool mayDivide = divisions < mostDivisions && m_isEqual == &isFullyEqual;
        const Match end = commonEnd(area);
        for (bool isDone = false; !isDone;) {
            takeCommonBeginning(area);
            if (area.isEmpty()) {
                break;
            }
            Search search(m_before.data(), m_after.data(), area, m_isEqual);
            isDone = search.run(m_reach);
            if (!isDone && std::exchange(mayDivide, false)) {
                const std::vector<Place> fast = heldFast(area);
                if (!fast.empty()) {
                    alignBetween(fast, area, divisions + 1);
                    break;
                }
            }
            for (const Match& match : search.path()) {
                add({match.before + area.before, match.after + area.after, match.count});
            }
            area.before += search.end().before;
            area.after += search.end().after;
        }
        add(end);
    }

    void add(const Match& match) {
        if (match.count == 0) {
            return;
        }
        if (!m_matches.empty()) {
            Match& last = m_matches.back();
            if (last.before + last.count == match.before && last.after + last.count == match.after) {
                last.count += match.count;
                return;
            }
        }
        m_matches.push_back(match);
    }

    std::vector<Match> take() { return std::move(m_matches); }

private:
    bool belongTogether(std::size_t before, std::size_t after) const {
        return m_isEqual(m_before[before], m_after[after]);
    }

    void takeCommonBeginning(Area& area) {
        std::size_t count = 0;
        while (area.before + count < area.beforeEnd && area.after + count < area.afterEnd &&
               belongTogether(area.before + count, area.after + count)) {
            ++count;
        }
        add({area.before, area.after, count});
        area.before += count;
        area.after += count;
    }

    /** Takes what is equal at the end out of the area. */
    Match commonEnd(Area& area) const {
        std::size_t count = 0;
        while (!area.isEmpty() && belongTogether(area.beforeEnd - 1, area.afterEnd - 1)) {
            --area.beforeEnd;
            --area.afterEnd;
            ++count;
        }
        return {area.beforeEnd, area.afterEnd, count};
    }

    /** Items that are there once on either side. */
    std::vector<Place> heldFast(const Area& area) const {
        const Keyed before = onlyOnes(m_before, area.before, area.beforeEnd);
        const Keyed after = onlyOnes(m_after, area.after, area.afterEnd);
        std::vector<Place> places;
        auto next = after.begin();
        for (const auto& [key, place] : before) {
            while (next != after.end() && next->first < key) {
                ++next;
            }
            if (next != after.end() && next->first == key) {
                places.push_back({place, next->second});
            }
        }
        std::sort(places.begin(), places.end(),
                  [](const Place& one, const Place& other) { return one.before < other.before; });
        return ascending(places);
    }

    void alignBetween(const std::vector<Place>& fast, const Area& area, int divisions) {
        Area part = area;
        for (const Place& place : fast) {
            part.beforeEnd = place.before;
            part.afterEnd = place.after;
            align(part, divisions);
            add({place.before, place.after, 1});
            part.before = place.before + 1;
            part.after = place.after + 1;
        }
        part.beforeEnd = area.beforeEnd;
        part.afterEnd = area.afterEnd;
        align(part, divisions);
    }

    const std::vector<Item>& m_before;
    const std::vector<Item>& m_after;
    Search::Equal m_isEqual;
    std::size_t m_reach;
    std::vector<Match> m_matches;
};

} // namespace

std::vector<Match> align(const std::vector<Item>& before, const std::vector<Item>& after) {
    return align(before, after, reachFor(before.size() + after.size()));
}

std::vector<Match> align(const std::vector<Item>& before, const std::vector<Item>& after, std::size_t reach) {
    Aligner fully(before, after, &isFullyEqual, reach);
    fully.align({0, before.size(), 0, after.size()}, 0);
    Aligner both(before, after, &isRoughlyEqual, reach);
    Area between{0, 0, 0, 0};
    std::vector<Match> matches = fully.take();
    matches.push_back({before.size(), after.size(), 0});
    for (const Match& match : matches) {
        between.beforeEnd = match.before;
        between.afterEnd = match.after;
        both.align(between, mostDivisions);
        both.add(match);
        between.before = match.before + match.count;
        between.after = match.after + match.count;
    }
    return both.take();
}

} // namespace Radio::Recordings

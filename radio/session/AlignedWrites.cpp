#include "radio/session/AlignedWrites.h"

#include <algorithm>
#include <cstddef>

namespace Radio {

namespace {

using Write = std::pair<std::string, std::int64_t>;
using Writes = std::vector<Write>;

/** Above this many pairs of writes nobody waits for the best answer. */
constexpr std::size_t mostPairs = 4'000'000;

/** What the ends of two lists, from a place in each on, have in common: whole writes, and beside them
 * drivers. */
struct Common {
    std::size_t writes = 0;
    std::size_t drivers = 0;

    bool operator<(const Common& other) const {
        return writes != other.writes ? writes < other.writes : drivers < other.drivers;
    }
};

class Alignment {
public:
    Alignment(const Writes& expected, const Writes& found) : m_expected(expected), m_found(found) {}

    std::vector<AlignedWrite> take();

private:
    void alignBest(std::size_t expectedEnd, std::size_t foundEnd);
    void addPair() { add(m_expected[m_atExpected++], m_found[m_atFound++]); }
    void add(const Write& expected, const Write& found) {
        m_lines.push_back({expected.first, expected.second, found.second});
    }
    void addExpected() {
        const Write& write = m_expected[m_atExpected++];
        m_lines.push_back({write.first, write.second, std::nullopt});
    }
    void addFound() {
        const Write& write = m_found[m_atFound++];
        m_lines.push_back({write.first, std::nullopt, write.second});
    }
    void addPlaceByPlace(std::size_t expectedEnd, std::size_t foundEnd);

    const Writes& m_expected;
    const Writes& m_found;
    std::size_t m_atExpected = 0;
    std::size_t m_atFound = 0;
    std::vector<AlignedWrite> m_lines;
};

std::vector<AlignedWrite> Alignment::take() {
    while (m_atExpected < m_expected.size() && m_atFound < m_found.size() &&
           m_expected[m_atExpected] == m_found[m_atFound]) {
        addPair();
    }
    std::size_t expectedEnd = m_expected.size();
    std::size_t foundEnd = m_found.size();
    while (expectedEnd > m_atExpected && foundEnd > m_atFound &&
           m_expected[expectedEnd - 1] == m_found[foundEnd - 1]) {
        --expectedEnd;
        --foundEnd;
    }
    const std::size_t width = foundEnd - m_atFound + 1;
    if (expectedEnd - m_atExpected < mostPairs / width) {
        alignBest(expectedEnd, foundEnd);
    } else {
        addPlaceByPlace(expectedEnd, foundEnd);
    }
    while (m_atExpected < m_expected.size()) {
        addPair();
    }
    return std::move(m_lines);
}

void Alignment::alignBest(std::size_t expectedEnd, std::size_t foundEnd) {
    const std::size_t rows = expectedEnd - m_atExpected;
    const std::size_t columns = foundEnd - m_atFound;
    const std::size_t firstExpected = m_atExpected;
    const std::size_t firstFound = m_atFound;
    std::vector<Common> common((rows + 1) * (columns + 1));
    const auto at = [&](std::size_t row, std::size_t column) -> Common& {
        return common[row * (columns + 1) + column];
    };
    const auto together = [&](std::size_t row, std::size_t column) {
        const Write& expected = m_expected[firstExpected + row];
        const Write& found = m_found[firstFound + column];
        Common rest = at(row + 1, column + 1);
        rest.writes += expected == found ? 1 : 0;
        rest.drivers += expected != found && expected.first == found.first ? 1 : 0;
        return rest;
    };
    for (std::size_t row = rows; row-- > 0;) {
        for (std::size_t column = columns; column-- > 0;) {
            at(row, column) = std::max({at(row + 1, column), at(row, column + 1), together(row, column)});
        }
    }
    while (m_atExpected < expectedEnd || m_atFound < foundEnd) {
        const std::size_t row = m_atExpected - firstExpected;
        const std::size_t column = m_atFound - firstFound;
        const bool bothLeft = row < rows && column < columns;
        if (bothLeft && m_expected[m_atExpected].first == m_found[m_atFound].first &&
            !(together(row, column) < at(row, column))) {
            addPair();
        } else if (column == columns || (row < rows && !(at(row + 1, column) < at(row, column)))) {
            addExpected();
        } else {
            addFound();
        }
    }
}

void Alignment::addPlaceByPlace(std::size_t expectedEnd, std::size_t foundEnd) {
    while (m_atExpected < expectedEnd || m_atFound < foundEnd) {
        const bool bothLeft = m_atExpected < expectedEnd && m_atFound < foundEnd;
        if (bothLeft && m_expected[m_atExpected].first == m_found[m_atFound].first) {
            addPair();
            continue;
        }
        if (m_atExpected < expectedEnd) {
            addExpected();
        }
        if (m_atFound < foundEnd) {
            addFound();
        }
    }
}

} // namespace

std::vector<AlignedWrite> alignWrites(const Writes& expected, const Writes& found) {
    return Alignment(expected, found).take();
}

} // namespace Radio

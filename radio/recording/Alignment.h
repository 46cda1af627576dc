#ifndef RADIO_RECORDING_ALIGNMENT_H
#define RADIO_RECORDING_ALIGNMENT_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Radio::Recordings {

/** An operation or a call as one of two recordings has it. Equal numbers mean equal things. */
struct Item {
    /** Which record it is, or begins with. */
    std::uint64_t sequence = 0;
    /** What is done with what. */
    std::uint64_t rough = 0;
    /** With which arguments, too. */
    std::uint64_t full = 0;
    /** And what came of it. */
    std::uint64_t outcome = 0;
};

/** So many items from these places on belong together, one by one. */
struct Match {
    std::size_t before = 0;
    std::size_t after = 0;
    std::size_t count = 0;
};

/**
 * Which items of `before` and `after` belong together, in the order of both: first those with equal
 * arguments, as many as possible, then, between them, those that do the same with the same thing.
 *
 * As many as possible holds up to some 2,000 differences in 65,000 items, and fewer in more. With more than
 * that, items that are there once on either side are held fast and what is between them is aligned by itself;
 * where there are none, as far as the differences reach, and from there on again. So its time grows with the
 * number of items, and its memory with that, too.
 */
std::vector<Match> align(const std::vector<Item>& before, const std::vector<Item>& after);
/** The same; one search goes through so many differences, at least 1. */
std::vector<Match> align(const std::vector<Item>& before, const std::vector<Item>& after, std::size_t reach);

} // namespace Radio::Recordings

#endif

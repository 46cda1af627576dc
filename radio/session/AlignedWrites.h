#ifndef RADIO_SESSION_ALIGNEDWRITES_H
#define RADIO_SESSION_ALIGNEDWRITES_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Radio {

/** What two lists of writes have at one place; one of them may have nothing there. */
struct AlignedWrite {
    std::string driver;
    std::optional<std::int64_t> expected;
    std::optional<std::int64_t> found;

    bool isSame() const { return expected == found; }
};

/**
 * Two lists of writes side by side: as many as possible of those that are the same stand beside each other,
 * and between them those of the same driver, so that one that is missing moves none behind it. Very long
 * lists are compared place by place where they differ.
 */
std::vector<AlignedWrite> alignWrites(const std::vector<std::pair<std::string, std::int64_t>>& expected,
                                      const std::vector<std::pair<std::string, std::int64_t>>& found);

} // namespace Radio

#endif

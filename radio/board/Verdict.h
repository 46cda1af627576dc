#ifndef RADIO_BOARD_VERDICT_H
#define RADIO_BOARD_VERDICT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radio {

/** What came of one of the limits that a board states. */
struct JudgedLimit {
    /** Its key in [limits]. */
    std::string_view name;
    /** In dBc, of "leakage_improvement" in dB. */
    double limit = 0.0;
    /** The worst there was, to a hundredth as it is shown; nothing when it cannot be known. */
    std::optional<double> found{};
    /** Why it cannot be known, as one clause. */
    std::string whyUnknown{};
    /** Where the worst is, or that of which nothing is known, as far as it is at one place: the channel of
     * several, the carrier in kHz, and degrees Celsius. */
    std::optional<int> channel{};
    std::optional<std::uint32_t> frequency{};
    std::optional<std::int32_t> temperature{};

    /** What is not known holds no limit. */
    bool isHeld() const;
};

enum class VerdictKind : std::uint8_t {
    none, ///< there was nothing to judge by, or nothing to judge
    pass,
    fail,
};

/** "PASS" or "FAIL"; empty for none. */
std::string_view toString(VerdictKind kind);

/** What was found, held against the limits of a board. */
struct Verdict {
    /** Those that are stated for it. */
    std::vector<JudgedLimit> limits{};
    /** When there are none: why nobody judges, as one clause. */
    std::string whyNone{};

    VerdictKind kind() const;
};

/** A level as it is shown, and so as it is judged: to a hundredth of a dB. */
double toHundredth(double level);

/** True when `found` meets the limit `name`, of which only "leakage_improvement" is a least one. */
bool meetsLimit(std::string_view name, double found, double limit);

/** A limit as people write it, for example "-70.5". */
std::string limitText(double limit);

/** What is wrong with a limit that is not held, for example "leakage anywhere -55.56 dBc at 17823750 kHz, -22
 * degrees, limit -74". */
std::string missedText(const JudgedLimit& limit);

/**
 * The verdict for people: one line that begins with "PASS: " or "NO VERDICT: ", or one that begins with
 * "FAIL: " for each limit that is not held and one for those that are.
 */
std::vector<std::string> linesOf(const Verdict& verdict);

} // namespace Radio

#endif

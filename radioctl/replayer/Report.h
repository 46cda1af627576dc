#ifndef RADIOCTL_REPLAYER_REPORT_H
#define RADIOCTL_REPLAYER_REPORT_H

#include "radioctl/replayer/Player.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Replayer {

/** With what the process ends, as radioctl does. */
enum class Ending : int { identical = 0, different = 1, unusable = 3 };

/** What the process says of a recording before it ends: a line for each thing, "name value". */
class Report {
public:
    explicit Report(const std::string& outcome) { add("outcome", outcome); }

    void add(const std::string& name, std::uint64_t value) { add(name, std::to_string(value)); }
    /** What stands in `text` and is no character of a line is left out. */
    void add(const std::string& name, const std::string& text);
    /** What the library did. */
    void add(const Call& now);

    /** Writes it to standard output and ends the process. */
    [[noreturn]] void send(Ending ending) const;

private:
    std::string m_text;
};

/** The same in a handler of signals: it takes no memory. */
class CrashReport {
public:
    void add(const char* name, std::uint64_t value);
    [[noreturn]] void send(Ending ending) const;

private:
    void put(char character);

    std::array<char, 512> m_text{};
    std::size_t m_length = 0;
};

} // namespace Replayer

#endif

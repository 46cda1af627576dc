#include "thermal/ThermalLog.h"

#include "InputError.h"
#include "Numbers.h"
#include "PlainText.h"
#include "Words.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace Radioctl::Thermal {

namespace {

constexpr std::string_view heading = "seconds,degrees";
/** No radio works outside; a log in Kelvin or in tenths of a degree is found out. */
constexpr std::int32_t coldestRadio = -100;
constexpr std::int32_t hottestRadio = 200;
/** A century of seconds since any epoch, and more; times can be subtracted and scaled without a thought. */
constexpr std::int64_t latest = 1'000'000'000'000;
constexpr std::size_t longestLine = 256;

std::string withoutBlanks(std::string_view line) {
    std::string text(line);
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
}

/** Takes one line after the other. */
class LogReader {
public:
    explicit LogReader(std::string name) : m_place{std::move(name), 0} {}

    void take(std::string_view line) {
        ++m_place.line;
        if (m_place.line == 1) {
            line = withoutByteOrderMark(line);
        }
        line = trimmed(line);
        if (line.empty() || line.front() == '#') {
            return;
        }
        if (m_hasHeading) {
            takeSample(line);
        } else if (withoutBlanks(line) == heading) {
            m_hasHeading = true;
        } else {
            fail(inQuotes(line) + ", expected the heading \"" + std::string(heading) + "\"");
        }
    }

    void refuseLongLine() {
        ++m_place.line;
        fail("longer than " + std::to_string(longestLine - 1) +
             " characters, expected two numbers, such as \"60,-5\"");
    }

    ThermalLog finish() {
        if (m_log.empty()) {
            m_place.line = 0;
            fail(m_hasHeading ? "no samples, expected lines such as \"60,-5\" below the heading"
                              : "empty, expected the heading \"" + std::string(heading) + "\"");
        }
        return std::move(m_log);
    }

private:
    void takeSample(std::string_view line) {
        const std::size_t comma = line.find(',');
        if (comma == std::string_view::npos || line.find(',', comma + 1) != std::string_view::npos) {
            fail(inQuotes(line) + ", expected two numbers with a comma between them, such as \"60,-5\"");
        }
        const Sample sample{seconds(trimmed(line.substr(0, comma))),
                            degrees(trimmed(line.substr(comma + 1)))};
        if (!m_log.empty() && sample.seconds <= m_log.back().seconds) {
            fail("second " + std::to_string(sample.seconds) + ", expected more than the " +
                 std::to_string(m_log.back().seconds) + " of the sample before it");
        }
        m_log.push_back(sample);
    }

    std::int64_t seconds(std::string_view text) const {
        const auto number = parseNumber<std::int64_t>(withoutPlus(text), 0, latest);
        if (!number) {
            fail("seconds: " + inQuotes(text) + ", expected a whole number from 0 to " +
                 std::to_string(latest));
        }
        return *number;
    }

    std::int32_t degrees(std::string_view text) const {
        const auto number = parseNumber(withoutPlus(text), coldestRadio, hottestRadio);
        if (!number) {
            fail("degrees: " + inQuotes(text) + ", expected a whole number from " +
                 std::to_string(coldestRadio) + " to " + std::to_string(hottestRadio) +
                 ", as the temperature service gives it");
        }
        return *number;
    }

    [[noreturn]] void fail(const std::string& message) const { throw InputError(m_place, message); }

    Place m_place;
    bool m_hasHeading = false;
    ThermalLog m_log;
};

[[noreturn]] void throwUnreadable(const std::string& name, int reason) {
    throw InputError({name, 0}, "cannot be read: " + std::generic_category().message(reason) +
                                    ", expected a temperature log");
}

} // namespace

ThermalLog readThermalLog(const std::filesystem::path& file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        throwUnreadable(file.string(), EISDIR);
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throwUnreadable(file.string(), errno == 0 ? EIO : errno);
    }
    return readThermalLog(stream, file.string());
}

ThermalLog readThermalLog(std::istream& stream, const std::string& name) {
    LogReader reader(name);
    // A line has a limit, so that a file that is no log at all is not read as one endless line.
    std::array<char, longestLine> line{};
    while (stream.getline(line.data(), static_cast<std::streamsize>(line.size()))) {
        const auto taken = static_cast<std::size_t>(stream.gcount());
        reader.take({line.data(), stream.eof() ? taken : taken - 1});
    }
    if (stream.bad()) {
        throwUnreadable(name, EIO);
    }
    if (!stream.eof()) {
        reader.refuseLongLine();
    }
    return reader.finish();
}

} // namespace Radioctl::Thermal

#include "radio/thermal/ThermalLog.h"

#include "radio/board/CalibrationBounds.h"
#include "radio/files/CsvFile.h"
#include "radio/files/TextFile.h"
#include "radio/text/Numbers.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sstream>
#include <string_view>
#include <system_error>

namespace Radio::Thermal {

namespace {

constexpr std::string_view heading = "seconds,degrees";
/** A century of seconds since any epoch, and more; times can be subtracted and scaled without a thought. */
constexpr std::int64_t latest = 1'000'000'000'000;
constexpr std::size_t longestLine = 255;
constexpr std::size_t longestPipe = std::size_t{256} << 20U;

void requireHeading(const CsvLines& lines) {
    std::string text(lines.text());
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    if (text != heading) {
        throw InputError(lines.place(),
                         inQuotes(lines.text()) + ", expected the heading \"" + std::string(heading) + "\"");
    }
}

std::int64_t integerIn(const CsvLines& lines, std::size_t cell, const char* name, std::int64_t least,
                       std::int64_t most, const char* remark = "") {
    const std::string_view text = lines.cells()[cell];
    const auto number = parseNumber(withoutPlus(text), least, most);
    // An item copies its texts; that is only for the message about a wrong one.
    return number ? *number : CsvItem(name, text, lines.place()).integer(least, most, remark);
}

void takeSample(const CsvLines& lines, ThermalLog& log) {
    if (lines.cells().size() != 2) {
        throw InputError(lines.place(),
                         inQuotes(lines.text()) +
                             ", expected two numbers with a comma between them, such as \"60,-5\"");
    }
    const Sample sample{integerIn(lines, 0, "seconds", 0, latest),
                        static_cast<std::int32_t>(integerIn(lines, 1, "degrees", temperatureBounds.low,
                                                            temperatureBounds.high,
                                                            ", as the temperature service gives it"))};
    if (!log.empty() && sample.seconds <= log.back().seconds) {
        throw InputError(lines.place(), "second " + std::to_string(sample.seconds) +
                                            ", expected more than the " + std::to_string(log.back().seconds) +
                                            " of the sample before it");
    }
    log.push_back(sample);
}

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
    OrdinaryFile log(file);
    if (!log.isOpen()) {
        throwUnreadable(file.string(), log.reason());
    }
    if (!log.isOrdinary()) {
        // What comes through a pipe may not come at all.
        const std::string text = readTextFile(file, longestPipe, "a temperature log");
        if (text.size() > longestPipe) {
            throw InputError({file.string(), 0},
                             "gives more than 256 MiB, expected a shorter log, or a file");
        }
        std::istringstream stream(text);
        return readThermalLog(stream, file.string());
    }
    return readThermalLog(log.stream(), file.string());
}

ThermalLog readThermalLog(std::istream& stream, const std::string& name) {
    ThermalLog log;
    CsvLines lines(name, longestLine, "two numbers, such as \"60,-5\"");
    // A limit, byte order mark included, so that a file that is no log is not read as one endless line.
    std::array<char, longestLine + 1> line{};
    while (stream.getline(line.data(), static_cast<std::streamsize>(line.size()))) {
        const auto taken = static_cast<std::size_t>(stream.gcount());
        const CsvLine kind = lines.take({line.data(), stream.eof() ? taken : taken - 1});
        if (kind == CsvLine::heading) {
            requireHeading(lines);
        } else if (kind == CsvLine::row) {
            takeSample(lines, log);
        }
    }
    if (stream.bad()) {
        throwUnreadable(name, EIO);
    }
    if (!stream.eof()) {
        lines.refuseLongLine();
    }
    if (log.empty()) {
        throw InputError({name, 0}, lines.hasHeading()
                                        ? "no samples, expected lines such as \"60,-5\" below the heading"
                                        : "empty, expected the heading \"" + std::string(heading) + "\"");
    }
    return log;
}

} // namespace Radio::Thermal

#include "calibration/Journal.h"

#include "AtomicFile.h"
#include "Words.h"
#include "calibration/Settings.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace Radioctl::Calibration {

namespace {

namespace fs = std::filesystem;

constexpr const char* kind = "LO-leakage calibration";
constexpr int format = 1;
/** Some millions of probes: far more than a transmitter is given the time for. */
constexpr std::uintmax_t largestJournal = 512ULL * 1024 * 1024;

std::string reasonText(int reason) {
    return std::generic_category().message(reason);
}

Json toJson(const JournalHeader& header) {
    return {{"journal", kind},
            {"format", format},
            {"board", header.board},
            {"serial", header.serial},
            {"date", header.date},
            {"version", header.version},
            {"settings", toJson(header.settings)}};
}

JournalHeader headerFrom(const Json& json) {
    if (json.at("journal") != kind || json.at("format") != format) {
        throw std::runtime_error("another kind of file, or of a later version of this program");
    }
    return {json.at("board").get<std::string>(), json.at("serial").get<std::string>(),
            json.at("date").get<std::string>(), json.at("version").get<std::string>(),
            settingsFromJson(json.at("settings"))};
}

std::int32_t integerFrom(const Json& json) {
    const auto number = json.get<std::int64_t>();
    if (!json.is_number_integer() || number < std::numeric_limits<std::int32_t>::min() ||
        number > std::numeric_limits<std::int32_t>::max()) {
        throw std::runtime_error("not an integer of 32 bits: " + json.dump());
    }
    return static_cast<std::int32_t>(number);
}

/** Takes one line after the other. */
class JournalReader {
public:
    explicit JournalReader(const fs::path& file) : m_place{file.string(), 0} {}

    void take(const std::string& line) {
        ++m_place.line;
        try {
            const Json json = Json::parse(line);
            if (m_place.line == 1) {
                m_content.header = headerFrom(json);
            } else if (json.contains("finished")) {
                m_content.isFinished = true;
            } else {
                takeProbe(json);
            }
        } catch (const std::exception& error) {
            throw InputError(m_place,
                             std::string(m_place.line == 1 ? "not the beginning of a calibration journal"
                                                           : "not a probe of a calibration journal") +
                                 ": " + harmless(error.what()));
        }
        m_content.size += line.size() + 1;
    }

    JournalContent finish() {
        if (m_place.line == 0) {
            throw InputError(m_place, "empty, expected a calibration journal");
        }
        return std::move(m_content);
    }

private:
    void takeProbe(const Json& json) {
        const std::int32_t temperature = integerFrom(json.at("degrees"));
        const auto frequency = static_cast<std::uint32_t>(json.at("khz").get<std::int64_t>());
        Probe probe{integerFrom(json.at("i")), integerFrom(json.at("q")), std::nullopt};
        if (!json.at("reading").is_null()) {
            probe.reading = integerFrom(json.at("reading"));
        }
        m_content.probes[{temperature, frequency}].push_back({probe, m_place.line});
        m_content.isFinished = false;
    }

    Place m_place;
    JournalContent m_content;
};

} // namespace

JournalContent readJournal(const fs::path& file) {
    const Place whole{file.string(), 0};
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    if (error) {
        throw InputError(whole, "cannot be read: " + error.message() + ", expected a calibration journal");
    }
    if (size > largestJournal) {
        throw InputError(whole, "larger than 512 MiB, expected a calibration journal");
    }
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    JournalReader reader(file);
    std::string line;
    // What is behind the last line end was being written when the power went: it was never entered.
    while (std::getline(stream, line) && !stream.eof()) {
        reader.take(line);
    }
    if (!stream.eof()) {
        throw InputError(whole, "cannot be read: " + reasonText(errno) + ", expected a calibration journal");
    }
    return reader.finish();
}

void requireSameCalibration(const JournalHeader& wanted, const JournalHeader& begun, const fs::path& file) {
    const auto refuse = [&](const std::string& key, const std::string& was, const std::string& is) {
        throw InputError({file.string(), 1}, key + ": begun with " + harmless(was) + ", now asked for with " +
                                                 harmless(is) + "; --restart begins anew");
    };
    if (wanted.board != begun.board) {
        refuse("board", inQuotes(begun.board), inQuotes(wanted.board));
    }
    if (wanted.serial != begun.serial) {
        refuse("serial", inQuotes(begun.serial), inQuotes(wanted.serial));
    }
    const Json is = toJson(wanted.settings);
    const Json was = toJson(begun.settings);
    for (const auto& [key, value] : is.items()) {
        if (value != was.at(key)) {
            refuse(key, was.at(key).dump(), value.dump());
        }
    }
}

Journal::Journal(fs::path file, int descriptor) : m_file(std::move(file)), m_descriptor(descriptor) {}

Journal::Journal(Journal&& other) noexcept
    : m_file(std::move(other.m_file)),
      m_descriptor(std::exchange(other.m_descriptor, -1)) {}

Journal::~Journal() {
    if (m_descriptor != -1) {
        close(m_descriptor);
    }
}

Journal Journal::begin(const fs::path& file, const JournalHeader& header) {
    AtomicFile beginning(file);
    writeJsonLine(beginning.stream(), toJson(header));
    beginning.commit();
    return open(file);
}

Journal Journal::open(const fs::path& file) {
    Journal journal(file, ::open(file.c_str(), O_RDWR | O_APPEND | O_CLOEXEC));
    if (journal.m_descriptor == -1) {
        journal.fail("cannot be opened: " + reasonText(errno));
    }
    if (flock(journal.m_descriptor, LOCK_EX | LOCK_NB) != 0) {
        journal.fail(errno == EWOULDBLOCK ? "another calibration is using it"
                                          : "cannot be locked: " + reasonText(errno));
    }
    return journal;
}

void Journal::cutOff(std::uintmax_t size) {
    if (ftruncate(m_descriptor, static_cast<off_t>(size)) != 0) {
        fail("could not be written: " + reasonText(errno));
    }
}

void Journal::enter(std::uint32_t frequency, std::int32_t temperature, const Probe& probe) {
    const Json json{{"khz", frequency},
                    {"degrees", temperature},
                    {"i", probe.i},
                    {"q", probe.q},
                    {"reading", probe.reading ? Json(*probe.reading) : Json(nullptr)},
                    {"time", preciseUtcText(std::chrono::system_clock::now())}};
    append(json.dump() + "\n");
}

void Journal::finish() {
    append(Json{{"finished", preciseUtcText(std::chrono::system_clock::now())}}.dump() + "\n");
}

void Journal::append(const std::string& line) {
    std::size_t written = 0;
    while (written < line.size()) {
        const ssize_t count = write(m_descriptor, line.data() + written, line.size() - written);
        if (count == -1 && errno != EINTR) {
            fail("could not be written: " + reasonText(errno));
        }
        written += count == -1 ? 0 : static_cast<std::size_t>(count);
    }
    if (fdatasync(m_descriptor) != 0) {
        fail("could not be written: " + reasonText(errno));
    }
}

void Journal::fail(const std::string& what) const {
    throw InputError({m_file.string(), 0}, what);
}

std::string utcText(std::chrono::system_clock::time_point time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    static_cast<void>(std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts));
    return text.data();
}

std::string preciseUtcText(std::chrono::system_clock::time_point time) {
    using std::chrono::milliseconds;
    const auto second = std::chrono::floor<std::chrono::seconds>(time);
    const std::string beyond = std::to_string(
        std::chrono::duration_cast<milliseconds>(time - second + std::chrono::seconds(1)).count());
    std::string text = utcText(second);
    return text.insert(text.size() - 1, "." + beyond.substr(1));
}

} // namespace Radioctl::Calibration

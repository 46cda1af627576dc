#include "radio/calibration/Journal.h"

#include "radio/calibration/QualificationJson.h"
#include "radio/calibration/Settings.h"
#include "radio/calibration/SettingsReader.h"
#include "radio/files/AtomicFile.h"
#include "radio/files/Fingerprint.h"
#include "radio/files/TextFile.h"
#include "radio/text/Words.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <stdexcept>
#include <system_error>

namespace Radio::Calibration {

namespace {

namespace fs = std::filesystem;

constexpr const char* journalKind = "LO-leakage calibration";
constexpr int journalFormat = 1;
constexpr const char* anotherUsesIt = "another calibration is using it";
/** More than the longest header has; a file that is no journal at all is not read as one endless line. */
constexpr std::size_t longestLine = 1024UL * 1024;

std::string reasonText(int reason) {
    return std::generic_category().message(reason);
}

/** What a failed write says about the disk; empty: nothing that is known. */
std::string diskText(int reason) {
    switch (reason) {
    case ENOSPC:
        return ": the disk is full";
    case EDQUOT:
        return ": the disk is full as far as this user may fill it";
    case EFBIG:
        return ": the disk is full as far as one file may fill it";
    case EIO:
        return ": the disk is broken or gone";
    default:
        return {};
    }
}

Json toJson(const JournalHeader& header) {
    Json json = {{"journal", journalKind},  {"format", journalFormat}, {"board", header.board},
                 {"serial", header.serial}, {"date", header.date},     {"version", header.version}};
    if (header.isHardware) {
        json["mode"] = hardwareMode;
    }
    json["transmitter"] = header.transmitter;
    json["settings"] = toJson(header.settings);
    return json;
}

/** Journals without a mode are of a simulation. */
bool isHardwareFrom(const ParsedJson& json) {
    if (!json.contains("mode")) {
        return false;
    }
    if (json.at("mode") != hardwareMode) {
        throw std::runtime_error("another kind of file, or of a later version of this program");
    }
    return true;
}

JournalHeader headerFrom(const ParsedJson& json) {
    if (json.at("journal") != journalKind || json.at("format") != journalFormat) {
        throw std::runtime_error("another kind of file, or of a later version of this program");
    }
    return {json.at("board").get<std::string>(),
            json.at("serial").get<std::string>(),
            json.at("date").get<std::string>(),
            json.at("version").get<std::string>(),
            json.at("transmitter").get<std::string>(),
            settingsFromJson(json.at("settings")),
            isHardwareFrom(json)};
}

/** A setting as people read it. */
std::string shortText(const Json& setting) {
    constexpr std::size_t most = 5;
    const std::vector<Json>* const elements = setting.elements();
    return elements != nullptr && elements->size() > most ? std::to_string(elements->size()) + " others"
                                                          : toText(setting);
}

/** A fit probes wherever it wants within its ends. */
bool isPointOf(const Settings& settings, std::uint32_t frequency, std::int32_t temperature) {
    const auto& frequencies = settings.frequencies;
    const auto& temperatures = settings.temperatures;
    if (settings.method == CalibrationMethod::fit) {
        return frequency >= frequencies.front() && frequency <= frequencies.back() &&
               temperature >= temperatures.front() && temperature <= temperatures.back();
    }
    return std::binary_search(temperatures.begin(), temperatures.end(), temperature) &&
           std::binary_search(frequencies.begin(), frequencies.end(), frequency);
}

/** Takes one line after the other. */
class JournalReader {
public:
    explicit JournalReader(std::string name) : m_place{std::move(name), 0} {}

    void take(const std::string& line) {
        if (!m_wrong.empty()) {
            throw InputError(m_place, m_wrong);
        }
        ++m_place.line;
        try {
            const ParsedJson json = ParsedJson::parse(line);
            if (m_place.line == 1) {
                m_content.header = headerFrom(json);
            } else if (json.contains("finished")) {
                m_content.isFinished = true;
            } else if (json.contains("order_c")) {
                m_content.route = routeFromJson(json.at("order_c"), m_content.header.settings);
            } else if (json.contains("qualified")) {
                m_content.qualification = qualificationFromJson(json.at("qualified"));
            } else {
                takeProbe(json);
            }
            m_content.size += line.size() + 1;
        } catch (const ParsedJson::exception&) {
            m_wrong = m_place.line == 1 ? "expected the JSON object with which a calibration journal begins"
                                        : "expected a JSON object with khz, degrees, i, q and reading";
        } catch (const std::runtime_error& error) {
            m_wrong = error.what();
        }
    }

    /** A last line that cannot be read was being written when the power went: it was never entered. */
    JournalContent finish() {
        if (m_place.line == 0) {
            throw InputError(m_place, "has no whole line, expected a calibration journal");
        }
        if (m_place.line == 1 && !m_wrong.empty()) {
            throw InputError(m_place, m_wrong);
        }
        return std::move(m_content);
    }

private:
    void takeProbe(const ParsedJson& json) {
        const auto temperature = wholeNumber<std::int32_t>(json.at("degrees"));
        const auto frequency = wholeNumber<std::uint32_t>(json.at("khz"));
        if (!isPointOf(m_content.header.settings, frequency, temperature)) {
            throw std::runtime_error("no point at " + std::to_string(frequency) + " kHz, " +
                                     std::to_string(temperature) + " degrees");
        }
        if (json.contains("uncorrected")) {
            m_content.uncorrected[{temperature, frequency}] =
                wholeNumber<std::int32_t>(json.at("uncorrected"));
            return;
        }
        if (json.contains("analysed")) {
            m_content.analysed[{temperature, frequency}] = wholeNumber<std::int32_t>(json.at("analysed"));
            return;
        }
        Probe probe{wholeNumber<std::int32_t>(json.at("i")), wholeNumber<std::int32_t>(json.at("q")),
                    std::nullopt};
        if (!json.at("reading").is_null()) {
            probe.reading = wholeNumber<std::int32_t>(json.at("reading"));
        }
        m_content.probes[{temperature, frequency}].push_back({probe, m_place.line});
        m_content.isFinished = false;
    }

    Place m_place;
    /** What is wrong with the line that was taken last. */
    std::string m_wrong;
    JournalContent m_content;
};

/** Takes the next line that has an end; false when there is none, and when it is too long. */
bool takeLine(std::istream& stream, std::string& line) {
    std::array<char, 4096> part{};
    line.clear();
    while (line.size() <= longestLine) {
        stream.getline(part.data(), static_cast<std::streamsize>(part.size()));
        line.append(part.data(), static_cast<std::size_t>(stream.gcount()));
        if (stream.good()) {
            line.pop_back(); // in place of the line end
            return line.size() <= longestLine;
        }
        if (stream.eof() || stream.bad()) {
            return false;
        }
        stream.clear(); // there was more than a part
    }
    return false;
}

void add(Fingerprint& fingerprint, const CorrectionBranch& branch) {
    fingerprint.add(branch.gain);
    fingerprint.add(branch.step);
    fingerprint.add(branch.low);
    fingerprint.add(branch.high);
}

void add(Fingerprint& fingerprint, const DetectorDescription& detector) {
    for (const double number :
         {detector.slope, detector.zero, detector.floor, detector.noise, detector.settling}) {
        fingerprint.add(number);
    }
    fingerprint.add(detector.step);
    fingerprint.add(detector.low);
    fingerprint.add(detector.high);
}

} // namespace

bool isOrdinaryFile(const fs::path& file) {
    const auto refuse = [&](const std::string& what) {
        throw InputError({file.string(), 0}, what + ", expected a calibration journal");
    };
    std::error_code error;
    std::error_code ignored;
    const fs::file_status there = fs::status(file, error);
    if (!fs::exists(there)) {
        if (fs::is_symlink(file, ignored)) {
            refuse("a symbolic link that leads nowhere");
        }
        if (there.type() == fs::file_type::none) {
            refuse("cannot be reached: " + error.message());
        }
        return false;
    }
    if (fs::is_directory(there)) {
        refuse("is a directory");
    }
    if (!fs::is_regular_file(there)) {
        refuse("no ordinary file");
    }
    return true;
}

JournalContent readJournal(const fs::path& file) {
    const Place whole{file.string(), 0};
    std::error_code ignored;
    if (fs::is_directory(file, ignored)) {
        throw InputError(whole, "is a directory, expected a calibration journal");
    }
    OrdinaryFile journal(file);
    if (!journal.isOpen()) {
        throw InputError(whole, "cannot be read: " + reasonText(journal.reason()) +
                                    ", expected a calibration journal");
    }
    if (!journal.isOrdinary()) {
        throw InputError(whole, "no ordinary file, expected a calibration journal");
    }
    return readJournal(journal.stream(), file.string());
}

JournalContent readJournal(std::istream& stream, const std::string& name) {
    const Place whole{name, 0};
    JournalReader reader(name);
    std::string line;
    // What is behind the last line end was not written whole.
    while (takeLine(stream, line)) {
        reader.take(line);
    }
    if (stream.bad()) {
        throw InputError(whole, "cannot be read: " + reasonText(EIO) + ", expected a calibration journal");
    }
    if (!stream.eof()) {
        throw InputError(whole, "has a line of more than a mebibyte, expected a calibration journal");
    }
    return reader.finish();
}

std::string fingerprintOf(const LeakageDescription& leakage) {
    Fingerprint fingerprint;
    fingerprint.add(leakage.reference);
    for (const LeakagePath& path : leakage.paths) {
        for (const double number : {path.level, path.levelPerDegree, path.levelPerGHz, path.phase,
                                    path.phasePerDegree, path.delay}) {
            fingerprint.add(number);
        }
    }
    add(fingerprint, leakage.i);
    add(fingerprint, leakage.q);
    fingerprint.add(leakage.skew);
    add(fingerprint, leakage.detector);
    if (leakage.highDetector) {
        add(fingerprint, *leakage.highDetector);
    }
    fingerprint.add(leakage.seed);
    return fingerprint.text();
}

void requireSameCalibration(const JournalHeader& wanted, const JournalHeader& begun, const fs::path& file) {
    const auto refuse = [&](const std::string& key, const std::string& was, const std::string& is) {
        throw ChoiceError({file.string(), 1},
                          key + ": begun with " + harmless(was) + ", now asked for with " + harmless(is),
                          "restart");
    };
    if (wanted.isHardware != begun.isHardware) {
        // What was measured on one says nothing about the other.
        throw ChoiceError({file.string(), 1},
                          begun.isHardware ? "begun on hardware, now asked for in a simulation"
                                           : "begun in a simulation, now asked for on hardware",
                          begun.isHardware ? "hardware or restart" : "restart");
    }
    if (wanted.board != begun.board) {
        refuse("board", inQuotes(begun.board), inQuotes(wanted.board));
    }
    if (wanted.serial != begun.serial) {
        refuse("serial", inQuotes(begun.serial), inQuotes(wanted.serial));
    }
    const Json is = toJson(wanted.settings);
    const Json was = toJson(begun.settings);
    for (std::size_t n = 0; n < is.members().size(); ++n) {
        const auto& [key, value] = is.members()[n];
        const Json& before = was.members()[n].second;
        if (value != before) {
            refuse(key, shortText(before), shortText(value));
        }
    }
    if (wanted.transmitter != begun.transmitter) {
        throw ChoiceError({file.string(), 1},
                          wanted.isHardware ? "transmitter: what the channel's corrections and detectors "
                                              "are in the board's [hardware] has changed since"
                                            : "transmitter: the board's [[leakage]] of the channel has "
                                              "changed since",
                          "restart");
    }
}

Journal::Journal(fs::path file, int flags) : m_file(std::move(file)) {
    // A device may do something when it is opened.
    static_cast<void>(isOrdinaryFile(m_file));
    m_descriptor = ::open(m_file.c_str(), flags | O_CLOEXEC | O_NONBLOCK);
    if (m_descriptor == -1) {
        fail("cannot be opened: " + reasonText(errno));
    }
}

Journal::Journal(Journal&& other) noexcept
    : m_file(std::move(other.m_file)),
      m_descriptor(std::exchange(other.m_descriptor, -1)),
      m_lock(std::move(other.m_lock)) {}

Journal::~Journal() {
    if (m_descriptor != -1) {
        close(m_descriptor);
    }
}

Journal Journal::begin(const fs::path& file, const JournalHeader& header) {
    {
        AtomicFile beginning(file);
        beginning.stream() << toText(toJson(header)) << "\n";
        beginning.commitNew();
    }
    return open(file);
}

Journal Journal::begin(const fs::path& file, const JournalHeader& header, Journal& held) {
    {
        AtomicFile beginning(file);
        beginning.stream() << toText(toJson(header)) << "\n";
        beginning.commitNew();
    }
    Journal journal(file, O_RDWR | O_APPEND);
    journal.m_lock = std::move(held.m_lock);
    return journal;
}

Journal Journal::open(const fs::path& file) {
    Journal journal(file, O_RDWR | O_APPEND);
    journal.keepToItself();
    return journal;
}

Journal Journal::hold(const fs::path& file) {
    Journal journal(file, O_RDONLY);
    journal.keepToItself();
    return journal;
}

void Journal::keepToItself() {
    struct stat opened {};
    struct stat named {};
    if (fstat(m_descriptor, &opened) != 0 || !S_ISREG(opened.st_mode)) {
        fail("no ordinary file, expected a calibration journal");
    }
    takeLock();
    // Whoever had it until now may have put it away as a backup.
    if (stat(m_file.c_str(), &named) != 0 || named.st_dev != opened.st_dev || named.st_ino != opened.st_ino) {
        fail(anotherUsesIt);
    }
}

void Journal::takeLock() {
    switch (m_lock.take(m_file, m_descriptor)) {
    case LockFile::Answer::taken:
        return;
    case LockFile::Answer::heldByAnother:
        fail(anotherUsesIt);
    case LockFile::Answer::notAllowed:
        fail("is locked by another user, or was: " + m_file.string() +
             ".lock cannot be opened: " + reasonText(errno));
    case LockFile::Answer::impossible:
        break;
    }
    // Where no file can be made, the journal itself has to do.
    if (flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
        fail(errno == EWOULDBLOCK ? anotherUsesIt : "cannot be locked: " + reasonText(errno));
    }
}

void Journal::cutOff(std::uintmax_t size) {
    if (ftruncate(m_descriptor, static_cast<off_t>(size)) != 0) {
        fail("could not be written: " + reasonText(errno));
    }
}

void Journal::enter(std::uint32_t frequency, std::int32_t temperature, const Probe& probe) {
    append({{"khz", frequency},
            {"degrees", temperature},
            {"i", probe.i},
            {"q", probe.q},
            {"reading", orNull(probe.reading)},
            {"time", preciseUtcText(std::chrono::system_clock::now())}});
}

void Journal::enterUncorrected(std::uint32_t frequency, std::int32_t temperature, std::int32_t reading) {
    append({{"khz", frequency},
            {"degrees", temperature},
            {"uncorrected", reading},
            {"time", preciseUtcText(std::chrono::system_clock::now())}});
}

void Journal::enterAnalysed(std::uint32_t frequency, std::int32_t temperature, std::int32_t level) {
    append({{"khz", frequency},
            {"degrees", temperature},
            {"analysed", level},
            {"time", preciseUtcText(std::chrono::system_clock::now())}});
}

void Journal::enter(const Qualification& qualification) {
    append({{"qualified", toJson(qualification)}});
}

void Journal::enterRoute(const std::vector<std::int32_t>& temperatures) {
    append({{"order_c", temperatures}});
}

void Journal::finish() {
    append({{"finished", preciseUtcText(std::chrono::system_clock::now())}});
}

void Journal::append(const Json& event) {
    const std::string line = toText(event) + "\n";
    std::size_t written = 0;
    while (written < line.size()) {
        const ssize_t count = write(m_descriptor, line.data() + written, line.size() - written);
        if (count == -1 && errno != EINTR) {
            failWriting(errno);
        }
        written += count == -1 ? 0 : static_cast<std::size_t>(count);
    }
    if (fdatasync(m_descriptor) != 0) {
        failWriting(errno);
    }
}

void Journal::failWriting(int reason) {
    m_isFull = reason == ENOSPC || reason == EDQUOT || reason == EFBIG;
    fail("could not be written: " + reasonText(reason) + diskText(reason));
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

} // namespace Radio::Calibration

#include "radio/laboratory/Results.h"

#include "radio/calibration/Settings.h"
#include "radio/text/Words.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <map>
#include <system_error>

namespace Radio::Laboratory {

namespace {

namespace fs = std::filesystem;

std::string reasonOf(int error) {
    return std::generic_category().message(error);
}

/** What two headings have otherwise, in the words of a message; empty: nothing. */
std::string differenceOf(const Heading& one, const Heading& other) {
    if (one.version != other.version) {
        return "made by radioctl " + one.version + ", the others by " + other.version;
    }
    return headingLine(one, {}) == headingLine(other, {}) ? ""
                                                          : "of another laboratory file, or of another board";
}

} // namespace

Heading headingOf(const Description& laboratory, const std::string& version) {
    Heading heading;
    heading.version = version;
    heading.fingerprint = laboratory.fingerprint;
    heading.name = laboratory.board.name;
    heading.channel = laboratory.channel;
    heading.count = laboratory.count;
    heading.seed = laboratory.seed;
    heading.mostFailures = laboratory.mostFailures;
    heading.limit = laboratory.board.limits.leakage;
    for (const NamedSettings& settings : laboratory.settings) {
        const Calibration::Settings chosen = Calibration::settingsFor(laboratory.board, settings.wishes);
        heading.settings.push_back(
            {settings.name, std::string(toString(chosen.method)), toText(Calibration::toJson(chosen))});
    }
    return heading;
}

std::vector<Task> tasksOf(const Heading& heading, const Shard& shard) {
    std::vector<Task> tasks;
    for (std::uint32_t transmitter = shard.number - 1; transmitter < heading.count;
         transmitter += shard.count) {
        for (std::uint32_t settings = 0; settings < heading.settings.size(); ++settings) {
            tasks.push_back({transmitter, settings});
        }
    }
    return tasks;
}

Results merged(const std::vector<fs::path>& files) {
    std::map<std::uint32_t, fs::path> shards;
    std::optional<Results> all;
    std::uint32_t count = 0;
    for (const fs::path& file : files) {
        Results part = readResults(file);
        if (!all) {
            all = Results{part.heading, {}, {}};
            count = part.shard.count;
        }
        const std::string difference = differenceOf(part.heading, all->heading);
        if (!difference.empty()) {
            throw InputError({file.string(), 0}, difference + ", expected a shard of the laboratory that " +
                                                     harmless(files.front().string()) + " is of");
        }
        if (part.shard.count != count) {
            throw InputError({file.string(), 0}, "one of " + counted(part.shard.count, "shard") +
                                                     ", expected one of " + std::to_string(count) + " as " +
                                                     harmless(files.front().string()) + " is");
        }
        const auto [first, isNew] = shards.emplace(part.shard.number, file);
        if (!isNew) {
            throw InputError({file.string(), 0}, "shard " + std::to_string(part.shard.number) + " of " +
                                                     std::to_string(count) + ", which " +
                                                     harmless(first->second.string()) +
                                                     " is, too; expected each once");
        }
        std::move(part.trials.begin(), part.trials.end(), std::back_inserter(all->trials));
    }
    if (!all) {
        throw InputError({"", 0}, "no results to merge");
    }
    std::vector<std::string> missing;
    for (std::uint32_t number = 1; number <= count; ++number) {
        if (shards.count(number) == 0) {
            missing.push_back(std::to_string(number));
        }
    }
    if (!missing.empty()) {
        constexpr std::size_t most = 20;
        const bool areMany = missing.size() > most;
        const std::string number = counted(missing.size(), "shard");
        missing.resize(std::min(missing.size(), most));
        throw InputError({files.front().string(), 0}, "one of " + counted(count, "shard") + ", of which " +
                                                          number + (number == "1 shard" ? " is" : " are") +
                                                          " missing: " + joined(missing, ", ") +
                                                          (areMany ? " and more" : ""));
    }
    std::sort(all->trials.begin(), all->trials.end(),
              [](const Trial& one, const Trial& other) { return one.task < other.task; });
    return *std::move(all);
}

fs::path runningFile(const fs::path& results) {
    fs::path file = results;
    return file += ".running";
}

RunningResults::RunningResults(const fs::path& results, const Heading& heading, const Shard& shard)
    : m_file(runningFile(results)) {
    m_descriptor = open(m_file.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                        0666); // NOLINT(readability-magic-numbers): less the umask
    if (m_descriptor == -1) {
        throw InputError({m_file.string(), 0}, "cannot be written: " + reasonOf(errno));
    }
    try {
        if (flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
            throw InputError({m_file.string(), 0},
                             "another laboratory is at work here, expected one at a time");
        }
        std::error_code none;
        if (fs::file_size(m_file, none) != 0) {
            std::size_t size = 0;
            Results found = readResults(m_file, true, &size);
            if (headingLine(found.heading, found.shard) != headingLine(heading, shard)) {
                throw ChoiceError({m_file.string(), 0},
                                  "of another laboratory file, board, shard or version, expected what was "
                                  "begun with these",
                                  "restart");
            }
            if (ftruncate(m_descriptor, static_cast<off_t>(size)) != 0) {
                throw InputError({m_file.string(), 0}, "cannot be written: " + reasonOf(errno));
            }
            m_known = std::move(found.trials);
            return;
        }
        write(headingLine(heading, shard) + "\n");
    } catch (...) {
        close(m_descriptor);
        throw;
    }
}

RunningResults::~RunningResults() {
    if (m_descriptor != -1) {
        close(m_descriptor);
    }
}

void RunningResults::write(const std::string& text) {
    const char* from = text.data();
    std::size_t left = text.size();
    while (left > 0) {
        const ssize_t written = ::write(m_descriptor, from, left);
        if (written < 0 && errno != EINTR) {
            throw InputError({m_file.string(), 0},
                             "cannot be written: " + reasonOf(errno) + "; what was entered before is kept");
        }
        if (written > 0) {
            from += written;
            left -= static_cast<std::size_t>(written);
        }
    }
}

void RunningResults::add(const Trial& trial) {
    write(lineOf(trial) + "\n");
}

void RunningResults::remove() {
    std::error_code none;
    fs::remove(m_file, none);
}

} // namespace Radio::Laboratory

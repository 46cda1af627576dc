#include "radioctl/keep/Keeper.h"

#include "radio/files/Fingerprint.h"
#include "radio/files/InputError.h"
#include "radio/files/TextFile.h"
#include "radio/store/Spool.h"
#include "radio/text/Words.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/Output.h"

#include <iostream>
#include <system_error>

namespace Radio {

namespace {

constexpr std::size_t largestFile = std::size_t{64} * 1024 * 1024;

const std::string& firstOf(const std::string& said, const std::string& usual) {
    return said.empty() ? usual : said;
}

} // namespace

Keeper::Keeper(const KeepOptions& options, bool json, std::ostream& out)
    : m_json(json),
      m_out(out),
      m_serial(options.serial),
      m_begun(Store::utcNow()) {
    if (options.store == "none") {
        m_station = options.station;
        return;
    }
    const std::optional<Store::UserSettings> settings = Store::readUserSettings();
    if (!options.store.empty()) {
        m_address = Store::addressFrom(options.store);
    } else if (settings) {
        m_address = settings->address;
    }
    m_station = firstOf(options.station, settings ? settings->station : "");
    m_operator = firstOf(options.operatorName, settings ? settings->operatorName : "");
    if (m_address && !Store::whyNoDatabases().empty()) {
        throw InputError({m_address->shown(), 0}, Store::whyNoDatabases());
    }
}

Store::Run Keeper::begin(const std::string& kind, const Board& board) const {
    Store::Run run;
    run.id = Store::newRunId();
    run.kind = kind;
    run.serial = !m_serial.empty() ? m_serial : board.serial.empty() ? "unknown" : board.serial;
    run.board = board.name;
    Fingerprint fingerprint;
    fingerprint.add(readTextFile(board.file, largestFile, "a board"));
    run.fingerprint = fingerprint.text();
    run.version = RADIOCTL_VERSION;
    run.station = m_station;
    run.operatorName = m_operator;
    run.begun = m_begun;
    return run;
}

int Keeper::keep(Store::Run run, const std::filesystem::path& folder, int exitCode) {
    run.ended = Store::utcNow();
    std::filesystem::path file;
    try {
        file = Store::spool(run, *m_address, folder);
    } catch (const InputError& error) {
        // The database may have room all the same.
        complain("warning: the run cannot wait for the store in a file: " + std::string(error.what()));
    }
    std::optional<Store::Database> database;
    try {
        database.emplace(*m_address, Store::Database::Use::add);
        database->add(run);
    } catch (const InputError& error) {
        tell(run, error.what(), file, 0);
        return file.empty() ? ExitCode::unusableInput : exitCode;
    }
    std::error_code problem;
    std::filesystem::remove(file, problem);
    tell(run, "", {}, pushOthers(*database, folder));
    return exitCode;
}

std::size_t Keeper::pushOthers(Store::Database& database, const std::filesystem::path& folder) const {
    try {
        const Store::Pushed pushed = Store::push(database, *m_address, Store::waitingRuns(folder), false);
        for (const std::string& problem : pushed.problems) {
            complain("warning: " + problem);
        }
        return pushed.stored;
    } catch (const InputError& error) {
        complain("warning: runs go on waiting: " + std::string(error.what()));
        return 0;
    }
}

void Keeper::tell(const Store::Run& run, const std::string& why, const std::filesystem::path& file,
                  std::size_t pushed) {
    if (m_json) {
        writeJsonLine(std::cout, {{"event", "kept"},
                                  {"run", run.id},
                                  {"store", m_address->shown()},
                                  {"stored", why.empty()},
                                  {"why", why.empty() ? Json(nullptr) : Json(why)},
                                  {"waits_in", file.empty() ? Json(nullptr) : Json(file.string())},
                                  {"pushed", pushed}});
    }
    if (!why.empty()) {
        complain("the run is not in the store: " + why +
                 (file.empty() ? ""
                               : "; it waits in " + file.string() +
                                     ", and the next run or \"radioctl store push\" takes it there"));
        return;
    }
    if (!m_json) {
        m_out << "Stored as run " << run.id << " of unit " << harmless(run.serial) << " in "
              << harmless(m_address->shown()) << "\n";
        if (pushed != 0) {
            m_out << counted(pushed, "run") << " that waited " << (pushed == 1 ? "is" : "are")
                  << " there now, too\n";
        }
    }
}

std::vector<Store::Measurement> measurementsOf(const Verdict& verdict) {
    std::vector<Store::Measurement> measurements;
    for (const JudgedLimit& limit : verdict.limits) {
        Store::Measurement measurement{std::string(limit.name)};
        const bool isLeast = limit.name == "leakage_improvement";
        measurement.unit = isLeast ? "dB" : "dBc";
        measurement.value = limit.found;
        (isLeast ? measurement.lowest : measurement.highest) = limit.limit;
        measurement.isHeld = limit.isHeld();
        measurement.channel = limit.channel;
        measurements.push_back(measurement);
    }
    return measurements;
}

void addFile(Store::Run& run, const std::string& name, const std::filesystem::path& file) {
    std::error_code problem;
    if (!std::filesystem::is_regular_file(file, problem)) {
        return;
    }
    try {
        run.files.push_back({name, readTextFile(file, largestFile, "a " + name)});
    } catch (const InputError& error) {
        complain("warning: not kept with the run: " + std::string(error.what()));
    }
}

} // namespace Radio

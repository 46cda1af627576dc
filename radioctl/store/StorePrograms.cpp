#include "radioctl/store/StorePrograms.h"

#include "radio/files/AtomicFile.h"
#include "radio/files/InputError.h"
#include "radio/store/RunText.h"
#include "radio/store/Spool.h"
#include "radio/store/Statistics.h"
#include "radio/store/UserSettings.h"
#include "radio/text/Words.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/page/Gnuplot.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/Output.h"
#include "radioctl/store/Export.h"
#include "radioctl/store/ReportPage.h"
#include "radioctl/store/ReportText.h"
#include "radioctl/store/StoreReport.h"

#include <iostream>
#include <memory>
#include <stdexcept>

namespace Radio::Store {

namespace {

Address addressOf(const StoreOptions& options) {
    if (!options.store.empty()) {
        return addressFrom(options.store);
    }
    const std::optional<UserSettings> settings = readUserSettings();
    return settings ? settings->address : addressFrom("default");
}

/** The run that a word means: by the beginning of its id, or as the last one of a unit. Throws InputError. */
RunHead runOf(Database& database, const Address& address, const std::string& word,
              const std::string& kind = {}, std::optional<std::int64_t> channel = std::nullopt) {
    if (std::optional<RunHead> head = database.lastOf(word, kind, channel)) {
        return *head;
    }
    constexpr std::size_t leastId = 4;
    if (std::optional<RunHead> head = word.size() >= leastId ? database.findRun(word) : std::nullopt) {
        return *head;
    }
    throw InputError({address.shown(), 0}, "has no " + (kind.empty() ? "run" : kind) + " of a unit " +
                                               inQuotes(word) +
                                               (channel ? ", channel " + std::to_string(*channel) : "") +
                                               ", and no single run whose id begins so");
}

/** Where something is written as a whole: a file, or standard output. */
class OutputPlace {
public:
    explicit OutputPlace(const std::string& name) {
        if (!name.empty() && name != "-") {
            m_file = std::make_unique<AtomicFile>(name);
        }
    }
    std::ostream& stream() { return m_file ? m_file->stream() : std::cout; }
    void commit() {
        if (m_file) {
            m_file->commit();
        }
    }

private:
    std::unique_ptr<AtomicFile> m_file;
};

} // namespace

int runList(const StoreOptions& options) {
    return refusing(options.json, [&] {
        const Address address = addressOf(options);
        Database database(address, Database::Use::read);
        const Interrupt interrupt;
        constexpr std::size_t linesAtATime = 1000;
        std::vector<RunHead> heads;
        std::size_t count = 0;
        database.forEachRun(options.selection, [&](const RunHead& head) {
            ++count;
            if (options.json) {
                writeJsonLine(std::cout, runEvent(head));
            } else {
                heads.push_back(head);
            }
            if (heads.size() == linesAtATime) {
                writeHeads(std::cout, heads);
                heads.clear();
            }
            return interrupt.signal() == 0 && std::cout.good();
        });
        if (options.json) {
            writeJsonLine(std::cout, {{"event", "listed"}, {"store", address.shown()}, {"runs", count}});
        } else {
            if (!heads.empty()) {
                writeHeads(std::cout, heads);
            }
            std::cout << counted(count, "run") << " in " << harmless(address.shown()) << "\n";
        }
        return interrupt.signal() == 0 ? ExitCode::good : ExitCode::signalBase + interrupt.signal();
    });
}

int runShow(const StoreOptions& options) {
    return refusing(options.json, [&] {
        const Address address = addressOf(options);
        Database database(address, Database::Use::read);
        const RunHead last = runOf(database, address, options.unit);
        const Run run = database.whole(last, true);
        std::vector<RunHead> others;
        if (options.unit == last.serial) {
            Selection selection;
            selection.serial = last.serial;
            database.forEachRun(selection, [&](const RunHead& head) {
                others.push_back(head);
                return true;
            });
        }
        if (options.json) {
            for (const RunHead& head : others) {
                writeJsonLine(std::cout, runEvent(head));
            }
            Json measurements = Json::array();
            for (const Measurement& measurement : run.measurements) {
                measurements.push_back(toJson(measurement));
            }
            Json files = Json::array();
            for (const RunFile& file : run.files) {
                files.push_back({{"name", file.name}, {"bytes", file.content.size()}});
            }
            writeJsonLine(std::cout, {{"event", "shown"},
                                      {"run", run.id},
                                      {"serial", run.serial},
                                      {"settings", run.settings},
                                      {"measurements", measurements},
                                      {"files", files}});
        } else {
            if (others.size() > 1) {
                writeHeads(std::cout, others);
            }
            writeRun(std::cout, run);
        }
        return ExitCode::good;
    });
}

int runTables(const StoreOptions& options) {
    return refusing(options.json, [&] {
        const Address address = addressOf(options);
        Database database(address, Database::Use::read);
        const std::optional<std::int64_t> channel =
            options.channel ? std::optional<std::int64_t>(*options.channel) : std::nullopt;
        const RunHead head = runOf(database, address, options.unit, "calibration", channel);
        // The last that has tables: one that failed stored none.
        std::optional<RunHead> chosen;
        std::optional<std::int64_t> otherChannel;
        Selection selection;
        selection.serial = head.serial;
        selection.kind = "calibration";
        database.forEachRun(selection, [&](const RunHead& run) {
            const bool isMeant =
                options.unit != head.serial ? run.id == head.id : !channel || run.channel == channel;
            if (isMeant && database.fileOf(run.id, "tables")) {
                if (chosen && chosen->channel != run.channel) {
                    otherChannel = chosen->channel;
                }
                chosen = run;
            }
            return true;
        });
        if (!chosen) {
            throw InputError({address.shown(), 0},
                             "no calibration of " + inQuotes(options.unit) + " stored tables");
        }
        if (otherChannel) {
            return refuse("--channel: unit " + inQuotes(head.serial) + " has tables of several channels, " +
                              std::to_string(*otherChannel) + " and " +
                              std::to_string(chosen->channel.value_or(0)) + " among them",
                          options.json, ExitCode::wrongCommandLine);
        }
        const std::string content = database.fileOf(chosen->id, "tables").value_or("");
        if (options.json) {
            writeJsonLine(std::cout, {{"event", "stored_tables"},
                                      {"run", chosen->id},
                                      {"serial", chosen->serial},
                                      {"channel", orNull(chosen->channel)},
                                      {"file", options.out.empty() ? Json(nullptr) : Json(options.out)},
                                      {"content", content}});
        }
        if (!options.json || !options.out.empty()) {
            OutputPlace place(options.out);
            place.stream() << content;
            place.commit();
        }
        if (!options.json && !options.out.empty()) {
            std::cout << "Tables of unit " << harmless(chosen->serial) << ", run " << chosen->id << " of "
                      << chosen->begun << ", are in " << harmless(options.out) << "\n";
        }
        return ExitCode::good;
    });
}

int runCompare(const StoreOptions& options) {
    return refusing(options.json, [&] {
        const Address address = addressOf(options);
        Database database(address, Database::Use::read);
        const Run before = database.whole(runOf(database, address, options.unit), false);
        // Of the other unit the last run of the same kind and channel.
        const std::optional<RunHead> alike = database.lastOf(options.otherUnit, before.kind, before.channel);
        const Run after = database.whole(alike ? *alike : runOf(database, address, options.otherUnit), false);
        const std::vector<MeasuredPair> pairs = pairsOf(before, after);
        if (options.json) {
            for (const MeasuredPair& pair : pairs) {
                writeJsonLine(std::cout, pairEvent(pair));
            }
            writeJsonLine(std::cout,
                          {{"event", "compared_runs"}, {"before", before.id}, {"after", after.id}});
        } else {
            std::vector<RunHead> heads{before, after};
            writeHeads(std::cout, heads);
            writePairs(std::cout, pairs);
        }
        return ExitCode::good;
    });
}

int runReport(const StoreOptions& options) {
    return refusing(options.json, [&] {
        if (!options.html.empty()) {
            Page::requireGnuplot();
            requireWritable(options.html);
        }
        const Address address = addressOf(options);
        Database database(address, Database::Use::read);
        const Interrupt interrupt;
        Statistics statistics;
        try {
            database.forEachMeasured(options.selection, [&](const Run& run) {
                statistics.add(run);
                return interrupt.signal() == 0;
            });
        } catch (const std::length_error& error) {
            throw InputError({address.shown(), 0},
                             std::string(error.what()) + "; --kind and --board choose among them");
        }
        if (interrupt.signal() != 0) {
            return ExitCode::signalBase + interrupt.signal();
        }
        const StatisticsReport report = statistics.report();
        if (!options.html.empty()) {
            AtomicFile page(options.html);
            writePage(page.stream(), report, address.shown());
            page.commit();
        }
        if (options.json) {
            writeEvents(std::cout, report);
            writeJsonLine(std::cout, {{"event", "reported"},
                                      {"store", address.shown()},
                                      {"runs", report.runs},
                                      {"units", report.units},
                                      {"passed", report.all.passed},
                                      {"failed", report.all.failed},
                                      {"yield", orNull(report.all.part())},
                                      {"page", options.html.empty() ? Json(nullptr) : Json(options.html)}});
        } else {
            writeText(std::cout, report, options.all);
        }
        return ExitCode::good;
    });
}

int runExport(const StoreOptions& options) {
    return refusing(options.json, [&] {
        if (options.json && (options.out.empty() || options.out == "-")) {
            return refuse("--json: not together with what goes to standard output; --out says where to", true,
                          ExitCode::wrongCommandLine);
        }
        const Address address = addressOf(options);
        Database database(address, Database::Use::read);
        const Interrupt interrupt;
        OutputPlace place(options.out);
        Exporter exporter(place.stream(), options.format);
        std::size_t count = 0;
        database.forEachRun(options.selection, [&](const RunHead& head) {
            exporter.write(database.whole(head, options.format == "json"));
            ++count;
            return interrupt.signal() == 0 && place.stream().good();
        });
        if (interrupt.signal() != 0) {
            return ExitCode::signalBase + interrupt.signal();
        }
        exporter.end();
        place.commit();
        if (options.json) {
            writeJsonLine(std::cout, {{"event", "exported"}, {"file", options.out}, {"runs", count}});
        } else if (!options.out.empty() && options.out != "-") {
            std::cout << counted(count, "run") << " in " << harmless(options.out) << "\n";
        }
        return ExitCode::good;
    });
}

int runImport(const StoreOptions& options) {
    return refusing(options.json, [&] {
        const Address address = addressOf(options);
        Database database(address, Database::Use::add);
        const Interrupt interrupt;
        std::size_t added = 0;
        std::size_t known = 0;
        for (const std::string& file : options.files) {
            RunReader reader(file);
            while (const std::optional<ReadRun> read = reader.next()) {
                ++(database.add(read->run) ? added : known);
                if (interrupt.signal() != 0) {
                    return ExitCode::signalBase + interrupt.signal();
                }
            }
        }
        if (options.json) {
            writeJsonLine(std::cout, {{"event", "imported"}, {"added", added}, {"known", known}});
        } else {
            std::cout << counted(added, "run") << " added, " << counted(known, "run") << " already there\n";
        }
        return ExitCode::good;
    });
}

int runCheck(const StoreOptions& options) {
    return refusing(options.json, [&] {
        const Address address = addressOf(options);
        Database database(address, Database::Use::read);
        const std::size_t runs = database.countRuns();
        const std::vector<std::string> problems = database.check();
        const int exitCode = problems.empty() ? ExitCode::good : ExitCode::different;
        if (options.json) {
            writeJsonLine(std::cout, {{"event", "checked_store"},
                                      {"store", address.shown()},
                                      {"form", database.schema()},
                                      {"runs", runs},
                                      {"problems", problems},
                                      {"exit_code", exitCode}});
            return exitCode;
        }
        for (const std::string& problem : problems) {
            std::cout << "error: " << harmless(problem) << "\n";
        }
        std::cout << harmless(address.shown()) << ": form " << database.schema() << ", "
                  << counted(runs, "run") << ", " << counted(problems.size(), "problem") << "\n";
        return exitCode;
    });
}

int runPush(const StoreOptions& options) {
    return refusing(options.json, [&] {
        const Address address = addressOf(options);
        const std::vector<std::filesystem::path> files = waitingRuns(options.folder);
        Pushed pushed;
        if (!files.empty()) {
            Database database(address, Database::Use::add);
            pushed = push(database, address, files, options.all);
        }
        for (const std::string& problem : pushed.problems) {
            complain(problem);
        }
        const int exitCode = pushed.problems.empty() ? ExitCode::good : ExitCode::unusableInput;
        if (options.json) {
            writeJsonLine(std::cout, {{"event", "pushed"},
                                      {"store", address.shown()},
                                      {"stored", pushed.stored},
                                      {"known", pushed.known},
                                      {"others", pushed.others},
                                      {"problems", pushed.problems},
                                      {"exit_code", exitCode}});
            return exitCode;
        }
        std::cout << counted(pushed.stored, "run") << " stored, " << counted(pushed.known, "run")
                  << " already there\n";
        if (pushed.others != 0) {
            std::cout << counted(pushed.others, "run") << " for another store left; --all takes them, too\n";
        }
        return exitCode;
    });
}

int runGrant(const StoreOptions& options) {
    return refusing(options.json, [&] {
        const Address address = addressOf(options);
        Database database(address, Database::Use::add);
        database.letAdd(options.user);
        if (options.json) {
            writeJsonLine(std::cout, {{"event", "granted"}, {"user", options.user}});
        } else {
            std::cout << harmless(options.user) << " may add runs and read them\n";
        }
        return ExitCode::good;
    });
}

} // namespace Radio::Store

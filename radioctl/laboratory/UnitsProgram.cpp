#include "radioctl/laboratory/UnitsProgram.h"

#include "radio/board/BoardCheck.h"
#include "radio/board/BoardNames.h"
#include "radio/files/AtomicFile.h"
#include "radio/files/InputError.h"
#include "radio/laboratory/Unit.h"
#include "radio/text/Words.h"
#include "radioctl/console/Interrupt.h"
#include "radioctl/options/ExitCode.h"
#include "radioctl/report/JsonLine.h"
#include "radioctl/report/Output.h"

#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>

namespace Radio::Laboratory {

namespace {

/** Recordings begin so, and journals do not. */
bool isRecording(const std::string& file) {
    constexpr std::string_view mark = ::Recording::magic;
    std::string found(mark.size(), '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(found.data(), static_cast<std::streamsize>(found.size()));
    return stream.good() && found == mark;
}

/** Fits each unit once: by what was measured of it last. */
class Units {
public:
    explicit Units(const UnitsOptions& options)
        : m_options(options),
          m_board(loadUsableBoard(options.board)),
          m_leakage(findLeakage(m_board, options.channel)) {
        if (m_leakage == nullptr) {
            throw InputError({options.board, 0}, "expected a [[leakage]] of channel " +
                                                     std::to_string(options.channel) +
                                                     ", which says what all units have alike");
        }
    }

    int run();

private:
    void readStore();
    void readFile(const std::string& file);
    /** Fits it, or says why not. */
    void take(const std::string& source, const std::function<Measured()>& measure);
    void tell(const Unit& unit) const;

    const UnitsOptions& m_options;
    const Board m_board;
    const LeakageDescription* const m_leakage;
    const Interrupt m_interrupt;
    /** By name. */
    std::map<std::string, Unit> m_units;
    std::size_t m_passedOver = 0;
};

int Units::run() {
    requireWritable(m_options.out);
    if (!m_options.store.empty()) {
        readStore();
    }
    for (const std::string& file : m_options.files) {
        if (m_interrupt.signal() == 0) {
            readFile(file);
        }
    }
    if (m_interrupt.signal() != 0) {
        return ExitCode::signalBase + m_interrupt.signal();
    }
    if (m_units.empty()) {
        throw InputError({m_options.out, 0}, "there is no unit to write, expected one that can be fitted");
    }
    std::vector<Unit> units;
    for (auto& [name, unit] : m_units) {
        tell(unit);
        units.push_back(std::move(unit));
    }
    AtomicFile file(m_options.out);
    file.stream() << unitsText(units, m_board, m_options.channel, RADIOCTL_VERSION);
    file.commit();
    if (m_options.json) {
        writeJsonLine(std::cout, {{"event", "units_end"},
                                  {"file", m_options.out},
                                  {"units", units.size()},
                                  {"passed_over", m_passedOver}});
    } else {
        std::cout << counted(units.size(), "unit") << " in " << harmless(m_options.out);
        if (m_passedOver != 0) {
            std::cout << "; " << m_passedOver << " passed over";
        }
        std::cout << "\n";
    }
    return ExitCode::good;
}

void Units::readStore() {
    const Store::Address address = Store::addressFrom(m_options.store);
    Store::Database database(address, Store::Database::Use::read);
    Store::Selection selection = m_options.selection;
    selection.kind = "calibration";
    selection.board = m_board.name;
    // The oldest come first.
    std::map<std::string, Store::RunHead> last;
    database.forEachRun(selection, [&](const Store::RunHead& head) {
        if (head.channel == m_options.channel) {
            last[head.serial] = head;
        }
        return m_interrupt.signal() == 0;
    });
    for (const auto& [serial, head] : last) {
        if (m_interrupt.signal() != 0) {
            return;
        }
        const std::string source = "run " + head.id;
        take(source, [&, &head = head] {
            const std::optional<std::string> journal = database.fileOf(head.id, "journal");
            if (!journal) {
                throw InputError({source, 0}, "has no journal, expected a run that kept one");
            }
            std::istringstream stream(*journal);
            Measured measured =
                measuredIn(Calibration::readJournal(stream, source), m_options.channel, source);
            measured.unit = head.serial;
            measured.date = head.begun;
            return measured;
        });
    }
}

void Units::readFile(const std::string& file) {
    take(file, [&] {
        if (isRecording(file)) {
            Recordings::RecordingFile recording = Recordings::readRecording(file);
            return measuredIn(recording, *m_leakage, file);
        }
        const Calibration::JournalContent journal = Calibration::readJournal(file);
        if (journal.header.board != m_board.name) {
            throw InputError({file, 0}, "of the board " + inQuotes(journal.header.board) + ", expected " +
                                            inQuotes(m_board.name));
        }
        return measuredIn(journal, m_options.channel, file);
    });
}

void Units::take(const std::string& source, const std::function<Measured()>& measure) {
    try {
        Unit unit = unitFrom(measure(), *m_leakage);
        const auto known = m_units.find(unit.name);
        if (known == m_units.end() || known->second.date <= unit.date) {
            m_units.insert_or_assign(unit.name, std::move(unit));
        }
    } catch (const InputError& error) {
        ++m_passedOver;
        if (m_options.json) {
            writeJsonLine(std::cout,
                          {{"event", "unit_passed_over"}, {"source", source}, {"why", error.text()}});
        } else {
            complain("passed over: " + std::string(error.what()));
        }
    }
}

void Units::tell(const Unit& unit) const {
    if (m_options.json) {
        writeJsonLine(std::cout, {{"event", "unit_fitted"},
                                  {"unit", unit.name},
                                  {"source", unit.source},
                                  {"date", unit.date.empty() ? Json(nullptr) : Json(unit.date)},
                                  {"places", unit.places},
                                  {"paths", unit.leakage.paths.size()},
                                  {"misfit_dbc", unit.misfit}});
    } else {
        std::cout << harmless(unit.name) << "  " << counted(unit.leakage.paths.size(), "path") << " of "
                  << counted(unit.places, "place") << ", misfit " << levelText(unit.misfit) << ", "
                  << harmless(unit.source) << "\n";
    }
}

} // namespace

int runUnits(const UnitsOptions& options) {
    return refusing(options.json, [&] {
        for (const std::string& file : options.files) {
            if (isSameFile(options.out, file)) {
                return refuse("--out: " + harmless(file) +
                                  " is what the units come from, expected another file",
                              options.json, ExitCode::wrongCommandLine);
            }
        }
        return Units(options).run();
    });
}

} // namespace Radio::Laboratory

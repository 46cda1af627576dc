#include "radio/board/BoardCheck.h"

#include "radio/board/BoardDemand.h"
#include "radio/board/BoardFile.h"
#include "radio/board/BoardNames.h"
#include "radio/board/HardwareRanges.h"
#include "radio/board/TableCheck.h"
#include "radio/text/NearestName.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace Radio {

namespace {

/** One entry of a board, whatever its kind. One of the pointers is set, unless it is an interface. */
struct Entry {
    Place place;
    const DriverDescription* driver = nullptr;
    const VariableDescription* variable = nullptr;
    const TableDescription* table = nullptr;
    Standalone::Presence presence = Standalone::Presence::present;
    /** The missing name to which its own is near, if no channel asks for its own. */
    std::optional<std::string> meant = std::nullopt;
    /** A channel asks for it, or a finding speaks of it: there is no need to report it as left over. */
    bool isAccountedFor = false;
};

using Key = std::pair<ObjectKind, std::string>;

/** To compare so many pairs of names takes seconds; nobody reads guesses about so many. */
constexpr std::size_t maxGuesses = 10000000;

std::string named(ObjectKind kind, const std::string& name) {
    return std::string(toString(kind)) + " \"" + name + '"';
}

/** "channel 1 (rf-module)", and how many more. */
std::string askersOf(const Demand& demand) {
    const ChannelDescription& first = *demand.channels.front();
    const std::size_t others = demand.channels.size() - 1;
    return "channel " + std::to_string(first.number) + " (" + std::string(toString(first.type)) + ")" +
           (others == 0 ? "" : " and " + std::to_string(others) + " more");
}

std::string consequence(const Demand& demand) {
    return askersOf(demand) + (demand.need == Need::required
                                   ? " cannot start without it"
                                   : " can start without it, but will report errors");
}

/** A calibration sets temperatures with it, or looks at what leaks. */
bool isForCalibration(const Board& board, const Key& key) {
    return key.first == ObjectKind::driver &&
           std::any_of(board.calibrations.begin(), board.calibrations.end(), [&](const auto& calibration) {
               return calibration.chamber == key.second || calibration.analyser == key.second;
           });
}

std::string notAskedFor(const Key& key, const Entry& entry) {
    return named(key.first, key.second) + " is asked for by no channel" +
           (entry.meant ? " (did you mean \"" + *entry.meant + "\"?)" : "");
}

class Checker {
public:
    /** `board` must outlive the object. */
    explicit Checker(const Board& board);
    std::vector<Finding> run();

private:
    void report(Severity severity, const Place& place, const std::string& text);
    Entry* find(ObjectKind kind, const std::string& name);
    bool isUsable(ObjectKind kind, const std::string& name, unsigned words);
    bool applies(const Demand& demand);
    const Candidate* chosen(const Demand& demand);

    void guessMisspellings();
    void accountFor(const Demand& demand);
    void checkDemand(const Demand& demand);
    void checkMissing(const Demand& demand);
    void checkPassedOver(const Demand& demand, const Candidate& taken);
    void checkIdle(const Demand& demand, const Candidate& taken, const Entry& entry);
    void checkShape(const Demand& demand, const Candidate& taken, const Entry& entry);
    void checkPairs(const Candidate& taken, const VariableDescription& array);
    void checkLeftOver(const Key& key, const Entry& entry);
    void checkAxes();
    void checkAxes(const TableDescription* table, const std::string& label);
    void checkOrigins();

    static std::string whatIsMissing(const Demand& demand, const Entry& entry, const Candidate& candidate);
    std::string howToMake(const Demand& demand, const Entry& entry) const;
    std::string whyNotUsed(const Key& key);

    const Board& m_board;
    std::vector<Demand> m_demands;
    std::map<Key, Entry> m_entries;
    /** Every name that some channel may ask for, with the demand. */
    std::map<Key, const Demand*> m_known;
    /** Missing names, each with the entry that was perhaps meant to have it. */
    std::map<Key, std::map<Key, Entry>::iterator> m_misspelt;
    std::vector<Finding> m_findings;
};

Checker::Checker(const Board& board) : m_board(board), m_demands(demandsOf(board)) {
    for (const DriverDescription& driver : board.drivers) {
        m_entries[{ObjectKind::driver, driver.name}] = {driver.place, &driver};
    }
    for (const VariableDescription& variable : board.variables) {
        m_entries[{ObjectKind::variable, variable.name}] = {variable.place, nullptr, &variable};
    }
    for (const TableDescription& table : board.tables) {
        m_entries[{ObjectKind::table, table.table.name}] = {table.place, nullptr, nullptr, &table};
    }
    for (const InterfaceDescription& interface : board.interfaces) {
        m_entries[{ObjectKind::interface, interface.name}] = {interface.place, nullptr, nullptr, nullptr,
                                                              interface.presence};
    }
    for (const Demand& demand : m_demands) {
        for (const Candidate& candidate : demand.candidates) {
            m_known.emplace(Key(demand.kind, candidate.name), &demand);
        }
    }
    guessMisspellings();
}

std::vector<Finding> Checker::run() {
    for (const Demand& demand : m_demands) {
        accountFor(demand);
    }
    for (const Demand& demand : m_demands) {
        checkDemand(demand);
    }
    for (const auto& [key, entry] : m_entries) {
        if (!entry.isAccountedFor) {
            checkLeftOver(key, entry);
        }
    }
    for (Finding& finding : checkHardwareRanges(m_board)) {
        m_findings.push_back(std::move(finding));
    }
    checkAxes();
    std::stable_sort(m_findings.begin(), m_findings.end(),
                     [](const Finding& a, const Finding& b) { return a.place.line < b.place.line; });
    checkOrigins();
    return std::move(m_findings);
}

/** In the words of "tables lint", which looks at this as well. */
void Checker::checkAxes() {
    for (const ChannelDescription& channel : m_board.channels) {
        const std::string label = "channel " + std::to_string(channel.number);
        const TableDescription* const i = findCancellationTable(m_board, channel.number, "I");
        const TableDescription* const q = findCancellationTable(m_board, channel.number, "Q");
        const bool isBoth = i != nullptr && q != nullptr && i->table.axis1 == q->table.axis1 &&
                            i->table.axis2 == q->table.axis2;
        checkAxes(i, isBoth ? label : label + ", I");
        if (!isBoth) {
            checkAxes(q, label + ", Q");
        }
    }
}

void Checker::checkAxes(const TableDescription* table, const std::string& label) {
    const auto swapped = table == nullptr ? std::nullopt : swappedAxes(table->table);
    if (swapped) {
        report(Severity::error, table->place, label + ": " + *swapped);
    }
}

/** Behind all others, since they are about lines of other files; each file is told once. */
void Checker::checkOrigins() {
    for (const ChannelDescription& channel : m_board.channels) {
        const TableDescription* const i = findCancellationTable(m_board, channel.number, "I");
        const TableDescription* const q = findCancellationTable(m_board, channel.number, "Q");
        for (const TableDescription* const table : {i, q}) {
            const bool isTold = table == q && i != nullptr && q != nullptr && i->file == q->file;
            if (table != nullptr && !isTold) {
                const std::vector<Finding> findings = findingsOfOrigin(*table, m_board, channel.number);
                m_findings.insert(m_findings.end(), findings.begin(), findings.end());
            }
        }
    }
}

void Checker::report(Severity severity, const Place& place, const std::string& text) {
    m_findings.push_back({severity, place, text});
}

Entry* Checker::find(ObjectKind kind, const std::string& name) {
    const auto found = m_entries.find({kind, name});
    return found == m_entries.end() ? nullptr : &found->second;
}

bool Checker::isUsable(ObjectKind kind, const std::string& name, unsigned words) {
    const Entry* entry = find(kind, name);
    if (entry == nullptr) {
        // These two are part of every platform; a board names them only to take them away.
        return name == "IDriverLayer" || name == "ITemperatureHandler";
    }
    return entry->presence == Standalone::Presence::present &&
           (entry->table == nullptr || entry->table->isThere()) &&
           (entry->driver == nullptr || (entry->driver->missingWords & words) == 0);
}

bool Checker::applies(const Demand& demand) {
    return std::all_of(
        demand.conditions.begin(), demand.conditions.end(), [this](const Condition& condition) {
            return isUsable(ObjectKind::driver, condition.driver, writableDriver) == condition.isThere;
        });
}

void Checker::guessMisspellings() {
    std::map<ObjectKind, std::vector<std::string>> missing;
    for (const auto& [key, demand] : m_known) {
        if (m_entries.count(key) == 0) {
            missing[key.first].push_back(key.second);
        }
    }
    std::size_t guesses = 0;
    for (auto entry = m_entries.begin(); entry != m_entries.end(); ++entry) {
        const auto& [kind, name] = entry->first;
        if (m_known.count(entry->first) != 0) {
            continue;
        }
        guesses += missing[kind].size();
        if (guesses > maxGuesses) {
            return;
        }
        entry->second.meant = nearestName(name, missing[kind]);
        if (entry->second.meant) {
            m_misspelt.emplace(Key(kind, *entry->second.meant), entry);
        }
    }
}

/** The candidate that the channel will take, or null. */
const Candidate* Checker::chosen(const Demand& demand) {
    const auto taken =
        std::find_if(demand.candidates.begin(), demand.candidates.end(), [&](const Candidate& candidate) {
            return isUsable(demand.kind, candidate.name, demand.words);
        });
    return taken == demand.candidates.end() ? nullptr : &*taken;
}

/** Ticks off every entry at which the channel will look: up to the one that it takes. */
void Checker::accountFor(const Demand& demand) {
    if (!applies(demand)) {
        return;
    }
    const Candidate* taken = chosen(demand);
    for (const Candidate& candidate : demand.candidates) {
        if (Entry* entry = find(demand.kind, candidate.name)) {
            entry->isAccountedFor = true;
        }
        if (&candidate == taken) {
            return;
        }
    }
}

void Checker::checkDemand(const Demand& demand) {
    if (!applies(demand)) {
        return;
    }
    const Candidate* taken = chosen(demand);
    if (taken == nullptr) {
        checkMissing(demand);
        return;
    }
    checkPassedOver(demand, *taken);
    const Entry* entry = find(demand.kind, taken->name);
    if (entry == nullptr) {
        return;
    }
    if (entry->driver != nullptr && (entry->driver->missingWords & demand.laterWords) != 0) {
        report(Severity::warning, entry->place,
               whatIsMissing(demand, *entry, *taken) + "; " + askersOf(demand) +
                   " can start, but not use it");
    }
    checkIdle(demand, *taken, *entry);
    checkShape(demand, *taken, *entry);
}

void Checker::checkMissing(const Demand& demand) {
    if (demand.need == Need::optional) {
        return;
    }
    const Severity severity = demand.need == Need::required ? Severity::error : Severity::warning;
    std::string names;
    bool isExplained = false;
    for (const Candidate& candidate : demand.candidates) {
        const auto misspelt = m_misspelt.find({demand.kind, candidate.name});
        if (const Entry* entry = find(demand.kind, candidate.name)) {
            isExplained = true;
            report(severity, entry->place,
                   whatIsMissing(demand, *entry, candidate) + "; " + consequence(demand) +
                       howToMake(demand, *entry));
        } else if (misspelt != m_misspelt.end()) {
            isExplained = true;
            auto& [key, stray] = *misspelt->second;
            stray.isAccountedFor = true;
            report(severity, stray.place, notAskedFor(key, stray) + "; " + consequence(demand));
        }
        names += names.empty() ? named(demand.kind, candidate.name) : " or \"" + candidate.name + '"';
    }
    if (!isExplained) {
        report(severity, demand.channels.front()->place, names + " is missing; " + consequence(demand));
    }
}

/** A candidate before the one taken was described, but could not be used. */
void Checker::checkPassedOver(const Demand& demand, const Candidate& taken) {
    for (const Candidate& candidate : demand.candidates) {
        if (&candidate == &taken) {
            return;
        }
        if (const Entry* entry = find(demand.kind, candidate.name)) {
            report(Severity::warning, entry->place,
                   whatIsMissing(demand, *entry, candidate) + "; " + askersOf(demand) + " takes \"" +
                       taken.name + "\" instead");
        }
    }
}

/** The table would be used, but for another one that the channel takes for the other branch. */
void Checker::checkIdle(const Demand& demand, const Candidate& taken, const Entry& entry) {
    const auto other = m_known.find({demand.kind, demand.idledBy});
    if (other == m_known.end() || &taken != &demand.candidates.front()) {
        return;
    }
    const Candidate* const takenByOther = chosen(*other->second);
    if (takenByOther != nullptr && takenByOther->name == demand.idledBy) {
        report(Severity::warning, entry.place,
               named(demand.kind, taken.name) + " is not used; with table \"" + demand.idledBy + "\" " +
                   askersOf(demand) + " makes no correction by frequency");
    }
}

void Checker::checkShape(const Demand& demand, const Candidate& taken, const Entry& entry) {
    const auto fail = [&](const std::string& problem) {
        report(Severity::error, entry.place, named(demand.kind, taken.name) + " " + problem);
    };
    const std::string askers = " for " + askersOf(demand);
    switch (taken.shape) {
    case Shape::any:
        break;
    case Shape::integer:
    case Shape::factor:
        if (entry.variable->isArray) {
            fail("is an array; it must be one integer" + askers);
        } else if (taken.shape == Shape::factor && entry.variable->values.front() < 1) {
            fail("is " + std::to_string(entry.variable->values.front()) + "; it must be at least 1" + askers);
        }
        break;
    case Shape::pairs:
        if (!entry.variable->isArray) {
            fail("is one integer; it must be an array of pairs" + askers);
        } else if (entry.variable->values.size() % 2 != 0) {
            fail("has " + std::to_string(entry.variable->values.size()) + " values; it must have pairs" +
                 askers);
        } else {
            checkPairs(taken, *entry.variable);
        }
        break;
    case Shape::oneAxis:
        if (!entry.table->table.axis2.empty()) {
            fail("has two axes; it must have one" + askers);
        }
        break;
    case Shape::twoAxes:
        if (entry.table->table.axis2.empty()) {
            fail("has one axis; it must have two" + askers);
        }
        break;
    }
}

void Checker::checkPairs(const Candidate& taken, const VariableDescription& array) {
    const std::string sizeName = taken.name + "size";
    const Entry* size = find(ObjectKind::variable, sizeName);
    if (size == nullptr || size->variable->isArray) {
        return;
    }
    const std::int32_t value = size->variable->values.front();
    if (value < 0 || static_cast<std::size_t>(value) != array.values.size()) {
        report(Severity::error, size->place,
               named(ObjectKind::variable, sizeName) + " is " + std::to_string(value) + ", but \"" +
                   taken.name + "\" has " + std::to_string(array.values.size()) + " values");
    }
}

void Checker::checkLeftOver(const Key& key, const Entry& entry) {
    const auto known = m_known.find(key);
    if (known != m_known.end()) {
        report(Severity::warning, entry.place,
               named(key.first, key.second) + " is not used; " + whyNotUsed(key));
        return;
    }
    // A driver with hardware that no channel asks for is there for whoever reads and writes it by hand.
    const bool isForAPerson =
        entry.driver != nullptr && !entry.meant && findHardware(m_board, entry.driver->name) != nullptr;
    if (!isForAPerson && !isForCalibration(m_board, key)) {
        report(Severity::warning, entry.place, notAskedFor(key, entry));
    }
}

std::string Checker::whatIsMissing(const Demand& demand, const Entry& entry, const Candidate& candidate) {
    const std::string name = named(demand.kind, candidate.name);
    if (entry.table != nullptr) {
        return name + " has no content: there is no file " + inQuotes(entry.table->file.string());
    }
    if (entry.driver == nullptr) {
        return name + " is " + std::string(toString(entry.presence));
    }
    return name + " is without " +
           joined(toStrings(entry.driver->missingWords & (demand.words | demand.laterWords)), " and ");
}

/** What makes a table whose file is not there, if there is such a thing. */
std::string Checker::howToMake(const Demand& demand, const Entry& entry) const {
    const int channel = demand.channels.front()->number;
    for (const std::string_view branch : {"I", "Q"}) {
        if (entry.table != nullptr && entry.table->table.name == cancellationTableName(channel, branch)) {
            return "; \"radioctl calibrate " + harmless(m_board.file.string()) + " --channel " +
                   std::to_string(channel) + "\" makes it";
        }
    }
    return "";
}

/** Why an entry that some channel may ask for is never asked for on this board. */
std::string Checker::whyNotUsed(const Key& key) {
    const Demand& demand = *m_known.at(key);
    for (const Condition& condition : demand.conditions) {
        if (isUsable(ObjectKind::driver, condition.driver, writableDriver) != condition.isThere) {
            return askersOf(demand) + " asks for it only " + (condition.isThere ? "with" : "without") +
                   " driver \"" + condition.driver + '"';
        }
    }
    return askersOf(demand) + " takes \"" + chosen(demand)->name + "\" before it";
}

} // namespace

std::vector<Finding> checkBoard(const Board& board) {
    return Checker(board).run();
}

void requireUsable(const Board& board) {
    const std::vector<Finding> findings = checkBoard(board);
    const auto error = std::find_if(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.severity == Severity::error;
    });
    if (error != findings.end()) {
        throw InputError(error->place, error->text + " (\"radioctl check\" has the whole list)");
    }
}

Board loadUsableBoard(const std::filesystem::path& file) {
    Board board = loadBoard(file);
    requireUsable(board);
    return board;
}

} // namespace Radio

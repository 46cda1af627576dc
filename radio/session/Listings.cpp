#include "radio/session/Listings.h"

#include "radio/board/BoardNames.h"
#include "radio/text/Words.h"

#include <fnmatch.h>

namespace Radio {

namespace {

using Cell = Listing::Cell;
using Row = std::vector<Cell>;

/** Whether the name in `cell`, or a channel's number, fits the pattern. */
bool matches(const std::string& pattern, const Cell& cell) {
    const auto* const name = std::get_if<std::string>(&cell);
    const std::string text = name != nullptr ? *name : std::to_string(std::get<std::int64_t>(cell));
    return fnmatch(("*" + pattern + "*").c_str(), text.c_str(), 0) == 0;
}

Cell numberCell(std::uint64_t number) {
    return static_cast<std::int64_t>(number);
}

std::vector<Row> driverRows(RadioUnit& radio) {
    std::vector<Row> rows;
    for (const auto& [name, driver] : radio.platform().drivers().drivers()) {
        rows.push_back({name, driver->value(), numberCell(driver->writes())});
    }
    return rows;
}

std::vector<Row> variableRows(RadioUnit& radio) {
    std::vector<Row> rows;
    for (const auto& [name, variable] : radio.platform().variables().variables()) {
        rows.push_back({name, variable->values()});
    }
    return rows;
}

std::vector<Row> observerRows(RadioUnit& radio) {
    const std::vector<RadioUnit::ObserverState> observers = radio.observers();
    std::vector<Row> rows;
    rows.reserve(observers.size());
    for (const RadioUnit::ObserverState& observer : observers) {
        rows.push_back({handlerName(observer.direction, observer.channel),
                        std::string(observer.throughC ? "C" : "class"), numberCell(observer.notifications),
                        numberCell(observer.frequency)});
    }
    return rows;
}

std::vector<Row> faultRows(RadioUnit& radio) {
    std::vector<Row> rows;
    for (const Standalone::Fault& fault : radio.platform().calls().faults()) {
        rows.push_back({std::string(Standalone::toString(fault.operation)),
                        fault.object.empty() ? std::string("(all)") : fault.object, codeText(fault.code),
                        fault.times.has_value() ? std::to_string(*fault.times) : std::string("always")});
    }
    return rows;
}

std::vector<Row> interfaceRows(RadioUnit& radio) {
    std::map<std::string, std::string> states;
    for (const auto& [name, interface] : radio.platform().interfaces().entries()) {
        states[name] =
            toString(interface == nullptr ? Standalone::Presence::null : Standalone::Presence::present);
    }
    for (const auto& [name, presence] : radio.presences()) {
        states[name] = toString(presence);
    }
    std::vector<Row> rows;
    rows.reserve(states.size());
    for (const auto& [name, state] : states) {
        rows.push_back({name, state});
    }
    return rows;
}

std::vector<Row> tableRows(RadioUnit& radio) {
    std::vector<Row> rows;
    for (const auto& [name, table] : radio.platform().tables().tables()) {
        std::vector<std::int32_t> nodes{static_cast<std::int32_t>(table->axis1.size())};
        if (!table->axis2.empty()) {
            nodes.push_back(static_cast<std::int32_t>(table->axis2.size()));
        }
        rows.push_back({name, nodes});
    }
    return rows;
}

std::vector<Row> leakageRows(RadioUnit& radio) {
    std::vector<Row> rows;
    for (const auto& [channel, transmitter] : radio.transmitters()) {
        const Surroundings surroundings = transmitter->surroundings();
        const LoCorrections corrections = transmitter->corrections();
        const bool isTuned = surroundings.carrier != 0;
        rows.push_back(
            {numberCell(static_cast<std::uint64_t>(channel)),
             isTuned ? Cell(static_cast<std::int64_t>(surroundings.carrier)) : Cell(std::monostate()),
             static_cast<std::int64_t>(surroundings.temperature), static_cast<std::int64_t>(corrections.i),
             static_cast<std::int64_t>(corrections.q),
             isTuned ? Cell(transmitter->level()) : Cell(std::monostate())});
    }
    return rows;
}

Cell carrierCell(unsigned long frequency) {
    return frequency == 0 ? Cell(std::monostate()) : numberCell(frequency);
}

/** The drivers by which a channel's LO leakage is corrected, with their values; those that it has. */
std::string correctionsText(Standalone::DriverBank& drivers, int channel) {
    const std::string prefix = "channel." + std::to_string(channel) + ".tx.";
    std::vector<std::string> items;
    for (const std::string branch : {"i", "q"}) {
        for (const auto& [name, word] :
             {std::pair{"rf.mixer." + branch, "mixer." + branch},
              {"bb.iq.coarse.dc." + branch + ".v.adjust", "coarse.dc." + branch}}) {
            if (const Standalone::Driver* const driver = drivers.find(prefix + name)) {
                items.push_back(word + "=" + std::to_string(driver->value()));
            }
        }
    }
    return joined(items, " ");
}

std::vector<Row> channelRows(RadioUnit& radio, const ChannelFailures& failures) {
    const std::optional<int> temperature = radio.platform().temperature().temperature();
    std::vector<Row> rows;
    for (const auto& [channel, failure] : failures.texts()) {
        const std::string corrections = correctionsText(radio.platform().drivers(), channel);
        rows.push_back({numberCell(static_cast<std::uint64_t>(channel)),
                        carrierCell(radio.frequency(Direction::tx, channel)),
                        carrierCell(radio.frequency(Direction::rx, channel)),
                        temperature ? Cell(std::int64_t{*temperature}) : Cell(std::monostate()),
                        corrections.empty() ? Cell(std::monostate()) : Cell(corrections),
                        failure.empty() ? Cell(std::monostate()) : Cell(failure)});
    }
    return rows;
}

/** How each kind of list is called, what its columns are and where its rows come from. */
struct ListingKind {
    Show::Kind kind;
    std::string title;
    std::vector<std::string> columns;
    /** Of the channels there are none here: theirs come from their failures, too. */
    std::vector<Row> (*rows)(RadioUnit& radio);
};

const ListingKind& listingKind(Show::Kind kind) {
    static const std::vector<ListingKind> kinds = {
        {Show::Kind::drivers, "drivers", {"driver", "value", "writes"}, driverRows},
        {Show::Kind::variables, "variables", {"variable", "values"}, variableRows},
        {Show::Kind::observers, "observers", {"interface", "kind", "told", "last_khz"}, observerRows},
        {Show::Kind::faults, "faults", {"operation", "object", "code", "turns"}, faultRows},
        {Show::Kind::interfaces, "interfaces", {"interface", "state"}, interfaceRows},
        {Show::Kind::tables, "tables", {"table", "nodes"}, tableRows},
        {Show::Kind::leakage,
         "leakage",
         {"channel", "carrier_khz", "degrees", "i", "q", "level_dbc"},
         leakageRows},
        {Show::Kind::channels,
         "channels",
         {"channel", "tx_khz", "rx_khz", "degrees", "corrections", "last_failure"},
         nullptr},
    };
    return kinds.at(static_cast<std::size_t>(kind));
}

} // namespace

Listing makeListing(const Show& command, RadioUnit& radio, const ChannelFailures& failures) {
    const ListingKind& kind = listingKind(command.kind);
    Listing listing{kind.title, kind.columns, {}};
    for (Row& row : kind.rows != nullptr ? kind.rows(radio) : channelRows(radio, failures)) {
        const bool isFault = command.kind == Show::Kind::faults;
        if (matches(command.pattern, row[0]) || (isFault && matches(command.pattern, row[1]))) {
            listing.rows.push_back(std::move(row));
        }
    }
    return listing;
}

} // namespace Radio

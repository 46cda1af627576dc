#ifndef RADIO_DESCRIPTION_INVENTORY_H
#define RADIO_DESCRIPTION_INVENTORY_H

#include "radio/board/Board.h"
#include "radio/description/Deeds.h"
#include "radio/description/FittedTable.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/** What a recording shows of the board that it was made of. */
namespace Radio::Describing {

/** How an interface shows itself in the lookup at `place`, as far as that and what the library said of it
 * tell. */
Standalone::Presence presenceIn(const std::vector<Record>& calls, std::size_t place);
/** It can be the name of something: what else stands in a recording, no library has asked for. */
bool isName(std::string_view name);
/** The table corrects by carrier and temperature; all others have one axis. */
bool isCancellationTable(std::string_view name);
/** A lookup of an interface that comes from the platform: its driver layer, its temperature service, a remote
 * radio unit. */
bool asksForPlatform(const Record& record);
/** The phase in which an operation is what a module does; 0: in none. */
std::int32_t phaseOf(const Record& began);
/** A write of a driver or a carrier of a remote radio unit. */
bool isWrite(const Record& record);
/** It returned, with a code that is a success. */
bool isDone(const Record& record);
/** Where a write goes, as scripts call it: "channel.1.tx.rf.mixer.i", "IRauHandler_1.tx". */
std::string destinationOf(const Record& write);
/** What was written; nothing for a buffer that is no number of 8 bytes. */
std::optional<std::int64_t> valueOf(const Record& write);

struct SeenChannel {
    int number = 0;
    ::FrequencyHandler::FrequencyHandlerType type{};
    /** The recording does not have it; it was concluded from what the channel asked for. */
    bool isTypeConcluded = false;
    bool iqCompensation = false;
};

struct SeenDriver {
    std::string name;
    /** Nothing: no lookup gave it. */
    std::optional<std::int32_t> offers;
    /** A later lookup gave a record that offers something else. */
    bool hasChanged = false;
    std::uint64_t writes = 0;
    std::uint64_t refused = 0;
    std::int64_t lowest = 0;
    std::int64_t highest = 0;
    std::uint64_t reads = 0;
    std::int32_t firstRead = 0;
    std::int32_t lowestRead = 0;
    std::int32_t highestRead = 0;

    bool isThere() const { return !isLate && (offers.has_value() || writes + refused + reads != 0); }
    /** The start-up did not find it, and something later did. */
    bool isLate = false;
    /** What is not offered: a combination of Standalone::DriverWord. */
    unsigned missingWords() const;
};

struct SeenVariable {
    std::string name;
    /** Its content when it was first seen; empty: it was not. */
    std::vector<std::int32_t> values;
    /** The most places that it had. */
    std::size_t places = 0;
    /** It was given at least once, with a content. */
    bool isThere = false;
    bool hasChanged = false;
    /** The highest number that stood in its first place. */
    std::int32_t most = 0;
    /** The start-up did not find it, and something later did; it is not there then. */
    bool isLate = false;
    /** It has more places than a board file should; it is not there then. */
    bool isTooLong = false;

    bool isArray() const;
};

struct SeenTable {
    std::string name;
    bool isThere = false;
    /** The start-up did not find it, and something later did; it is not there then. */
    bool isLate = false;
    /** It was given without a handle, so that nothing tells of which table an answer was. */
    bool hasNoHandle = false;
    bool hasTwoAxes = false;
    Answers answers;
    std::uint64_t lookups = 0;
    /** So many answers were others than the first one at the same place. */
    std::uint64_t contradictions = 0;
    /** It was asked at more places than fit into a board file; it is not there then. */
    bool isTooLarge = false;
};

struct SeenInterface {
    std::string name;
    /** When it was first asked for. */
    Standalone::Presence presence{};
};

/** The operation of "calibrate" that others called first, for a channel. */
struct SeenSearch {
    int channel = 0;
    std::int32_t iLow = 0, iHigh = 0, qLow = 0, qHigh = 0;
    double shrinkFactor = 0;
    std::int32_t minDelta = 0, maxIterations = 0, settleTime = 0;
    bool isHighDetector = false;
};

/** The carriers of one direction of a channel. */
using Carriers = std::map<std::pair<int, bool>, std::set<std::uint64_t>>;

class Inventory {
public:
    /** Goes through the recording as far as a script can: to its gap, or to where a channel is built once
     * more. */
    explicit Inventory(RecordingFile& file);

    const std::vector<SeenChannel>& channels() const { return m_channels; }
    /** Whose type nothing tells, and which are not among the channels. */
    const std::vector<int>& channelsWithoutType() const { return m_withoutType; }
    const std::vector<SeenDriver>& drivers() const { return m_drivers; }
    const std::vector<SeenVariable>& variables() const { return m_variables; }
    const std::vector<SeenTable>& tables() const { return m_tables; }
    const std::vector<SeenInterface>& interfaces() const { return m_interfaces; }
    const std::vector<SeenSearch>& searches() const { return m_searches; }
    /** By channel and whether it is the transmitter's. */
    const Carriers& carriers() const { return m_carriers; }
    /** The lowest and the highest that was told. */
    const std::optional<Range>& temperatures() const { return m_temperatures; }
    bool hasGap() const { return m_hasGap; }
    /** So many drivers, variables and tables are left out, since nothing on a board can be called so. */
    std::size_t namesLeftOut() const { return m_namesLeftOut.size(); }
    /** A lookup that gives what the start-up did not find. */
    bool isLate(const Record& call) const;

    const SeenChannel* channel(int number) const;
    const SeenDriver* driver(const std::string& name) const;
    const SeenVariable* variable(const std::string& name) const;
    const SeenTable* table(const std::string& name) const;
    const SeenInterface* interface(const std::string& name) const;

private:
    /** The one of `list` that is called so; it is added if it is not there. */
    template <typename Seen>
    Seen& find(std::vector<Seen>& list, std::map<std::string, std::size_t>& places, const std::string& name);

    void lookAtStart(const Deed& deed);
    void lookForLate(const Record& call);
    void look(const Deed& deed);
    void lookAtSearch(const Deed& deed);
    void look(const Record& call);
    void lookAtInterface(const std::vector<Record>& calls, std::size_t place);
    void lookAtDriver(const Record& call);
    void lookAtWrite(SeenDriver& driver, const Record& call);
    void lookAtVariable(const Record& call);
    void lookAtTable(const Record& call);
    static void addAnswer(SeenTable& table, const Record& call);
    void shareOut();
    void leaveOut();
    void conclude(const RecordingFile& file);

    const RecordingFile& m_file;
    std::vector<SeenChannel> m_channels;
    std::vector<int> m_withoutType;
    std::vector<SeenDriver> m_drivers;
    std::vector<SeenVariable> m_variables;
    std::vector<SeenTable> m_tables;
    std::vector<SeenInterface> m_interfaces;
    std::vector<SeenSearch> m_searches;
    /** What tables without a handle gave: those with one axis, and those with two. */
    SeenTable m_linear;
    SeenTable m_bilinear;
    Carriers m_carriers;
    std::optional<Range> m_temperatures;
    std::map<std::string, std::size_t> m_driverPlaces;
    std::map<std::string, std::size_t> m_variablePlaces;
    std::map<std::string, std::size_t> m_tablePlaces;
    std::map<std::string, std::size_t> m_interfacePlaces;
    /** The channels that did something. */
    std::set<int> m_seenChannels;
    std::set<const Object*> m_seenObjects;
    std::set<const Object*> m_namesLeftOut;
    /** What each was started with, while nothing but the start-up was done. */
    std::set<std::pair<const Object*, std::int32_t>> m_started;
    /** Whether the start-up found it when it first looked it up; by what it is, and its name. */
    std::map<std::pair<Recordings::ObjectKind, std::string>, bool> m_found;
    bool m_isStarting = true;
    bool m_hasGap = false;
};

} // namespace Radio::Describing

#endif

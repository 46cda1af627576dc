#include "radio/description/Inventory.h"

#include "ResultCode.h"
#include "radio/board/BoardNames.h"
#include "radio/description/TypeGuess.h"
#include "radio/recording/RecordingWords.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace Radio::Describing {

namespace Offers = ::Recording::Offers;

namespace {

const std::string& nameOf(const Record& record) {
    static const std::string s_none;
    return record.object != nullptr ? record.object->name : s_none;
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

double doubleAt(const std::string& bytes, std::size_t at) {
    std::uint64_t word = 0;
    for (std::size_t index = 8; index-- > 0;) {
        word = word << 8U | static_cast<std::uint8_t>(bytes[at + index]);
    }
    double number = 0;
    std::memcpy(&number, &word, sizeof number);
    return number;
}

} // namespace

namespace {

/** The next thing that the library did was to say that something is wrong. The platform has levels of its own
 * for most messages; what comes without such a level is always a complaint. */
bool isComplainedOf(const std::vector<Record>& calls, std::size_t place) {
    constexpr std::int32_t notice = 0x100;
    constexpr std::int32_t information = 0x800;
    bool hasLevel = false;
    for (std::size_t next = place + 1; next < calls.size(); ++next) {
        const Record& call = calls[next];
        if (call.kind == Kind::traceLevel) {
            hasLevel = true;
        } else if (call.kind == Kind::traceMessage &&
                   (!hasLevel || (call.a != notice && call.a != information))) {
            return true;
        } else if (call.kind != Kind::brokerClose && call.kind != Kind::traceMessage &&
                   call.kind != Kind::traceEnd) {
            return false;
        }
    }
    return false;
}

bool isLookup(Kind kind) {
    return kind == Kind::driverLookup || kind == Kind::tableLookup || kind == Kind::variableGet ||
           kind == Kind::variableAddress;
}

/** Tables may be given without a handle. */
bool isGiven(const Record& lookup) {
    return isDone(lookup) && (lookup.a != 0 || lookup.kind == Kind::tableLookup);
}

constexpr std::array<std::pair<Kind, std::int32_t>, 3> modulePhases{
    {{Kind::moduleInit, 11}, {Kind::storageRetrieved, 5}, {Kind::postFrameformat, 20}}};

} // namespace

std::int32_t phaseOf(const Record& began) {
    if (began.kind == Kind::callbackPhase) {
        return began.a;
    }
    const auto found = std::find_if(modulePhases.begin(), modulePhases.end(),
                                    [&](const auto& phase) { return phase.first == began.kind; });
    return found == modulePhases.end() ? 0 : found->second;
}

bool isName(std::string_view name) {
    constexpr std::size_t longest = 200;
    constexpr std::ptrdiff_t mostDots = 40;
    return !name.empty() && name.size() <= longest && std::count(name.begin(), name.end(), '.') <= mostDots &&
           std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

bool isCancellationTable(std::string_view name) {
    return name.find(".Lo.Cancellation.") != std::string_view::npos;
}

Standalone::Presence presenceIn(const std::vector<Record>& calls, std::size_t place) {
    const Record& lookup = calls[place];
    if (lookup.a != 0) {
        const Record* const next = place + 1 < calls.size() ? &calls[place + 1] : nullptr;
        if (next != nullptr && next->kind == Kind::driverLayerRecord && next->a == 0) {
            return Standalone::Presence::nullRecord;
        }
        // There is something of the name that is not what it should be.
        return isComplainedOf(calls, place) ? Standalone::Presence::foreign : Standalone::Presence::present;
    }
    const bool isEmptyEntry = lookup.kind == Kind::brokerGet && isSuccess(lookup.code);
    return isEmptyEntry ? Standalone::Presence::null : Standalone::Presence::absent;
}

bool asksForPlatform(const Record& record) {
    const std::string& name = nameOf(record);
    return (record.kind == Kind::brokerLookup || record.kind == Kind::brokerGet) &&
           record.outcome == Outcome::returned &&
           (name == "IDriverLayer" || name == "ITemperatureHandler" || rauChannel(name));
}

bool isWrite(const Record& record) {
    return record.kind == Kind::driverWrite || record.kind == Kind::driverWriteBuffer ||
           record.kind == Kind::rauTx || record.kind == Kind::rauRx;
}

bool isDone(const Record& record) {
    return record.outcome == Outcome::returned && isSuccess(record.code);
}

std::string destinationOf(const Record& write) {
    if (write.kind == Kind::rauTx || write.kind == Kind::rauRx) {
        return rauCarrierName(nameOf(write), write.kind == Kind::rauTx ? Direction::tx : Direction::rx);
    }
    return nameOf(write);
}

std::optional<std::int64_t> valueOf(const Record& write) {
    if (write.kind == Kind::rauTx || write.kind == Kind::rauRx) {
        return static_cast<std::int64_t>(write.carrier());
    }
    if (write.kind == Kind::driverWrite) {
        return write.a;
    }
    if (write.bytes.size() != sizeof(std::uint64_t)) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    for (std::size_t index = write.bytes.size(); index-- > 0;) {
        value = value << 8U | static_cast<std::uint8_t>(write.bytes[index]);
    }
    return static_cast<std::int64_t>(value);
}

unsigned SeenDriver::missingWords() const {
    unsigned missing = 0;
    const std::int32_t offered = offers.value_or(-1);
    for (const auto& [offer, word] : {std::pair(Offers::context, Standalone::wordContext),
                                      {Offers::write, Standalone::wordWrite},
                                      {Offers::writeBuffer, Standalone::wordWriteBuffer},
                                      {Offers::read, Standalone::wordRead}}) {
        missing |= (offered & offer) == 0 ? static_cast<unsigned>(word) : 0U;
    }
    return missing;
}

bool SeenVariable::isArray() const {
    return places > 1 || endsWith(name, ".array");
}

Inventory::Inventory(RecordingFile& file) : m_file(file) {
    Deeds deeds(file);
    while (const Deed* const deed = deeds.next()) {
        m_hasGap |= deed->isBehindGap;
        if (deed->isBehindGap || deed->isOfAnotherLife) {
            break;
        }
        lookAtStart(*deed);
        look(*deed);
        for (std::size_t place = 0; place < deed->calls.size(); ++place) {
            look(deed->calls[place]);
            lookAtInterface(deed->calls, place);
        }
    }
    m_hasGap |= file.losses().overwritten != 0;
    conclude(file);
}

template <typename Seen>
Seen& Inventory::find(std::vector<Seen>& list, std::map<std::string, std::size_t>& places,
                      const std::string& name) {
    const auto [place, isNew] = places.emplace(name, list.size());
    if (isNew) {
        list.emplace_back();
        list.back().name = name;
    }
    return list[place->second];
}

/** The start-up is that of a script: each phase once, before anything else. */
void Inventory::lookAtStart(const Deed& deed) {
    if (!deed.began || deed.kind() == Kind::phase || deed.kind() == Kind::construct ||
        deed.kind() == Kind::destroy || deed.kind() == Kind::compensationInitialize ||
        deed.kind() == Kind::registerObserver) {
        return;
    }
    const std::int32_t phase = phaseOf(*deed.began);
    m_isStarting = m_isStarting && phase != 0 && m_started.emplace(deed.began->object, phase).second;
}

/** Behind the start-up a script can say that a lookup fails; what the start-up did not find is not there. */
void Inventory::lookForLate(const Record& call) {
    if (isLookup(call.kind) && m_isStarting) {
        m_found.emplace(std::pair(call.object->kind, call.object->name), isGiven(call));
    }
}

bool Inventory::isLate(const Record& call) const {
    if (!isLookup(call.kind) || call.object == nullptr || !isGiven(call)) {
        return false;
    }
    const auto first = m_found.find({call.object->kind, call.object->name});
    return first != m_found.end() && !first->second;
}

void Inventory::look(const Deed& deed) {
    if (!deed.began) {
        return;
    }
    const Record& began = *deed.began;
    const std::optional<int> channel =
        began.object != nullptr ? Recordings::channelOf(m_file, *began.object) : std::nullopt;
    m_seenObjects.insert(began.object);
    if (channel) {
        m_seenChannels.insert(*channel);
    }
    if (channel && (began.kind == Kind::setTx || began.kind == Kind::setRx)) {
        m_carriers[{*channel, began.kind == Kind::setTx}].insert(began.carrier());
    } else if (began.kind == Kind::temperature) {
        Range range = m_temperatures.value_or(Range{began.a, began.a});
        range.low = std::min<std::int64_t>(range.low, began.a);
        range.high = std::max<std::int64_t>(range.high, began.a);
        m_temperatures = range;
    } else if (began.kind == Kind::calibrate && channel) {
        lookAtSearch(deed);
    }
}

void Inventory::lookAtSearch(const Deed& deed) {
    const Record& began = *deed.began;
    const int channel = *Recordings::channelOf(m_file, *began.object);
    const bool isKnown = std::any_of(m_searches.begin(), m_searches.end(),
                                     [&](const SeenSearch& other) { return other.channel == channel; });
    if (isKnown || began.bytes.size() < 44) {
        return;
    }
    m_searches.push_back({channel, began.number(0), began.number(1), began.number(2), began.number(3),
                          doubleAt(began.bytes, 16), began.number(6), began.number(7), began.number(8),
                          began.number(10) != 0});
}

void Inventory::look(const Record& call) {
    const bool isAnswer = call.kind == Kind::tableLinear || call.kind == Kind::tableBilinear;
    if (call.object == nullptr) {
        if (isAnswer && isDone(call)) {
            addAnswer(call.kind == Kind::tableLinear ? m_linear : m_bilinear, call);
        }
        return;
    }
    if (!isName(call.object->name)) {
        const bool isOfBoard = call.object->kind == Recordings::ObjectKind::driver ||
                               call.object->kind == Recordings::ObjectKind::variable ||
                               call.object->kind == Recordings::ObjectKind::table;
        if (isOfBoard) {
            m_namesLeftOut.insert(call.object);
        }
        return;
    }
    lookForLate(call);
    switch (call.object->kind) {
    case Recordings::ObjectKind::driver:
        lookAtDriver(call);
        break;
    case Recordings::ObjectKind::variable:
        lookAtVariable(call);
        break;
    case Recordings::ObjectKind::table:
        lookAtTable(call);
        break;
    default:
        break;
    }
}

void Inventory::lookAtInterface(const std::vector<Record>& calls, std::size_t place) {
    if (!asksForPlatform(calls[place])) {
        return;
    }
    const std::size_t before = m_interfaces.size();
    SeenInterface& seen = find(m_interfaces, m_interfacePlaces, calls[place].object->name);
    if (m_interfaces.size() != before) {
        seen.presence = presenceIn(calls, place);
    }
}

void Inventory::lookAtDriver(const Record& call) {
    SeenDriver& driver = find(m_drivers, m_driverPlaces, call.object->name);
    driver.isLate |= isLate(call);
    if (call.kind == Kind::driverLookup && call.a != 0 && isDone(call)) {
        driver.hasChanged |= driver.offers && *driver.offers != call.b;
        driver.offers = driver.offers.value_or(call.b);
    } else if (isWrite(call)) {
        lookAtWrite(driver, call);
    } else if (call.kind == Kind::driverRead && isDone(call)) {
        if (driver.reads++ == 0) {
            driver.firstRead = driver.lowestRead = driver.highestRead = call.a;
        }
        driver.lowestRead = std::min(driver.lowestRead, call.a);
        driver.highestRead = std::max(driver.highestRead, call.a);
    }
}

void Inventory::lookAtWrite(SeenDriver& driver, const Record& call) {
    const std::optional<std::int64_t> value = valueOf(call);
    if (!isDone(call)) {
        ++driver.refused;
        return;
    }
    if (driver.writes++ == 0) {
        driver.lowest = driver.highest = value.value_or(0);
    }
    driver.lowest = std::min(driver.lowest, value.value_or(driver.lowest));
    driver.highest = std::max(driver.highest, value.value_or(driver.highest));
}

void Inventory::lookAtVariable(const Record& call) {
    SeenVariable& variable = find(m_variables, m_variablePlaces, call.object->name);
    variable.isLate |= isLate(call);
    std::vector<std::int32_t> content;
    if (call.kind == Kind::variableContent) {
        for (std::size_t index = 0; index < call.bytes.size() / 4; ++index) {
            content.push_back(call.number(index));
        }
        variable.isThere = true;
    } else if (isDone(call) && call.a != 0) {
        const bool hasContent = call.kind == Kind::variableAddress || call.b != 0;
        variable.isThere |= hasContent;
        if (hasContent && !variable.isArray()) {
            content = {call.kind == Kind::variableGet ? call.c : call.b};
        }
    }
    if (!content.empty()) {
        variable.most = variable.values.empty() ? content.front() : std::max(variable.most, content.front());
    }
    variable.places = std::max(variable.places, content.size());
    if (variable.values.empty()) {
        variable.values = content;
    }
    const std::size_t common = std::min(content.size(), variable.values.size());
    variable.hasChanged |= !std::equal(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(common),
                                       variable.values.begin());
}

void Inventory::lookAtTable(const Record& call) {
    SeenTable& table = find(m_tables, m_tablePlaces, call.object->name);
    table.isLate |= isLate(call);
    if (!isDone(call)) {
        return;
    }
    table.isThere = true;
    if (call.kind == Kind::tableLookup) {
        table.hasNoHandle |= call.a == 0;
    } else {
        addAnswer(table, call);
    }
}

void Inventory::addAnswer(SeenTable& table, const Record& call) {
    const bool hasTwoAxes = call.kind == Kind::tableBilinear;
    const std::int32_t answer = hasTwoAxes ? call.c : call.b;
    if (table.lookups++ == 0) {
        table.hasTwoAxes = hasTwoAxes;
    }
    if (table.hasTwoAxes != hasTwoAxes) {
        ++table.contradictions;
        return;
    }
    const auto [place, isNew] = table.answers.emplace(std::pair(call.a, hasTwoAxes ? call.b : 0), answer);
    table.contradictions += !isNew && place->second != answer ? 1 : 0;
}

/** Of tables without a handle, each could have given what any of them gave. */
void Inventory::shareOut() {
    for (SeenTable& table : m_tables) {
        if (table.hasNoHandle && table.answers.empty()) {
            const SeenTable& shared = isCancellationTable(table.name) ? m_bilinear : m_linear;
            table.hasTwoAxes = shared.hasTwoAxes;
            table.answers = shared.answers;
            table.lookups = shared.lookups;
            table.contradictions = shared.contradictions;
        }
    }
}

void Inventory::leaveOut() {
    constexpr std::int32_t mostPlaces = 65536;
    constexpr std::size_t mostNodes = 200000;
    for (SeenVariable& array : m_variables) {
        const SeenVariable* const size = array.isArray() ? variable(array.name + "size") : nullptr;
        array.isTooLong = size != nullptr && size->most > mostPlaces;
        array.isThere &= !array.isTooLong && !array.isLate;
        if (array.isThere && size != nullptr) {
            array.places = std::max(array.places, static_cast<std::size_t>(std::max(size->most, 2)));
        }
    }
    for (SeenTable& table : m_tables) {
        table.isTooLarge = nodesOf(table.answers) > mostNodes;
        table.isThere &= !table.isTooLarge && !table.isLate;
    }
}

/** Channels in the order in which they came about, and what size an array has at least. */
void Inventory::conclude(const RecordingFile& file) {
    shareOut();
    leaveOut();
    for (const Object& object : file.objects()) {
        if (object.kind != Recordings::ObjectKind::module || object.first < 0 ||
            m_seenChannels.count(object.first) == 0 || channel(object.first) != nullptr) {
            continue;
        }
        SeenChannel seen;
        seen.number = object.first;
        const auto type = static_cast<::FrequencyHandler::FrequencyHandlerType>(object.second);
        seen.isTypeConcluded = !handlerTypeFromString(toString(type));
        const auto concluded = seen.isTypeConcluded ? guessType(*this, seen.number) : std::optional(type);
        if (!concluded) {
            m_withoutType.push_back(seen.number);
            continue;
        }
        seen.type = *concluded;
        m_channels.push_back(seen);
    }
    for (const Object& object : file.objects()) {
        for (SeenChannel& seen : m_channels) {
            seen.iqCompensation |= object.kind == Recordings::ObjectKind::compensation &&
                                   object.first == seen.number && m_seenObjects.count(&object) != 0;
        }
    }
}

const SeenChannel* Inventory::channel(int number) const {
    const auto found = std::find_if(m_channels.begin(), m_channels.end(),
                                    [number](const SeenChannel& seen) { return seen.number == number; });
    return found == m_channels.end() ? nullptr : &*found;
}

const SeenDriver* Inventory::driver(const std::string& name) const {
    const auto found = m_driverPlaces.find(name);
    return found == m_driverPlaces.end() ? nullptr : &m_drivers[found->second];
}

const SeenVariable* Inventory::variable(const std::string& name) const {
    const auto found = m_variablePlaces.find(name);
    return found == m_variablePlaces.end() ? nullptr : &m_variables[found->second];
}

const SeenTable* Inventory::table(const std::string& name) const {
    const auto found = m_tablePlaces.find(name);
    return found == m_tablePlaces.end() ? nullptr : &m_tables[found->second];
}

const SeenInterface* Inventory::interface(const std::string& name) const {
    const auto found = m_interfacePlaces.find(name);
    return found == m_interfacePlaces.end() ? nullptr : &m_interfaces[found->second];
}

} // namespace Radio::Describing

#include "Decoder.h"

#include "Exceptions.h"
#include "FullBoard.h"
#include "Numbers.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

using Told::Board;
using Told::Do;
using Told::Leaves;
using Told::Step;

namespace {

constexpr std::size_t mostSteps = 40;

constexpr std::array<std::int32_t, 8> channels{1, 1, 1, 0, 2, -1, 3, lowest};
constexpr std::array<std::int32_t, 8> thresholds{4, 4, 4, 4, 3, 1, 0, 2};
constexpr std::array<std::int32_t, 16> codes{0x8000, 0x8001, 0x8123, 0xFFFF, highest, 0x7FFF, 1,      256,
                                             2048,   -1,     lowest, 0,      0x8000,  0x8123, 0x8800, 3};
constexpr std::array<std::int32_t, 16> spacings{50,  100, 125, 150, 200, 250,  300, 350,
                                                400, 450, 500, 550, 600, 3000, 0,   7};
/** Directions; the last two are longer than a message has room for, and differ at their end alone. */
const std::array<std::string, 7> directions{
    "Tx", "Rx", "TX", "rx", "", std::string(150, 'x'), std::string(150, 'x') + "y"};

/** What is thrown, for a byte: mostly nothing. */
Told::Throws throwsFor(std::uint32_t byte) {
    return byte >= 224 ? Told::Throws::number : byte >= 176 ? Told::Throws::exception : Told::Throws::nothing;
}

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/** Takes the bytes apart. */
class Decoder {
public:
    Decoder(const unsigned char* bytes, std::size_t count) : m_bytes(bytes, count) {}

    Told::Story story() {
        decodeBoard();
        decodeStart();
        while (m_bytes.areLeft() && m_story.steps.size() < mostSteps) {
            decodeStep();
        }
        return std::move(m_story);
    }

private:
    void decodeBoard();
    void decodeStart();
    void decodeStep();
    void decodeModuleStep();
    Step observer(Do what, const std::string& handler);
    void decodeHandlerStep();
    void decodeCancellerStep();
    std::uint32_t iterationsBefore(std::uint32_t limit, std::uint32_t how);
    void decodeCompensationStep();
    void decodePlatformStep();
    void decodeFault();
    std::vector<std::int32_t> valuesFor(const Told::Variable& variable);
    std::string objectFor(std::size_t operation);
    template <typename Named>
    const std::string& nameOf(const std::vector<Named>& list) {
        static const std::string none;
        return list.empty() ? none : m_bytes.oneOf(list).name.text();
    }

    void add(Step step) { m_story.steps.push_back(std::move(step)); }
    std::int64_t anyChannel() { return m_bytes.below(4) != 0 ? m_channel : m_otherChannel; }

    Bytes m_bytes;
    Told::Story m_story;
    std::int64_t m_type = 0;
    std::int32_t m_channel = 1;
    std::int32_t m_otherChannel = 2;
    std::string m_madeDirection = directions.front();
    std::int64_t m_madeChannel = 1;
};

void Decoder::decodeBoard() {
    Board& board = m_story.board;
    m_type = static_cast<std::int64_t>(m_bytes.below(8)) - 1; // -1 and 6 are unknown
    m_channel = m_bytes.oneOf(channels);
    const std::uint32_t features = m_bytes.byte();
    board.threshold = m_bytes.oneOf(thresholds);
    addChannel(board, m_channel, (features & 1U) != 0);
    if ((features & 2U) != 0) {
        m_otherChannel = m_channel == 1 ? 2 : 1;
        addChannel(board, m_otherChannel, (features & 4U) != 0);
    } else {
        m_otherChannel = m_channel;
    }
    addShared(board);
    for (std::size_t count = m_bytes.below(8); count > 0; --count) {
        addException(m_bytes, board);
    }
    board.readings.clear();
    for (std::size_t count = m_bytes.below(8); count > 0; --count) {
        board.readings.push_back(anyNumber(m_bytes));
    }
    board.readings.push_back(0);
}

std::vector<std::int32_t> Decoder::valuesFor(const Told::Variable& variable) {
    // What a size promises must be there.
    if (endsWith(variable.name.text(), "arraysize")) {
        return {static_cast<std::int32_t>(m_bytes.below(13)) - 2};
    }
    if (endsWith(variable.name.text(), "array")) {
        std::vector<std::int32_t> pairs;
        for (std::size_t count = 1 + m_bytes.below(5); count > 0; --count) {
            pairs.push_back(m_bytes.oneOf(spacings));
            pairs.push_back(anyNumber(m_bytes));
        }
        return pairs;
    }
    if (variable.name.text() == "ChannelSpacing") {
        return {m_bytes.oneOf(spacings)};
    }
    if (variable.name.text() == "HwCodeDsp" && m_bytes.below(2) != 0) {
        return {3}; // the one that is asked for
    }
    return {anyNumber(m_bytes)};
}

/** Most stories begin with a radio that is switched on. */
void Decoder::decodeStart() {
    const std::uint32_t how = m_bytes.byte();
    for (std::size_t count = how % 4; count > 0; --count) {
        Told::Variable& variable = m_story.board.variables[m_bytes.below(m_story.board.variables.size())];
        const std::vector<std::int32_t> values = valuesFor(variable);
        std::copy(values.begin(), values.end(), variable.values.begin());
    }
    if ((how & 4U) != 0) {
        return;
    }
    add({Do::makeModule, {}, {0, m_channel, m_type}});
    if ((how & 8U) != 0) {
        add({Do::makeCompensation, {}, {0, m_channel}});
        add({Do::initializeCompensation, {}, {0}});
    }
    if ((how & 16U) != 0) {
        decodeFault();
    }
    for (const std::int64_t phase : {11, 5, 20}) {
        add({Do::phase, {}, {phase}});
    }
}

void Decoder::decodeStep() {
    switch (m_bytes.below(8)) {
    case 0:
    case 1:
        return decodeModuleStep();
    case 2:
    case 3:
        return decodeHandlerStep();
    case 4:
        return decodeCancellerStep();
    case 5:
        return decodeCompensationStep();
    case 6:
        return decodeFault();
    default:
        return decodePlatformStep();
    }
}

void Decoder::decodeModuleStep() {
    const std::uint32_t how = m_bytes.byte();
    const std::int64_t slot = (how & 128U) != 0 ? 1 : 0;
    switch (how % 10) {
    case 0:
        return add({Do::makeModule, {}, {slot, anyChannel(), static_cast<std::int64_t>(m_bytes.below(7))}});
    case 1:
        return add({Do::destroyModule, {}, {slot}});
    case 2:
        return add({Do::moduleInit, {}, {slot}});
    case 3:
        return add({Do::moduleStorage, {}, {slot}});
    case 4:
        return add({Do::moduleFrameFormat, {}, {slot}});
    case 5:
    case 6:
        return add({Do::setTx, {}, {slot, anyFrequency(m_bytes)}});
    case 7:
        return add({Do::setRx, {}, {slot, anyFrequency(m_bytes)}});
    case 8:
        return add({Do::moduleTemperature, {}, {slot, anyTemperature(m_bytes)}});
    default:
        return add(
            {Do::contextTemperature, {}, {m_bytes.below(3) != 0 ? slot : -1, anyTemperature(m_bytes)}});
    }
}

/** An observer, of which a few throw. */
Step Decoder::observer(Do what, const std::string& handler) {
    const std::uint32_t which = m_bytes.byte();
    return {what, handler, {which % 4, static_cast<std::int64_t>(throwsFor(which))}};
}

void Decoder::decodeHandlerStep() {
    const std::uint32_t how = m_bytes.byte();
    std::int64_t channel = anyChannel();
    const std::uint32_t which = (how & 64U) != 0 ? m_bytes.byte() : how / 128U;
    std::string direction = directions[which % directions.size()];
    if (which >= 128) { // the handler that was made last; few would meet it again by chance
        direction = m_madeDirection;
        channel = m_madeChannel;
    }
    const std::string name = Told::handlerName(direction, channel);
    const std::int64_t slot = m_bytes.below(2) != 0 ? 1 : 0;
    switch (how % 16) {
    case 0:
    case 1:
        m_madeDirection = direction;
        m_madeChannel = channel;
        return add({Do::makeHandler,
                    direction,
                    {slot, static_cast<std::int64_t>(m_bytes.below(3)), channel,
                     static_cast<std::int64_t>(m_bytes.below(16))}});
    case 2:
        return add({Do::destroyHandler, {}, {slot}});
    case 3:
    case 4:
        return add({Do::handlerInit, name});
    case 5:
    case 6:
        return add({Do::handlerVariables, name});
    case 7:
        return add({Do::handlerFrameFormat, name});
    case 8:
        return add({Do::handlerWrite, name, {anyFrequency(m_bytes)}});
    case 9:
        return add({Do::handlerSet, name, {anyFrequency(m_bytes)}});
    case 10:
        return add({Do::handlerGet, name});
    case 11:
        return add({Do::plan, name, {anyFrequency(m_bytes), static_cast<std::int64_t>(m_bytes.below(2))}});
    case 12:
        return add(observer(Do::observe, name));
    case 13:
        return add({Do::observeNull, name});
    case 14:
        return add(observer(Do::observeFromC, name));
    default:
        return add({Do::observeBadlyFromC, name, {static_cast<std::int64_t>(m_bytes.below(3))}});
    }
}

void Decoder::decodeCancellerStep() {
    const std::uint32_t how = m_bytes.byte();
    const std::int64_t channel = anyChannel();
    const std::string name = "ILoCancellation_" + std::to_string(channel);
    const std::int64_t slot = (how & 128U) != 0 ? 1 : 0;
    switch (how % 8) {
    case 0:
        return add({Do::makeCanceller, {}, {slot, channel}});
    case 1:
        return add({Do::initializeCanceller, {}, {slot}});
    case 2:
        return add({Do::destroyCanceller, {}, {slot}});
    case 3:
        return add({Do::cancellerInit, name});
    case 4:
        return add({Do::correct, name, {anyFrequency(m_bytes), anyTemperature(m_bytes)}});
    case 5:
        return add({Do::setIq, name, {anyNumber(m_bytes), anyNumber(m_bytes)}});
    default:
        break;
    }
    Step step{Do::calibrate, name};
    Told::Calibration& c = step.calibration;
    for (std::int32_t* const bound : {&c.iLow, &c.iHigh, &c.qLow, &c.qHigh}) {
        *bound =
            (how & 64U) != 0 ? static_cast<std::int32_t>(m_bytes.byte()) * 16 - 2048 : anyNumber(m_bytes);
    }
    c.shrinkFactor = anyFactor(m_bytes);
    c.minDelta = anyNumber(m_bytes);
    const std::uint32_t limit = m_bytes.byte();
    const std::uint32_t rest = m_bytes.byte();
    c.settleTimeMs = (rest & 3U) == 3 ? static_cast<std::uint32_t>(anyNumber(m_bytes)) : rest & 3U;
    c.useHighDetector = (rest & 16U) != 0;
    c.nullPlaces = (rest & 0xE0U) == 0xE0U ? 1U << m_bytes.below(4) : 0U;
    c.maxIterations = limit < 192 ? limit % 6 : static_cast<std::uint32_t>(anyNumber(m_bytes));
    c.iterations = iterationsBefore(c.maxIterations, rest & 12U);
    add(std::move(step));
}

/** What is counted on from: so near to the limit, or so far beyond it, that the calibration ends soon. */
std::uint32_t Decoder::iterationsBefore(std::uint32_t limit, std::uint32_t how) {
    constexpr std::uint32_t most = 6;
    const std::uint32_t before = how == 4    ? static_cast<std::uint32_t>(anyNumber(m_bytes))
                                 : how == 12 ? 0xFFFFFFFFU
                                             : how / 8U;
    const std::uint32_t afterTheFirst = before + 1; // which may be 0 again
    return afterTheFirst < limit && limit - afterTheFirst >= most ? limit - most : before;
}

void Decoder::decodeCompensationStep() {
    const std::uint32_t how = m_bytes.byte();
    const std::int64_t slot = (how & 128U) != 0 ? 1 : 0;
    switch (how % 8) {
    case 0:
        return add({Do::makeCompensation, {}, {slot, anyChannel()}});
    case 1:
        return add({Do::initializeCompensation, {}, {slot}});
    case 2:
    case 3: {
        const std::uint32_t which = m_bytes.byte();
        const std::int64_t phase =
            which % 4 != 0 ? 11 : std::array<std::int64_t, 4>{5, 20, 0, 12}[which / 4 % 4];
        return add({Do::compensationPhase, {}, {m_bytes.below(8) != 0 ? slot : -1, phase}});
    }
    case 4:
        return add(
            {Do::compensationTemperature, {}, {m_bytes.below(8) != 0 ? slot : -1, anyTemperature(m_bytes)}});
    case 5:
        return add({Do::compensate, {}, {slot}});
    case 6:
        return add({Do::txChanged, {}, {slot, anyFrequency(m_bytes)}});
    default:
        return add({Do::testOperations, {}, {slot}});
    }
}

void Decoder::decodePlatformStep() {
    const Board& board = m_story.board;
    switch (m_bytes.below(10)) {
    case 0:
        return add({Do::phase, {}, {std::array<std::int64_t, 4>{11, 5, 20, 7}[m_bytes.below(4)]}});
    case 1:
    case 2:
        return add({Do::temperature, {}, {anyTemperature(m_bytes)}});
    case 3:
    case 4: {
        const Told::Variable& variable = m_bytes.oneOf(board.variables);
        Step step{Do::setVariable, variable.name.text()};
        step.values = valuesFor(variable);
        return add(std::move(step));
    }
    case 5:
        return add({Do::hideContent, nameOf(board.variables), {static_cast<std::int64_t>(m_bytes.below(2))}});
    case 6:
        return add({Do::setWords, nameOf(board.drivers), {static_cast<std::int64_t>(m_bytes.below(16))}});
    case 7:
        return add({Do::nullRecord, m_bytes.below(2) != 0 ? nameOf(board.drivers) : nameOf(board.variables)});
    case 8: {
        const std::array<std::string, 3> names{"IDriverLayer", "ITemperatureHandler",
                                               m_channel == 0 ? "IRauHandler"
                                                              : "IRauHandler_" + std::to_string(m_channel)};
        return add({Do::setPresence,
                    m_bytes.oneOf(names),
                    {static_cast<std::int64_t>(presenceFor(m_bytes.byte()))}});
    }
    default:
        break;
    }
    const std::uint32_t which = m_bytes.byte();
    if (which >= 208) {
        return add({Do::loseMessages, {}, {which % 2, which / 2 % 3}});
    }
    add({Do::setThreshold, {}, {thresholds[which % thresholds.size()]}});
}

void Decoder::decodeFault() {
    constexpr std::size_t operationCount = 22;
    const std::uint32_t how = m_bytes.byte();
    if (how % 8 == 0) {
        return add({Do::clearFaults});
    }
    const std::uint32_t which = m_bytes.byte();
    const std::int64_t code = codes[which % codes.size()];
    const Leaves leaves = (how & 64U) != 0     ? Leaves::number
                          : (how & 48U) == 48U ? Leaves::result
                          : (how & 48U) == 32U ? Leaves::asItWas
                          : (how & 48U) == 16U ? Leaves::null
                                               : Leaves::nothing;
    const std::int64_t output = leaves == Leaves::number ? anyNumber(m_bytes) : 0;
    Step step{Do::faultAt};
    step.leaves = leaves;
    step.throws = throwsFor(which);
    if (how % 8 < 4) {
        const std::int64_t later = 1 + static_cast<std::int64_t>(m_bytes.below(64));
        step.number = {later, code, (how & 128U) != 0 ? 1 : 0, output};
    } else {
        const std::size_t operation = m_bytes.below(operationCount);
        const std::int64_t times = (how & 128U) != 0 ? -1 : static_cast<std::int64_t>(m_bytes.below(4));
        step.what = Do::fault;
        step.name = objectFor(operation);
        step.number = {static_cast<std::int64_t>(operation), code, times, output};
    }
    add(std::move(step));
}

/** What the fault is about: everything, or one of the objects that the operation has to do with. */
std::string Decoder::objectFor(std::size_t operation) {
    constexpr std::size_t driverLookup = 10;
    constexpr std::size_t variableGet = 14;
    constexpr std::size_t tableLookup = 16;
    constexpr std::size_t temperatureRegister = 19;
    if (operation < driverLookup || operation >= temperatureRegister || m_bytes.below(2) == 0) {
        return {};
    }
    return operation < variableGet   ? nameOf(m_story.board.drivers)
           : operation < tableLookup ? nameOf(m_story.board.variables)
                                     : nameOf(m_story.board.tables);
}

} // namespace

Told::Story decode(const std::uint8_t* bytes, std::size_t count) {
    return Decoder(bytes, count).story();
}

#include "radio/session/Bench.h"

#include "ResultCode.h"
#include "radio/board/BoardNames.h"
#include "radio/board/HardwareCheck.h"
#include "radio/text/Words.h"

#include <algorithm>

namespace Radio {

namespace {

Place placeOf(const Board& board, const std::string& driver) {
    const auto place = board.hardware.places.find(driver);
    return place != board.hardware.places.end() ? place->second : board.hardware.sensorPlace;
}

const Board& requireHardware(const Board& board) {
    if (board.hardware.description.isEmpty()) {
        throw InputError({board.file.string(), 0},
                         "no hardware, expected a section [hardware] that says what drivers are");
    }
    return board;
}

} // namespace

std::vector<AttributeWrite> attributeWrites(const Board& board, std::string_view driver, std::int64_t value) {
    const Devices::DriverHardware* const hardware = findHardware(board, driver);
    if (hardware == nullptr) {
        return {};
    }
    std::vector<AttributeWrite> writes;
    for (const Devices::PlannedWrite& write : Devices::plannedWrites(*hardware, value)) {
        const std::string device = write.attribute.device.empty() ? "" : write.attribute.device + ": ";
        writes.push_back({device + write.attribute.attribute, write.text});
    }
    return writes;
}

Bench::Bench(const Board& board, Devices::HardwareListener& listener, const std::filesystem::path& marks)
    : m_board(requireHardware(board)),
      m_mark(board.file, marks),
      m_hardware(board.hardware.description, listener) {}

Bench::~Bench() {
    leave();
}

void Bench::begin() {
    const std::vector<Finding> outside = checkHardwareRanges(m_board);
    if (!outside.empty()) {
        throw InputError(outside.front().place, outside.front().text);
    }
    for (const Devices::AttributeFinding& finding : examine(false)) {
        if (!finding.problem.empty()) {
            throw InputError(placeOf(m_board, finding.driver),
                             (finding.driver.empty() ? "sensor" : inQuotes(finding.driver)) + ": " +
                                 finding.attribute + ": " + finding.problem);
        }
    }
    m_mark.set();
    m_isHeld = true;
}

std::vector<Devices::ExitWrite> Bench::leave() {
    if (!m_isHeld) {
        return {};
    }
    m_isHeld = false;
    const std::vector<Devices::ExitWrite> writes = m_hardware.leave();
    if (std::all_of(writes.begin(), writes.end(), [](const auto& write) { return isSuccess(write.code); })) {
        m_mark.takeBack();
    }
    return writes;
}

std::vector<std::string> driversWithoutHardware(const Board& board) {
    std::vector<std::string> names;
    for (const DriverDescription& driver : board.drivers) {
        if (findHardware(board, driver.name) == nullptr) {
            names.push_back(driver.name);
        }
    }
    return names;
}

} // namespace Radio

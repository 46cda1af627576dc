#include "radio/session/Bench.h"

#include "ResultCode.h"
#include "radio/board/BoardNames.h"
#include "radio/board/HardwareRanges.h"
#include "radio/files/StateFolder.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <optional>
#include <set>

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

/** The addresses of the devices that drivers write, and the files, each once. */
std::set<std::string> devicesOf(const Devices::HardwareDescription& hardware) {
    std::set<std::string> devices;
    const auto add = [&](const std::optional<Devices::AttributeName>& name) {
        if (!name) {
            return;
        }
        const auto device = std::find_if(hardware.devices.begin(), hardware.devices.end(),
                                         [&](const auto& one) { return one.name == name->device; });
        devices.insert(device == hardware.devices.end() ? name->attribute : device->address);
    };
    for (const Devices::DriverHardware& driver : hardware.drivers) {
        add(driver.write);
        add(driver.negative);
    }
    return devices;
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
      m_hardware(board.hardware.description, listener) {
    for (const std::string& device : devicesOf(board.hardware.description)) {
        m_marks.push_back(std::make_unique<HardwareMark>(device, board.file, marks));
    }
}

std::string Bench::leftBehind() const {
    const auto mark = std::find_if(m_marks.begin(), m_marks.end(),
                                   [](const auto& one) { return !one->leftBehind().empty(); });
    return mark == m_marks.end() ? "" : (*mark)->leftBehind();
}

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
    for (const auto& mark : m_marks) {
        mark->set();
    }
    m_isHeld = true;
}

std::vector<Devices::ExitWrite> Bench::leave() {
    if (!m_isHeld) {
        return {};
    }
    m_isHeld = false;
    const std::vector<Devices::ExitWrite> writes = m_hardware.leave();
    if (std::all_of(writes.begin(), writes.end(), [](const auto& write) { return isSuccess(write.code); })) {
        for (const auto& mark : m_marks) {
            mark->takeBack();
        }
    }
    return writes;
}

std::filesystem::path folderOfMarks() {
    std::filesystem::path folder = stateFolder();
    if (folder.empty()) {
        throw InputError({"HOME", 0}, "is not set, expected a home in which to mark that hardware is in use");
    }
    return folder;
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

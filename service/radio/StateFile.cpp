#include "service/radio/StateFile.h"

#include "radio/board/BoardNames.h"
#include "radio/files/AtomicFile.h"
#include "radio/files/InputError.h"
#include "radio/files/Json.h"
#include "radio/files/TextFile.h"
#include "radio/text/Numbers.h"
#include "radio/text/Words.h"
#include "service/radio/Body.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <stdexcept>

namespace Radio::Service {

namespace {

constexpr std::size_t mostBytes = std::size_t{256} * 1024;
constexpr int version = 1;
constexpr std::array<Direction, 2> directions{Direction::tx, Direction::rx};

} // namespace

Carriers StateFile::parse(const std::string& text) const {
    Body body(text);
    body.integer("version", version, version);
    const std::string name = body.optionalText("name");
    const std::string serial = body.optionalText("serial");
    if (name != m_board.name || serial != m_board.serial) {
        throw std::invalid_argument("is that of another radio, " +
                                    inQuotes(serial.empty() ? name : name + " " + serial) +
                                    ", expected one of " + inQuotes(m_board.name));
    }
    Carriers carriers;
    for (const Direction direction : directions) {
        for (const auto& [channel, khz] : body.numbersByName(std::string(toString(direction)).c_str(), 1,
                                                             std::numeric_limits<std::uint32_t>::max())) {
            const auto number = parseNumber<int>(channel);
            if (!number || findChannel(m_board, *number) == nullptr) {
                throw std::invalid_argument("channel " + inQuotes(channel) + ": the board has none such");
            }
            carriers[{direction, *number}] = static_cast<std::uint32_t>(khz);
        }
    }
    body.end();
    return carriers;
}

Carriers StateFile::read() const {
    if (m_file.empty()) {
        return {};
    }
    requireWritable(m_file);
    std::error_code error;
    if (!std::filesystem::exists(m_file, error)) {
        return {};
    }
    const std::string text = readTextFile(m_file, mostBytes, "a state of the service");
    try {
        return parse(text);
    } catch (const std::invalid_argument& problem) {
        throw InputError({m_file, 0}, problem.what());
    }
}

void StateFile::keep(const Carriers& carriers) {
    if (m_file.empty() || carriers == m_kept) {
        return;
    }
    Json state = {{"version", version}, {"name", m_board.name}, {"serial", m_board.serial}};
    for (const Direction direction : directions) {
        Json& ofDirection = state[toString(direction)] = Json::object();
        for (const auto& [channel, khz] : carriers) {
            if (channel.first == direction) {
                ofDirection[std::to_string(channel.second)] = khz;
            }
        }
    }
    AtomicFile file(m_file);
    file.stream() << toText(state) << "\n";
    file.commit();
    m_kept = carriers;
}

} // namespace Radio::Service

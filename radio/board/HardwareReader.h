#ifndef RADIO_BOARD_HARDWAREREADER_H
#define RADIO_BOARD_HARDWAREREADER_H

#include "radio/board/Board.h"
#include "radio/board/TomlItem.h"

#include <vector>

namespace Radio {

/** The sections "devices", "hardware" and "sensor" of a board file; `drivers` are those of the board. */
HardwareOnBench readHardware(const TomlItem& root, const std::vector<DriverDescription>& drivers);

} // namespace Radio

#endif

#include "radio/session/HardwareWrite.h"

#include "radio/board/BoardNames.h"
#include "radio/board/PlatformWords.h"

namespace Radio {

using Standalone::Operation;

bool isWrite(const Standalone::Call& call) {
    return call.operation == Operation::driverWrite || call.operation == Operation::driverWriteBuffer ||
           call.operation == Operation::rauTx || call.operation == Operation::rauRx;
}

std::string destination(const Standalone::Call& call) {
    switch (call.operation) {
    case Operation::rauTx:
        return rauCarrierName(call.object, Direction::tx);
    case Operation::rauRx:
        return rauCarrierName(call.object, Direction::rx);
    default:
        return call.object;
    }
}

} // namespace Radio

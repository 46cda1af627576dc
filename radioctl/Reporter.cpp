#include "Reporter.h"

#include "BoardNames.h"
#include "ResultCode.h"

namespace Radioctl {

using Standalone::Operation;

bool isWrite(const Standalone::Call& call) {
    return call.operation == Operation::driverWrite || call.operation == Operation::driverWriteBuffer ||
           call.operation == Operation::rauTx || call.operation == Operation::rauRx;
}

bool mattersToAPerson(const Standalone::Call& call) {
    return isWrite(call) || isFailure(call.code);
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

} // namespace Radioctl

#include "Reporter.h"

#include "BoardNames.h"
#include "ResultCode.h"
#include "standalone/Codes.h"

namespace Radioctl {

using Standalone::Operation;

bool isWrite(const Standalone::Call& call) {
    return call.operation == Operation::driverWrite || call.operation == Operation::driverWriteBuffer ||
           call.operation == Operation::rauTx || call.operation == Operation::rauRx;
}

static bool isLookup(const Standalone::Call& call) {
    return call.operation == Operation::driverLookup || call.operation == Operation::tableLookup ||
           call.operation == Operation::variableGet || call.operation == Operation::variableAddress ||
           call.operation == Operation::brokerLookup;
}

bool mattersToAPerson(const Standalone::Call& call) {
    const bool onlyAsked = isLookup(call) && call.code == Standalone::Codes::notFound;
    return isWrite(call) || (isFailure(call.code) && !onlyAsked);
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

#include "radioctl/report/Reporter.h"

#include "ResultCode.h"
#include "radio/session/HardwareWrite.h"
#include "standalone/Codes.h"

namespace Radio {

using Standalone::Operation;

static bool isLookup(const Standalone::Call& call) {
    return call.operation == Operation::driverLookup || call.operation == Operation::tableLookup ||
           call.operation == Operation::variableGet || call.operation == Operation::variableAddress ||
           call.operation == Operation::brokerLookup;
}

bool mattersToAPerson(const Standalone::Call& call) {
    const bool onlyAsked = isLookup(call) && call.code == Standalone::Codes::notFound;
    return isWrite(call) || (isFailure(call.code) && !onlyAsked);
}

} // namespace Radio

#include "CarrierLog.h"

#include "InterfaceBroker.h"

#include <iostream>

bool CarrierLog::subscribe(const std::string& name) {
    auto* const handler = InterfaceBroker::getInstance().getInterface<IFrequencyHandler>(name);
    if (handler == nullptr || handler->registerObserver(this) >= ResultFailed) {
        return false;
    }
    m_name = name;
    return true;
}

void CarrierLog::onChange(IFrequencyHandler* subject) {
    std::cout << m_name << ": " << subject->getFrequency() << " kHz\n";
}

#include "radio/session/Command.h"

namespace Radio {

bool actsOnRadio(const Action& action) {
    return std::visit(
        Visitor{[](const Show& /*command*/) { return false; }, [](const Watch& /*command*/) { return false; },
                [](const Wait& /*command*/) { return false; },
                [](const Repeat& /*command*/) { return false; },
                [](const Help& /*command*/) { return false; }, [](const Quit& /*command*/) { return false; },
                [](const auto& /*command*/) { return true; }},
        action);
}

bool isForced(const Action& action) {
    return std::visit(Visitor{[](const Tune& command) { return command.isForced; },
                              [](const WriteDriver& command) { return command.isForced; },
                              [](const SetTemperature& command) { return command.isForced; },
                              [](const Sweep& command) { return command.isForced; },
                              [](const auto& /*command*/) { return false; }},
                      action);
}

} // namespace Radio

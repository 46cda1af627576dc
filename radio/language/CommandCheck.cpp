#include "radio/language/CommandCheck.h"

#include "radio/session/ScriptLine.h"
#include "radio/text/NearestName.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

#include <algorithm>

namespace Radio {

namespace {

using Names = std::vector<std::string>;

bool contains(const Names& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

void requireName(std::string_view kind, const std::string& name, const Names& names) {
    if (contains(names, name)) {
        return;
    }
    const std::string hint = didYouMean(name, names);
    throw WordError("the board has no " + std::string(kind) + " " + inQuotes(name) +
                    (!hint.empty()   ? hint
                     : names.empty() ? ": it has no " + std::string(kind) + " at all"
                                     : ", expected one such as " + inQuotes(names.front())));
}

void requireChannel(int channel, const BoardNames& names) {
    if (!contains(names.channels, std::to_string(channel))) {
        throw WordError("the board has no channel " + std::to_string(channel) + ", expected " +
                        (names.channels.size() > 8 ? names.channels.front() + " to " + names.channels.back()
                                                   : joined(names.channels, " or ")));
    }
}

void requireLeakage(int channel, const Board& board) {
    std::vector<std::string> modelled;
    for (const LeakageDescription& leakage : board.leakages) {
        modelled.push_back(std::to_string(leakage.channel));
    }
    if (!contains(modelled, std::to_string(channel))) {
        throw WordError(
            "the board models no LO leakage of channel " + std::to_string(channel) + ", expected " +
            (modelled.empty() ? "a board with [[leakage]]" : "channel " + joined(modelled, " or ")));
    }
}

void requireRau(int channel, const BoardNames& names) {
    if (!contains(names.raus, rauName(channel))) {
        throw WordError(
            "the board has no " + rauName(channel) + ", expected " +
            (names.raus.empty() ? "a board with a remote radio unit" : joined(names.raus, " or ")));
    }
}

/** An operation is about objects of one kind; a fault on an object that is not there would never strike. */
void requireObject(Standalone::Operation operation, const std::string& object, const BoardNames& names) {
    using Standalone::Operation;
    if (object.empty()) {
        return;
    }
    switch (operation) {
    case Operation::driverLookup:
    case Operation::driverWrite:
    case Operation::driverWriteBuffer:
    case Operation::driverRead:
        return requireName("driver", object, names.drivers);
    case Operation::variableGet:
    case Operation::variableAddress:
        return requireName("variable", object, names.variables);
    case Operation::tableLookup:
    case Operation::tableLinear:
    case Operation::tableBilinear:
        return requireName("table", object, names.tables);
    case Operation::rauTx:
    case Operation::rauRx:
        return requireName("remote radio unit", object, names.raus);
    case Operation::brokerRegister:
    case Operation::brokerUnregister:
    case Operation::brokerLookup:
    case Operation::brokerGet:
        return requireName("interface", object, names.brokerNames);
    default:
        return;
    }
}

void requirePlaces(const SetVariable& command, const std::vector<VariableDescription>& variables) {
    const auto variable =
        std::find_if(variables.begin(), variables.end(), [&command](const VariableDescription& candidate) {
            return candidate.name == command.name;
        });
    if (command.values.size() > variable->values.size()) {
        throw WordError(counted(command.values.size(), "value") + " for " + inQuotes(command.name) +
                        ", expected at most " + std::to_string(variable->values.size()));
    }
}

/** A receiver reads as much of the array as its size says: more would lie behind the array. */
void requireSizeWithinArray(const SetVariable& command, const Board& board) {
    const VariableDescription* const array = arraySizedBy(command.name, board);
    if (array != nullptr && command.values.front() > static_cast<std::int64_t>(array->values.size())) {
        throw WordError(std::to_string(command.values.front()) + " for " + inQuotes(command.name) +
                        ": the array has " + counted(array->values.size(), "place"));
    }
}

class ReferenceChecker {
public:
    ReferenceChecker(const Board& board, const BoardNames& names, bool hasKeys)
        : m_board(board),
          m_names(names),
          m_hasKeys(hasKeys) {}

    void operator()(const Tune& command) const { requireChannel(command.channel, m_names); }
    void operator()(const Sweep& command) const { requireChannel(command.channel, m_names); }
    void operator()(const Observe& command) const { requireChannel(command.channel, m_names); }
    void operator()(const ExpectFrequency& command) const { requireChannel(command.channel, m_names); }
    void operator()(const ExpectNotified& command) const { requireChannel(command.channel, m_names); }
    void operator()(const ExpectRau& command) const { requireRau(command.channel, m_names); }
    void operator()(const ExpectLeakage& command) const {
        requireChannel(command.channel, m_names);
        requireLeakage(command.channel, m_board);
    }
    void operator()(const ExpectDriver& command) const {
        requireName("driver", command.name, m_names.drivers);
    }
    void operator()(const ReadDriver& command) const { requireName("driver", command.name, m_names.drivers); }
    void operator()(const WriteDriver& command) const {
        requireName("driver", command.name, m_names.drivers);
    }
    void operator()(const Watch& command) const {
        for (const std::string& name : command.names) {
            requireName("driver", name, m_names.drivers);
        }
        if (!command.time && !m_hasKeys) {
            throw WordError(
                "a watch is ended by a key at the prompt alone, expected \"for TIME\" at the end");
        }
    }
    void operator()(const Repeat& command) const { std::visit(*this, command.line->command); }
    void operator()(const SetVariable& command) const {
        requireName("variable", command.name, m_names.variables);
        requirePlaces(command, m_board.variables);
        requireSizeWithinArray(command, m_board);
    }
    void operator()(const SetPresence& command) const {
        requireName("interface", command.name, m_names.platformInterfaces);
    }
    void operator()(const InjectFault& command) const {
        requireObject(command.fault.operation, command.fault.object, m_names);
    }
    void operator()(const ClearFaults& command) const {
        if (command.operation.has_value()) {
            requireObject(*command.operation, command.object, m_names);
        }
    }
    void operator()(const ExpectWrites& command) const {
        for (const auto& [name, value] : command.writes) {
            requireName("driver", name, m_names.hardware);
        }
    }
    void operator()(const Action& action) const { std::visit(*this, action); }
    void operator()(const Expectation& expectation) const { std::visit(*this, expectation); }
    /** The other commands name nothing of the board. */
    template <typename Other>
    void operator()(const Other& /*command*/) const {}

private:
    const Board& m_board;
    const BoardNames& m_names;
    bool m_hasKeys;
};

} // namespace

void CommandCheck::check(const Command& command) const {
    std::visit(ReferenceChecker(m_board, m_names, m_hasKeys), command);
}

} // namespace Radio

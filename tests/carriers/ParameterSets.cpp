#include "ParameterSets.h"

#include "InterfaceBroker.h"
#include "PlanCheck.h"
#include "radio/board/BoardFile.h"
#include "radio/plan/PlanParameters.h"
#include "radio/session/BootedRadio.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>
#include <optional>
#include <stdexcept>

namespace Carriers {

namespace {

using RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler;

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

/** 256 carriers, the first and the last one among them, with different rests in MHz. */
constexpr CarrierRange hereAndThere{0, std::uint64_t{1} << 32U, 16'843'009};

bool areSame(const Parameters& one, const Parameters& other) {
    return one.ifSideband == other.ifSideband && one.rfSideband == other.rfSideband &&
           one.ifFrequency == other.ifFrequency &&
           one.mixerMultiplicationFactor == other.mixerMultiplicationFactor && one.ifBb == other.ifBb;
}

/** The plan as a handler has it, with the parameters that it has read itself. */
struct HandlerPlan {
    const FrequencyHandler& handler;

    std::uint32_t rfLoFrequency(std::uint32_t carrier, const Parameters& /*parameters*/) const {
        return handler.calculaterRfLoFrequency(carrier);
    }
    std::uint32_t frequencyStep(std::uint32_t frequency) const {
        return handler.calculateFrequencyStep(frequency);
    }
    std::uint32_t ifPllFrequency(std::uint32_t carrier, const Parameters& /*parameters*/) const {
        return handler.calculateIfPllFrequency(carrier);
    }
    std::uint64_t rfPllFrequency(std::uint32_t carrier, const Parameters& /*parameters*/) const {
        return handler.calculateRfPllFrequency(carrier, false);
    }
    std::uint64_t exactRfPllFrequency(std::uint32_t lo, const Parameters& /*parameters*/) const {
        return handler.calculateRfPllFrequency(lo, true);
    }
    std::uint32_t bbFrequency(const Parameters& /*parameters*/) const { return handler.getBbFrequency(); }
};

const FrequencyHandler& handlerOf(Radio::Direction direction, int channel, const std::string& who) {
    const std::string name = std::string("IFrequencyHandler_") +
                             (direction == Radio::Direction::tx ? "Tx" : "Rx") +
                             (channel != 0 ? "_" + std::to_string(channel) : "");
    const auto* const handler = InterfaceBroker::getInstance().getInterface<FrequencyHandler>(name);
    if (handler == nullptr) {
        throw std::runtime_error(who + ": there is no handler " + name);
    }
    return *handler;
}

} // namespace

void requireThatHandlerAgrees(const FrequencyHandler& handler, const Parameters& parameters,
                              const std::string& who) {
    if (const auto difference = firstDifference(HandlerPlan{handler}, parameters, hereAndThere)) {
        throw HandlerDiffers(who + ", whose handler was asked: " + describe(*difference));
    }
}

namespace {

std::string partOf(const Radio::ChannelDescription& channel, Radio::Direction direction) {
    return "channel " + std::to_string(channel.number) + " " + std::string(Radio::toString(direction));
}

/** What the plan of a channel and direction depends on; nothing when there is none. */
std::optional<Parameters> parametersOf(Radio::BootedRadio& booted, const std::string& board,
                                       const Radio::ChannelDescription& channel, Radio::Direction direction) {
    const auto build = Radio::Plan::buildOf(channel.type, direction);
    if (!build) {
        return std::nullopt;
    }
    const auto read =
        Radio::Plan::readParameters(booted.radio().platform().variables(), channel.number, direction, *build);
    const std::string who = board + ": " + partOf(channel, direction);
    if (read.factor == 0) {
        throw std::runtime_error(who + " has the multiplication factor 0, with which there is no plan");
    }
    const Parameters parameters{read.ifSideband, read.rfSideband, read.ifFrequency, read.factor, read.ifBb};
    requireThatHandlerAgrees(handlerOf(direction, channel.number, who), parameters, who);
    return parameters;
}

} // namespace

void ParameterSets::add(const Parameters& parameters, const std::string& user, const std::string& part) {
    auto set = std::find_if(m_sets.begin(), m_sets.end(), [&](const ParameterSet& candidate) {
        return areSame(candidate.parameters, parameters);
    });
    if (set == m_sets.end()) {
        set = m_sets.insert(set, {parameters, {}});
    }
    std::string& parts = set->users[user];
    parts += (parts.empty() ? "" : ", ") + part;
}

void addStart(ParameterSets& sets) {
    sets.add({-1, -1, 0, 1, 0}, "every handler", "before the database is read");
}

bool addBoard(ParameterSets& sets, const std::string& file) {
    const Radio::Board board = Radio::loadBoard(file);
    Radio::BootedRadio booted(board);
    booted.requireUp();
    const std::string name = std::filesystem::path(file).filename().string();
    bool hasPlan = false;
    for (const Radio::ChannelDescription& channel : board.channels) {
        for (const Radio::Direction direction : {Radio::Direction::tx, Radio::Direction::rx}) {
            if (const auto parameters = parametersOf(booted, name, channel, direction)) {
                sets.add(*parameters, name, partOf(channel, direction));
                hasPlan = true;
            }
        }
    }
    return hasPlan;
}

void addEnds(ParameterSets& sets, const Parameters& ordinary) {
    const auto add = [&sets](const Parameters& parameters, const char* which) {
        sets.add(parameters, "ends", which);
    };
    constexpr std::array signs{-1, 1};
    constexpr std::array ends{lowest, highest};
    for (const std::int32_t ifSideband : signs) {
        for (const std::int32_t rfSideband : signs) {
            Parameters changed = ordinary;
            changed.ifSideband = ifSideband;
            changed.rfSideband = rfSideband;
            add(changed, "sidebands");
        }
    }
    for (const std::int32_t ifFrequency : {lowest, -1, 0, 1, highest}) {
        Parameters changed = ordinary;
        changed.ifFrequency = ifFrequency;
        add(changed, "IF");
    }
    for (const std::int32_t factor : {lowest, -1, 1, highest}) {
        Parameters changed = ordinary;
        changed.mixerMultiplicationFactor = factor;
        add(changed, "factor");
    }
    // Beside the ends, where 1000 times the offset leaves 32 bits.
    for (const std::int32_t ifBb : {lowest, -1, 0, 1, 2'147'483, 2'147'484, highest}) {
        Parameters changed = ordinary;
        changed.ifBb = ifBb;
        add(changed, "baseband offset");
    }
    // Nothing depends on factor and offset both: together at the same end, each meets all of the others.
    for (const std::int32_t ifSideband : signs) {
        for (const std::int32_t rfSideband : signs) {
            for (const std::int32_t ifFrequency : ends) {
                for (const std::int32_t end : ends) {
                    add({ifSideband, rfSideband, ifFrequency, end, end}, "all together");
                }
            }
        }
    }
}

const Parameters& ordinaryOf(const ParameterSets& sets) {
    const auto atWork = [](const ParameterSet& set) {
        const Parameters& parameters = set.parameters;
        return static_cast<int>(parameters.ifFrequency != 0) + static_cast<int>(parameters.ifBb != 0) +
               static_cast<int>(parameters.mixerMultiplicationFactor != 1);
    };
    const std::vector<ParameterSet>& all = sets.all();
    return std::max_element(all.begin(), all.end(),
                            [&](const ParameterSet& one, const ParameterSet& other) {
                                return atWork(one) < atWork(other);
                            })
        ->parameters;
}

} // namespace Carriers

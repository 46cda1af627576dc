#ifndef TESTS_CARRIERS_PARAMETERSETS_H
#define TESTS_CARRIERS_PARAMETERSETS_H

#include "Difference.h"
#include "FrequencyHandler_MicrowaveBoard.h"

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace Carriers {

/** Parameters, and whose they are. */
struct ParameterSet {
    Parameters parameters;
    /** For example {"board.toml", "channel 1 tx, channel 1 rx"}. */
    std::map<std::string, std::string> users;
};

/** Sets of parameters in the order in which they came, each of them once. */
class ParameterSets {
public:
    /** Notes that `part` of `user` has these parameters. */
    void add(const Parameters& parameters, const std::string& user, const std::string& part);

    const std::vector<ParameterSet>& all() const { return m_sets; }

private:
    std::vector<ParameterSet> m_sets;
};

/** A handler does not compute what the model computes with the parameters that are read for it. */
class HandlerDiffers : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** Asks a handler here and there in all of the carriers; throws HandlerDiffers, which begins with `who`. */
void requireThatHandlerAgrees(const RL::FrequencyHandler::MicrowaveBoard::FrequencyHandler& handler,
                              const Parameters& parameters, const std::string& who);

/** Adds what a handler computes with before the database is read. */
void addStart(ParameterSets& sets);

/**
 * Boots the board of a file and adds the parameters of each channel and direction that has a frequency plan.
 * False: it has none. The handlers have to agree; throws HandlerDiffers, and another std::runtime_error for a
 * board that cannot be read, does not boot or has no plan that could be computed.
 */
bool addBoard(ParameterSets& sets, const std::string& file);

/**
 * Adds the ends of the range of each parameter, the others being as in `ordinary`, and all of them at their
 * ends together. Signs are +1 or -1, and a factor is not 0.
 */
void addEnds(ParameterSets& sets, const Parameters& ordinary);

/** The first set in which the most parameters do something; there is one. */
const Parameters& ordinaryOf(const ParameterSets& sets);

} // namespace Carriers

#endif

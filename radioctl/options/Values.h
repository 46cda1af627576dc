#ifndef RADIOCTL_OPTIONS_VALUES_H
#define RADIOCTL_OPTIONS_VALUES_H

#include <string>
#include <vector>

namespace Radio {

/** Why the value of an option is no frequency; empty when it is one. */
std::string whyNoFrequency(const std::string& word);

/** The words of a command line, a frequency and its unit put together: "--tx 18 GHz" as "--tx" "18GHz". */
std::vector<std::string> withUnitsJoined(int argumentCount, const char* const* arguments);

} // namespace Radio

#endif

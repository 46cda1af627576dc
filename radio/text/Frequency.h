#ifndef RADIO_TEXT_FREQUENCY_H
#define RADIO_TEXT_FREQUENCY_H

#include <cstdint>
#include <string>
#include <string_view>

namespace Radio {

/**
 * The frequency in kHz that `number`, a decimal number such as "7442.5", stands for in `unit` ("kHz", "MHz"
 * or "GHz" in any case; kHz when empty). The unit may also follow the number without a space ("7442.5MHz").
 *
 * Nothing is rounded: throws WordError for a fraction of a kHz, for more than 32 bits and for anything
 * that is no frequency.
 */
std::uint32_t parseFrequency(std::string_view number, std::string_view unit);

/** True when `word` is meant as a unit: when it begins with a letter. */
bool looksLikeUnit(std::string_view word);

} // namespace Radio

#endif

#ifndef RADIO_FILES_LABEL_H
#define RADIO_FILES_LABEL_H

#include <string>

namespace Radio {

/** Why a serial number or the name of a station cannot go into files that others read; empty when it can. */
std::string whyNoLabel(const std::string& word);

} // namespace Radio

#endif

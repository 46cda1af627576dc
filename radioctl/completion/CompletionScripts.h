#ifndef RADIOCTL_COMPLETION_COMPLETIONSCRIPTS_H
#define RADIOCTL_COMPLETION_COMPLETIONSCRIPTS_H

#include <map>
#include <string>

namespace Radio {

/** For each shell its script, as it is installed. All of them ask the program for its completion words. */
const std::map<std::string, std::string>& completionScripts();

} // namespace Radio

#endif

#ifndef RADIO_LANGUAGE_HELPTEXT_H
#define RADIO_LANGUAGE_HELPTEXT_H

#include <string>
#include <string_view>

namespace Radio {

/** The list of commands; or, for the name of a command or its first word, what there is to know about it. */
std::string helpText(std::string_view about);

} // namespace Radio

#endif

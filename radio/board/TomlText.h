#ifndef RADIO_BOARD_TOMLTEXT_H
#define RADIO_BOARD_TOMLTEXT_H

#include <toml++/toml.h>

#include <string>
#include <string_view>

namespace Radio {

/**
 * Parses `text`, the content of a file called `name`. Throws an InputError for one that is not TOML, before
 * the parser sees it when that could not cope with it.
 */
toml::table parseToml(std::string_view text, const std::string& name);

} // namespace Radio

#endif

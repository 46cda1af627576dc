#ifndef RADIOCTL_JSONLINE_H
#define RADIOCTL_JSONLINE_H

#include <nlohmann/json.hpp>

#include <ostream>

namespace Radioctl {

/** Members stay in the order in which they are written. */
using Json = nlohmann::ordered_json;

/** Writes `event` as one line, at once; bytes that are no UTF-8 are replaced. */
inline void writeJsonLine(std::ostream& out, const Json& event) {
    out << event.dump(-1, ' ', false, Json::error_handler_t::replace) << "\n" << std::flush;
}

} // namespace Radioctl

#endif

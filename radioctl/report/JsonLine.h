#ifndef RADIOCTL_JSONLINE_H
#define RADIOCTL_JSONLINE_H

#include <nlohmann/json.hpp>

#include <optional>
#include <ostream>

namespace Radioctl {

/** Members stay in the order in which they are written. */
using Json = nlohmann::ordered_json;

/** What is not known is null. */
template <typename Value>
Json orNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json(nullptr);
}

/** Writes `event` as one line, at once; bytes that are no UTF-8 are replaced. */
inline void writeJsonLine(std::ostream& out, const Json& event) {
    out << event.dump(-1, ' ', false, Json::error_handler_t::replace) << "\n" << std::flush;
}

} // namespace Radioctl

#endif

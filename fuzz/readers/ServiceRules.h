#ifndef FUZZ_READERS_SERVICERULES_H
#define FUZZ_READERS_SERVICERULES_H

#include "Rules.h"
#include "service/radio/Exchange.h"

#include <nlohmann/json.hpp>

#include <set>

namespace Fuzz {

/** What has to hold of every answer: whatever was asked for, it is one of `statuses`, and what was not
 * carried out is a problem that can be shown. */
inline void requireAnswer(const Radio::Service::Answer& answer, const std::set<int>& statuses) {
    require(statuses.count(answer.status) == 1, "an answer has a status that is described", answer.body);
    const bool isProblem = answer.status >= 400;
    if (!isProblem && answer.contentType != "application/json") {
        return;
    }
    require(isHarmless(answer.body) || !isProblem, "an answer has nothing in it that a terminal obeys",
            answer.body);
    const auto json = nlohmann::json::parse(answer.body, nullptr, false);
    require(json.is_object(), "an answer is a JSON object", answer.body);
    require(isProblem == (answer.contentType == "application/problem+json"),
            "what is not carried out is told as a problem", answer.body);
    require(!isProblem || json.at("status") == answer.status, "a problem says its status", answer.body);
}

} // namespace Fuzz

#endif

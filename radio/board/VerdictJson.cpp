#include "radio/board/VerdictJson.h"

namespace Radio {

const char* verdictWord(const Verdict& verdict) {
    switch (verdict.kind()) {
    case VerdictKind::pass:
        return "pass";
    case VerdictKind::fail:
        return "fail";
    case VerdictKind::none:
        break;
    }
    return "none";
}

Json verdictJson(const Verdict& verdict) {
    return verdict.kind() == VerdictKind::none ? Json(nullptr) : Json(verdictWord(verdict));
}

Json limitsJson(const Verdict& verdict) {
    Json limits = Json::array();
    for (const JudgedLimit& limit : verdict.limits) {
        limits.push_back({{"name", limit.name},
                          {"limit", limit.limit},
                          {"found", orNull(limit.found)},
                          {"unknown", limit.found ? Json(nullptr) : Json(limit.whyUnknown)},
                          {"channel", orNull(limit.channel)},
                          {"khz", orNull(limit.frequency)},
                          {"degrees", orNull(limit.temperature)},
                          {"held", limit.isHeld()}});
    }
    return limits;
}

} // namespace Radio

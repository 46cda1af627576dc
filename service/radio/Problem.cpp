#include "service/radio/Problem.h"

#include <array>
#include <cstddef>

namespace Radio::Service {

namespace {

struct Row {
    ProblemKind kind;
    int status;
    const char* type;
    const char* title;
};

constexpr std::array<Row, 15> rows{{
    {ProblemKind::badRequest, 400, "bad-request", "The request cannot be understood"},
    {ProblemKind::unauthorised, 401, "unauthorised", "A token is needed"},
    {ProblemKind::forbidden, 403, "forbidden", "Not from there"},
    {ProblemKind::notFound, 404, "not-found", "There is no such thing"},
    {ProblemKind::methodNotAllowed, 405, "method-not-allowed", "That cannot be done with it"},
    {ProblemKind::refused, 409, "refused", "The board does not allow it"},
    {ProblemKind::simulationOnly, 409, "simulation-only", "Only a simulated radio does that"},
    {ProblemKind::calibrating, 409, "calibrating", "A calibration has the radio"},
    {ProblemKind::notNow, 409, "not-now", "Nobody waits for that"},
    {ProblemKind::tooLarge, 413, "too-large", "The body is too large"},
    {ProblemKind::unsupportedMediaType, 415, "unsupported-media-type", "The body has to be JSON"},
    {ProblemKind::headerTooLarge, 431, "header-too-large", "The header is too large"},
    {ProblemKind::internal, 500, "internal", "The service failed"},
    {ProblemKind::radioFailed, 502, "radio-failed", "The radio answered with a failure"},
    {ProblemKind::busy, 503, "busy", "Too much is asked at a time"},
}};

const Row& rowOf(ProblemKind kind) {
    return rows.at(static_cast<std::size_t>(kind));
}

} // namespace

int statusOf(ProblemKind kind) {
    return rowOf(kind).status;
}

Answer Problem::answer() const {
    const Row& row = rowOf(m_kind);
    Json details = {{"type", std::string("urn:radioctl:") + row.type},
                    {"title", row.title},
                    {"status", row.status},
                    {"detail", what()}};
    for (const auto& [name, value] : m_members.members()) {
        details[name] = value;
    }
    return {row.status, "application/problem+json", toText(details), {}};
}

} // namespace Radio::Service

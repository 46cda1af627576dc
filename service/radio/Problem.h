#ifndef SERVICE_RADIO_PROBLEM_H
#define SERVICE_RADIO_PROBLEM_H

#include "radio/files/Json.h"
#include "service/radio/Exchange.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace Radio::Service {

/** Why a request was not carried out as it was asked for. Each has a type, a title and a status. */
enum class ProblemKind {
    badRequest,
    unauthorised,
    forbidden,
    notFound,
    methodNotAllowed,
    refused,
    simulationOnly,
    calibrating,
    notNow,
    tooLarge,
    unsupportedMediaType,
    headerTooLarge,
    internal,
    radioFailed,
    busy,
};

/** A request that ends with problem details. */
class Problem : public std::runtime_error {
public:
    /** `members` is an object: what there is to know besides. */
    Problem(ProblemKind kind, const std::string& detail, Json members = Json::object())
        : std::runtime_error(detail),
          m_kind(kind),
          m_members(std::move(members)) {}

    ProblemKind kind() const { return m_kind; }
    /** As problem details, "application/problem+json". */
    Answer answer() const;

private:
    ProblemKind m_kind;
    Json m_members;
};

/** The status of the answer, 404 for example. */
int statusOf(ProblemKind kind);

} // namespace Radio::Service

#endif

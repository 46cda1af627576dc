#ifndef PLATFORM_CONFORMANCE_RULE_H
#define PLATFORM_CONFORMANCE_RULE_H

#include "conformance/Adapter.h"

#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Conformance {

/** One rule of a contract. */
struct Rule {
    /** For example "broker.absent-name-finds-nothing". */
    const char* name;
    /** The rule as a sentence. */
    const char* sentence;
    /** What of the library depends on it. */
    const char* dependent;
    /** Returns where the rule holds; throws Broken or Unseen where not. */
    void (*look)(Adapter& adapter);
};

/** The rule does not hold. */
class Broken : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** Nobody can tell: the platform's side cannot do what the rule needs. */
class Unseen : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/** Throws Unseen unless the adapter could do it. */
inline void need(bool isDone, const char* what) {
    if (!isDone) {
        throw Unseen(std::string("the adapter cannot ") + what);
    }
}

/** What the adapter tells; throws Unseen when it cannot. */
template <typename Value>
Value told(std::optional<Value> value, const char* what) {
    if (!value) {
        throw Unseen(std::string("the adapter cannot tell ") + what);
    }
    return *std::move(value);
}

/** Throws Broken with `what` unless it is so. */
inline void hold(bool isSo, const std::string& what) {
    if (!isSo) {
        throw Broken(what);
    }
}

/** Throws Broken unless both are the same. */
template <typename Found, typename Expected>
void holdSame(const char* what, const Found& found, const Expected& expected) {
    if (!(found == static_cast<Found>(expected))) {
        std::ostringstream text;
        text << what << ": " << found << ", expected " << expected;
        throw Broken(text.str());
    }
}

using Rules = std::vector<Rule>;

Rules traceRules();
Rules brokerRules();
Rules moduleRules();
Rules storageRules();
Rules calibrationRules();
Rules temperatureRules();
Rules driverRules();
Rules remoteUnitRules();

} // namespace Conformance

#endif

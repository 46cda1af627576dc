#ifndef SERVICE_RADIO_RESOURCES_H
#define SERVICE_RADIO_RESOURCES_H

#include "radio/board/Board.h"
#include "radio/files/Json.h"
#include "service/radio/Calibrations.h"
#include "service/radio/EventRing.h"
#include "service/radio/Exchange.h"
#include "service/radio/ServedRadio.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Radio::Service {

/** Something was asked for that changes the radio: who, what, and what was answered. */
struct Change {
    std::string who{};
    /** "PUT /api/channels/1/tx". */
    std::string request{};
    /** Cut when it is long. */
    std::string body{};
    int status = 0;
};

/** The page, which has nothing of the radio in it and asks for a token itself where there is one. */
constexpr std::string_view pagePath = "/";
/** Where clients follow the events, which is for who carries answers to do. */
constexpr std::string_view eventsPath = "/api/events";

/**
 * What can be answered without the radio: descriptions, names that there are not, and methods that a name
 * does not have. Nothing for the rest. On any thread.
 */
std::optional<Answer> answerWithoutRadio(const Request& request);

/** Answers requests about a radio. Belongs to the thread of the radio. */
class Resources {
public:
    /** `changed` is told of every request that is no mere question, after it was answered. All that is given
     * must outlive the object. */
    Resources(ServedRadio& radio, Calibrations& calibrations, const EventRing& events,
              std::function<void(const Change&)> changed)
        : m_radio(radio),
          m_calibrations(calibrations),
          m_events(events),
          m_changed(std::move(changed)) {}

    /** Never throws: what goes wrong is an answer, too. */
    Answer answer(const Request& request);

    // What stands behind the rows of the table of names. `names` are what stands in the places of those in
    // braces. They throw Problem, or std::invalid_argument for a request that makes no sense.
    using Names = std::vector<std::string>;
    Answer radioState(const Request& request, const Names& names);
    Answer channels(const Request& request, const Names& names);
    Answer channel(const Request& request, const Names& names);
    Answer tune(const Request& request, const Names& names);
    Answer temperature(const Request& request, const Names& names);
    Answer setTemperature(const Request& request, const Names& names);
    Answer drivers(const Request& request, const Names& names);
    Answer driver(const Request& request, const Names& names);
    Answer writeDriver(const Request& request, const Names& names);
    Answer readDriver(const Request& request, const Names& names);
    Answer variables(const Request& request, const Names& names);
    Answer variable(const Request& request, const Names& names);
    Answer setVariable(const Request& request, const Names& names);
    Answer tables(const Request& request, const Names& names);
    Answer table(const Request& request, const Names& names);
    Answer faults(const Request& request, const Names& names);
    Answer addFault(const Request& request, const Names& names);
    Answer clearFaults(const Request& request, const Names& names);
    Answer phases(const Request& request, const Names& names);
    Answer runPhase(const Request& request, const Names& names);
    Answer limits(const Request& request, const Names& names);
    Answer calibrations(const Request& request, const Names& names);
    Answer calibration(const Request& request, const Names& names);
    Answer beginCalibration(const Request& request, const Names& names);
    Answer cancelCalibration(const Request& request, const Names& names);
    Answer tellTemperature(const Request& request, const Names& names);
    Answer metrics(const Request& request, const Names& names);

private:
    Answer dispatch(const Request& request);
    Answer carriedOut(const Action& action, const std::string& text, int status = 200);
    Json channelState(const ChannelDescription& channel);
    const ChannelDescription& channelNamed(const std::string& name) const;
    Standalone::Driver& driverNamed(const std::string& name);
    void requireSimulation() const;

    ServedRadio& m_radio;
    Calibrations& m_calibrations;
    const EventRing& m_events;
    std::function<void(const Change&)> m_changed;
    /** How often each status was answered. */
    std::map<int, std::uint64_t> m_answered;
};

} // namespace Radio::Service

#endif

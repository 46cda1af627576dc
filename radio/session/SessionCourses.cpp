// The commands that take time or have several steps.

#include "ResultCode.h"
#include "radio/session/PeekPoke.h"
#include "radio/session/Session.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <map>

namespace Radio {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr microseconds piece = milliseconds(100);
/** How often watched drivers are read. */
constexpr microseconds watchInterval = milliseconds(200);

std::string secondsText(microseconds time) {
    return inDecimals(std::chrono::duration<double>(time).count(), 1) + " s";
}

std::uint32_t inMicroseconds(microseconds time) {
    return static_cast<std::uint32_t>(time.count());
}

/** "3 carriers", or "3 of 10 carriers". */
std::string doneText(std::uint32_t done, std::uint32_t all, std::string_view noun) {
    return (done == all ? "" : std::to_string(done) + " of ") + counted(all, noun);
}

} // namespace

void Session::idle() const {
    if (m_idle) {
        m_idle();
    }
}

microseconds Session::letPass(microseconds time) {
    microseconds passed{};
    while (passed < time && goesOn()) {
        const microseconds step = std::min(time - passed, piece);
        m_radio.clock().sleep(inMicroseconds(step));
        passed += step;
        idle();
    }
    return passed;
}

Session::Outcome Session::carryOut(const Wait& command) {
    const microseconds passed = letPass(command.time);
    return {ResultOk, passed == command.time ? "" : "stopped after " + secondsText(passed)};
}

Session::Outcome Session::carryOut(const Sweep& command) {
    const std::uint32_t all = command.carriers();
    Tune tune{command.direction, command.channel, command.from, command.isForced};
    for (std::uint32_t done = 0; done < all; ++done) {
        tune.frequency = command.from < command.to ? command.from + done * command.step
                                                   : command.from - done * command.step;
        if (!goesOn()) {
            return {ResultOk, "stopped after " + doneText(done, all, "carrier")};
        }
        if (refuses(tune)) {
            const Outcome refused = refusal();
            return {refused.code, doneText(done, all, "carrier") + ", the next " + refused.note};
        }
        const std::int32_t code = m_radio.tune(tune.direction, tune.channel, tune.frequency);
        if (isFailure(code)) {
            return {code, doneText(done + 1, all, "carrier")};
        }
        letPass(command.dwell);
        idle();
    }
    return {ResultOk, counted(all, "carrier")};
}

Session::Outcome Session::carryOut(const Repeat& command) {
    ScriptLine turn = *command.line;
    turn.place = m_place;
    std::uint32_t done = 0;
    while (done < command.count && !m_over && goesOn()) {
        execute(turn);
        ++done;
    }
    return {ResultOk,
            (done == command.count ? "" : "stopped after ") + doneText(done, command.count, "turn")};
}

/** Tells the value of a driver, or the call that failed, unless it is `known`. */
void Session::tellReading(Standalone::Driver& driver, std::string& known, double seconds) {
    std::vector<Standalone::Call> calls;
    m_heldCalls = &calls;
    const DriverAnswer answer = readDriver(driver);
    m_heldCalls = nullptr;
    const std::string found = isSuccess(answer.code) ? std::to_string(answer.value) : codeText(answer.code);
    if (std::exchange(known, found) == found) {
        return;
    }
    for (const Standalone::Call& call : calls) {
        m_listener.called(call);
    }
    if (isSuccess(answer.code)) {
        m_listener.valueRead({driver.name(), answer.value, seconds});
    } else if (calls.empty()) {
        m_listener.warned(driver.name() + ": " + answer.note);
    }
}

bool Session::letPassWatching(microseconds time, const Watching& watching, bool isWaiting) {
    for (microseconds passed{}; passed < time; passed += piece) {
        const microseconds step = std::min(time - passed, piece);
        if (!goesOn()) {
            return false;
        }
        if (!watching) {
            m_radio.clock().sleep(inMicroseconds(step));
        } else {
            const bool goesOn = watching(isWaiting ? std::chrono::ceil<milliseconds>(step) : milliseconds(0));
            m_radio.clock().advance(inMicroseconds(step));
            if (!goesOn) {
                return false;
            }
        }
        idle();
    }
    return true;
}

Session::Outcome Session::carryOut(const Watch& command) {
    if (!command.time && !m_watching) {
        return {ResultFailed, "nothing would end it, expected \"for TIME\" at the end"};
    }
    const Watching watching = m_watching ? m_watching() : Watching();
    // The model's time is asked for or, until somebody has seen enough, that of who watches.
    const bool isWaiting = !command.time || m_radio.clock().isRealTime();
    const auto start = std::chrono::steady_clock::now();
    std::map<std::string, std::string> known;
    for (microseconds passed{};;) {
        for (const std::string& name : command.names) {
            tellReading(*m_radio.platform().drivers().find(name), known[name],
                        std::chrono::duration<double>(passed).count());
        }
        const microseconds left = command.time ? *command.time - passed : watchInterval;
        if (left <= microseconds(0)) {
            return {};
        }
        const microseconds step = std::min(left, watchInterval);
        if (!letPassWatching(step, watching, isWaiting)) {
            return {};
        }
        passed = isWaiting
                     ? std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now() - start)
                     : passed + step;
    }
}

} // namespace Radio

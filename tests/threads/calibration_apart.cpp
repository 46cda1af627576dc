// One channel of microwave boards is calibrated for its LO leakage on a thread of its own, while another is
// tuned and hears of temperatures on another, without any lock and with all messages wanted. With an
// argument: both threads have the same channel, which they must not.
#include "FrequencyHandler.h"
#include "ILoCancellation.h"
#include "InterfaceBroker.h"
#include "MinimalPlatform.h"

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

namespace {

/** All that a board with IF synthesisers asks for. */
void addBoard(int channel) {
    const std::string lower = "channel." + std::to_string(channel) + ".";
    const std::string upper = "Channel." + std::to_string(channel) + ".";
    for (const char* const direction : {"tx.", "rx."}) {
        for (const char* const driver : {"rf.lo.frequency", "if.frequency", "rf.pll.config"}) {
            Minimal::addDriver(lower + direction + driver);
        }
        Minimal::variables()[lower + direction + "mixer.multiplicationfactor"] = {1};
        Minimal::variables()[lower + direction + "if.frequency"] = {140000};
        Minimal::variables()[lower + direction + "rf.spectruminverted"] = {0};
        Minimal::variables()[lower + direction + "baseband.spectruminverted"] = {0};
    }
    for (const char* const driver : {"tx.rf.mixer.i", "tx.rf.mixer.q", "tx.rf.detector.v"}) {
        Minimal::addDriver(lower + driver);
    }
    for (const char* const direction : {"Tx", "Rx"}) {
        Minimal::variables()[std::string(direction) + "IfBb"] = {0};
        Minimal::tables()[upper + direction + ".Rf.Pll.Frequency.To.Chargepump.Setting"] = {{0}, {0}, {5}};
    }
    for (const char* const part : {"I", "Q"}) {
        Minimal::tables()[upper + "Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer." + part] = {
            {0}, {0}, {11}};
    }
}

/** True: 50 calibrations of 8 iterations each ended well, at the corner that equal readings keep. */
bool calibrate(int channel) {
    auto* const canceller = InterfaceBroker::getInstance().getInterface<ILoCancellation>(
        "ILoCancellation_" + std::to_string(channel));
    for (int n = 0; n < 50; ++n) {
        int i = 0;
        int q = 0;
        int delta = 0;
        unsigned iterations = 0;
        if (isFailure(canceller->calibrateLoCancellation(-100, 100, -100, 100, 0.9, 1, 8, 0, &i, &q, &delta,
                                                         &iterations, false)) ||
            iterations != 8) {
            return false;
        }
    }
    return true;
}

} // namespace

int main(int argc, char** /*argv*/) {
    std::ostringstream traced;
    std::streambuf* const log = std::clog.rdbuf(traced.rdbuf());
    Minimal::traceEverything();
    Minimal::publishServices();
    bool isCalibrated = false;
    {
        addBoard(1);
        addBoard(2);
        FrequencyHandler first(1, FrequencyHandler::MicrowaveBoardIf);
        FrequencyHandler second(2, FrequencyHandler::MicrowaveBoardIf);
        const bool isUp = Minimal::runPhase(11) && Minimal::runPhase(5) && Minimal::runPhase(20);
        FrequencyHandler& tuned = argc > 1 ? first : second;
        std::thread calibrating([&isCalibrated, isUp] { isCalibrated = isUp && calibrate(1); });
        std::thread tuning([&tuned] {
            for (unsigned step = 0; step < 100; ++step) {
                static_cast<void>(tuned.setTxFrequency(8000000 + 28000 * (step % 4)));
                tuned.notifyTemperature(static_cast<int>(step % 50));
            }
        });
        calibrating.join();
        tuning.join();
    }
    std::clog.rdbuf(log);
    const bool isTold = traced.str().find("notifyTemperature called with temp = 49\n") != std::string::npos;
    std::printf("%s\n",
                isCalibrated && isTold ? "calibrated, while the other was tuned" : traced.str().c_str());
    return isCalibrated && isTold ? 0 : 1;
}

#ifndef TESTS_RADIO_SUPPORT_LEAKAGEBOARD_H
#define TESTS_RADIO_SUPPORT_LEAKAGEBOARD_H

#include <string>

/**
 * A radio of one channel whose LO leaks with 1/20 of the signal's amplitude (-26.02 dBc), in phase with I, at
 * 18 GHz and 25 degrees: I = -500 takes it away, and no Q is needed. Its searches end early, so that they do
 * not take long.
 */
inline std::string leakageBoard(const std::string& detector = "range = [0, 4095]",
                                const std::string& calibration = "") {
    return R"(name = "Test radio"
serial = "T-1"

[[channel]]
number = 1
type = "microwave-hz"

[[leakage]]
channel = 1
reference = 18000000
paths = [{ level = -26.0206, phase = 0.0, level_per_degree = 0.01, level_per_ghz = 2.0 }]
i = { driver = "channel.1.tx.rf.mixer.i", gain = 1.0e-4, range = [-1000, 1000] }
q = { driver = "channel.1.tx.rf.mixer.q", gain = 1.0e-4, range = [-1000, 1000] }
detector = { driver = "channel.1.tx.rf.detector.v", slope = 25.0, zero = -95.0, floor = -85.0, )" +
           detector + R"( }

[[calibration]]
channel = 1
band = [17900000, 18100000]
step = 100000
method = "search"
temperatures = [-10, 50]
min_delta = 60
)" + calibration +
           R"(
[drivers]
"channel.1.tx.rf.lo.frequency" = {}
"channel.1.tx.rf.lo.frequency.in.hz" = {}
"channel.1.tx.rf.lo.config" = {}
"channel.1.rx.rf.lo.frequency" = {}
"channel.1.rx.rf.lo.frequency.in.hz" = {}
"channel.1.rx.rf.lo.config" = {}
"channel.1.tx.rf.mixer.i" = {}
"channel.1.tx.rf.mixer.q" = {}
"channel.1.tx.rf.detector.v" = {}

[variables]
"TxIfBb" = 0
"RxIfBb" = 0
"channel.1.tx.mixer.multiplicationfactor" = 2
"channel.1.tx.rf.spectruminverted" = 0
"channel.1.tx.baseband.spectruminverted" = 0
"channel.1.rx.mixer.multiplicationfactor" = 2
"channel.1.rx.rf.spectruminverted" = 0
"channel.1.rx.baseband.spectruminverted" = 0

[tables."Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.I"]
file = "board.channel-1.csv"
column = "i"

[tables."Channel.1.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.Q"]
file = "board.channel-1.csv"
column = "q"
)";
}

#endif

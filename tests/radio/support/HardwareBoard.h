#ifndef TESTS_RADIO_SUPPORT_HARDWAREBOARD_H
#define TESTS_RADIO_SUPPORT_HARDWAREBOARD_H

#include "tests/radio/support/LeakageBoard.h"

#include <string>

/**
 * The radio of leakageBoard() as a real one, of which nothing is modelled: corrections, detector, LO and a
 * sensor are files in `folder`. `calibration` are more lines of its [[calibration]].
 */
inline std::string hardwareBoard(const std::string& folder, const std::string& calibration = "") {
    std::string board = leakageBoard("range = [0, 4095]", calibration);
    const std::size_t begin = board.find("[[leakage]]");
    board.erase(begin, board.find("[[calibration]]") - begin);
    const std::string in = " = \"" + folder + "/";
    return board + "\n[hardware.\"channel.1.tx.rf.lo.frequency.in.hz\"]\nwrite" + in + "lo\"\n" +
           "\n[hardware.\"channel.1.tx.rf.mixer.i\"]\nwrite" + in +
           "i\"\nrange = [-1000, 1000]\non_exit = 0\n" + "\n[hardware.\"channel.1.tx.rf.mixer.q\"]\nwrite" +
           in + "q\"\nrange = [-1000, 1000]\non_exit = 0\n" +
           "\n[hardware.\"channel.1.tx.rf.detector.v\"]\nread" + in + "detector\"\n" + "\n[sensor]\nread" +
           in + "temperature\"\ninterval = 20\n";
}

/** The same without a sensor. */
inline std::string hardwareBoardWithoutSensor(const std::string& folder) {
    const std::string board = hardwareBoard(folder);
    return board.substr(0, board.find("\n[sensor]"));
}

#endif

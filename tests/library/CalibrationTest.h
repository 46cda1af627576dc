#ifndef TESTS_LIBRARY_CALIBRATIONTEST_H
#define TESTS_LIBRARY_CALIBRATIONTEST_H

#include "MicrowaveRadioTest.h"

#include <functional>
#include <utility>

/** What a calibration is asked for. */
struct Search {
    int iLow = 0;
    int iHigh = 100;
    int qLow = 0;
    int qHigh = 100;
    double shrinkFactor = 0.75;
    int minDelta = 0;
    unsigned maxIterations = 1;
    unsigned settleTimeMs = 0;
    bool useHighDetector = false;
};

/** A test of the calibration on the healthy radio, with a detector whose readings the test decides. */
class CalibrationTest : public MicrowaveRadioTest {
protected:
    static constexpr const char* detector = "channel.1.tx.rf.detector.v";
    static constexpr const char* driverI = "channel.1.tx.rf.mixer.i";
    static constexpr const char* driverQ = "channel.1.tx.rf.mixer.q";

    using Pair = std::pair<int, int>;
    using Pairs = std::vector<Pair>;

    EAFResult calibrate(LoCancellation& canceller, const Search& search) {
        return canceller.calibrateLoCancellation(search.iLow, search.iHigh, search.qLow, search.qHigh,
                                                 search.shrinkFactor, search.minDelta, search.maxIterations,
                                                 search.settleTimeMs, &calibratedI, &calibratedQ, &maxDelta,
                                                 &iterations, search.useHighDetector);
    }
    EAFResult calibrate(const Search& search) { return calibrate(bootCanceller(), search); }

    /** A leakage that is least at low I and low Q. */
    static int towardTheLowerCorner(int i, int q) { return i + q; }

    /** Has `detectorName` read what `leakage` says of the I and Q that are set. */
    void leak(const std::string& detectorName, const std::function<int(int, int)>& leakage) {
        platform.calls().setListener([this, detectorName, leakage](const Standalone::Call& call) {
            if (call.object == driverQ) {
                driver(detectorName)
                    .setValue(leakage(static_cast<int>(driver(driverI).value()),
                                      static_cast<int>(driver(driverQ).value())));
            }
        });
    }

    /** Lets `count` calls of `operation` on `object` pass and has the one after them answered with `code`. */
    void failAfter(unsigned count, Operation operation, const std::string& object, std::int32_t code) {
        if (count == 0) {
            fail(operation, object, code);
            return;
        }
        platform.calls().setListener(
            [this, left = count, operation, object, code](const Standalone::Call& call) mutable {
                if (call.operation == operation && call.object == object && --left == 0) {
                    fail(operation, object, code);
                }
            });
    }

    /** The pairs of I and Q written, in order. */
    Pairs written() const {
        Pairs pairs;
        for (const Standalone::Call& call : platform.calls().journalOf(Operation::driverWrite)) {
            if (call.object == driverI) {
                pairs.emplace_back(static_cast<int>(call.value), 0);
            } else if (call.object == driverQ) {
                pairs.back().second = static_cast<int>(call.value);
            }
        }
        return pairs;
    }

    // What the calibration hands back; none of these numbers is a result of the tests.
    int calibratedI = -1111;
    int calibratedQ = -2222;
    int maxDelta = -3333;
    unsigned iterations = 0;
};

#endif

#include "CCalibrationHandler.h"
#include "conformance/Rule.h"

#include <array>
#include <cstdlib>
#include <limits>

namespace Conformance {

namespace {

constexpr const char* oneAxis = "FrequencyHandler_MicrowaveBoard: charge-pump table; CTxIQImbalanceHandler: "
                                "corrections over the temperature";
constexpr const char* twoAxes = "LoCancellation: corrections over carrier and temperature";
constexpr const char* either = "all corrections, and the charge pump";
constexpr const char* line = "Conformance.Line";
constexpr const char* plane = "Conformance.Plane";

/** Null: the lookup fails, or gives none. */
CalibrationTableHandle find(const char* table) {
    CalibrationTableHandle found = nullptr;
    return isSuccess(CCalibrationHandler_GetTable(table, &found)) ? found : nullptr;
}

CalibrationTableHandle findPut(const char* table) {
    CalibrationTable* const found = find(table);
    hold(found != nullptr, std::string(table) + " is not found, although it was added");
    return found;
}

void putLine(Adapter& adapter) {
    need(adapter.putTable(line, {-20, 0, 100}, {-500, 100, 300}), "add a table with one axis");
}

/** Falls along the first axis, and rises faster along the second. */
void putPlane(Adapter& adapter) {
    need(adapter.putTable(plane, {0, 1000}, {-10, 0, 30}, {100, 200, 500, 0, 100, 400}),
         "add a table with two axes");
}

void holdNear(const std::string& what, int found, int expected) {
    if (std::abs(found - expected) > 1) {
        throw Broken(what + ": " + std::to_string(found) + ", expected " + std::to_string(expected) +
                     " or one beside it");
    }
}

int valueAt(CalibrationTableHandle table, int x) {
    int y = std::numeric_limits<int>::min();
    hold(isSuccess(CCalibrationTable_LinearInterpolate(table, x, &y)),
         "CCalibrationTable_LinearInterpolate fails at " + std::to_string(x));
    return y;
}

int valueAt(CalibrationTableHandle table, int x1, int x2) {
    int y = std::numeric_limits<int>::min();
    hold(isSuccess(CCalibrationTable_BiLinearInterpolate(table, x1, x2, &y)),
         "CCalibrationTable_BiLinearInterpolate fails at " + std::to_string(x1) + ", " + std::to_string(x2));
    return y;
}

void absentIsNone(Adapter& /*adapter*/) {
    hold(find("Conformance.Nobody.Has.This") == nullptr, "a handle is given, and the answer is a success");
}

void absentLeavesNoHandle(Adapter& /*adapter*/) {
    CalibrationTableHandle found = nullptr;
    static_cast<void>(CCalibrationHandler_GetTable("Conformance.Nobody.Has.This", &found));
    hold(found == nullptr, "where null was, something else is left");
}

void nodesAreMet(Adapter& adapter) {
    putLine(adapter);
    CalibrationTable* const table = findPut(line);
    holdSame("the value at the node -20", valueAt(table, -20), -500);
    holdSame("the value at the node 0", valueAt(table, 0), 100);
    holdSame("the value at the node 100", valueAt(table, 100), 300);
}

void betweenIsStraight(Adapter& adapter) {
    putLine(adapter);
    CalibrationTable* const table = findPut(line);
    holdNear("the value at -15, between -500 at -20 and 100 at 0", valueAt(table, -15), -350);
    holdNear("the value at 50, between 100 at 0 and 300 at 100", valueAt(table, 50), 200);
    holdNear("the value at 99", valueAt(table, 99), 298);
}

void axesHaveTheirOrder(Adapter& adapter) {
    putPlane(adapter);
    CalibrationTable* const table = findPut(plane);
    holdSame("the value at the first node of both axes", valueAt(table, 0, -10), 100);
    holdSame("the value at the last of the first and the first of the second", valueAt(table, 1000, -10), 0);
    holdSame("the value at the first of the first and the last of the second", valueAt(table, 0, 30), 500);
    holdSame("the value at the last of both", valueAt(table, 1000, 30), 400);
}

void betweenIsBilinear(Adapter& adapter) {
    putPlane(adapter);
    CalibrationTable* const table = findPut(plane);
    holdNear("the value at 500, -5", valueAt(table, 500, -5), 100);
    holdNear("the value at 250, 15", valueAt(table, 250, 15), 325);
}

void nullIsRefused(Adapter& /*adapter*/) {
    constexpr int before = 4711;
    int y = before;
    hold(isFailure(CCalibrationTable_LinearInterpolate(nullptr, 0, &y)), "a line without a table succeeds");
    holdSame("after a line without a table, the value that it was to store", y, before);
    hold(isFailure(CCalibrationTable_BiLinearInterpolate(nullptr, 0, 0, &y)),
         "a plane without a table succeeds");
    holdSame("after a plane without a table, the value that it was to store", y, before);
}

/** Asks twice. */
template <typename Ask>
void holdOneAnswer(const std::string& place, Ask ask) {
    int first = 0;
    int second = 0;
    hold(ask(first) == ask(second) && first == second, place + ", has two answers");
}

void endsAreAnswered(Adapter& adapter) {
    constexpr std::array<int, 4> far{std::numeric_limits<int>::min(), -21, 101,
                                     std::numeric_limits<int>::max()};
    putLine(adapter);
    putPlane(adapter);
    CalibrationTable* const table = findPut(line);
    CalibrationTable* const both = findPut(plane);
    for (const int x : far) {
        holdOneAnswer("one place beyond the ends, " + std::to_string(x),
                      [&](int& y) { return CCalibrationTable_LinearInterpolate(table, x, &y); });
        holdOneAnswer("one place beyond the ends of the first axis, " + std::to_string(x) + ", 0",
                      [&](int& y) { return CCalibrationTable_BiLinearInterpolate(both, x, 0, &y); });
        holdOneAnswer("one place beyond the ends of the second axis, 0, " + std::to_string(x),
                      [&](int& y) { return CCalibrationTable_BiLinearInterpolate(both, 0, x, &y); });
    }
}

void handlesStay(Adapter& adapter) {
    putLine(adapter);
    CalibrationTable* const table = findPut(line);
    for (int n = 0; n < 100; ++n) {
        const std::string other = "Conformance.Other." + std::to_string(n);
        need(adapter.putTable(other, {0, 1}, {n, n}), "add a table with one axis");
        static_cast<void>(findPut(other.c_str()));
    }
    holdSame("the value at 0, through a handle from before 100 tables were added and found",
             valueAt(table, 0), 100);
}

} // namespace

Rules calibrationRules() {
    return {
        {"calibration.absent-is-none", "A table that is not there gives a failure, or a null handle.", either,
         absentIsNone},
        {"calibration.absent-leaves-no-handle",
         "Where there was no handle, a table that is not there leaves none, whatever is answered.",
         "FrequencyHandler_MicrowaveBoard and LoCancellation, which go on with what is left",
         absentLeavesNoHandle},
        {"calibration.nodes-are-met", "At a node a table with one axis has its value.", oneAxis, nodesAreMet},
        {"calibration.between-is-straight", "Between two nodes lies the straight line, rounded either way.",
         oneAxis, betweenIsStraight},
        {"calibration.axes-have-their-order",
         "At a node a table with two axes has its value; the first coordinate is that of the first axis.",
         twoAxes, axesHaveTheirOrder},
        {"calibration.between-is-bilinear", "Between four nodes it is interpolated along both axes.", twoAxes,
         betweenIsBilinear},
        {"calibration.null-is-refused", "A null handle is a failure that stores nothing, and no crash.",
         either, nullIsRefused},
        {"calibration.ends-are-answered",
         "Beyond the ends of an axis there is an answer, always the same, and no crash: at 0 kHz and 0 "
         "degrees it "
         "is asked for before the first carrier and the first temperature.",
         either, endsAreAnswered},
        {"calibration.handles-stay", "A handle is good as long as the calibration handler is.", either,
         handlesStay},
    };
}

} // namespace Conformance

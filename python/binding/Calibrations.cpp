#include "python/binding/Binding.h"
#include "python/binding/BoardHandle.h"
#include "python/binding/CalibrationValues.h"
#include "python/binding/HardwareInUse.h"
#include "python/binding/Orders.h"
#include "python/binding/Patience.h"
#include "python/binding/Stage.h"
#include "radio/board/BoardCheck.h"
#include "radio/board/BoardNames.h"
#include "radio/calibration/OwnFiles.h"
#include "radio/calibration/Reservations.h"
#include "radio/files/AtomicFile.h"
#include "radio/text/WordError.h"
#include "radio/text/Words.h"

namespace Radio::Python {

namespace {

/** Tells Python what a calibration tells. */
class Listener final : public Calibration::CalibrationListener {
public:
    Listener(Patience& patience, py::object onPoint) : m_patience(patience), m_onPoint(std::move(onPoint)) {}

    void begins(const Board& /*board*/, const Calibration::Result& /*result*/,
                std::size_t /*known*/) override {}
    void qualified(const Calibration::Qualification& /*qualification*/) override {}
    void calibrated(const Calibration::Point& point) override {
        m_patience.call([&] {
            if (!m_onPoint.is_none()) {
                m_onPoint(toPython(point));
            }
        });
    }
    bool goOn(const Calibration::CalibrationProgress& progress) override {
        m_last = progress;
        return m_patience.goOn([&] { return py::make_tuple(toPython(progress)); });
    }
    py::tuple last() const { return py::make_tuple(toPython(m_last)); }

private:
    Patience& m_patience;
    py::object m_onPoint;
    Calibration::CalibrationProgress m_last;
};

Calibration::CalibrationBench benchOf(HardwareInUse& use) {
    return use.hardware() != nullptr ? Calibration::benchOf(*use.hardware())
                                     : Calibration::CalibrationBench();
}

void refuse(const std::string& why) {
    if (!why.empty()) {
        throw WordError(why);
    }
}

/** What is looked at before anything is measured. Gives what a reservation of the board says against it,
 * where it is done all the same: in a simulation, or forced. */
std::string requireMeant(const Board& board, const Calibration::CalibrationOrder& order,
                         const Calibration::CalibrationRun& run, bool isForced) {
    refuse(Calibration::whyNotOwnFiles(
        {{"the board", board.file}, {"the journal", run.journalFile()}, {"the tables", run.tablesFile()}}));
    refuse(Calibration::whyNoJournal(board, run.journalFile()));
    if (order.beginning == Calibration::Beginning::offline) {
        return {};
    }
    refuse(whyNotWithMethod(order.wishes, run.settings().method));
    requireWritable(run.tablesFile());
    std::string reservation = Calibration::reservationAgainst(board, run.settings(), order.isHardware);
    if (order.isHardware && !isForced) {
        refuse(reservation.empty() ? "" : reservation + ", expected force=True where that is meant");
    }
    return reservation;
}

/** (outcome, whether left properly, put-away backup or None, reservation or None, raised). */
py::tuple calibrate(const BoardHandle& handle, const py::dict& given, const py::dict& listeners) {
    const auto board = handle.copy();
    static_cast<void>(channelOf(*board, given["channel"].cast<int>()));
    const Calibration::CalibrationOrder order = calibrationOrderOf(given);
    const bool isForced = given["force"].cast<bool>();
    Patience patience(listeners["progress"], listeners["cancel"]);
    Listener listener(patience, listeners["on_point"]);
    const Stage stage(named("a calibration", *board));
    bool hasLeft = true;
    std::string backup;
    std::string reservation;
    const Calibration::CalibrationOutcome outcome = waiting(patience, [&] {
        requireUsable(*board);
        Calibration::CalibrationRun run(*board, order);
        reservation = requireMeant(*board, order, run, isForced);
        run.prepare();
        HardwareInUse hardware(*board, order.isHardware, isForced);
        run.open();
        backup = run.putAway().backup;
        Calibration::CalibrationOutcome result = run.run(listener, benchOf(hardware));
        hasLeft = hardware.leave();
        return result;
    });
    patience.finish(listener.last());
    return patience.sealed(py::make_tuple(toPython(outcome), hasLeft, orNone(std::string_view(backup)),
                                          orNone(std::string_view(reservation)), py::none()));
}

/** (carrier in kHz, degrees, detector, qualification, whether left properly, raised). */
py::tuple qualify(const BoardHandle& handle, const py::dict& given, const py::object& progress,
                  const py::object& cancel) {
    const auto board = handle.copy();
    static_cast<void>(channelOf(*board, given["channel"].cast<int>()));
    const Calibration::QualificationOrder order = qualificationOrderOf(given);
    const bool isForced = given["force"].cast<bool>();
    Patience patience(progress, cancel);
    const Stage stage(named("a qualification", *board));
    bool hasLeft = true;
    std::uint32_t taken = 0;
    const Calibration::ChannelQualification found = waiting(patience, [&] {
        requireUsable(*board);
        Calibration::ChannelQualifier qualifier(*board, order);
        if (order.isHardware && !isForced) {
            const std::string reservation =
                Calibration::reservationAgainst(*board, qualifier.settings(), false);
            refuse(reservation.empty() ? "" : reservation + ", expected force=True where that is meant");
        }
        HardwareInUse hardware(*board, order.isHardware, isForced);
        const auto goOn = [&] {
            return patience.goOn([&] { return py::make_tuple(taken, Calibration::mostReadingsTaken); });
        };
        Calibration::ChannelQualification result =
            qualifier.run(goOn, benchOf(hardware), [&](std::uint32_t readings) { taken = readings; });
        hasLeft = hardware.leave();
        return result;
    });
    patience.finish(py::make_tuple(found.result.taken, found.result.taken));
    return patience.sealed(py::make_tuple(found.frequency, found.temperature, text(found.detector),
                                          toPython(found.result), hasLeft, py::none()));
}

} // namespace

void bindCalibration(py::module_& module) {
    module.def("calibrate", &calibrate);
    module.def("qualify", &qualify);
}

} // namespace Radio::Python

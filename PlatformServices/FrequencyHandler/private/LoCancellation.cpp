#include "LoCancellation.h"

#include "Guard.h"
#include "InterfaceBroker.h"
#include "LoCancellationSearch.h"
#include "Trace.h"

#include <unistd.h>

using namespace RL::FrequencyHandler;

namespace {

// What follows the channel in the names of drivers and tables.
constexpr const char* mixerI = "tx.rf.mixer.i";
constexpr const char* mixerQ = "tx.rf.mixer.q";
constexpr const char* coarseDcI = "tx.bb.iq.coarse.dc.i.v.adjust";
constexpr const char* coarseDcQ = "tx.bb.iq.coarse.dc.q.v.adjust";
constexpr const char* detector = "tx.rf.detector.v";
constexpr const char* lowDetector = "tx.rf.detector.low.v.detect";
constexpr const char* highDetector = "tx.rf.detector.high.v.detect";
constexpr const char* mixerTable = "Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.";
constexpr const char* coarseDcTablePrefix = "Tx.Bb.Frequency.To.Coarse.Dc.";
constexpr const char* coarseDcTableSuffix = ".Compensation";

std::string driverName(unsigned int channel, const char* name) {
    return "channel." + std::to_string(channel) + "." + name;
}

} // namespace

OrbiTrace LoCancellation::m_trace(Trace::objectName, Trace::initialLevel);

LoCancellation::LoCancellation(unsigned int channel) : m_channel(channel) {}

LoCancellation::~LoCancellation() {
    const CancellationHeld held;
    static_cast<void>(guarded<m_trace>("unregisterInterface", [this] {
        const std::string& name = nameInterface();
        const EAFResult code = InterfaceBroker::getInstance().unregisterInterface(name, nullptr);
        if (isFailure(code)) {
            FH_TRACE(m_trace, TraceCode::error,
                     "LoCancellation failed to unregister ILoCancellation interface [%s] (EAFResult = 0x%x)",
                     name.c_str(), static_cast<unsigned>(code));
        }
        return code;
    }));
}

/** Puts the name under which the object is published into the room that is kept for it. */
const std::string& LoCancellation::nameInterface() {
    return m_interfaceName.assign("ILoCancellation_").append(std::to_string(static_cast<int>(m_channel)));
}

// Set-up

EAFResult LoCancellation::initialize() {
    const CancellationHeld held; // published and told of, or neither
    const EAFResult result = guarded<m_trace>("registerInterface", [this] {
        const std::string& name = nameInterface();
        const EAFResult code = InterfaceBroker::getInstance().registerInterface(name, this);
        if (isFailure(code)) {
            FH_TRACE(m_trace, TraceCode::error,
                     "LoCancellation failed to register ILoCancellation interface [%s] (EAFResult = 0x%x)",
                     name.c_str(), static_cast<unsigned>(code));
            return ResultFailed;
        }
        return ResultOk;
    });
    m_interfaceName.clear(); // its room stays, so that withdrawing takes no memory
    return result;
}

EAFResult LoCancellation::onModuleInit() {
    return guarded<m_trace>("onModuleInit", [this] { return bind(); });
}

EAFResult LoCancellation::bind() {
    const DriverLookup lookup;
    if (!lookup.hasDriverLayer()) {
        FH_TRACE(m_trace, TraceCode::error, "LoCancellation failed to get driverlayer interface");
        return ResultFailed;
    }
    if (bindDriver(lookup, mixerI, coarseDcI, m_mixerIDriver) == Bound::none ||
        bindDriver(lookup, mixerQ, coarseDcQ, m_mixerQDriver) == Bound::none ||
        isFailure(bindDetectors(lookup))) {
        return ResultFailed;
    }
    fetchTable("I", m_tableI);
    fetchTable("Q", m_tableQ);
    return ResultOk;
}

LoCancellation::Bound LoCancellation::bindDriver(const DriverLookup& lookup, const char* preferred,
                                                 const char* alternative, DriverInterface*& driver) const {
    const std::string preferredName = driverName(m_channel, preferred);
    if (lookup.find(preferredName, NeededOperation::write, driver).complete) {
        return Bound::preferred;
    }
    const std::string alternativeName = driverName(m_channel, alternative);
    const DriverLookupResult result = lookup.find(alternativeName, NeededOperation::write, driver);
    if (result.complete) {
        return Bound::alternative;
    }
    FH_TRACE(m_trace, result.code,
             "LoCancellation failed to get driver interface [%s] or interface [%s] (EDriverResult = 0x%x)",
             preferredName.c_str(), alternativeName.c_str(), static_cast<unsigned>(result.code));
    return Bound::none;
}

EAFResult LoCancellation::bindDetectors(const DriverLookup& lookup) {
    const Bound bound = bindDriver(lookup, detector, lowDetector, m_detectorDriver);
    if (bound != Bound::alternative) {
        return bound == Bound::preferred ? ResultOk : ResultFailed;
    }
    // A board with a detector for the low range has one for the high range too.
    const std::string name = driverName(m_channel, highDetector);
    const DriverLookupResult result = lookup.find(name, NeededOperation::write, m_highDetectorDriver);
    if (!result.complete) {
        FH_TRACE(m_trace, result.code,
                 "LoCancellation failed to get driver interface [%s] (EDriverResult = 0x%x)", name.c_str(),
                 static_cast<unsigned>(result.code));
        return ResultFailed;
    }
    return ResultOk;
}

void LoCancellation::fetchTable(const char* branch, CalibrationTableHandle& table) {
    const std::string prefix = "Channel." + std::to_string(m_channel) + ".";
    if (isSuccess(CCalibrationHandler_GetTable((prefix + mixerTable + branch).c_str(), &table))) {
        return;
    }
    const std::string coarseDcTable = prefix + coarseDcTablePrefix + branch + coarseDcTableSuffix;
    const ECHResult code = CCalibrationHandler_GetTable(coarseDcTable.c_str(), &table);
    if (isSuccess(code)) {
        m_useLoCancellationTables = false;
        return;
    }
    FH_TRACE(m_trace, TraceCode::error,
             "Unable to fetch table Channel.%d.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.%s "
             "(ECHResult = 0x%x)",
             static_cast<int>(m_channel), branch, static_cast<unsigned>(code));
}

// Correction by frequency and temperature

EAFResult LoCancellation::setIQ(int i, int q) {
    return write(i, q);
}

inline EAFResult LoCancellation::write(int i, int q) const {
    return guarded<m_trace>("setIQ", [this, i, q] {
        if (canWrite(m_mixerIDriver)) {
            const EDriverResult code = m_mixerIDriver->write(m_mixerIDriver->context, i);
            if (isFailure(code)) {
                return tellFailedWriteOfI(code);
            }
        }
        if (canWrite(m_mixerQDriver)) {
            const EDriverResult code = m_mixerQDriver->write(m_mixerQDriver->context, q);
            if (isFailure(code)) {
                return tellFailedWriteOfQ(code);
            }
        }
        return ResultOk;
    });
}

// Both messages name the mixer drivers, also when the coarse DC drivers are in use.

EAFResult LoCancellation::tellFailedWriteOfI(EDriverResult code) const {
    FH_TRACE(m_trace, code, "Unable to write to driver Channel.%d.tx.rf.mixer.i (EDriverResult = 0x%x)",
             static_cast<int>(m_channel), static_cast<unsigned>(code));
    return ResultFailed;
}

EAFResult LoCancellation::tellFailedWriteOfQ(EDriverResult code) const {
    FH_TRACE(m_trace, code, "Unable to write to driver Channel.%d.tx.rf.mixer.q (EDriverResult = 0x%x)",
             static_cast<int>(m_channel), static_cast<unsigned>(code));
    return ResultFailed;
}

EAFResult LoCancellation::setLoCancellation(unsigned int frequency, int temperature) {
    if (!m_useLoCancellationTables) {
        return ResultOk;
    }
    return guarded<m_trace>("setLoCancellation", [this, frequency, temperature] {
        const int i = correction("I", m_tableI, frequency, temperature);
        const int q = correction("Q", m_tableQ, frequency, temperature);
        return write(i, q);
    });
}

inline int LoCancellation::correction(const char* branch, CalibrationTableHandle table,
                                      unsigned int frequency, int temperature) const {
    int value = 0;
    const ECHResult code =
        CCalibrationTable_BiLinearInterpolate(table, static_cast<int>(frequency), temperature, &value);
    if (isFailure(code)) {
        tellFailedLookup(branch, code);
    }
    return value; // what a failed lookup left is written all the same
}

void LoCancellation::tellFailedLookup(const char* branch, ECHResult code) const {
    FH_TRACE(m_trace, TraceCode::error,
             "Unable to fetch value from table "
             "Channel.%d.Tx.Rf.Lo.Cancellation.Frequency.To.Voltage.Mixer.%s (ECHResult = 0x%x)",
             static_cast<int>(m_channel), branch, static_cast<unsigned>(code));
}

// Calibration

EAFResult LoCancellation::readDetector(bool useHighDetector, int& reading) const {
    const DriverInterface* const driver = useHighDetector ? m_highDetectorDriver : m_detectorDriver;
    if (driver == nullptr) {
        return ResultOk; // not an error: the search goes on with the reading that it has
    }
    if (driver->read == nullptr) {
        FH_TRACE(m_trace, TraceCode::error,
                 "LoCancellation detector driver cannot be read (RadioChannel: %d)",
                 static_cast<int>(m_channel));
        return ResultFailed;
    }
    const EDriverResult code = driver->read(driver->context, &reading);
    if (isFailure(code)) {
        FH_TRACE(
            m_trace, TraceCode::error,
            "LoCancellation unable to read from detector driver (EDriverResult = 0x%x, RadioChannel: %d)",
            static_cast<unsigned>(code), static_cast<int>(m_channel));
        return ResultFailed;
    }
    return ResultOk;
}

EAFResult LoCancellation::calibrateLoCancellation(int iLow, int iHigh, int qLow, int qHigh,
                                                  double shrinkFactor, int minDelta,
                                                  unsigned int maxIterations, unsigned int settleTimeMs,
                                                  int* calibratedI, int* calibratedQ, int* maxDelta,
                                                  unsigned int* iterations, bool useHighDetector) {
    if (calibratedI == nullptr || calibratedQ == nullptr || maxDelta == nullptr || iterations == nullptr) {
        FH_TRACE(m_trace, TraceCode::error, "calibrateLoCancellation called without a place for its results");
        return ResultFailed;
    }
    return guarded<m_trace>("calibrateLoCancellation", [&] {
        LoCancellationSearch search(iLow, iHigh, qLow, qHigh, shrinkFactor);
        do {
            for (std::size_t k = 0; k < LoCancellationSearch::probeCount; ++k) {
                const auto [i, q] = search.probe(k);
                if (isFailure(setIQ(i, q))) {
                    FH_TRACE(m_trace, TraceCode::error,
                             "Failed to set I and Q [for index %d and RadioChannel %d]", static_cast<int>(k),
                             static_cast<int>(m_channel));
                    return ResultFailed;
                }
                usleep(settleTimeMs * 1000U);
                if (isFailure(readDetector(useHighDetector, search.reading(k)))) {
                    return ResultFailed;
                }
            }
            *maxDelta = search.narrow();
            ++*iterations;
        } while ((*iterations < maxIterations) && (*maxDelta > minDelta));

        const auto [i, q] = search.midpoint();
        *calibratedI = i;
        *calibratedQ = q;
        if (isFailure(setIQ(i, q))) {
            FH_TRACE(m_trace, TraceCode::error, "Failed to set I and Q [for RadioChannel %d]",
                     static_cast<int>(m_channel));
            return ResultFailed;
        }
        FH_TRACE(m_trace, TraceCode::notice,
                 "Calibrated LO cancellation, TxRF LO (I) = %i, TxRf LO (Q) = %i, maxDelta = %i",
                 *calibratedI, *calibratedQ, *maxDelta);
        return ResultOk;
    });
}

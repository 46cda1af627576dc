#ifndef TESTS_MODEL_MODEL_H
#define TESTS_MODEL_MODEL_H

#include "Arithmetic.h"
#include "ModelPlan.h"
#include "ModelPlatform.h"
#include "Story.h"
#include "Transcript.h"

#include <array>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Told {

/** Somebody who is told of a handler's frequency. */
struct ModelObserver {
    enum class Kind : std::uint8_t { ofClass, null, ofC } kind;
    std::int64_t number;
    std::int32_t channel;
    Throws throws;
};

struct ModelHandler {
    HandlerKind kind;
    std::string direction;
    std::int32_t channel;
    /** What it has of the microwave board's Flag. */
    unsigned flags;
    std::uint32_t frequency = 0;
    std::vector<ModelObserver> observers{};

    // RF module and remote radio unit.
    Handle frequencyDriver = nowhere;
    std::string remoteRadio{};

    // Microwave board.
    Plan plan{};
    Wide channelSpacing = 3000;
    Handle offsetArraySize = nowhere;
    Handle offsetArray = nowhere;
    Handle hwCodeDsp = nowhere;
    Handle loDriver = nowhere;
    Handle loInHzDriver = nowhere;
    Handle ifDriver = nowhere;
    Handle pllConfigDriver = nowhere;
    Handle dspOffsetDriver = nowhere;
    Handle chargePumpTable = nowhere;
    bool chargePumpTableValid = true;

    bool is(Flag flag) const { return (flags & flag) != 0; }
    bool isRx() const { return direction == "Rx"; }
    std::string name() const;
    /** "channel.1.tx." */
    std::string prefix() const;
};

struct ModelCanceller {
    std::int32_t channel = 0;
    Handle iDriver = nowhere;
    Handle qDriver = nowhere;
    Handle detector = nowhere;
    Handle highDetector = nowhere;
    Handle iTable = nowhere;
    Handle qTable = nowhere;
    bool usesTables = true;

    std::string name() const { return "ILoCancellation_" + std::to_string(channel); }
};

struct ModelModule {
    std::uint32_t channel;
    std::unique_ptr<ModelHandler> tx{};
    std::unique_ptr<ModelHandler> rx{};
    std::unique_ptr<ModelCanceller> canceller{};
    std::int32_t temperature = 0;
};

struct ModelCompensation {
    std::uint32_t channel = 0;
    std::int32_t temperature = 0;
    std::array<Handle, 4> drivers{nowhere, nowhere, nowhere, nowhere};
    std::array<Handle, 4> tables{nowhere, nowhere, nowhere, nowhere};
};

/** Says what the library does in a story, by the rules alone: what it calls, writes, traces and answers. */
class Model {
public:
    Model(Board board, Transcript& transcript)
        : m_platform(std::move(board), transcript),
          m_transcript(transcript) {}

    /** Tells what is done in a story, of which the board is known already. */
    void tell(const Story& story);

private:
    /** A module as the module manager knows it, of the class or of the flat view. */
    struct Registered {
        std::uint32_t id;
        ModelModule* module;
        std::vector<ModelCompensation*> callbacks;
    };
    struct TemperatureObserver {
        ModelModule* module;
        ModelCompensation* compensation;
        bool operator==(const TemperatureObserver& other) const {
            return module == other.module && compensation == other.compensation;
        }
    };

    void tell(const Step& step);
    void tellOfSlot(const Step& step);
    void tellOfModule(const Step& step, ModelModule& module);
    void tellOfHandler(const Step& step, ModelHandler& handler);
    void tellOfCanceller(const Step& step, ModelCanceller& canceller);
    void tellOfCompensation(const Step& step, ModelCompensation& compensation);
    void runPhase(std::int64_t phase);
    void setTemperature(std::int32_t temperature);
    Code subscribe(const TemperatureObserver& observer);
    void forgetObservers() { m_temperatureObservers.clear(); }

    /** A published operation, which lets nothing out that the platform throws: it says so, and has failed. */
    template <typename Work>
    Code hold(const char* operation, Work work) {
        try {
            return work();
        } catch (const PlatformThrew& thrown) {
            m_platform.say(failed, "%s failed: %s", operation, thrown.what);
            return failed;
        }
    }

    // The frequency module.
    void makeModule(const Step& step);
    void destroyModule(std::unique_ptr<ModelModule>& module);
    Code moduleInit(ModelModule& module);
    Code moduleVariables(ModelModule& module, bool frameFormat);
    Code setTx(ModelModule& module, std::uint32_t frequency);
    Code setRx(ModelModule& module, std::uint32_t frequency);
    void notifyModule(ModelModule& module, std::int32_t temperature);
    bool lacksHandlers(const ModelModule& module, const char* operation);

    // What handlers share.
    std::unique_ptr<ModelHandler> makeHandler(HandlerKind kind, const std::string& direction,
                                              std::int32_t channel, unsigned flags);
    void destroyHandler(std::unique_ptr<ModelHandler>& handler);
    void notify(const ModelHandler& handler, std::size_t place);
    /** A client in C asks the broker for a handler's record. */
    bool asksFromC(const std::string& name, Code& code);
    Code setFrequency(ModelHandler& handler, std::uint32_t frequency);
    Code initHandler(ModelHandler& handler);
    Code readVariables(ModelHandler& handler);
    Code readFrameFormat(ModelHandler& handler);
    Code writeFrequency(ModelHandler& handler, std::uint32_t frequency);

    // RF module and remote radio unit.
    Code initRfModule(ModelHandler& handler);
    Code writeRfModule(ModelHandler& handler, std::uint32_t frequency);
    Code initRemoteRadio(ModelHandler& handler);
    Code writeRemoteRadio(ModelHandler& handler, std::uint32_t frequency);

    // Microwave board.
    Code initMicrowave(ModelHandler& handler);
    Code bindMicrowave(ModelHandler& handler);
    Code require(const std::string& driver, Word operation, Handle& handle);
    void fetchChargePumpTable(ModelHandler& handler);
    Code readVariable(const std::string& name, Wide& value);
    Code readMicrowaveVariables(ModelHandler& handler);
    Code readMicrowaveFrameFormat(ModelHandler& handler);
    Code writeMicrowave(ModelHandler& handler, std::uint32_t frequency);
    Code shiftByArray(ModelHandler& handler, Wide& frequency);
    Code shiftInDsp(ModelHandler& handler, Wide& shift);
    Code writeSynthesisers(ModelHandler& handler, Wide ifPll, Wide rfPll);
    Wide tellIfPll(const ModelHandler& handler, Wide frequency);
    bool tellRfPll(const ModelHandler& handler, Wide frequency, bool exact, Wide& result);
    void tellPlan(const ModelHandler& handler, Wide frequency, bool exact);

    // LO cancellation.
    Code publishCanceller(ModelCanceller& canceller);
    void withdrawCanceller(ModelCanceller& canceller);
    Code initCanceller(ModelCanceller& canceller);
    Code bindCanceller(ModelCanceller& canceller);
    bool bindEither(ModelCanceller& canceller, const std::string& first, const std::string& second,
                    Handle& driver, bool& tookSecond);
    Code lookUpComplete(const std::string& driver, Handle& handle, bool& complete);
    void fetchCorrectionTable(ModelCanceller& canceller, const char* branch, Handle& table);
    Code correct(ModelCanceller& canceller, std::uint32_t frequency, std::int32_t temperature);
    Code setIq(ModelCanceller& canceller, std::int32_t i, std::int32_t q);
    Code writeIq(ModelCanceller& canceller, std::int32_t i, std::int32_t q);
    void calibrate(ModelCanceller& canceller, Calibration calibration);
    Code search(ModelCanceller& canceller, Calibration& calibration, std::int32_t& i, std::int32_t& q,
                std::int32_t& delta);
    Code probe(ModelCanceller& canceller, const Calibration& calibration, int index, Wide i, Wide q,
               std::int32_t& reading);

    // IQ compensation.
    Code initCompensation(ModelCompensation& compensation);
    Code registerCompensation(ModelCompensation& compensation);
    Code compensationPhase(ModelCompensation* compensation, std::int64_t phase);
    Code bindCompensation(ModelCompensation& compensation);
    bool openAndGet(const char* name, Code& code);
    void giveBackBroker();
    /** Does what the broker is open for; if that throws, the broker is given back. */
    template <typename Work>
    Code whileOpen(Work work) {
        try {
            return work();
        } catch (const PlatformThrew&) {
            giveBackBroker();
            throw;
        }
    }
    void notifyCompensation(ModelCompensation* compensation, std::int32_t temperature);
    Code compensate(ModelCompensation& compensation);
    Code writeCompensations(ModelCompensation& compensation);

    ModelPlatform m_platform;
    Transcript& m_transcript;
    std::array<std::unique_ptr<ModelModule>, slotCount> m_modules;
    std::array<std::unique_ptr<ModelHandler>, slotCount> m_handlers;
    std::array<std::unique_ptr<ModelCanceller>, slotCount> m_cancellers;
    std::array<std::unique_ptr<ModelCompensation>, slotCount> m_compensations;
    std::list<Registered> m_registered;
    std::vector<TemperatureObserver> m_temperatureObservers;
    std::int64_t m_temperature = INT64_MIN;
};

} // namespace Told

#endif

#ifndef FREQUENCYHANDLER_PRIVATE_FREQUENCYHANDLER_COMMON_H
#define FREQUENCYHANDLER_PRIVATE_FREQUENCYHANDLER_COMMON_H

#include "IFrequencyHandler.h"
#include "OrbiTrace.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace RL::FrequencyHandler::Common {

/**
 * What every direction handler shares: it keeps the carrier of one direction ("Tx" or "Rx") of one radio
 * channel, is published in the broker as long as it lives, and fixes the order of a frequency change:
 * remember, write to hardware, notify. The board variants add how hardware is found and written.
 *
 * Owned by the frequency module of the channel. Nothing is locked: phase callbacks, frequency changes and
 * registrations of one handler must not overlap.
 */
class RADIO_CLASS FrequencyHandler : public IFrequencyHandler {
public:
    /**
     * Publishes the handler as "IFrequencyHandler_" + `name`, followed by "_" and the channel as a signed
     * number when that is not 0. What the broker answers is not looked at. Throws std::bad_alloc when there
     * is no memory for a long `name`.
     */
    FrequencyHandler(const std::string& name, unsigned long channel);
    /** Withdraws whatever is published under that name. Observers are left alone. */
    ~FrequencyHandler() override;

    /**
     * The one way to change the carrier, in kHz (32 bits). Stores it, writes it to hardware, then tells every
     * observer in the order of registration. A failed write changes nothing in that: the board variant may
     * tell of it. Nor does an observer that throws: a message says so, and the others are told.
     *
     * Always returns 0.
     */
    EAFResult setRfFrequency(unsigned long frequency);

    using IFrequencyHandler::registerObserver;
    EAFResult registerObserver(Observer<IFrequencyHandler>* observer) override;
    unsigned long getFrequency() const override;

    /** Finds drivers and tables. Returns 0, or 0x8000 when the handler cannot work; this version does
     * nothing. */
    virtual EAFResult onModuleInit();
    /** Reads the database variables. Returns 0 or 0x8000; this version does nothing. */
    virtual EAFResult getVariablesFromDatabase();
    /** Reads again what depends on the frame format. Returns 0 or 0x8000; this version does nothing. */
    virtual EAFResult getFFVariablesFromDatabase();
    /** Programs the hardware for a carrier in kHz. Returns 0, or 0x8000 when a write failed. */
    virtual EAFResult writeFrequencyToHW(unsigned long frequency) = 0;

protected:
    /** The radio channel number as names and messages show it. */
    std::int32_t channelNumber() const { return static_cast<std::int32_t>(m_cStruct.m_channel); }
    /** "Channel.1.Tx.", with which the names of calibration tables begin. */
    std::string tablePrefix() const;
    /** "channel.1.tx.", with which the names of drivers and variables begin. */
    std::string driverPrefix() const;

    static OrbiTrace m_trace;

    std::string m_name;
    unsigned long m_frequency = 0;

private:
    const std::string& nameInterface();
    void notify(std::size_t index);
    [[gnu::cold]] void tellNullObserver(std::size_t index) const;
    [[gnu::cold]] void tellThrownBy(std::size_t index) const;
};

} // namespace RL::FrequencyHandler::Common

#endif

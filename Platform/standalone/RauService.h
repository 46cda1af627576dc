#ifndef PLATFORM_STANDALONE_RAUSERVICE_H
#define PLATFORM_STANDALONE_RAUSERVICE_H

#include "IRauHandler.h"
#include "Visibility.h"
#include "standalone/Calls.h"

#include <string>

namespace Standalone {

/** A simulated remote radio unit: it keeps the carriers that it was given. */
class RADIO_API RauService final : public IRauHandler {
public:
    /** `name` is the name under which it is published, for example "IRauHandler_1". */
    RauService(std::string name, Calls& calls);

    EAFResult setTxRadioFrequency(unsigned long frequency) override;
    EAFResult setRxRadioFrequency(unsigned long frequency) override;

    const std::string& name() const { return m_name; }
    /** The carriers in kHz; 0 before the first one. A failing call leaves them as they were. */
    unsigned long txFrequency() const { return m_txFrequency; }
    unsigned long rxFrequency() const { return m_rxFrequency; }

private:
    EAFResult set(Operation operation, unsigned long frequency, unsigned long& kept);

    std::string m_name;
    Calls& m_calls;
    unsigned long m_txFrequency = 0;
    unsigned long m_rxFrequency = 0;
};

} // namespace Standalone

#endif

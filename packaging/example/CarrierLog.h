#ifndef EXAMPLE_CARRIERLOG_H
#define EXAMPLE_CARRIERLOG_H

#include "IFrequencyHandler.h"

#include <string>

/**
 * A component of the platform process that writes every new carrier of one handler to standard output.
 *
 * Must live as long as the handler: there is no way to unsubscribe.
 */
class CarrierLog : public Observer<IFrequencyHandler> {
public:
    /** Subscribes to the handler published as `name`, for example "IFrequencyHandler_Tx_1". False: there is
     * none. */
    bool subscribe(const std::string& name);

    void onChange(IFrequencyHandler* subject) override;

private:
    std::string m_name;
};

#endif

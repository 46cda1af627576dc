#ifndef TESTS_PLATFORM_PLATFORMFIXTURE_H
#define TESTS_PLATFORM_PLATFORMFIXTURE_H

#include "DriverLayer.h"
#include "IInterface_c.h"
#include "InterfaceBroker.h"
#include "PlatformResults.h"
#include "standalone/Codes.h"
#include "standalone/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

/** A platform that starts from nothing, and the words of its clients. */
class PlatformFixture : public ::testing::Test {
protected:
    static EDriverResult lookUpDriver(DriverInterface** out, const char* name) {
        auto* const iface = InterfaceBroker::getInstance().getInterface<IInterface_c>("IDriverLayer");
        return static_cast<DriverLayerInterface*>(iface->getCStruct())->getDriverInterface(out, name);
    }

    /** The record of the driver `name`, which is added unless it is there. */
    DriverInterface& driver(const char* name) {
        platform.drivers().add(name);
        DriverInterface* record = nullptr;
        lookUpDriver(&record, name);
        return *record;
    }

    static int read(DriverInterface& driver) {
        int value = -1;
        driver.read(driver.context, &value);
        return value;
    }

    /** Adds a fault of `operation` on `object`. */
    void fail(Standalone::Operation operation, const std::string& object, std::int32_t code,
              std::optional<std::uint32_t> times = std::nullopt) {
        platform.calls().inject({operation, object, code, times, std::nullopt});
    }

    Standalone::Platform platform;
};

#endif

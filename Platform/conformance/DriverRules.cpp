#include "DriverLayer.h"
#include "IInterface_c.h"
#include "InterfaceBroker.h"
#include "conformance/Rule.h"

#include <array>
#include <cstdint>

namespace Conformance {

namespace {

constexpr const char* lookingUp = "FrequencyHandler::onModuleInit, CTxIQImbalanceHandler: finding drivers";
constexpr const char* writing = "FrequencyHandler: setTxFrequency, setRxFrequency";
constexpr const char* reading = "LoCancellation: calibration reads a detector";
constexpr const char* name = "conformance.driver";

DriverLayerInterface& layer() {
    auto* const published = InterfaceBroker::getInstance().getInterface<IInterface_c>("IDriverLayer");
    hold(published != nullptr, "no \"IDriverLayer\" is published");
    auto* const record = static_cast<DriverLayerInterface*>(published->getCStruct());
    hold(record != nullptr && record->getDriverInterface != nullptr, "its record has no getDriverInterface");
    return *record;
}

/** Null: the lookup fails, or gives none. */
DriverInterface* find(const char* driver) {
    DriverInterface* found = nullptr;
    return isSuccess(layer().getDriverInterface(&found, driver)) ? found : nullptr;
}

DriverInterface& put(Adapter& adapter, const char* driver = name) {
    need(adapter.putDriver(driver), "add a driver");
    DriverInterface* const found = find(driver);
    hold(found != nullptr, "a driver that was added is not found");
    return *found;
}

void write(DriverInterface& driver, void* first, int value) {
    hold(driver.write != nullptr, "the record has no write");
    hold(isSuccess(driver.write(first, value)), "write fails");
}

void absentIsNone(Adapter& /*adapter*/) {
    hold(find("conformance.nobody.has.this") == nullptr, "a record is given, and the answer is a success");
}

void absentLeavesNoRecord(Adapter& /*adapter*/) {
    DriverInterface* found = nullptr;
    static_cast<void>(layer().getDriverInterface(&found, "conformance.nobody.has.this"));
    hold(found == nullptr, "where null was, something else is left");
}

void haveContext(Adapter& adapter) {
    const DriverInterface& driver = put(adapter);
    hold(driver.context != nullptr, "the record has a null context");
    hold(driver.write != nullptr, "the record has no write");
}

void recordStays(Adapter& adapter) {
    DriverInterface& first = put(adapter);
    for (int n = 0; n < 100; ++n) {
        need(adapter.putDriver("conformance.other." + std::to_string(n)), "add a driver");
    }
    hold(find(name) == &first, "the record is another one after 100 drivers were added");
    write(first, first.context, 6);
    holdSame("the value that was written through the record that was kept",
             told(adapter.written(name), "what was written"), 6);
}

void writeReaches(Adapter& adapter) {
    DriverInterface& driver = put(adapter);
    for (const int value : {7442000, 0, -1, INT32_MAX, INT32_MIN}) {
        write(driver, driver.context, value);
        holdSame("the value written", told(adapter.written(name), "what was written"), value);
    }
}

void driversAreApart(Adapter& adapter) {
    DriverInterface& one = put(adapter, "conformance.one");
    DriverInterface& other = put(adapter, "conformance.other");
    hold(&one != &other, "two drivers have one record");
    write(one, one.context, 1);
    write(other, other.context, 2);
    holdSame("the value of the one, after the other was written",
             told(adapter.written("conformance.one"), "what was written"), 1);
    holdSame("the value of the other", adapter.written("conformance.other").value_or(0), 2);
}

void bufferReaches(Adapter& adapter) {
    const DriverInterface& driver = put(adapter);
    hold(driver.writeBuffer != nullptr, "the record has no writeBuffer");
    const std::array<std::uint8_t, 8> bytes{0, 127, 128, 255, 4, 3, 2, 1};
    hold(isSuccess(driver.writeBuffer(driver.context, bytes.data(), 8)), "writeBuffer fails");
    hold(told(adapter.writtenBytes(name), "which bytes were written") ==
             std::vector<std::uint8_t>(bytes.begin(), bytes.end()),
         "the bytes are not those that were written: 00 7f 80 ff 04 03 02 01");
}

void readGives(Adapter& adapter) {
    const DriverInterface& driver = put(adapter);
    hold(driver.read != nullptr, "the record has no read");
    for (const int value : {1444, -7, 0}) {
        need(adapter.putReading(name, value), "say what is read");
        int found = 12345;
        hold(isSuccess(driver.read(driver.context, &found)), "read fails");
        holdSame("the value read", found, value);
    }
}

void codesComeThrough(Adapter& adapter) {
    const DriverInterface& driver = put(adapter);
    hold(driver.writeBuffer != nullptr && driver.read != nullptr,
         "the record has no writeBuffer, or no read");
    for (const std::int32_t code : {0x8000, 0x8017, INT32_MAX}) {
        need(adapter.refuse(name, code), "have a driver refuse");
        holdSame("the code of a write that is refused",
                 static_cast<std::int32_t>(driver.write(driver.context, 1)), code);
        const std::array<std::uint8_t, 8> bytes{};
        holdSame("the code of bytes that are refused",
                 static_cast<std::int32_t>(driver.writeBuffer(driver.context, bytes.data(), 8)), code);
        int value = 0;
        holdSame("the code of a read that is refused",
                 static_cast<std::int32_t>(driver.read(driver.context, &value)), code);
    }
}

void recordIsAnArgumentToo(Adapter& adapter) {
    DriverInterface& driver = put(adapter);
    write(driver, &driver, 77);
    holdSame("the value written with the record's own address as the first argument",
             told(adapter.written(name), "what was written"), 77);
}

} // namespace

Rules driverRules() {
    return {
        {"drivers.absent-is-none", "A driver that is not there gives a failure, or a null record.", lookingUp,
         absentIsNone},
        {"drivers.absent-leaves-no-record",
         "Where there was no record, a driver that is not there leaves none, whatever is answered.",
         "FrequencyHandler, which writes through what is left", absentLeavesNoRecord},
        {"drivers.have-a-context", "A driver's record has a context, and what it offers.",
         "all lookups, which take one without a context for missing", haveContext},
        {"drivers.record-stays",
         "A driver's record stays where it is, and works, as long as the driver layer.", lookingUp,
         recordStays},
        {"drivers.write-reaches", "A write reaches the hardware with its value, whatever that is.", writing,
         writeReaches},
        {"drivers.are-apart", "Each driver has its own hardware.", writing, driversAreApart},
        {"drivers.buffer-reaches", "Bytes reach the hardware in one call, as they are.",
         "FrequencyHandler_MicrowaveBoard: frequencies in Hz, which are eight bytes", bufferReaches},
        {"drivers.read-gives", "A read gives what the hardware has.", reading, readGives},
        {"drivers.codes-come-through", "What the hardware refuses is a failure, with its own code.",
         "the trace message of what failed, and FrequencyHandler_GetTuning", codesComeThrough},
        {"drivers.record-is-an-argument-too",
         "A write takes the address of the driver's record for its context.",
         "CTxIQImbalanceHandler: DC corrections", recordIsAnArgumentToo},
    };
}

} // namespace Conformance

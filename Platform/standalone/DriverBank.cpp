#include "standalone/DriverBank.h"

#include "standalone/Codes.h"

#include <optional>
#include <utility>

namespace Standalone {

namespace {

/** The number of 8 bytes, least significant first: one load, where the processor keeps numbers so. */
std::uint64_t eightBytes(const std::uint8_t* bytes) {
    const auto at = [bytes](unsigned i) { return std::uint64_t{bytes[i]} << (8U * i); };
    return at(0) | at(1) | at(2) | at(3) | at(4) | at(5) | at(6) | at(7);
}

/** The number that a buffer stands for, least significant byte first; nothing for one that is none. */
inline std::optional<std::int64_t> numberIn(const void* data, unsigned byteCount) {
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    if (bytes == nullptr || byteCount == 0 || byteCount > sizeof(std::uint64_t)) {
        return std::nullopt;
    }
    if (byteCount == sizeof(std::uint64_t)) {
        return static_cast<std::int64_t>(eightBytes(bytes));
    }
    std::uint64_t number = 0;
    for (unsigned i = byteCount; i > 0; --i) {
        number = (number << 8U) | bytes[i - 1];
    }
    return static_cast<std::int64_t>(number);
}

} // namespace

Driver::Driver(std::string name, Calls& calls, unsigned missingWords)
    : m_name(std::move(name)),
      m_calls(calls),
      m_record{{}, this} {
    setMissingWords(missingWords);
}

void Driver::setMissingWords(unsigned missingWords) {
    m_missingWords = missingWords;
    m_record.words =
        m_backing == nullptr
            ? DriverInterface{&m_record, &Driver::write, &Driver::writeBuffer, &Driver::read}
            : DriverInterface{&m_record, &Driver::writeThrough, &Driver::writeBufferThrough, &Driver::read};
    if ((missingWords & wordContext) != 0) {
        m_record.words.context = nullptr;
    }
    if ((missingWords & wordWrite) != 0) {
        m_record.words.write = nullptr;
    }
    if ((missingWords & wordWriteBuffer) != 0) {
        m_record.words.writeBuffer = nullptr;
    }
    if ((missingWords & wordRead) != 0) {
        m_record.words.read = nullptr;
    }
}

void Driver::setBacking(DriverBacking* backing) {
    m_backing = backing;
    setMissingWords(m_missingWords);
}

EDriverResult Driver::write(void* context, int value) {
    auto* const record = static_cast<Record*>(context);
    return static_cast<EDriverResult>(record != nullptr ? record->driver->write(value) : Codes::badArgument);
}

EDriverResult Driver::writeBuffer(void* context, const void* data, unsigned byteCount) {
    auto* const record = static_cast<Record*>(context);
    return static_cast<EDriverResult>(record != nullptr ? record->driver->writeBuffer(data, byteCount)
                                                        : Codes::badArgument);
}

EDriverResult Driver::read(void* context, int* value) {
    auto* const record = static_cast<Record*>(context);
    return static_cast<EDriverResult>(record != nullptr ? record->driver->read(value) : Codes::badArgument);
}

EDriverResult Driver::writeThrough(void* context, int value) {
    if (context == nullptr) {
        return static_cast<EDriverResult>(Codes::badArgument);
    }
    Driver& driver = *static_cast<Record*>(context)->driver;
    return static_cast<EDriverResult>(
        driver.m_calls.answer(driver.m_name, {Operation::driverWrite, value},
                              [&](std::int64_t& given) { return driver.putThrough(given); }));
}

EDriverResult Driver::writeBufferThrough(void* context, const void* data, unsigned byteCount) {
    if (context == nullptr) {
        return static_cast<EDriverResult>(Codes::badArgument);
    }
    Driver& driver = *static_cast<Record*>(context)->driver;
    const std::optional<std::int64_t> number = numberIn(data, byteCount);
    const Request request{Operation::driverWriteBuffer,
                          number.value_or(0),
                          {},
                          static_cast<const std::uint8_t*>(data),
                          data != nullptr ? byteCount : 0};
    return static_cast<EDriverResult>(
        driver.m_calls.answer(driver.m_name, request, [&](std::int64_t& given) -> std::int32_t {
            return number ? driver.putThrough(given) : Codes::badArgument;
        }));
}

std::int32_t Driver::putThrough(std::int64_t value) {
    const std::int32_t code = m_backing->write(value);
    return isSuccess(code) ? keep(value) : code;
}

std::int32_t Driver::write(int value) {
    if (m_calls.isIdle()) {
        return keep(value);
    }
    return m_calls.answer(m_name, {Operation::driverWrite, value},
                          [this](std::int64_t& given) { return keep(given); });
}

std::int32_t Driver::keep(std::int64_t value) {
    m_value = value;
    ++m_writes;
    return ResultOk;
}

std::int32_t Driver::writeBuffer(const void* data, unsigned byteCount) {
    if (m_calls.isIdle()) {
        return keepBuffer(data, byteCount);
    }
    const Request request{Operation::driverWriteBuffer,
                          numberIn(data, byteCount).value_or(0),
                          {},
                          static_cast<const std::uint8_t*>(data),
                          data != nullptr ? byteCount : 0};
    return m_calls.answer(m_name, request,
                          [=](std::int64_t& /*given*/) { return keepBuffer(data, byteCount); });
}

std::int32_t Driver::keepBuffer(const void* data, unsigned byteCount) {
    if (data == nullptr && byteCount != 0) {
        return Codes::badArgument;
    }
    return keep(numberIn(data, byteCount).value_or(m_value));
}

std::int32_t Driver::read(int* value) {
    const auto giveValue = [&](std::int64_t& given) -> std::int32_t {
        if (value == nullptr) {
            return Codes::badArgument;
        }
        if (m_backing != nullptr) {
            const std::int32_t code = m_backing->read(m_value);
            if (isFailure(code)) {
                return code;
            }
        } else if (m_source) {
            m_value = m_source();
        }
        *value = static_cast<int>(m_value);
        given = *value;
        return ResultOk;
    };
    return m_calls.answer(m_name, {Operation::driverRead}, giveValue, value);
}

Driver& DriverBank::add(const std::string& name, unsigned missingWords) {
    std::unique_ptr<Driver>& driver = m_drivers[name];
    if (driver == nullptr) {
        driver = std::make_unique<Driver>(name, m_calls, missingWords);
    }
    return *driver;
}

Driver* DriverBank::find(std::string_view name) {
    const auto found = m_drivers.find(name);
    return found != m_drivers.end() ? found->second.get() : nullptr;
}

std::int32_t DriverBank::lookup(DriverInterface** out, const char* name) {
    const std::string_view wanted = name != nullptr ? name : "";
    const auto carryOut = [&](std::int64_t& /*given*/) -> std::int32_t {
        if (out == nullptr || name == nullptr) {
            return Codes::badArgument;
        }
        Driver* const driver = find(wanted);
        if (driver == nullptr) {
            return Codes::notFound;
        }
        *out = m_nullRecords.count(wanted) != 0 ? nullptr : driver->record();
        return ResultOk;
    };
    return m_calls.answer(wanted, {Operation::driverLookup}, carryOut, out);
}

} // namespace Standalone

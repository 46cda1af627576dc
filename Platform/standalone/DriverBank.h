#ifndef PLATFORM_STANDALONE_DRIVERBANK_H
#define PLATFORM_STANDALONE_DRIVERBANK_H

#include "DriverLayer.h"
#include "Visibility.h"
#include "standalone/Calls.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace Standalone {

/** The words of a driver's record, as a set of bits. */
enum DriverWord : unsigned {
    wordContext = 1U << 0U,
    wordWrite = 1U << 1U,
    wordWriteBuffer = 1U << 2U,
    wordRead = 1U << 3U,
};

/** What stands behind a driver in place of its memory: a function of real hardware. */
class RADIO_API DriverBacking {
public:
    DriverBacking() = default;
    DriverBacking(const DriverBacking&) = delete;
    DriverBacking& operator=(const DriverBacking&) = delete;
    virtual ~DriverBacking() = default;

    /** Puts a value, in the driver's unit, into the hardware; a result code. */
    virtual std::int32_t write(std::int64_t value) = 0;
    /** Fetches a value, in the driver's unit; a result code. On failure `value` is untouched. */
    virtual std::int32_t read(std::int64_t& value) = 0;
};

/** A hardware driver. Unless something else stands behind it, it is simulated: it keeps what was written last
 * and gives it back when read, unless what it reads comes from somewhere else. */
class RADIO_API Driver {
public:
    Driver(std::string name, Calls& calls, unsigned missingWords);
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    const std::string& name() const { return m_name; }
    /**
     * The record that the driver layer gives out. Its address never changes, and it is the driver's: when the
     * platform has come to its end, neither the record nor its context may be used. AddressSanitizer finds
     * who does, also when other memory was asked for since: what was freed is poisoned, and nobody's for a
     * while.
     */
    DriverInterface* record() { return &m_record.words; }
    /** The words that are null in the record: a combination of DriverWord. */
    unsigned missingWords() const { return m_missingWords; }
    void setMissingWords(unsigned missingWords);

    /** True once something was written by the library. */
    bool wasWritten() const { return m_writes != 0; }
    /** How many writes of either kind succeeded. */
    std::uint64_t writes() const { return m_writes; }
    /**
     * The value last written, or the one that was read from a source since; a buffer of 1 to 8 bytes counts
     * as an unsigned number, least significant byte first, and a longer or empty one leaves it as it was.
     */
    std::int64_t value() const { return m_value; }
    /** Puts the value that the next read gives; a read gives its low 32 bits. */
    void setValue(std::int64_t value) { m_value = value; }
    /** Has each read ask `source` for its value. It is not asked when the read fails. An empty one is none:
     * the driver then gives its value again. */
    void setSource(std::function<std::int64_t()> source) { m_source = std::move(source); }
    /** Where reads get their value from; empty: they give what was written. */
    const std::function<std::int64_t()>& source() const { return m_source; }
    /**
     * Has every write and read carried out by `backing`, which is borrowed; null: by the driver itself. What
     * it refuses is not kept as the driver's value. A buffer that stands for no number does not reach it:
     * Codes::badArgument.
     */
    void setBacking(DriverBacking* backing);
    /** What stands behind the driver; null when it is simulated. */
    DriverBacking* backing() const { return m_backing; }

private:
    /**
     * What the driver layer gives out, and behind it the way back to the driver. The context word is the
     * record's own address: a client that passes the record instead of its context reaches the same driver.
     */
    struct Record {
        DriverInterface words;
        Driver* driver;
    };

    static EDriverResult write(void* context, int value);
    static EDriverResult writeBuffer(void* context, const void* data, unsigned byteCount);
    static EDriverResult read(void* context, int* value);
    static EDriverResult writeThrough(void* context, int value);
    static EDriverResult writeBufferThrough(void* context, const void* data, unsigned byteCount);

    std::int32_t write(int value);
    std::int32_t writeBuffer(const void* data, unsigned byteCount);
    std::int32_t read(int* value);

    // What the writes do, whether or not somebody is told of them.
    std::int32_t keep(std::int64_t value);
    std::int32_t keepBuffer(const void* data, unsigned byteCount);
    std::int32_t putThrough(std::int64_t value);

    std::string m_name;
    Calls& m_calls;
    Record m_record;
    unsigned m_missingWords = 0;
    std::int64_t m_value = 0;
    std::function<std::int64_t()> m_source;
    DriverBacking* m_backing = nullptr;
    std::uint64_t m_writes = 0;
};

/** The driver layer's state: drivers by name. Behind it stands the record of "IDriverLayer". */
class RADIO_API DriverBank {
public:
    explicit DriverBank(Calls& calls) : m_calls(calls) {}

    /** Adds a driver and returns it; a name that is there already gives the driver that has it. */
    Driver& add(const std::string& name, unsigned missingWords = 0);
    /** The driver of that name, or null. Nothing is journaled. */
    Driver* find(std::string_view name);
    /** All drivers, by name. */
    const std::map<std::string, std::unique_ptr<Driver>, std::less<>>& drivers() const { return m_drivers; }

    /** An unknown name gives Codes::notFound and leaves `*out` untouched; so does every other failure. */
    std::int32_t lookup(DriverInterface** out, const char* name);
    /** Has a successful lookup of `name` store null instead of the driver's record. */
    void giveNullRecord(const std::string& name) { m_nullRecords.insert(name); }

private:
    Calls& m_calls;
    std::map<std::string, std::unique_ptr<Driver>, std::less<>> m_drivers;
    std::set<std::string, std::less<>> m_nullRecords;
};

} // namespace Standalone

#endif

#ifndef PLATFORM_STANDALONE_TABLESTORE_H
#define PLATFORM_STANDALONE_TABLESTORE_H

#include "CCalibrationHandler.h"
#include "Visibility.h"
#include "standalone/Calls.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/**
 * A calibration table with one or two axes of ascending nodes. This is what a handle of the calibration
 * handler points to.
 */
struct RADIO_API CalibrationTable {
    std::string name;
    std::vector<std::int32_t> axis1;
    /** Empty for a table with one axis. */
    std::vector<std::int32_t> axis2;
    /** One value for each node, or for each pair of nodes with the node of axis 2 running fastest. */
    std::vector<std::int32_t> values;
};

namespace Standalone {

/** The calibration handler's state: tables by name. Behind it stand the CCalibration functions. */
class RADIO_API TableStore {
public:
    explicit TableStore(Calls& calls) : m_calls(calls) {}

    /** Why `table` cannot be used: an axis without nodes or not ascending, or the wrong number of values.
     * Empty: it can. */
    static std::string whatIsWrongWith(const CalibrationTable& table);

    /**
     * Adds a table. One of that name gets its content, so that handles stay valid. Throws
     * std::invalid_argument when something is wrong with the table.
     */
    CalibrationTable& add(CalibrationTable table);
    /** The table of that name, or null. Nothing is journaled. */
    CalibrationTable* find(std::string_view name);
    /** All tables, by name. */
    const std::map<std::string, std::unique_ptr<CalibrationTable>, std::less<>>& tables() const {
        return m_tables;
    }

    /** An unknown name gives Codes::notFound and leaves `*out` untouched. */
    std::int32_t lookup(const char* name, CalibrationTable** out);
    /** A null table or one with another number of axes gives Codes::badArgument and leaves `*y` untouched. */
    std::int32_t interpolate(CalibrationTable* table, std::int32_t x, int* y);
    std::int32_t interpolate(CalibrationTable* table, std::int32_t x1, std::int32_t x2, int* y);

private:
    // What an interpolation is when somebody may be told of it.
    std::int32_t interpolateOpenly(CalibrationTable* table, std::int32_t x, int* y);
    std::int32_t interpolateOpenly(CalibrationTable* table, std::int32_t x1, std::int32_t x2, int* y);

    Calls& m_calls;
    std::map<std::string, std::unique_ptr<CalibrationTable>, std::less<>> m_tables;
};

} // namespace Standalone

#endif

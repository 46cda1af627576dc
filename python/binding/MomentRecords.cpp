#include "python/binding/MomentRecords.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace Radio::Python {

void MomentRecords::told(const Thermal::ChannelTotals& channel, const Thermal::Moment& moment) {
    if (!m_isKeeping) {
        return;
    }
    constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
    ToldMoment record{moment.seconds, channel.channel, moment.degrees, 0,      {},
                      unknown,        unknown,         unknown,        unknown};
    for (const Thermal::Write& write : moment.writes) {
        record.written |= 1U << static_cast<unsigned>(write.correction);
    }
    for (const Thermal::DriverTotals& driver : channel.drivers) {
        record.values[static_cast<std::size_t>(driver.correction)] = driver.value.value_or(0);
    }
    if (moment.figures) {
        record.imageWithout = moment.figures->without.image;
        record.image = moment.figures->with.image;
        record.leakageWithout = moment.figures->without.carrierLeakage;
        record.leakage = moment.figures->with.carrierLeakage;
    }
    m_moments.push_back(record);
}

py::object MomentRecords::array() const {
    if (!m_isKeeping) {
        return py::none();
    }
    const py::dtype type = py::dtype::from_args(m_dtype);
    if (type.itemsize() != static_cast<py::ssize_t>(sizeof(ToldMoment))) {
        throw std::logic_error("the records of a replay are not as the package has them");
    }
    py::array array(type, static_cast<py::ssize_t>(m_moments.size()));
    if (!m_moments.empty()) {
        std::memcpy(array.mutable_data(), m_moments.data(), m_moments.size() * sizeof(ToldMoment));
    }
    return array;
}

} // namespace Radio::Python

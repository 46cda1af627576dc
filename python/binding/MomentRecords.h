#ifndef PYTHON_BINDING_MOMENTRECORDS_H
#define PYTHON_BINDING_MOMENTRECORDS_H

#include "python/binding/Values.h"
#include "radio/thermal/Replay.h"

#include <pybind11/numpy.h>

#include <array>
#include <cstdint>
#include <vector>

namespace Radio::Python {

/** One moment of one channel as numpy has it: frequencyhandler/thermal.py has the same as a dtype. */
struct ToldMoment {
    std::int64_t seconds;
    std::int32_t channel;
    std::int32_t degrees;
    /** A bit for each correction that was written. */
    std::uint32_t written;
    /** What was written last, for each correction; 0 before the first time. */
    std::array<std::int32_t, Thermal::correctionCount> values;
    /** In dBc; not a number where no transmitter is described. */
    double imageWithout;
    double image;
    double leakageWithout;
    double leakage;
};

/** Keeps what a replay tells, without the interpreter. Made and given with its lock. */
class MomentRecords final : public Thermal::ReplayListener {
public:
    /** With None as `dtype` nothing is kept. */
    explicit MomentRecords(py::object dtype) : m_dtype(std::move(dtype)), m_isKeeping(!m_dtype.is_none()) {}

    void told(const Thermal::ChannelTotals& channel, const Thermal::Moment& moment) override;
    py::object array() const;

private:
    py::object m_dtype;
    bool m_isKeeping;
    std::vector<ToldMoment> m_moments;
};

} // namespace Radio::Python

#endif

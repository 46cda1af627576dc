#include "service/radio/Metrics.h"

#include <prometheus/metric_family.h>
#include <prometheus/text_serializer.h>

namespace Radio::Service {

namespace {

prometheus::MetricFamily family(prometheus::MetricType type, std::string_view name, std::string_view help) {
    return {std::string(name), std::string(help), type, {}};
}

} // namespace

Metrics::Metrics() = default;
Metrics::~Metrics() = default;

void Metrics::gauges(std::string_view name, std::string_view help) {
    m_families.push_back(family(prometheus::MetricType::Gauge, name, help));
}

void Metrics::counters(std::string_view name, std::string_view help) {
    m_families.push_back(family(prometheus::MetricType::Counter, name, help));
}

void Metrics::sample(double value, Labels labels) {
    prometheus::ClientMetric metric;
    for (const auto& [name, text] : labels) {
        metric.label.push_back({std::string(name), std::string(text)});
    }
    // The type of the family says which of them counts.
    metric.gauge.value = value;
    metric.counter.value = value;
    m_families.back().metric.push_back(std::move(metric));
}

std::string Metrics::text() const {
    return prometheus::TextSerializer().Serialize(m_families);
}

} // namespace Radio::Service

#ifndef SERVICE_RADIO_METRICS_H
#define SERVICE_RADIO_METRICS_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace prometheus {
struct MetricFamily;
}

namespace Radio::Service {

/**
 * Numbers in the text format that Prometheus and others read:
 * https://prometheus.io/docs/instrumenting/exposition_formats/. Families are begun one after the other, each
 * with its samples behind it. Nothing is counted here: whoever has a number says it when it is asked for.
 */
class Metrics {
public:
    using Labels = std::initializer_list<std::pair<std::string_view, std::string_view>>;

    Metrics();
    ~Metrics();
    Metrics(const Metrics&) = delete;
    Metrics& operator=(const Metrics&) = delete;

    /** What goes up and down. */
    void gauges(std::string_view name, std::string_view help);
    /** What only goes up as long as the service is there; the name ends in "_total". */
    void counters(std::string_view name, std::string_view help);
    /** A sample of the family that was begun last. */
    void sample(double value, Labels labels = {});

    std::string text() const;

private:
    std::vector<prometheus::MetricFamily> m_families;
};

} // namespace Radio::Service

#endif

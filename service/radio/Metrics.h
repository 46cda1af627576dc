#ifndef SERVICE_RADIO_METRICS_H
#define SERVICE_RADIO_METRICS_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace Radio::Service {

/**
 * Numbers in the text format that Prometheus and others read:
 * https://prometheus.io/docs/instrumenting/exposition_formats/. Families are begun one after the other, each
 * with its samples behind it.
 */
class Metrics {
public:
    using Labels = std::initializer_list<std::pair<std::string_view, std::string_view>>;

    /** `type` is "gauge" or "counter"; the name of a counter ends in "_total". */
    void family(std::string_view name, std::string_view type, std::string_view help);
    /** A sample of the family that was begun last. */
    void sample(double value, Labels labels = {});

    const std::string& text() const { return m_text; }

private:
    std::string m_name;
    std::string m_text;
};

} // namespace Radio::Service

#endif

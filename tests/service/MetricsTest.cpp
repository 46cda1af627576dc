#include "service/radio/Metrics.h"

#include <gtest/gtest.h>

namespace Radio::Service {
namespace {

TEST(Metrics, FamilyStandsBeforeItsSamples) {
    Metrics metrics;
    metrics.gauges("radio_faults", "Faults.");
    metrics.sample(2);
    metrics.counters("radio_writes_total", "Writes.");
    metrics.sample(3, {{"driver", "a"}, {"code", "0x8001"}});
    EXPECT_EQ(metrics.text(), "# HELP radio_faults Faults.\n"
                              "# TYPE radio_faults gauge\n"
                              "radio_faults 2\n"
                              "# HELP radio_writes_total Writes.\n"
                              "# TYPE radio_writes_total counter\n"
                              "radio_writes_total{driver=\"a\",code=\"0x8001\"} 3\n");
}

TEST(Metrics, TextThatWouldEndItsLabelIsEscaped) {
    Metrics metrics;
    metrics.gauges("a", "b");
    metrics.sample(1, {{"name", "x\"y\\z\nw"}});
    EXPECT_EQ(metrics.text(), "# HELP a b\n# TYPE a gauge\na{name=\"x\\\"y\\\\z\\nw\"} 1\n");
}

TEST(Metrics, NumbersOfHertzAreWhole) {
    Metrics metrics;
    metrics.gauges("a", "b");
    metrics.sample(4294967295000.0);
    metrics.sample(-71.25);
    EXPECT_EQ(metrics.text(), "# HELP a b\n# TYPE a gauge\na 4294967295000\na -71.25\n");
}

} // namespace
} // namespace Radio::Service

#ifndef TESTS_SUPPORT_RADIOTEST_H
#define TESTS_SUPPORT_RADIOTEST_H

#include "standalone/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

/**
 * A test on a stand-alone platform of its own, on which every trace message is wanted.
 *
 * What happened is told in short lines, so that a test states the whole of it as one literal list.
 */
class RadioTest : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    RadioTest() { platform.trace().setThreshold(Standalone::TraceLevel::information); }

    /** The writes that reached drivers and remote radio units, in order: "channel.1.tx.rf.frequency=7442000".
     */
    Lines writes() const;
    /** Every call of the platform, in order: "driver-lookup channel.1.tx.rf.frequency". */
    Lines calls() const;
    /** The trace messages, in order: "error: Unable to get DriverLayer Interface". */
    Lines traces() const;
    /** Those of traces() that are not information. */
    Lines complaints() const;
    /** Forgets the calls and trace messages so far. */
    void forget();

    /** Has calls of `operation` on `object` (empty: on any) answered with `code` until told otherwise. */
    void fail(Standalone::Operation operation, const std::string& object, std::int32_t code);

    Standalone::Platform platform;
};

#endif

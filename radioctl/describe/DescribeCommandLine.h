#ifndef RADIOCTL_DESCRIBE_DESCRIBECOMMANDLINE_H
#define RADIOCTL_DESCRIBE_DESCRIBECOMMANDLINE_H

#include "radioctl/describe/DescribeProgram.h"
#include "radioctl/options/Options.h"

namespace Radio::Describing {

/** The command line of "radioctl describe". */
class DescribeCommandLine final : public CommandLine::Verb {
public:
    /** Adds "describe" to the program's. Must outlive the parsing. */
    explicit DescribeCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_describe.isCalled(); }
    int run(bool json) override;

private:
    CommandLine::Command m_describe;
    Options m_options;
};

} // namespace Radio::Describing

#endif

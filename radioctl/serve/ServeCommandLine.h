#ifndef RADIOCTL_SERVE_SERVECOMMANDLINE_H
#define RADIOCTL_SERVE_SERVECOMMANDLINE_H

#include "radioctl/options/Options.h"
#include "radioctl/serve/ServeProgram.h"

#include <string>

namespace Radio::Serving {

/** The command line of "radioctl serve". */
class ServeCommandLine final : public CommandLine::Verb {
public:
    /** Adds "serve" to the program's. Must outlive the parsing. */
    explicit ServeCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_serve.isCalled(); }
    int run(bool json) override;

private:
    CommandLine::Command m_serve;
    Options m_options;
    std::string m_trace = "notice";
};

} // namespace Radio::Serving

#endif

#ifndef RADIOCTL_SERVE_SERVEPROGRAM_H
#define RADIOCTL_SERVE_SERVEPROGRAM_H

#include "OrbiTrace.h"
#include "standalone/Platform.h"

#include <string>
#include <vector>

/** What "radioctl serve" does. */
namespace Radio::Serving {

/** What the user chose on the command line. */
struct Options {
    bool json = false;
    bool hardware = false;
    OrbiTraceLevel trace = Standalone::TraceLevel::notice;
    std::string board;
    std::string listen = "127.0.0.1:8080";
    std::string token;
    std::string certificate;
    std::string key;
    std::vector<std::string> names;
    std::string state;
};

/** Boots a board and serves it until a signal comes; gives the exit code. */
int serve(const Options& options);

} // namespace Radio::Serving

#endif

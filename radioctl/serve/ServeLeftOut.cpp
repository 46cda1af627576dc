#include "radioctl/options/ExitCode.h"
#include "radioctl/report/Output.h"
#include "radioctl/serve/ServeProgram.h"

namespace Radio::Serving {

int serve(const Options& options) {
    return refuse(
        "serve: this radioctl was built without it, expected the packages libboost-dev, libssl-dev, "
        "prometheus-cpp-dev and libjs-chart.js when it is built",
        options.json, ExitCode::unusableInput);
}

} // namespace Radio::Serving

#include "model/LeakageReader.h"

namespace Radioctl {

std::vector<LeakageDescription> readLeakages(const TomlItem& /*root*/,
                                             const std::vector<ChannelDescription>& /*channels*/,
                                             const std::vector<DriverDescription>& /*drivers*/) {
    return {};
}

} // namespace Radioctl

#include "Guard.h"

#include "InterfaceBroker.h"

#include <mutex>
#include <new>
#include <string>

namespace RL::FrequencyHandler {

namespace {

/** Memory for one name, kept since the library was loaded. */
struct KeptName {
    KeptName() { text.reserve(InterfaceName().size()); }
    std::string text;
    std::mutex mutex;
};
KeptName s_keptName;

EAFResult withdraw(const std::string& name) {
    return InterfaceBroker::getInstance().unregisterInterface(name, nullptr);
}

} // namespace

EAFResult withdraw(const InterfaceName& name) noexcept {
    try {
        try {
            return withdraw(std::string(name.data()));
        } catch (const std::bad_alloc&) {
            const std::lock_guard<std::mutex> lock(s_keptName.mutex);
            s_keptName.text.assign(name.data());
            return withdraw(s_keptName.text);
        }
    } catch (const std::exception&) {
        return ResultFailed;
    }
}

} // namespace RL::FrequencyHandler

// load PLATFORM LIBRARY
//
// Loads a platform and then the library, as a process does that decides at run time, brings a radio channel
// up and tunes it. Nothing of either is linked: the module is reached through its constructor's symbol and
// its table. Ends with 0, or with 1 and a line that says why.

#include "FrequencyHandler.h"

#include <dlfcn.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

[[noreturn]] void giveUp(const char* reason) {
    std::printf("%s\n", reason);
    std::exit(EXIT_FAILURE); // NOLINT(concurrency-mt-unsafe): there is one thread
}

void* load(const char* file, int how) {
    void* const loaded = dlopen(file, how);
    if (loaded == nullptr) {
        giveUp(dlerror()); // NOLINT(concurrency-mt-unsafe)
    }
    return loaded;
}

/** Kept from the compiler, which would otherwise know the class and ask for the operations by name. */
::FrequencyHandler* volatile s_module = nullptr;

} // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        giveUp("usage: load PLATFORM LIBRARY");
    }
    load(arguments[1], RTLD_NOW | RTLD_GLOBAL);
    void* const library = load(arguments[2], RTLD_LAZY | RTLD_LOCAL);

    using Construct = void (*)(void*, unsigned long, std::int32_t);
    const auto construct =
        reinterpret_cast<Construct>(dlsym(library, "_ZN16FrequencyHandlerC1EmNS_20FrequencyHandlerTypeE"));
    if (construct == nullptr) {
        giveUp("the library has no module");
    }
    void* const place = ::operator new(sizeof(::FrequencyHandler));
    construct(place, 1, 0);
    s_module = static_cast<::FrequencyHandler*>(place);
    if (s_module->onModuleInit() != ResultOk ||
        s_module->onPhaseModuleStorageObjectsRetreived() != ResultOk ||
        s_module->onPhasePostFrameformatLoad() != ResultOk) {
        giveUp("a phase failed");
    }
    if (s_module->setTxFrequency(18'000'000) != ResultOk) {
        giveUp("the transmitter was not tuned");
    }
    delete s_module;
    std::printf("tuned\n");
    return EXIT_SUCCESS;
}

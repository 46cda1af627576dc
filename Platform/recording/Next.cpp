#include "Next.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace Recording {

void* lookForNext(const char* name) {
    void* volatile found = dlsym(RTLD_NEXT, name); // not as a last call: it looks at who calls
    return found;
}

void* findNext(const char* name) {
    void* const found = lookForNext(name);
    if (found == nullptr) {
        static_cast<void>(dprintf(STDERR_FILENO, "librecordingplatform.so: undefined symbol: %s\n", name));
        std::abort();
    }
    return found;
}

} // namespace Recording

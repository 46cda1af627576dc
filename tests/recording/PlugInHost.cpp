// plug_in_host PLUG_IN
//
// A process that loads a radio, uses it and gives it back, twice.

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
    for (int time = 0; count > 1 && time < 2; ++time) {
        void* const plugIn = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
        if (plugIn == nullptr) {
            std::puts(dlerror()); // NOLINT(concurrency-mt-unsafe): there is one thread
            return EXIT_FAILURE;
        }
        std::printf("answered %d\n", reinterpret_cast<int (*)()>(dlsym(plugIn, "tuneOnce"))());
        static_cast<void>(dlclose(plugIn));
    }
    return EXIT_SUCCESS;
}

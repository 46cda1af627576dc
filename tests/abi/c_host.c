/* c_host PLATFORM LIBRARY
 *
 * A host in C that decides at run time: it loads a platform and then the library, finds the operations by
 * their names, tunes a channel and lets go of the library, which stays all the same. Ends with 0, or with 1
 * and a line that says why.
 */
#include "FrequencyHandler_c.h"

#include <dlfcn.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

typedef uint32_t (*GetVersion)(void);
typedef EAFResult (*Create)(int32_t, int32_t, FrequencyHandlerModule**);
typedef void (*Destroy)(FrequencyHandlerModule*);
typedef EAFResult (*Tune)(FrequencyHandlerModule*, int32_t, uint32_t);
typedef EAFResult (*GetTuning)(const FrequencyHandlerModule*, int32_t, FrequencyHandlerTuning*);

static int give_up(const char* why) {
    printf("%s\n", why);
    return 1;
}

/* What C says about pointers to functions keeps it from being a cast. */
static int find(void* library, const char* name, void* operation) {
    void* found = dlsym(library, name);
    memcpy(operation, &found, sizeof found);
    return found != NULL;
}

int main(int count, char** arguments) {
    GetVersion get_version;
    Create create;
    Destroy destroy;
    Tune tune;
    GetTuning get_tuning;
    FrequencyHandlerModule* module = NULL;
    FrequencyHandlerTuning tuning;
    void* library;
    if (count != 3) {
        return give_up("usage: c_host PLATFORM LIBRARY");
    }
    if (dlopen(arguments[1], RTLD_NOW | RTLD_GLOBAL) == NULL) {
        return give_up(dlerror());
    }
    library = dlopen(arguments[2], RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
        return give_up(dlerror());
    }
    if (!find(library, "FrequencyHandler_GetVersion", &get_version) ||
        !find(library, "FrequencyHandler_Create", &create) ||
        !find(library, "FrequencyHandler_Destroy", &destroy) ||
        !find(library, "FrequencyHandler_Tune", &tune) ||
        !find(library, "FrequencyHandler_GetTuning", &get_tuning)) {
        return give_up(dlerror());
    }
    if (dlsym(library, FREQUENCYHANDLER_HANDSHAKE_NAME) == NULL) {
        return give_up("the library has another binary interface");
    }
    if (dlsym(library, "FrequencyHandler_BinaryInterface_1") != NULL) {
        return give_up("the library has the next binary interface as well");
    }
    if (get_version() != FREQUENCYHANDLER_VERSION) {
        return give_up("the library is of another version");
    }
    if (create(1, FrequencyHandlerRfModule, &module) >= ResultFailed || module == NULL) {
        return give_up("there is no module");
    }
    if (tune(module, FrequencyHandlerTx, 7442000) >= ResultFailed ||
        get_tuning(module, FrequencyHandlerTx, &tuning) >= ResultFailed) {
        return give_up("the carrier is not set");
    }
    /* Phase 11 was not run: nothing was refused, and nothing was written. */
    if (tuning.frequency != 7442000 || tuning.result != ResultOk || tuning.code != 0 || tuning.written != 0) {
        return give_up("the carrier is not told");
    }
    destroy(module);
    dlclose(library);
    if (dlopen(arguments[2], RTLD_NOW | RTLD_NOLOAD) == NULL) {
        return give_up("the library was unloaded");
    }
    printf("tuned, and the library is still there\n");
    return 0;
}

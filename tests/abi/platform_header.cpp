// Must not compile as a part of the library, which knows no platform but the contracts.
#include "standalone/Platform.h"

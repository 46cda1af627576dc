// Compiles as a part of the library.
#include "FrequencyHandler.h"
#include "InterfaceBroker.h"

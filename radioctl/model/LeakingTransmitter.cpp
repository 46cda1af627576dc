#include "model/LeakingTransmitter.h"

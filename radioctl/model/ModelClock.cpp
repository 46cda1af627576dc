#include "model/ModelClock.h"

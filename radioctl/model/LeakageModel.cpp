#include "model/LeakageModel.h"

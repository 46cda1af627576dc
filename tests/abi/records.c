/* The C records hold their words in the order that clients and platforms were compiled with, and the codes
 * are their numbers.
 */
#include "CModuleManager_c.h"
#include "CStorageManager.h"
#include "DriverLayer.h"
#include "IFrequencyHandler_c.h"
#include "ITemperatureHandler_c.h"
#include "ResultCode.h"

#include <stddef.h>

/* Does not compile unless `member` is the word of that number. */
#define WORD(number, record, member)                                                                         \
    typedef char record##_##member[offsetof(record, member) == (number) * sizeof(void*) ? 1 : -1]

/* Does not compile unless the record ends after so many words: who has compiled it with more reads behind it.
 */
#define WORDS(count, record) typedef char record##_size[sizeof(record) == (count) * sizeof(void*) ? 1 : -1]

WORDS(3, FrequencyHandlerCStruct);
WORDS(2, IFrequencyObserver);
WORDS(4, DriverInterface);
WORDS(2, ITemperatureObserver);
WORDS(2, ModuleCallbackRecord);

WORD(0, FrequencyHandlerCStruct, handler);
WORD(1, FrequencyHandlerCStruct, registerObserver);
WORD(2, FrequencyHandlerCStruct, m_channel);

WORD(0, IFrequencyObserver, context);
WORD(1, IFrequencyObserver, onFrequencyChanged);

WORD(1, DriverLayerInterface, getDriverInterface);

WORD(0, DriverInterface, context);
WORD(1, DriverInterface, write);
WORD(2, DriverInterface, writeBuffer);
WORD(3, DriverInterface, read);

WORD(0, ITemperatureObserver, context);
WORD(1, ITemperatureObserver, notifyTemperature);
WORD(0, TemperatureHandlerCStruct, registerObserver);

WORD(1, StorageVariable, content);

WORD(0, ModuleCallbackRecord, context);
WORD(1, ModuleCallbackRecord, onPhaseActivation);

/* Does not compile unless the code is that number. */
#define CODE(number, code) typedef char code##_number[(code) == (number) ? 1 : -1]

CODE(0, ResultOk);
CODE(0x8000, ResultFailed);

/** The library's operations, for the tables of its objects: addresses of what leads to them. */
#ifndef PLATFORM_RECORDING_LIBRARYDOORS_H
#define PLATFORM_RECORDING_LIBRARYDOORS_H

#include "IFrequencyHandler_c.h"

#include <cstddef>

namespace Recording::LibraryDoors {

/** The two forms of a destructor: slots 0 and 1. */
void* destroyModule(std::size_t form);
void* moduleInit();
void* storageRetrieved();
void* postFrameformat();
void* setTx();
void* setRx();

void* registerObserver();
/** Has C clients register with the recorder first. */
void replaceRegistration(FrequencyHandlerCStruct& record);

void* initializeCanceller();
void* cancel();
void* calibrate();

void* destroyCompensation(std::size_t form);
void* compensate();
void* compensationCarrier();

} // namespace Recording::LibraryDoors

#endif

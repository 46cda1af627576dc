/**
 * The library's objects: modules, handlers, cancellers and compensations, as far as they were shown to the
 * platform. An operation that is called through the table of an object is bound inside the library, where no
 * other definition of a symbol comes between. So an object that the library shows to the platform is given a
 * copy of its table, in which the operations of the interfaces lead to the recorder first; the library's own
 * table stays as it is.
 */
#ifndef PLATFORM_RECORDING_OBJECTS_H
#define PLATFORM_RECORDING_OBJECTS_H

#include "IFrequencyHandler.h"
#include "ILoCancellation.h"
#include "ITxIQImbalanceHandler.h"

#include <cstddef>
#include <cstdint>

namespace Recording::Objects {

/** A module that is being built at `address`. */
std::uint16_t addModule(void* address, std::int32_t channel, std::int32_t type);
/** A CTxIQImbalanceHandler that is being built at `address`. */
std::uint16_t addCompensation(void* address, std::int32_t channel);
/** A compensation has its table; one that is never published ends, too. */
void followBuiltCompensation(const void* address);
/** An object that the library publishes under the name with the number `name`. A handler is not wholly built
 * then, and gets its table from followBuilt(). */
void publish(IInterface* object, const char* name);
/** A module is registered: it is built, and so are its handlers. Gives its number. */
std::uint16_t followBuilt(void* module, std::int32_t channel);
/** What was published under the name is withdrawn. */
void withdraw(const char* name);
/** Nothing is at `address` any more. */
void forget(const void* address);

/** The number of the object at `address`; 0 when nobody knows it. */
std::uint16_t numberOf(const void* address);

/** The library's own operation in the slot of an object's table. */
void* originalOf(const void* object, std::size_t slot);

} // namespace Recording::Objects

#endif

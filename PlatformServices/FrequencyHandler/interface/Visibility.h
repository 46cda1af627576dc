/**
 * RADIO_API marks what stays visible outside a shared object that is built with hidden visibility.
 *
 * Every class that crosses a library boundary carries RADIO_CLASS, so that its type information is one and
 * the same in the platform, in the library and in their clients, and a checked down-cast works between them;
 * and so that, from the binary interface 1 on, the number of that is in its symbols.
 */
#ifndef FREQUENCYHANDLER_INTERFACE_VISIBILITY_H
#define FREQUENCYHANDLER_INTERFACE_VISIBILITY_H

#include "FrequencyHandlerVersion.h"

#if defined(__GNUC__)
#define RADIO_API __attribute__((visibility("default")))
#else
#define RADIO_API
#endif

#define RADIO_TEXT_(number) #number
#define RADIO_TEXT(number) RADIO_TEXT_(number)

#if defined(__GNUC__) && FREQUENCYHANDLER_BINARY_INTERFACE > 0
#define RADIO_CLASS                                                                                          \
    RADIO_API __attribute__((abi_tag("interface" RADIO_TEXT(FREQUENCYHANDLER_BINARY_INTERFACE))))
#else
#define RADIO_CLASS RADIO_API
#endif

#endif

/**
 * Marks what stays visible outside a shared object that is built with hidden visibility.
 *
 * Every class that crosses a library boundary carries it, so that its type information is one and the same
 * in the platform, in the library and in their clients, and a checked down-cast works between them.
 */
#ifndef FREQUENCYHANDLER_INTERFACE_VISIBILITY_H
#define FREQUENCYHANDLER_INTERFACE_VISIBILITY_H

#if defined(__GNUC__)
#define RADIO_API __attribute__((visibility("default")))
#else
#define RADIO_API
#endif

#endif

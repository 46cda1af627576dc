/* A client of the radio that is written in C. */
#ifndef TESTS_ABI_CLIENT_H
#define TESTS_ABI_CLIENT_H

#ifdef __cplusplus
extern "C" {
#endif

/** What a client was told last, and how often it was told. */
typedef struct Heard {
    int calls;
    unsigned long channel;
    unsigned long frequency;
} Heard;

/**
 * Finds the frequency handler that is published under `name` through the C view of the broker, and has its
 * changes told to `heard`. Returns 0, or 0x8000 when any of that failed.
 */
int client_subscribe(const char* name, Heard* heard);

/** The channel number in the record of the handler `name`; 0 when there is no such handler. */
unsigned long client_channel_of(const char* name);

#ifdef __cplusplus
}
#endif

#endif

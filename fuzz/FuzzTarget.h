#ifndef FUZZ_FUZZTARGET_H
#define FUZZ_FUZZTARGET_H

#include <cstddef>

/** What a fuzzer, or Replay.cpp, calls with one input after the other; gives 0. */
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

#endif

// Trace messages: the operations of the platform's trace.

#include "Calls.h"
#include "Messages.h"
#include "Names.h"
#include "Next.h"
#include "OrbiTrace.h"

#include <array>
#include <atomic>

using namespace Recording;

namespace {

RECORDING_NEXT Next<std::ostream&(OrbiTrace*, OrbiTraceLevel, const char*, int)>
    s_begin("_ZN9OrbiTrace11beginLogMsgE14OrbiTraceLevelPKci");
RECORDING_NEXT Next<void(OrbiTrace*)> s_end("_ZN9OrbiTrace9endLogMsgEv");
RECORDING_NEXT Next<void*(void*, const char*, std::int32_t)>
    s_construct("_ZN9OrbiTraceC1EPKc14OrbiTraceLevel");
RECORDING_NEXT Next<OrbiTraceLevel(int)> s_level("CZulTraceHandler_DmLevel2GtLevel");

std::uint16_t sourceOf(const char* file) {
    struct Known {
        std::atomic<const char*> file;
        std::atomic<std::uint16_t> number;
    };
    static std::array<Known, 64> s_known;
    for (Known& known : s_known) {
        const char* there = known.file.load(std::memory_order_acquire);
        if (there == file && known.number != 0) {
            return known.number;
        }
        if (there == nullptr) {
            const std::uint16_t number = Names::numberOf(ObjectKind::sourceFile, file != nullptr ? file : "");
            if (known.file.compare_exchange_strong(there, file)) {
                known.number = number;
            }
            return number;
        }
    }
    return Names::numberOf(ObjectKind::sourceFile, file != nullptr ? file : "");
}

} // namespace

std::ostream& OrbiTrace::beginLogMsg(OrbiTraceLevel level, const char* sourceFile, int line) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_begin(this, level, sourceFile, line);
    }
    const Entry entry{Kind::traceMessage, sourceOf(sourceFile), 0, level, line};
    std::ostream* stream = nullptr;
    static_cast<void>(outgoing(entry, [&] {
        stream = &s_begin(this, level, sourceFile, line);
        return 0;
    }));
    return Messages::streamFor(*stream, entry);
}

void OrbiTrace::endLogMsg() {
    if (!isFromLibrary(__builtin_return_address(0))) {
        s_end(this);
        return;
    }
    const Entry entry{Kind::traceEnd};
    static_cast<void>(outgoing(entry, [&] {
        s_end(this);
        return 0;
    }));
    Recorder::write(entry);
}

OrbiTraceLevel CZulTraceHandler_DmLevel2GtLevel(int level) {
    if (!isFromLibrary(__builtin_return_address(0))) {
        return s_level(level);
    }
    Entry entry{Kind::traceLevel, 0, 0, level};
    const OrbiTraceLevel answer = outgoing(entry, [&] { return s_level(level); });
    entry.code = answer;
    Recorder::write(entry);
    return answer;
}

extern "C" {

/** The first thing that the library does, while it is loaded. */
RADIO_API void* recordTraceObject(void* self, const char* name,
                                  std::int32_t level) __asm__("_ZN9OrbiTraceC1EPKc14OrbiTraceLevel");
void* recordTraceObject(void* self, const char* name, std::int32_t level) {
    Recorder::meet(__builtin_return_address(0));
    return s_construct(self, name, level);
}

} // extern "C"

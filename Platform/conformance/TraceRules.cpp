#include "OrbiTrace.h"
#include "conformance/Ending.h"
#include "conformance/Rule.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <thread>

namespace Conformance {

namespace {

constexpr const char* everyMessage = "every message of the library";
constexpr const char* beforeMain = "the library's five sources of messages, built while it is loaded";
constexpr const char* unended = "the message of a missing remote radio unit, which is not ended";

/** A source that is built before the static objects of the platform, as those of a library that is loaded
 * first, and destroyed after them. Tried in another process first: one that crashes in it is to be told of.
 */
struct Early {
    alignas(OrbiTrace) unsigned char place[sizeof(OrbiTrace)]; // NOLINT(*-avoid-c-arrays)
    OrbiTrace* source;
    int status; ///< how the process ended that tried it
};
Early early;
constexpr unsigned patience = 20; // nobody has been asked yet

void buildEarly() {
    early.source = new (early.place) OrbiTrace("CONFORMANCE.EARLY", OrbiTraceLevel{3});
}

#if defined(__GNUC__)
__attribute__((constructor(101)))
#endif
void tryEarly() {
    const pid_t child = fork();
    if (child == 0) {
        alarm(patience);
        buildEarly();
        _exit(0);
    }
    early.status = child > 0 ? waitFor(child) : 0;
    if (early.status == 0) {
        buildEarly();
        static_cast<void>(std::atexit([] { early.source->~OrbiTrace(); }));
    }
}

/**
 * Throws Unseen when the platform is another object than the program. It is then initialised before the rules
 * and comes to its end after them, so that nothing of its order was seen.
 */
void needOneObject() {
    Dl_info platform{};
    Dl_info program{};
    const void* const exported = dlsym(RTLD_DEFAULT, "_ZN9OrbiTraceC1EPKc14OrbiTraceLevel");
    if (exported != nullptr && dladdr(exported, &platform) != 0 && dladdr(&early, &program) != 0 &&
        platform.dli_fbase != program.dli_fbase) {
        throw Unseen("the platform is a library: its order is right when it is named after the frequency "
                     "library, or loaded before it; to look at the rule, link its sources into this program");
    }
}

/** A severe one: whatever a platform does with others, it shows these. */
OrbiTraceLevel severe() {
    return CZulTraceHandler_DmLevel2GtLevel(32768);
}

void write(OrbiTrace& source, const std::string& text, bool isEnded = true) {
    source.beginLogMsg(severe(), __FILE__, __LINE__) << text << std::endl;
    if (isEnded) {
        source.endLogMsg();
    }
}

std::string traced(Adapter& adapter) {
    return told(adapter.traced(), "what was traced");
}

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

void earlyIsThere(Adapter& adapter) {
    hold(early.source != nullptr, "when it is built: " + endOf(early.status));
    hold(std::strcmp(early.source->getName(), "CONFORMANCE.EARLY") == 0,
         "it has another name than it was given");
    holdSame("its threshold", static_cast<std::int32_t>(early.source->getLevel()), 3);
    write(*early.source, "conformance-early");
    hold(countOf(traced(adapter), "conformance-early") == 1, "what it wrote is not there, or more than once");
    needOneObject();
}

void messageArrives(Adapter& adapter) {
    OrbiTrace source("CONFORMANCE", OrbiTraceLevel{3});
    write(source, "conformance-first " + std::string(5000, 'x'));
    write(source, "conformance-second");
    const std::string text = traced(adapter);
    hold(countOf(text, "conformance-first " + std::string(5000, 'x')) == 1 &&
             countOf(text, "conformance-second") == 1,
         "two messages, the first of 5000 letters, are not there once each");
    hold(text.find("conformance-first") < text.find("conformance-second"), "they are not in their order");
}

void unendedArrives(Adapter& adapter) {
    OrbiTrace source("CONFORMANCE", OrbiTraceLevel{3});
    write(source, "conformance-unended", false);
    hold(countOf(traced(adapter), "conformance-unended") == 1,
         "a message that was flushed and not ended is not there");
    write(source, "conformance-next");
    const std::string text = traced(adapter);
    hold(countOf(text, "conformance-unended") == 1 && countOf(text, "conformance-next") == 1,
         "with the message after it, it is not there once each");
}

/** Carries it out on a thread of its own, and waits for that. */
template <typename Work>
void onAnotherThread(Work work) {
    std::thread(work).join();
}

void unendedHoldsNobodyUp(Adapter& adapter) {
    need(adapter.isTracedByThreads(), "have channels driven on threads of their own");
    OrbiTrace source("CONFORMANCE", OrbiTraceLevel{3});
    write(source, "conformance-unended", false);
    onAnotherThread([&source] { write(source, "conformance-another"); });
    hold(countOf(traced(adapter), "conformance-another") == 1, "the message of another thread is not there");
}

void messagesStayWhole(Adapter& adapter) {
    need(adapter.isTracedByThreads(), "have channels driven on threads of their own");
    OrbiTrace source("CONFORMANCE", OrbiTraceLevel{3});
    std::ostream& first = source.beginLogMsg(severe(), __FILE__, __LINE__);
    first << "conformance-one-";
    onAnotherThread([&source] { write(source, "conformance-another"); });
    first << "goes-on" << std::endl;
    source.endLogMsg();
    const std::string text = traced(adapter);
    hold(countOf(text, "conformance-another") == 1 && countOf(text, "conformance-one-goes-on") == 1,
         "a message that another one came into the middle of is not there in one piece");
}

void errorsAreWorst(Adapter& /*adapter*/) {
    const OrbiTraceLevel information = CZulTraceHandler_DmLevel2GtLevel(2048);
    const OrbiTraceLevel notice = CZulTraceHandler_DmLevel2GtLevel(256);
    for (const int error : {32768, 32773}) {
        hold(CZulTraceHandler_DmLevel2GtLevel(error) <= notice &&
                 CZulTraceHandler_DmLevel2GtLevel(error) <= information,
             "the level of error " + std::to_string(error) + " is above that of a notice or of information");
    }
}

void anyCodeHasALevel(Adapter& /*adapter*/) {
    for (const int code :
         {0, 1, -1, 0x8017, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        static_cast<void>(CZulTraceHandler_DmLevel2GtLevel(code));
    }
    const OrbiTraceLevel first = CZulTraceHandler_DmLevel2GtLevel(0x8017);
    const OrbiTraceLevel second = CZulTraceHandler_DmLevel2GtLevel(0x8017);
    hold(first == second, "one code has two levels");
}

void sourcesOutliveMain(Adapter& /*adapter*/) {
    const pid_t child = fork();
    if (child == 0) {
        // Destroyed after the static objects of whoever was loaded later.
        std::exit(0); // NOLINT(concurrency-mt-unsafe)
    }
    if (child < 0) {
        throw Unseen("no process can be had");
    }
    const int status = waitFor(child);
    hold(status == 0, "when main() is left: " + endOf(status) +
                          "; does a source, when it is destroyed, use what is gone?");
    needOneObject();
}

} // namespace

Rules traceRules() {
    return {
        {"trace.early-sources-work",
         "A source that was built before the platform's own static objects keeps name and threshold, and "
         "writes.",
         beforeMain, earlyIsThere},
        {"trace.sources-outlive-main", "Sources can be destroyed after all else, when the process ends.",
         beforeMain, sourcesOutliveMain},
        {"trace.messages-arrive", "A message arrives whole, once and in its turn.", everyMessage,
         messageArrives},
        {"trace.unended-messages-arrive",
         "One that is flushed and not ended arrives, too, and does not disturb the next.", unended,
         unendedArrives},
        {"trace.unended-messages-hold-nobody-up",
         "While one thread has not ended a message, another can write.", unended, unendedHoldsNobodyUp},
        {"trace.messages-of-threads-stay-whole", "What two threads write at the same time does not mix.",
         everyMessage, messagesStayWhole},
        {"trace.errors-are-worst", "The level of an error is not above that of a notice or of information.",
         everyMessage, errorsAreWorst},
        {"trace.any-code-has-a-level", "Every number has a level: a driver's code can be one.",
         "the message of a failed write", anyCodeHasALevel},
    };
}

} // namespace Conformance

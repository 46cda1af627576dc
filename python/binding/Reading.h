#ifndef PYTHON_BINDING_READING_H
#define PYTHON_BINDING_READING_H

#include "python/binding/Patience.h"
#include "radio/files/InputError.h"
#include "radio/recording/RecordingFile.h"

#include <functional>
#include <string>
#include <utility>

namespace Radio::Python {

/** Thrown out of a recording that is read, when nobody wants it any more. */
struct NotWanted {};

/** The recording in `file`, which calls `tick` while it is read. */
inline Recordings::RecordingFile readPatiently(const std::string& file, const std::function<void()>& tick) {
    tick();
    Recordings::RecordingFile recording = Recordings::readRecording(file);
    recording.setTick(tick);
    tick();
    return recording;
}

/** Lets other threads go on while `work` is done, which calls what it is given again and again, or waits for
 * files: Ctrl-C ends it. Gives what it gives. */
template <typename Work>
auto patiently(const Work& work) {
    Patience patience;
    try {
        const Waiting asked(patience);
        return unlocked([&] {
            return work([&patience] {
                if (!patience.goOn()) {
                    throw NotWanted();
                }
            });
        });
    } catch (const NotWanted&) {
        patience.rethrow();
    } catch (const GivenUp&) {
        patience.rethrow();
    }
}

} // namespace Radio::Python

#endif

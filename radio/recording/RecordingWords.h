#ifndef RADIO_RECORDING_RECORDINGWORDS_H
#define RADIO_RECORDING_RECORDINGWORDS_H

#include "radio/recording/RecordingFile.h"

#include <optional>
#include <string_view>

namespace Radio::Recordings {

/** The word for what a record tells, for example "tune-tx" or "driver-write". */
std::string_view toString(Kind kind);
std::string_view toString(ObjectKind kind);
/** "returned", "threw" or "cancelled". */
std::string_view toString(Outcome outcome);

/** Something comes into the library. */
bool isIncoming(Kind kind);

/** The phases that a module, or a callback, is registered for, as far as the record has them. */
std::vector<std::uint32_t> phasesOf(const Record& record);
/** What a module that is registered calls itself. */
std::string moduleNameOf(const Record& record);

/** What an observer belongs to; null for anything else, and when nobody knows it. */
const Object* ownerOf(const RecordingFile& file, const Object& object);

/** The channel that the object belongs to, as far as its name or what it belongs to says. */
std::optional<int> channelOf(const RecordingFile& file, const Object& object);

} // namespace Radio::Recordings

#endif

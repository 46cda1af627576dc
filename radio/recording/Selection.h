#ifndef RADIO_RECORDING_SELECTION_H
#define RADIO_RECORDING_SELECTION_H

#include "radio/recording/RecordingFile.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Recordings {

/** What of a recording is wanted. */
struct Wanted {
    /** Nothing: all. */
    std::optional<int> channel;
    /** Empty: all. */
    std::string driver;
    /** In seconds since the recording began; nothing: from the beginning, or to the end. */
    std::optional<double> from;
    std::optional<double> to;
};

/** A record, and what those before it say of it. */
struct Seen {
    Record record;
    /** The channel that it belongs to, by itself or by the operation around it. */
    std::optional<int> channel;
    /** When the operation began, or ended, in which it stands; in seconds. */
    double seconds = 0;
    /** Of a trace message: the numeric level that was mapped before it, when it is that of the message. */
    std::optional<std::int32_t> level;
};

/** Goes through a recording and keeps to what is wanted. */
class Selection {
public:
    /** `file` must outlive the object. */
    Selection(RecordingFile& file, Wanted wanted) : m_file(file), m_wanted(std::move(wanted)) {}

    /**
     * The next record that is wanted. Where a driver's calls are, so is the beginning of the operation around
     * them, which comes first, and nothing else.
     */
    std::optional<Seen> next();

    /** What those before it say of `record`, for whoever reads the file in an order of its own. */
    Seen look(Record record);
    /** It is of the channel and of the driver that are wanted. */
    bool isOfInterest(const Seen& seen) const;
    /** It is between the times that are wanted. */
    bool isInTime(const Seen& seen) const;

private:
    /** What is going on on a thread. */
    struct Operation {
        Seen began;
        bool isShown = false;
    };
    struct ThreadState {
        std::vector<Operation> operations;
        std::int32_t numericLevel = 0;
        std::int32_t level = 0;
    };

    bool isOfDriver(const Record& record) const;

    RecordingFile& m_file;
    Wanted m_wanted;
    std::array<ThreadState, 256> m_threads;
    /** Wanted, and to be given before the file is read on. */
    std::vector<Seen> m_waiting;
    double m_seconds = 0;
};

} // namespace Radio::Recordings

#endif

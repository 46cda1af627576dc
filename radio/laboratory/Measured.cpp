#include "ResultCode.h"
#include "radio/laboratory/Unit.h"
#include "radio/recording/RecordingWords.h"

#include <array>
#include <chrono>
#include <utility>

namespace Radio::Laboratory {

namespace {

using Recordings::Kind;
using Recordings::Record;

/** Reads the searches of one channel out of a recording. */
class SearchReader {
public:
    SearchReader(Recordings::RecordingFile& file, const LeakageDescription& board)
        : m_file(file),
          m_board(board) {}

    void read();
    Calibration::KnownProbes takeProbes() { return std::move(m_probes); }
    bool useHighDetector() const { return m_useHighDetector; }

private:
    /** The corrections of a search that goes on on a thread. */
    struct Search {
        bool isOn = false;
        unsigned depth = 0;
        std::optional<std::int32_t> i{};
        std::optional<std::int32_t> q{};
    };

    void take(const Record& record);
    void begin(const Record& record);
    void probe(const Record& record);
    bool isOfChannel(const Record& record) const {
        return record.object != nullptr && Recordings::channelOf(m_file, *record.object) == m_board.channel;
    }

    Recordings::RecordingFile& m_file;
    const LeakageDescription& m_board;
    std::array<Search, 256> m_threads{};
    std::optional<std::uint32_t> m_carrier;
    std::optional<std::int32_t> m_temperature;
    bool m_useHighDetector = false;
    Calibration::KnownProbes m_probes;
};

void SearchReader::read() {
    m_file.rewind();
    while (const std::optional<Record> record = m_file.next()) {
        take(*record);
    }
}

void SearchReader::take(const Record& record) {
    switch (record.kind) {
    case Kind::setTx:
        if (isOfChannel(record)) {
            m_carrier = static_cast<std::uint32_t>(record.carrier());
        }
        break;
    case Kind::temperature:
        m_temperature = record.a;
        break;
    case Kind::cancel:
        if (isOfChannel(record)) {
            m_carrier = static_cast<std::uint32_t>(record.a);
            m_temperature = record.b;
        }
        break;
    case Kind::calibrate:
        if (isOfChannel(record)) {
            begin(record);
        }
        break;
    case Kind::finished: {
        Search& search = m_threads.at(record.thread);
        search.isOn = search.isOn && record.depth != search.depth;
        break;
    }
    case Kind::driverWrite:
    case Kind::driverRead:
        if (record.object != nullptr && m_threads.at(record.thread).isOn) {
            probe(record);
        }
        break;
    default:
        break;
    }
}

void SearchReader::begin(const Record& record) {
    constexpr std::size_t highDetector = 10;
    constexpr std::size_t size = 44;
    if (!m_carrier || !m_temperature || record.bytes.size() < size) {
        return;
    }
    m_useHighDetector = record.number(highDetector) != 0;
    m_threads.at(record.thread) = {true, record.depth, {}, {}};
    m_probes[{*m_temperature, *m_carrier}].clear();
}

void SearchReader::probe(const Record& record) {
    Search& search = m_threads.at(record.thread);
    const std::string& name = record.object->name;
    const bool isDone = record.outcome == Recordings::Outcome::returned && isSuccess(record.code);
    if (record.kind == Kind::driverWrite) {
        if (name == m_board.i.driver) {
            search.i = isDone ? std::optional(record.a) : std::nullopt;
        } else if (name == m_board.q.driver) {
            search.q = isDone ? std::optional(record.a) : std::nullopt;
        }
        return;
    }
    const DetectorDescription& detector =
        m_useHighDetector && m_board.highDetector ? *m_board.highDetector : m_board.detector;
    if (name == detector.driver && isDone && search.i && search.q) {
        m_probes[{*m_temperature, *m_carrier}].push_back({{*search.i, *search.q, record.a}, 0});
    }
}

std::string unitNamed(const std::string& name) {
    return name.empty() ? "unknown" : name;
}

} // namespace

Measured measuredIn(const Calibration::JournalContent& journal, int channel, const std::string& source) {
    const Calibration::JournalHeader& header = journal.header;
    if (header.settings.channel != channel) {
        throw InputError({source, 0}, "of channel " + std::to_string(header.settings.channel) +
                                          ", expected one of channel " + std::to_string(channel));
    }
    return {unitNamed(header.serial), source,        header.date, header.settings.useHighDetector,
            journal.qualification,    journal.probes};
}

Measured measuredIn(Recordings::RecordingFile& recording, const LeakageDescription& board,
                    const std::string& source) {
    SearchReader reader(recording, board);
    reader.read();
    Measured measured;
    measured.unit = unitNamed(recording.header().unit);
    measured.source = source;
    const auto started = std::chrono::duration_cast<std::chrono::system_clock::duration>(
        std::chrono::nanoseconds(recording.header().started));
    measured.date = Calibration::utcText(std::chrono::system_clock::time_point(started));
    measured.useHighDetector = reader.useHighDetector();
    measured.probes = reader.takeProbes();
    if (measured.probes.empty()) {
        throw InputError({source, 0}, "has no search of the corrections of channel " +
                                          std::to_string(board.channel) +
                                          " at a carrier and a temperature that it tells");
    }
    return measured;
}

} // namespace Radio::Laboratory

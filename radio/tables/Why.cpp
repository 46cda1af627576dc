#include "radio/tables/Why.h"

#include "ResultCode.h"
#include "radio/board/BoardNames.h"
#include "radio/board/PlatformWords.h"
#include "radio/text/Words.h"

#include <algorithm>

namespace Radio::Tables {

namespace {

std::string driverPrefix(int channel) {
    return "channel." + std::to_string(channel) + ".tx.";
}

std::string mixerDriver(int channel, const std::string& branch) {
    return driverPrefix(channel) + (branch == "I" ? "rf.mixer.i" : "rf.mixer.q");
}

std::string coarseDriver(int channel, const std::string& branch) {
    return driverPrefix(channel) + "bb.iq.coarse.dc." + (branch == "I" ? "i" : "q") + ".v.adjust";
}

std::string coarseTable(int channel, const std::string& branch) {
    return "Channel." + std::to_string(channel) + ".Tx.Bb.Frequency.To.Coarse.Dc." + branch + ".Compensation";
}

bool hasCanceller(::FrequencyHandler::FrequencyHandlerType type) {
    return type != ::FrequencyHandler::RfModule && type != ::FrequencyHandler::Rau;
}

/** Looks at what a booted radio has, as its canceller did. */
class Explainer {
public:
    Explainer(BootedRadio& booted, const Board& board, Reason& reason)
        : m_booted(booted),
          m_platform(booted.radio().platform()),
          m_board(board),
          m_reason(reason) {}

    std::string whyNone() const;
    void addBranch(const std::string& branch);
    void addLevels();
    /** What was written although there are no corrections. */
    void findUnexpectedWrites();

private:
    int channel() const { return m_reason.channel.number; }
    std::string driverFor(const std::string& branch) const;
    const Standalone::Call* lastWrite(const std::string& driver) const;
    void lookUpIn(BranchReason& branch, const CalibrationTable* table) const;
    void compare(const BranchReason& branch);

    BootedRadio& m_booted;
    Standalone::Platform& m_platform;
    const Board& m_board;
    Reason& m_reason;
};

std::string Explainer::whyNone() const {
    if (!hasCanceller(m_reason.channel.type)) {
        return "A channel of type " + std::string(Radio::toString(m_reason.channel.type)) +
               " has no LO cancellation.";
    }
    for (const std::string branch : {"I", "Q"}) {
        const std::string coarse = coarseTable(channel(), branch);
        if (m_platform.tables().find(cancellationTableName(channel(), branch)) == nullptr &&
            m_platform.tables().find(coarse) != nullptr) {
            return "With table \"" + coarse + "\" in use the channel makes no correction by frequency.";
        }
    }
    return "";
}

std::string Explainer::driverFor(const std::string& branch) const {
    const std::string preferred = mixerDriver(channel(), branch);
    const Standalone::Driver* const driver = m_platform.drivers().find(preferred);
    constexpr unsigned needed = Standalone::wordContext | Standalone::wordWrite;
    const bool isUsable = driver != nullptr && (driver->missingWords() & needed) == 0;
    return isUsable ? preferred : coarseDriver(channel(), branch);
}

const Standalone::Call* Explainer::lastWrite(const std::string& driver) const {
    const std::vector<Standalone::Call>& writes = m_booted.writes();
    const auto found = std::find_if(writes.rbegin(), writes.rend(), [&driver](const Standalone::Call& call) {
        return call.object == driver;
    });
    return found == writes.rend() ? nullptr : &*found;
}

void Explainer::lookUpIn(BranchReason& branch, const CalibrationTable* table) const {
    if (table == nullptr) {
        branch.whyNoValue = "the table is not there";
    } else if (table->axis2.empty()) {
        branch.whyNoValue = "the table has one axis, two are needed";
    } else {
        // The library hands carriers on as signed numbers.
        branch.lookup = lookUp(*table, static_cast<std::int32_t>(m_reason.carrier), m_reason.temperature);
        branch.computed = branch.lookup->value.rounded();
    }
}

void Explainer::addBranch(const std::string& name) {
    BranchReason branch;
    branch.branch = name;
    branch.table = cancellationTableName(channel(), name);
    if (const TableDescription* const described = findCancellationTable(m_board, channel(), name)) {
        branch.file = described->file.string();
        branch.column = described->column;
    }
    lookUpIn(branch, m_platform.tables().find(branch.table));
    branch.driver = driverFor(name);
    if (const Standalone::Call* const write = lastWrite(branch.driver)) {
        branch.written = write->value;
        branch.code = write->code;
    }
    compare(branch);
    m_reason.branches.push_back(std::move(branch));
}

void Explainer::compare(const BranchReason& branch) {
    const std::string computed =
        branch.driver + ": the table gives " + std::to_string(branch.computed) + ", ";
    if (!branch.written) {
        m_reason.disagreements.push_back(computed + "the library wrote nothing");
    } else if (*branch.written != branch.computed) {
        m_reason.disagreements.push_back(computed + "the library wrote " + std::to_string(*branch.written));
    } else if (isFailure(branch.code)) {
        m_reason.disagreements.push_back(computed + "writing it failed with " + codeText(branch.code));
    }
}

void Explainer::findUnexpectedWrites() {
    for (const std::string branch : {"I", "Q"}) {
        for (const std::string& driver : {mixerDriver(channel(), branch), coarseDriver(channel(), branch)}) {
            if (const Standalone::Call* const write = lastWrite(driver)) {
                m_reason.disagreements.push_back(driver + ": nothing was to be written, the library wrote " +
                                                 std::to_string(write->value));
            }
        }
    }
}

void Explainer::addLevels() {
    const LeakageDescription* const leakage = findLeakage(m_board, channel());
    if (leakage == nullptr) {
        return;
    }
    const auto valueOf = [&](const CorrectionBranch& branch) {
        return static_cast<std::int32_t>(m_platform.drivers().find(branch.driver)->value());
    };
    const Surroundings surroundings{m_reason.carrier, static_cast<double>(m_reason.temperature)};
    m_reason.level = leakageLevel(*leakage, surroundings, {valueOf(leakage->i), valueOf(leakage->q)});
    m_reason.levelWithout = leakageLevel(*leakage, surroundings, {0, 0});
}

} // namespace

Reason explainCorrections(BootedRadio& booted, const Board& board, const ChannelDescription& channel,
                          std::uint32_t carrier, std::int32_t temperature) {
    Reason reason{channel, carrier, temperature, {}, {}, {}, {}, {}, {}};
    booted.radio().platform().temperature().set(temperature);
    booted.forget();
    booted.radio().tune(Direction::tx, channel.number, carrier);

    Explainer explainer(booted, board, reason);
    reason.whyNone = explainer.whyNone();
    if (reason.whyNone.empty()) {
        explainer.addBranch("I");
        explainer.addBranch("Q");
    } else {
        explainer.findUnexpectedWrites();
    }
    explainer.addLevels();
    reason.complaints = booted.complaints();
    return reason;
}

} // namespace Radio::Tables

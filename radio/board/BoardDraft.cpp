#include "radio/board/BoardDraft.h"

#include "radio/board/BoardDemand.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace Radio {

namespace {

/** What the name of a variable ends in, and what is to be found out for it. */
struct VariableHint {
    std::string_view ending;
    std::string_view text;
    /** How its value is written. */
    std::string_view value = "...";
};

constexpr std::array<VariableHint, 9> variableHints{{
    {"mixer.multiplicationfactor", "The LO is so many times the RF synthesiser; not 0."},
    {"rf.spectruminverted", "1 where the LO lies above the carrier, 0 where it lies below."},
    {"baseband.spectruminverted", "1 for the sign +1 of the baseband conversion, 0 for -1."},
    {"if.frequency", "The intermediate frequency, in kHz."},
    {"IfBb", "Where the baseband lies inside the IF, in MHz; for all channels."},
    {"ChannelSpacing", "The code of the channel spacing with which the radio starts."},
    {"HwCodeDsp", "3 for a DSP that takes half the spacing where the array below has no entry."},
    {"offset.arraysize", "How many integers the array below has."},
    {"offset.array", "Pairs of a channel spacing's code and the receiver's offset, in kHz.", "[...]"},
}};

bool endsWith(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

const VariableHint* hintFor(std::string_view variable) {
    const auto* const hint =
        std::find_if(variableHints.begin(), variableHints.end(),
                     [variable](const VariableHint& each) { return endsWith(variable, each.ending); });
    return hint == variableHints.end() ? nullptr : hint;
}

/** A name of a file that means the same in a string of TOML. */
bool isPlain(const std::string& name) {
    return !name.empty() && name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                                   "0123456789._-") == std::string::npos;
}

class Draft {
public:
    Draft(::FrequencyHandler::FrequencyHandlerType type, Range band, const std::string& stem)
        : m_band(band),
          m_stem(isPlain(stem) ? stem : "board") {
        m_board.channels.push_back({1, type, {}, false});
        m_demands = demandsOf(m_board);
    }

    std::string write() {
        writeHead();
        writeDrivers();
        writeVariables();
        writeTables();
        writeInterfaces();
        writeCarriers();
        writeLimits();
        return m_out.str();
    }

private:
    /** Something of that kind is asked for, and not in silence. */
    bool asksFor(ObjectKind kind) const {
        return std::any_of(m_demands.begin(), m_demands.end(), [kind](const Demand& demand) {
            return demand.kind == kind && demand.need != Need::optional;
        });
    }

    /** Whether a demand stands when each channel has what it asks for first. */
    bool stands(const Demand& demand) const {
        return std::all_of(demand.conditions.begin(), demand.conditions.end(), [this](const Condition& each) {
            const bool isThere =
                std::any_of(m_drivers.begin(), m_drivers.end(),
                            [&each](const std::string& name) { return name == each.driver; });
            return isThere == each.isThere;
        });
    }

    void writeHead() {
        const std::string_view type = toString(m_board.channels.front().type);
        m_out
            << "# A radio to begin with: one channel of the type " << type << ".\n"
            << "#\n"
            << "# What stands here is what the library asks for by its names. What only the maker of the "
               "board "
               "knows is left\n"
            << "# open, as a line that begins with #\"; \"radioctl check\" names whatever is missing.\n\n"
            << "name = \"New radio, " << type << "\"\n"
            << "# serial = \"...\"       # of this one radio; comes into calibrated tables\n"
            << "# description = \"...\"\n\n"
            << "# One for each channel; the names below begin with its number.\n"
            << "[[channel]]\nnumber = 1\ntype = \"" << type << "\"\n"
            << "# iq_compensation = true    # the transmit DSP corrects the IQ imbalance over temperature\n";
    }

    void writeDrivers() {
        if (!asksFor(ObjectKind::driver)) {
            return;
        }
        m_out
            << "\n# Hardware that the driver layer knows. { value = 210 } says what a read gives before the "
               "first write.\n"
            << "[drivers]\n";
        for (const Demand& demand : m_demands) {
            if (demand.kind == ObjectKind::driver && demand.need != Need::optional && stands(demand)) {
                m_drivers.push_back(demand.candidates.front().name);
                for (std::size_t i = 1; i < demand.candidates.size(); ++i) {
                    m_out << "# Or \"" << demand.candidates[i].name << "\" in place of the next.\n";
                }
                m_out << "\"" << demand.candidates.front().name << "\" = {}\n";
            }
        }
    }

    void writeVariables() {
        if (!asksFor(ObjectKind::variable)) {
            return;
        }
        m_out << "\n# The database. Each of these is a fact of the board: fill it in and take the # away.\n"
              << "[variables]\n";
        const VariableHint* before = nullptr;
        for (const Demand& demand : m_demands) {
            if (demand.kind == ObjectKind::variable && demand.need != Need::optional) {
                const std::string& name = demand.candidates.front().name;
                const VariableHint* const hint = hintFor(name);
                if (hint != nullptr && hint != before) {
                    m_out << "# " << hint->text << "\n";
                }
                before = hint;
                m_out << "#\"" << name << "\" = " << (hint == nullptr ? "..." : hint->value) << "\n";
            }
        }
    }

    void writeTables() {
        bool hasHeading = false;
        for (const Demand& demand : m_demands) {
            if (demand.kind != ObjectKind::table || demand.need == Need::optional || !stands(demand)) {
                continue;
            }
            if (!hasHeading) {
                m_out << "\n# The corrections of the LO leakage. There is no such file yet: \"radioctl "
                         "calibrate\" "
                         "makes it.\n";
                hasHeading = true;
            }
            const std::string& name = demand.candidates.front().name;
            m_out << "[tables.\"" << name << "\"]\n"
                  << "file = \"" << m_stem << ".channel-1.csv\"\n"
                  << "column = \"" << (endsWith(name, ".I") ? "i" : "q") << "\"\n";
        }
        if (hasHeading) {
            m_out << "\n# How they are found.\n[[calibration]]\nchannel = 1\n"
                  << "# temperatures = [-33, 55]    # degrees Celsius; of a fit the lowest and the highest "
                     "count\n";
        }
    }

    void writeInterfaces() {
        for (const Demand& demand : m_demands) {
            const std::string& name = demand.candidates.front().name;
            if (demand.kind == ObjectKind::interface && demand.need == Need::required &&
                name != "IDriverLayer") {
                m_out << "\n# The remote radio unit that takes the carriers.\n[interfaces]\n\"" << name
                      << "\" = \"present\"\n";
            }
        }
    }

    void writeCarriers() {
        m_out
            << "\n# The carriers for which the radio is made; \"radioctl plan audit\" tunes each of them. An "
               "arrangement with\n"
            << "# centre, spacing, count, tx and rx says it as recommendations do.\n"
            << "[[raster]]\nname = \"whole band\"\ndirection = \"both\"\n"
            << "first = " << m_band.low << "\nlast = " << m_band.high << "\nstep = 1000\n";
    }

    void writeLimits() {
        m_out << "\n# What the hardware can do and what is allowed. What is not stated is not limited.\n"
              << "[limits]\n";
        if (asksFor(ObjectKind::table)) {
            m_out << "# if_pll = [325000, 375000]      # settings of the IF synthesisers, in kHz\n"
                  << "# rf_pll = [3800000, 4200000]    # and of the RF synthesisers\n"
                  << "# leakage = -60                  # of the LO with its corrections, in dBc\n";
        }
        m_out << "# carrier_error = 500            # Hz off the asked carrier\n"
              << "# temperature = [-33, 55]        # degrees Celsius at which the radio works\n";
    }

    Board m_board;
    Range m_band;
    std::string m_stem;
    std::vector<Demand> m_demands;
    /** Those that are written. */
    std::vector<std::string> m_drivers;
    std::ostringstream m_out;
};

} // namespace

std::string draftBoard(::FrequencyHandler::FrequencyHandlerType type, Range band, const std::string& stem) {
    return Draft(type, band, stem).write();
}

} // namespace Radio

#include "Report.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <ostream>
#include <string>
#include <thread>

namespace Carriers {

namespace {

/** "1 h 2 min 3 s", without what is 0 in front. */
std::string spoken(double seconds) {
    const long whole = std::lround(seconds);
    std::string text;
    if (whole >= 3600) {
        text += std::to_string(whole / 3600) + " h ";
    }
    if (whole >= 60) {
        text += std::to_string(whole / 60 % 60) + " min ";
    }
    return text + std::to_string(whole % 60) + " s";
}

/** Time that passes, and time that processors spend on it. */
class Watch {
public:
    std::string passed() const {
        const auto passed = std::chrono::steady_clock::now() - m_start;
        return spoken(std::chrono::duration<double>(passed).count());
    }
    std::string spent() const {
        return spoken(static_cast<double>(std::clock() - m_spent) / static_cast<double>(CLOCKS_PER_SEC));
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    std::clock_t m_spent = std::clock();
};

std::optional<Difference> sweepWatched(const CarrierRange& carriers, const Check& check, unsigned threads) {
    const bool isWatched = isatty(STDERR_FILENO) != 0;
    const std::optional<Difference> difference = sweep(carriers, check, threads, [&](std::uint64_t done) {
        if (isWatched) {
            static_cast<void>(
                std::fprintf(stderr, "\r  %3d %%", static_cast<int>(100 * done / carriers.count())));
        }
    });
    if (isWatched) {
        static_cast<void>(std::fputs("\r       \r", stderr));
    }
    return difference;
}

} // namespace

std::optional<Difference> checkSets(const ParameterSets& sets, const CarrierRange& carriers,
                                    const PlanCheck& check, std::ostream& out) {
    const unsigned threads = std::max(std::thread::hardware_concurrency(), 1U);
    const std::size_t count = sets.all().size();
    const Watch watch;
    std::size_t number = 0;
    for (const ParameterSet& set : sets.all()) {
        out << "set " << ++number << " of " << count << ": " << describe(set.parameters) << '\n';
        for (const auto& [user, parts] : set.users) {
            out << "  " << user << ": " << parts << '\n';
        }
        out.flush();
        const Watch watchOfSet;
        const std::optional<Difference> difference = sweepWatched(
            carriers, [&](const CarrierRange& part) { return check(set.parameters, part); }, threads);
        if (difference) {
            out << "  DIFFERENT: " << describe(*difference) << '\n';
            return difference;
        }
        out << "  " << grouped(carriers.count()) << " carriers, no difference, " << watchOfSet.passed()
            << '\n';
    }
    out << "sets of parameters: " << count << ", carriers with each: " << grouped(carriers.count())
        << ", in all: " << grouped(count * carriers.count()) << ", differences: 0\n"
        << watch.passed() << "; " << watch.spent() << " of processor time, on " << threads << " processors\n";
    return std::nullopt;
}

} // namespace Carriers

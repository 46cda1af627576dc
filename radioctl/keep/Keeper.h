#ifndef RADIOCTL_KEEP_KEEPER_H
#define RADIOCTL_KEEP_KEEPER_H

#include "radio/board/Board.h"
#include "radio/store/Database.h"
#include "radio/store/Run.h"
#include "radio/store/UserSettings.h"
#include "radioctl/keep/KeepOptions.h"

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace Radio {

/**
 * Has a run of the program kept in the store, and says what became of it. Nothing is lost when the database
 * does not take it: the run waits in a file, which the next run or "store push" brings there.
 */
class Keeper {
public:
    /**
     * Sees whether runs are to be kept, and where. `out` is for people, and must outlive the object. Throws
     * InputError for a settings file that cannot be used, and where they are to be kept and this program has
     * no databases.
     */
    Keeper(const KeepOptions& options, bool json, std::ostream& out);

    bool isWanted() const { return m_address.has_value(); }
    /** Where the run is made: what was said, or else what the settings say. */
    const std::string& station() const { return m_station; }

    /** A run of this board that began when the object was made; without what it measured. */
    Store::Run begin(const std::string& kind, const Board& board) const;
    /**
     * Keeps the run, which ends now; `folder` is where it waits if it has to. Gives `exitCode`, unless it
     * could be kept nowhere.
     */
    int keep(Store::Run run, const std::filesystem::path& folder, int exitCode);

private:
    std::size_t pushOthers(Store::Database& database, const std::filesystem::path& folder) const;
    void tell(const Store::Run& run, const std::string& why, const std::filesystem::path& file,
              std::size_t pushed);

    bool m_json;
    std::ostream& m_out;
    std::optional<Store::Address> m_address;
    std::string m_serial;
    std::string m_station;
    std::string m_operator;
    std::string m_begun;
};

/** The limits of a verdict as measurements. */
std::vector<Store::Measurement> measurementsOf(const Verdict& verdict);

/** The content of a file for a run, called `name` there; nothing is added for one that there is not, or that
 * cannot be read. */
void addFile(Store::Run& run, const std::string& name, const std::filesystem::path& file);

} // namespace Radio

#endif

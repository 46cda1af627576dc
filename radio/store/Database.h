#ifndef RADIO_STORE_DATABASE_H
#define RADIO_STORE_DATABASE_H

#include "radio/store/Address.h"
#include "radio/store/Run.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/**
 * The database. What goes wrong with it throws InputError, with the store for a place. A database is used on
 * one thread at a time; there may be any number of them, also of one store.
 */
namespace Radio::Store {

/** The newest form of the database, to which an older one is brought. */
constexpr int newestSchema = 2;

/** Why this program has no databases at all, and which package it lacks; empty: it has. */
std::string whyNoDatabases();

/** What runs are asked for; what is empty asks for nothing. */
struct Selection {
    std::string serial{};
    std::string board{};
    std::string station{};
    std::string kind{};
    std::optional<VerdictKind> verdict{};
    /** The first and the last day on which they began, "2026-03-01". */
    std::string from{};
    std::string to{};
};

class Database {
public:
    enum class Use : std::uint8_t {
        read, ///< nothing is changed, and a store that is not there is not made
        add,  ///< a store that is not there is made, and an older one brought to the newest form
    };
    Database(const Address& address, Use use);
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    /**
     * Adds a run as a whole, on the disk when this returns; false when a run of its id is there, which is
     * left as it is. Characters that a database does not take (U+0000, and what is no UTF-8) become U+FFFD.
     * Whatever it throws, the run may be there or not, and can be added again.
     */
    bool add(const Run& run);

    /** Tells the runs in the order in which they began, until `take` says false. Only some of them are in
     * memory at a time. */
    void forEachRun(const Selection& selection, const std::function<bool(const RunHead&)>& take);
    /** Tells the runs with what they measured and without files, those of a unit one after the other in the
     * order in which they began. Only some of them are in memory at a time. */
    void forEachMeasured(const Selection& selection, const std::function<bool(const Run&)>& take);
    /** The run with what it measured, and its files if they are wanted. */
    Run whole(const RunHead& head, bool withFiles);
    /** The run of that id, or of the only one that begins with `id`; nothing when there is none, or several.
     */
    std::optional<RunHead> findRun(const std::string& id);
    /** The run of the unit that began last, of a kind and of a channel if these are chosen. */
    std::optional<RunHead> lastOf(const std::string& serial, const std::string& kind = {},
                                  std::optional<std::int64_t> channel = std::nullopt);
    /** One file of a run; nothing when it has none of that name. */
    std::optional<std::string> fileOf(const std::string& runId, const std::string& name);

    /** The form of the database. */
    int schema();
    std::size_t countRuns();
    /** What is wrong with it, each as one clause; empty: every run is whole. */
    std::vector<std::string> check();
    /** Lets a user of PostgreSQL add runs and read them, and neither change nor delete any. */
    void letAdd(const std::string& user);

private:
    class Sessions;
    std::unique_ptr<Sessions> m_sessions;
};

/** Makes a store of an older form where there is none: for tests. */
void makeStore(const Address& address, int schema);

} // namespace Radio::Store

#endif

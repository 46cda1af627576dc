#include "radio/store/Connection.h"

#include "radio/files/InputError.h"

#include <dlfcn.h>

#include <array>
#include <vector>

namespace Radio::Store {

namespace {

/** A database that is busy, or a host that does not answer, is waited for so long, in seconds. */
constexpr const char* patience = "10";

const soci::backend_factory& factoryOf(const Address& address) {
    const std::string name = address.backend == Backend::sqlite ? "sqlite3" : "postgresql";
    const std::string library = "libsoci_" + name + ".so." RADIO_STORE_SOCI;
    // Never closed: the objects of a session have their code in it.
    void* const handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const found = handle == nullptr ? nullptr : dlsym(handle, ("factory_" + name).c_str());
    if (found == nullptr) {
        throw InputError(
            {address.shown(), 0},
            library + " is missing: Debian's package " +
                (address.backend == Backend::sqlite ? "libsoci-sqlite3-4.0" : "libsoci-postgresql4.0"));
    }
    using Factory = const soci::backend_factory* (*)();
    return *reinterpret_cast<Factory>(found)();
}

std::string withPatience(const std::string& uri) {
    const bool hasOptions = uri.find('?') != std::string::npos;
    return uri.find("connect_timeout=") != std::string::npos
               ? uri
               : uri + (hasOptions ? "&" : "?") + "connect_timeout=" + patience + "&tcp_user_timeout=30000";
}

/** What changes with each number, from the first on. A number that was released is not changed any more:
 * databases have what it says. */
const std::array<std::vector<const char*>, 2>& migrations() {
    static const std::array<std::vector<const char*>, 2> all{{
        {"CREATE TABLE schema_version (version integer NOT NULL)", "INSERT INTO schema_version VALUES (0)",
         "CREATE TABLE runs (id text NOT NULL PRIMARY KEY, kind text NOT NULL, serial text NOT NULL, "
         "board text NOT NULL, fingerprint text NOT NULL, version text NOT NULL, station text NOT NULL, "
         "operator text NOT NULL, begun text NOT NULL, ended text NOT NULL, mode text NOT NULL, "
         "channel bigint, verdict text NOT NULL, exit_code bigint NOT NULL, settings text NOT NULL, "
         "measurements bigint NOT NULL, files bigint NOT NULL)",
         "CREATE TABLE measurements (run text NOT NULL REFERENCES runs (id), place bigint NOT NULL, "
         "name text NOT NULL, unit text NOT NULL, channel bigint, khz bigint, degrees bigint, "
         "value double precision, lowest double precision, highest double precision, held bigint, "
         "PRIMARY KEY (run, place))",
         "CREATE TABLE run_files (run text NOT NULL REFERENCES runs (id), name text NOT NULL, "
         "content text NOT NULL, PRIMARY KEY (run, name))"},
        {"CREATE INDEX runs_by_time ON runs (begun, id)",
         "CREATE INDEX runs_of_unit ON runs (serial, begun, id)"},
    }};
    return all;
}

} // namespace

std::unique_ptr<soci::session> connect(const Address& address) {
    const bool isSqlite = address.backend == Backend::sqlite;
    auto sql = std::make_unique<soci::session>(
        factoryOf(address),
        isSqlite ? "db=\"" + address.file.string() + "\" timeout=" + patience : withPatience(address.uri));
    if (isSqlite) {
        // The folder, too, is on the disk before a run is called stored.
        *sql << "PRAGMA synchronous = EXTRA";
        *sql << "PRAGMA foreign_keys = ON";
    } else {
        *sql << "SET client_min_messages = warning";
        *sql << "SET client_encoding = 'UTF8'";
        *sql << "SET synchronous_commit = on";
        *sql << "SET lock_timeout = '" + std::string(patience) + "s'";
    }
    return sql;
}

Transaction::Transaction(soci::session& sql, Backend backend) : m_sql(sql) {
    // SQLite waits for others that write here, and nowhere else.
    m_sql << (backend == Backend::sqlite ? "BEGIN IMMEDIATE" : "BEGIN");
}

Transaction::~Transaction() {
    try {
        if (m_isOpen) {
            m_sql << "ROLLBACK";
        }
    } catch (const std::exception& /*error*/) {
        // The connection is gone, and the database takes back what it did not commit.
        m_isOpen = false;
    }
}

void Transaction::commit() {
    m_sql << "COMMIT";
    m_isOpen = false;
}

int schemaOf(soci::session& sql, Backend backend) {
    int found = 0;
    sql << (backend == Backend::sqlite
                ? "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name = 'schema_version'"
                : "SELECT count(*) FROM (SELECT to_regclass('schema_version') AS c) t WHERE c IS NOT NULL"),
        soci::into(found);
    if (found == 0) {
        return 0;
    }
    int version = 0;
    sql << "SELECT max(version) FROM schema_version", soci::into(version);
    return version;
}

void migrate(soci::session& sql, Backend backend, int schema) {
    if (schemaOf(sql, backend) >= schema) {
        return;
    }
    Transaction transaction(sql, backend);
    if (backend == Backend::postgresql) {
        sql << "SELECT pg_advisory_xact_lock(7263616469)"; // two that find it empty take turns
    }
    for (int version = schemaOf(sql, backend); version < schema; ++version) {
        for (const char* const statement : migrations().at(static_cast<std::size_t>(version))) {
            sql << statement;
        }
        sql << "UPDATE schema_version SET version = " << version + 1;
    }
    transaction.commit();
}

} // namespace Radio::Store

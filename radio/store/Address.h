#ifndef RADIO_STORE_ADDRESS_H
#define RADIO_STORE_ADDRESS_H

#include <cstdint>
#include <filesystem>
#include <string>

namespace Radio::Store {

enum class Backend : std::uint8_t { sqlite, postgresql };

/** Where a store is. */
struct Address {
    Backend backend = Backend::sqlite;
    /** Of SQLite: an absolute name. */
    std::filesystem::path file{};
    /** Of PostgreSQL: as libpq takes it. It may have a password in it. */
    std::string uri{};

    /** As it is shown and kept: without the password. */
    std::string shown() const;
};

/** What "sqlite:FILE", "postgresql://..." and "default" mean; throws WordError for anything else, and for the
 * default where no folder of the user's is known. */
Address addressFrom(const std::string& word);

/** Why a word is no address; empty when it is one. */
std::string whyNoAddress(const std::string& word);

} // namespace Radio::Store

#endif

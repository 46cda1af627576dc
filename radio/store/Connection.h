#ifndef RADIO_STORE_CONNECTION_H
#define RADIO_STORE_CONNECTION_H

#include "radio/store/Address.h"

#include <soci/soci.h>

#include <memory>
#include <string>

/** How the store speaks to databases. These sources alone know SOCI, whose errors they let through. */
namespace Radio::Store {

/** Opens the database. The library of its kind is loaded here and not with the program, which has most to do
 * without. Throws InputError where that library is missing. */
std::unique_ptr<soci::session> connect(const Address& address);

/** All or nothing: what is not committed is taken back. */
class Transaction {
public:
    Transaction(soci::session& sql, Backend backend);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();

    void commit();

private:
    soci::session& m_sql;
    bool m_isOpen = true;
};

/** The form that the database has; 0 when it is empty. */
int schemaOf(soci::session& sql, Backend backend);

/** Brings the database forward to `schema`, in one transaction; nothing is done to one that is there already,
 * or further. Several may do so at once. */
void migrate(soci::session& sql, Backend backend, int schema);

} // namespace Radio::Store

#endif

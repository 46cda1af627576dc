// In place of Database.cpp, where SOCI was not found.

#include "radio/files/InputError.h"
#include "radio/store/Database.h"

namespace Radio::Store {

class Database::Sessions {};

std::string whyNoDatabases() {
    return "this radioctl was built without databases; install Debian's package libsoci-dev, and build it "
           "anew";
}

Database::Database(const Address& address, Use /*use*/) {
    throw InputError({address.shown(), 0}, whyNoDatabases());
}

Database::~Database() = default;

// Nobody comes as far as these: there is no object.
bool Database::add(const Run& /*run*/) {
    return false;
}
void Database::forEachRun(const Selection& /*selection*/,
                          const std::function<bool(const RunHead&)>& /*take*/) {}
void Database::forEachMeasured(const Selection& /*selection*/,
                               const std::function<bool(const Run&)>& /*take*/) {}
Run Database::whole(const RunHead& head, bool /*withFiles*/) {
    return {head};
}
std::optional<RunHead> Database::findRun(const std::string& /*id*/) {
    return std::nullopt;
}
std::optional<RunHead> Database::lastOf(const std::string& /*serial*/, const std::string& /*kind*/,
                                        std::optional<std::int64_t> /*channel*/) {
    return std::nullopt;
}
std::optional<std::string> Database::fileOf(const std::string& /*runId*/, const std::string& /*name*/) {
    return std::nullopt;
}
int Database::schema() {
    return 0;
}
std::size_t Database::countRuns() {
    return 0;
}
std::vector<std::string> Database::check() {
    return {};
}
void Database::letAdd(const std::string& /*user*/) {}

void makeStore(const Address& address, int /*schema*/) {
    throw InputError({address.shown(), 0}, whyNoDatabases());
}

} // namespace Radio::Store

#include "radio/store/Database.h"

#include "radio/files/InputError.h"
#include "radio/files/Json.h"
#include "radio/store/Connection.h"
#include "radio/text/Words.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <system_error>

namespace Radio::Store {

namespace {

using soci::into;
using soci::use;

/** So many runs are in memory while all are told. */
constexpr std::size_t runsAtATime = 256;

constexpr const char* headColumns =
    "id, kind, serial, board, fingerprint, version, station, operator, begun, ended, mode, channel, "
    "verdict, exit_code, settings";

/** Text as every database takes it. */
std::string storable(const std::string& text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t length = 1;
        const auto first = static_cast<unsigned char>(text[at]);
        length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
        const std::string character = text.substr(at, length);
        if (first == 0 || !isUtf8(character)) {
            result += "\xEF\xBF\xBD";
            ++at;
        } else {
            result += character;
            at += length;
        }
    }
    return result;
}

/** A value that a row may have or not. */
template <typename Value>
struct Cell {
    Cell() = default;
    template <typename Given>
    explicit Cell(const std::optional<Given>& given)
        : value(given ? static_cast<Value>(*given) : Value()),
          indicator(given ? soci::i_ok : soci::i_null) {}

    template <typename Wanted>
    std::optional<Wanted> get() const {
        return indicator == soci::i_ok ? std::optional<Wanted>(static_cast<Wanted>(value)) : std::nullopt;
    }

    Value value{};
    soci::indicator indicator = soci::i_null;
};

/** What is no number (a level of nothing is -infinity dB) is not known to others. */
std::optional<double> finite(const std::optional<double>& value) {
    return value && std::isfinite(*value) ? value : std::nullopt;
}

/** A head as its row has it. */
struct HeadRow {
    RunHead head;
    std::string mode;
    std::string verdict;
    Cell<long long> channel;
    long long exitCode = 0;

    void exchangeInto(soci::statement& statement) {
        for (std::string* const text :
             {&head.id, &head.kind, &head.serial, &head.board, &head.fingerprint, &head.version,
              &head.station, &head.operatorName, &head.begun, &head.ended, &mode}) {
            statement.exchange(into(*text));
        }
        statement.exchange(into(channel.value, channel.indicator));
        statement.exchange(into(verdict));
        statement.exchange(into(exitCode));
        statement.exchange(into(head.settings));
    }
    RunHead get() const {
        RunHead run = head;
        run.isHardware = mode == "hardware";
        run.channel = channel.get<std::int64_t>();
        run.verdict = verdictFromWord(verdict).value_or(VerdictKind::none);
        run.exitCode = exitCode;
        return run;
    }
};

/** A measurement as its row has it. */
struct MeasurementRow {
    Measurement measurement;
    Cell<long long> channel;
    Cell<long long> frequency;
    Cell<long long> temperature;
    Cell<double> value;
    Cell<double> lowest;
    Cell<double> highest;
    Cell<long long> held;

    static constexpr const char* columns = "name, unit, channel, khz, degrees, value, lowest, highest, held";

    void exchangeInto(soci::statement& statement) {
        statement.exchange(into(measurement.name));
        statement.exchange(into(measurement.unit));
        for (Cell<long long>* const cell : {&channel, &frequency, &temperature}) {
            statement.exchange(into(cell->value, cell->indicator));
        }
        for (Cell<double>* const cell : {&value, &lowest, &highest}) {
            statement.exchange(into(cell->value, cell->indicator));
        }
        statement.exchange(into(held.value, held.indicator));
    }
    const Measurement& get() {
        measurement.channel = channel.get<std::int64_t>();
        measurement.frequency = frequency.get<std::int64_t>();
        measurement.temperature = temperature.get<std::int64_t>();
        measurement.value = value.get<double>();
        measurement.lowest = lowest.get<double>();
        measurement.highest = highest.get<double>();
        measurement.isHeld = held.get<bool>();
        return measurement;
    }
};

/** The conditions of a question, and the texts that they ask for. */
class Conditions {
public:
    void add(const std::string& condition, const std::string& value) {
        if (!value.empty()) {
            m_values.push_back(value);
            m_text += " AND " + condition + " :v" + std::to_string(m_values.size());
        }
    }
    const std::string& text() const { return m_text; }
    void exchangeInto(soci::statement& statement) const {
        for (const std::string& value : m_values) {
            statement.exchange(use(value));
        }
    }

private:
    std::string m_text;
    std::vector<std::string> m_values;
};

Conditions conditionsOf(const Selection& selection) {
    Conditions conditions;
    conditions.add("serial =", selection.serial);
    conditions.add("board =", selection.board);
    conditions.add("station =", selection.station);
    conditions.add("kind =", selection.kind);
    conditions.add("verdict =", selection.verdict ? std::string(wordOf(*selection.verdict)) : "");
    conditions.add("substr(begun, 1, 10) >=", selection.from);
    // Times are not compared as texts with other characters, whose order is a database's own affair.
    conditions.add("substr(begun, 1, 10) <=", selection.to);
    return conditions;
}

void run(soci::statement& statement, const std::string& query) {
    statement.alloc();
    statement.prepare(query);
    statement.define_and_bind();
    statement.execute();
}

/** PostgreSQL says more than one line. */
std::string firstLine(std::string text) {
    text.erase(std::min(text.find('\n'), text.size()));
    return text;
}

} // namespace

/** The connection, and what is said when it fails. */
class Database::Sessions {
public:
    explicit Sessions(Address address) : m_address(std::move(address)) {}

    template <typename Action>
    auto with(const Action& action) {
        try {
            return action(*m_sql);
        } catch (const soci::soci_error& error) {
            throw InputError({m_address.shown(), 0}, firstLine(error.get_error_message()));
        }
    }
    void open() {
        try {
            m_sql = connect(m_address);
        } catch (const soci::soci_error& error) {
            throw InputError({m_address.shown(), 0}, firstLine(error.get_error_message()));
        }
    }
    const Address& address() const { return m_address; }
    [[noreturn]] void fail(const std::string& why) const { throw InputError({m_address.shown(), 0}, why); }

private:
    Address m_address;
    std::unique_ptr<soci::session> m_sql;
};

std::string whyNoDatabases() {
    return {};
}

Database::Database(const Address& address, Use use) : m_sessions(std::make_unique<Sessions>(address)) {
    if (address.backend == Backend::sqlite) {
        std::error_code problem;
        if (use == Use::add) {
            std::filesystem::create_directories(address.file.parent_path(), problem);
        } else if (!std::filesystem::exists(address.file, problem)) {
            m_sessions->fail("there is no store yet");
        }
    }
    m_sessions->open();
    const int found = m_sessions->with([&](soci::session& sql) {
        const int before = schemaOf(sql, address.backend);
        if (use == Use::add && before < newestSchema) {
            migrate(sql, address.backend, newestSchema);
            return newestSchema;
        }
        return before;
    });
    if (found > newestSchema) {
        m_sessions->fail("has form " + std::to_string(found) + ", and this radioctl knows up to " +
                         std::to_string(newestSchema) + "; a newer one is needed");
    }
    if (found == 0) {
        m_sessions->fail("there is no store yet");
    }
}

Database::~Database() = default;

bool Database::add(const Run& run) {
    return m_sessions->with([&](soci::session& sql) {
        Transaction transaction(sql, m_sessions->address().backend);
        const std::string serial = storable(run.serial);
        const std::string board = storable(run.board);
        const std::string station = storable(run.station);
        const std::string operatorName = storable(run.operatorName);
        const std::string settings = storable(run.settings);
        const std::string mode = run.isHardware ? "hardware" : "simulation";
        const std::string verdict(wordOf(run.verdict));
        Cell<long long> channel(run.channel);
        const auto exitCode = static_cast<long long>(run.exitCode);
        const auto measurements = static_cast<long long>(run.measurements.size());
        const auto files = static_cast<long long>(run.files.size());
        soci::statement head =
            (sql.prepare << std::string("INSERT INTO runs (") + headColumns +
                                ", measurements, files) VALUES (:id, :kind, :serial, :board, :fingerprint, "
                                ":version, :station, :operator, :begun, :ended, :mode, :channel, :verdict, "
                                ":code, :settings, :measurements, :files) ON CONFLICT (id) DO NOTHING",
             use(run.id), use(run.kind), use(serial), use(board), use(run.fingerprint), use(run.version),
             use(station), use(operatorName), use(run.begun), use(run.ended), use(mode),
             use(channel.value, channel.indicator), use(verdict), use(exitCode), use(settings),
             use(measurements), use(files));
        head.execute(true);
        if (head.get_affected_rows() == 0) {
            return false;
        }
        long long place = 0;
        std::string name;
        std::string unit;
        Cell<long long> at;
        Cell<long long> frequency;
        Cell<long long> temperature;
        Cell<double> value;
        Cell<double> lowest;
        Cell<double> highest;
        Cell<long long> held;
        soci::statement row =
            (sql.prepare << "INSERT INTO measurements (run, place, name, unit, channel, khz, degrees, value, "
                            "lowest, highest, held) VALUES (:run, :place, :name, :unit, :channel, :khz, "
                            ":degrees, :value, :lowest, :highest, :held)",
             use(run.id), use(place), use(name), use(unit), use(at.value, at.indicator),
             use(frequency.value, frequency.indicator), use(temperature.value, temperature.indicator),
             use(value.value, value.indicator), use(lowest.value, lowest.indicator),
             use(highest.value, highest.indicator), use(held.value, held.indicator));
        for (const Measurement& measurement : run.measurements) {
            ++place;
            name = storable(measurement.name);
            unit = storable(measurement.unit);
            at = Cell<long long>(measurement.channel);
            frequency = Cell<long long>(measurement.frequency);
            temperature = Cell<long long>(measurement.temperature);
            value = Cell<double>(finite(measurement.value));
            lowest = Cell<double>(finite(measurement.lowest));
            highest = Cell<double>(finite(measurement.highest));
            held = Cell<long long>(measurement.isHeld);
            row.execute(true);
        }
        for (const RunFile& file : run.files) {
            const std::string content = storable(file.content);
            sql << "INSERT INTO run_files (run, name, content) VALUES (:run, :name, :content)", use(run.id),
                use(file.name), use(content);
        }
        transaction.commit();
        return true;
    });
}

void Database::forEachRun(const Selection& selection, const std::function<bool(const RunHead&)>& take) {
    std::string begun;
    std::string id;
    for (bool goesOn = true; goesOn;) {
        std::vector<RunHead> some;
        m_sessions->with([&](soci::session& sql) {
            const Conditions conditions = conditionsOf(selection);
            soci::statement statement(sql);
            HeadRow row;
            row.exchangeInto(statement);
            statement.exchange(use(begun));
            statement.exchange(use(id));
            conditions.exchangeInto(statement);
            run(statement, std::string("SELECT ") + headColumns +
                               " FROM runs WHERE (begun, id) > (:begun, :id)" + conditions.text() +
                               " ORDER BY begun, id LIMIT " + std::to_string(runsAtATime));
            while (statement.fetch()) {
                some.push_back(row.get());
            }
        });
        for (const RunHead& head : some) {
            if (!take(head)) {
                return;
            }
        }
        goesOn = some.size() == runsAtATime;
        if (goesOn) {
            begun = some.back().begun;
            id = some.back().id;
        }
    }
}

void Database::forEachMeasured(const Selection& selection, const std::function<bool(const Run&)>& take) {
    const Conditions conditions = conditionsOf(selection);
    RunHead last;
    for (bool goesOn = true; goesOn;) {
        std::vector<Run> some;
        m_sessions->with([&](soci::session& sql) {
            std::optional<Transaction> reading;
            if (m_sessions->address().backend == Backend::postgresql) {
                // By their key, run for run: otherwise it goes through all measurements for each portion.
                reading.emplace(sql, Backend::postgresql);
                sql << "SET LOCAL enable_hashjoin = off";
                sql << "SET LOCAL enable_mergejoin = off";
            }
            const std::string which = " FROM runs WHERE (serial, begun, id) > (:serial, :begun, :id)" +
                                      conditions.text() + " ORDER BY serial, begun, id LIMIT " +
                                      std::to_string(runsAtATime);
            soci::statement heads(sql);
            HeadRow row;
            row.exchangeInto(heads);
            const auto exchangeWhich = [&](soci::statement& statement) {
                for (const std::string* const text : {&last.serial, &last.begun, &last.id}) {
                    statement.exchange(use(*text));
                }
                conditions.exchangeInto(statement);
            };
            exchangeWhich(heads);
            run(heads, std::string("SELECT ") + headColumns + which);
            std::map<std::string, std::size_t> places;
            while (heads.fetch()) {
                places.emplace(row.head.id, some.size());
                some.push_back({row.get()});
            }
            soci::statement statement(sql);
            std::string id;
            MeasurementRow measurement;
            statement.exchange(into(id));
            measurement.exchangeInto(statement);
            exchangeWhich(statement);
            run(statement, std::string("SELECT run, ") + MeasurementRow::columns +
                               " FROM measurements WHERE run IN (SELECT id FROM (SELECT id" + which +
                               ") chosen) ORDER BY run, place");
            auto place = places.end();
            while (statement.fetch()) {
                if (place == places.end() || place->first != id) {
                    place = places.find(id);
                }
                if (place != places.end()) { // else it was added just now
                    some[place->second].measurements.push_back(measurement.get());
                }
            }
        });
        for (const Run& measured : some) {
            if (!take(measured)) {
                return;
            }
        }
        goesOn = some.size() == runsAtATime;
        if (goesOn) {
            last = some.back();
        }
    }
}

Run Database::whole(const RunHead& head, bool withFiles) {
    Run whole{head};
    m_sessions->with([&](soci::session& sql) {
        MeasurementRow row;
        soci::statement statement(sql);
        row.exchangeInto(statement);
        statement.exchange(use(head.id));
        run(statement, std::string("SELECT ") + MeasurementRow::columns +
                           " FROM measurements WHERE run = :run ORDER BY place");
        while (statement.fetch()) {
            whole.measurements.push_back(row.get());
        }
        if (withFiles) {
            RunFile file;
            soci::statement files =
                (sql.prepare << "SELECT name, content FROM run_files WHERE run = :run ORDER BY name",
                 use(head.id), into(file.name), into(file.content));
            files.execute();
            while (files.fetch()) {
                whole.files.push_back(file);
            }
        }
    });
    return whole;
}

std::optional<RunHead> Database::findRun(const std::string& id) {
    return m_sessions->with([&](soci::session& sql) -> std::optional<RunHead> {
        // What an id can begin with has no character that LIKE would take for another one.
        const bool isPrefix = !id.empty() && id.find_first_not_of("0123456789abcdef-") == std::string::npos;
        const std::string prefix = id + "%";
        HeadRow row;
        std::vector<RunHead> found;
        if (isPrefix) {
            soci::statement statement(sql);
            row.exchangeInto(statement);
            statement.exchange(use(prefix));
            run(statement, std::string("SELECT ") + headColumns + " FROM runs WHERE id LIKE :id LIMIT 2");
            while (statement.fetch()) {
                found.push_back(row.get());
            }
        }
        return found.size() == 1 ? std::optional<RunHead>(found.front()) : std::nullopt;
    });
}

std::optional<RunHead> Database::lastOf(const std::string& serial, const std::string& kind,
                                        std::optional<std::int64_t> channel) {
    return m_sessions->with([&](soci::session& sql) -> std::optional<RunHead> {
        Conditions conditions;
        conditions.add("kind =", kind);
        soci::statement statement(sql);
        HeadRow row;
        row.exchangeInto(statement);
        statement.exchange(use(serial));
        conditions.exchangeInto(statement);
        run(statement, std::string("SELECT ") + headColumns + " FROM runs WHERE serial = :serial" +
                           conditions.text() + (channel ? " AND channel = " + std::to_string(*channel) : "") +
                           " ORDER BY begun DESC, ended DESC, id DESC LIMIT 1");
        return statement.fetch() ? std::optional<RunHead>(row.get()) : std::nullopt;
    });
}

std::optional<std::string> Database::fileOf(const std::string& runId, const std::string& name) {
    return m_sessions->with([&](soci::session& sql) -> std::optional<std::string> {
        std::string content;
        sql << "SELECT content FROM run_files WHERE run = :run AND name = :name", use(runId), use(name),
            into(content);
        return sql.got_data() ? std::optional<std::string>(content) : std::nullopt;
    });
}

int Database::schema() {
    return m_sessions->with([&](soci::session& sql) { return schemaOf(sql, m_sessions->address().backend); });
}

std::size_t Database::countRuns() {
    return m_sessions->with([](soci::session& sql) {
        long long count = 0;
        sql << "SELECT count(*) FROM runs", into(count);
        return static_cast<std::size_t>(count);
    });
}

std::vector<std::string> Database::check() {
    return m_sessions->with([&](soci::session& sql) {
        std::vector<std::string> problems;
        std::string text;
        if (m_sessions->address().backend == Backend::sqlite) {
            soci::statement integrity = (sql.prepare << "PRAGMA integrity_check", into(text));
            integrity.execute();
            while (integrity.fetch()) {
                if (text != "ok") {
                    problems.push_back("the file is damaged: " + firstLine(text));
                }
            }
        }
        for (const char* const part : {"measurements", "run_files"}) {
            const std::string table = part;
            const std::string column = table == "run_files" ? "files" : table;
            long long wanted = 0;
            long long there = 0;
            soci::statement counts =
                (sql.prepare << "SELECT r.id, r." + column + ", count(p.run) FROM runs r LEFT JOIN " + table +
                                    " p ON p.run = r.id GROUP BY r.id, r." + column +
                                    " HAVING count(p.run) <> r." + column + " ORDER BY r.id",
                 into(text), into(wanted), into(there));
            counts.execute();
            while (counts.fetch()) {
                problems.push_back("run " + text + " has " + std::to_string(there) + " " + column +
                                   ", and was stored with " + std::to_string(wanted));
            }
        }
        return problems;
    });
}

void Database::letAdd(const std::string& user) {
    if (m_sessions->address().backend == Backend::sqlite) {
        m_sessions->fail("SQLite has no users; whoever may write the file may change it");
    }
    std::string name = "\"";
    for (const char character : user) {
        name += character;
        name += character == '"' ? "\"" : "";
    }
    name += "\"";
    m_sessions->with([&](soci::session& sql) {
        Transaction transaction(sql, Backend::postgresql);
        sql << "REVOKE ALL ON runs, measurements, run_files, schema_version FROM " + name;
        sql << "GRANT SELECT, INSERT ON runs, measurements, run_files TO " + name;
        sql << "GRANT SELECT ON schema_version TO " + name;
        transaction.commit();
    });
}

void makeStore(const Address& address, int schema) {
    migrate(*connect(address), address.backend, schema);
}

} // namespace Radio::Store

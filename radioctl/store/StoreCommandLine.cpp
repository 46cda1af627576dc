#include "radioctl/store/StoreCommandLine.h"

#include "radio/files/Label.h"
#include "radioctl/options/ExitCode.h"

#include <limits>

namespace Radio::Store {

StoreCommandLine::StoreCommandLine(CommandLine::Command program)
    : m_store(program.command("store", "Look into the store of runs, and take runs out\nand in")) {
    m_store.requireCommand();
    addSelection(add("list", "List the runs, the oldest first", runList));
    CommandLine::Command show =
        add("show", "Show the runs of a unit, and what the last one\nmeasured", runShow);
    show.option("UNIT", m_options.unit, "Serial number, or the beginning of a run's id")
        .required()
        .named("SERIAL|RUN");
    CommandLine::Command tables =
        add("tables", "Write the tables of a unit's last calibration,\nfor the radio that has it", runTables);
    tables.option("UNIT", m_options.unit, "Serial number, or the beginning of a run's id")
        .required()
        .named("SERIAL|RUN");
    tables.option("--channel", m_options.channel, "The radio channel, of a unit with several")
        .named("N")
        .within(0, std::numeric_limits<int>::max());
    tables.option("--out", m_options.out, "Where they go; otherwise to standard output").file();
    CommandLine::Command compare = add("compare", "Show what two runs measured side by side", runCompare);
    compare.option("A", m_options.unit, "Serial number, for its last run, or the\nbeginning of a run's id")
        .required()
        .named("SERIAL|RUN");
    compare.option("B", m_options.otherUnit, "The other").required().named("SERIAL|RUN");
    CommandLine::Command report =
        add("report", "Say what runs tell together: yield, room within\nlimits, drift, stations, outliers",
            runReport);
    report.option("--html", m_options.html, "Write a page with plots (needs gnuplot)").file();
    report.flag("--all", m_options.all, "Show every measurement, not only those with the\nleast room");
    addSelection(report);
    CommandLine::Command exported = add("export", "Write runs for other programs", runExport);
    exported
        .option("--format", m_options.format,
                "csv: a line for each measurement; json: a line\nfor each run; junit: XML")
        .required()
        .named("FORMAT")
        .oneOf({"csv", "json", "junit"});
    exported.option("--out", m_options.out, "Where they go; otherwise to standard output").file();
    addSelection(exported);
    CommandLine::Command imported = add("import", "Add runs that were exported as JSON", runImport);
    imported.option("FILE", m_options.files, "What \"export --format json\" has written").required().file();
    add("check", "See whether every run in the store is whole", runCheck);
    CommandLine::Command push = add("push", "Add runs that wait in files for the store", runPush);
    push.option("FOLDER", m_options.folder, "Where they wait; otherwise here").file().named("FOLDER");
    push.flag("--all", m_options.all, "Also those that wait for another store");
    CommandLine::Command grant =
        add("grant", "Let a user of PostgreSQL add runs and read them,\nand neither change nor delete any",
            runGrant);
    grant.option("USER", m_options.user, "Name of the user").required().named("USER");
}

CommandLine::Command StoreCommandLine::add(const char* name, const char* help,
                                           int (*program)(const StoreOptions&)) {
    CommandLine::Command command = m_store.command(name, help);
    command
        .option("--store", m_options.store,
                "The store: sqlite:FILE,\npostgresql://USER@HOST/DATABASE or default;\notherwise that of "
                "the settings file")
        .named("URL")
        .check(whyNoAddress);
    command.json(m_options.json);
    m_commands.emplace_back(command, program);
    return command;
}

void StoreCommandLine::addSelection(CommandLine::Command command) {
    command.option("--serial", m_options.selection.serial, "Runs of this unit alone").named("TEXT");
    command.option("--board", m_options.selection.board, "Of boards of this name").named("TEXT");
    command.option("--station", m_options.selection.station, "Of this station").named("TEXT");
    command.option("--kind", m_options.selection.kind, "Of this kind")
        .named("KIND")
        .oneOf({"calibration", "thermal", "audit", "acceptance"});
    command.option("--verdict", m_verdict, "That came to this").named("WORD").oneOf({"pass", "fail", "none"});
    command.option("--from", m_options.selection.from, "That began on this day or later, such as\n2026-03-01")
        .named("DAY")
        .check(whyNoDay);
    command.option("--to", m_options.selection.to, "That began on this day or before")
        .named("DAY")
        .check(whyNoDay);
}

int StoreCommandLine::run(bool json) {
    m_options.json |= json;
    m_options.selection.verdict = verdictFromWord(m_verdict);
    for (const auto& [command, program] : m_commands) {
        if (command.isCalled()) {
            return program(m_options);
        }
    }
    return ExitCode::wrongCommandLine;
}

} // namespace Radio::Store

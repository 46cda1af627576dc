#include "radioctl/keep/KeepOptions.h"

#include "radio/files/Label.h"
#include "radio/store/Address.h"

namespace Radio {

void addStoreOptions(CommandLine::Command& command, KeepOptions& options) {
    command
        .option(
            "--store", options.store,
            "Keep the run in this store: sqlite:FILE,\npostgresql://USER@HOST/DATABASE, default,\nor none; "
            "otherwise as the settings file says")
        .named("URL")
        .check([](const std::string& word) { return word == "none" ? "" : Store::whyNoAddress(word); });
    command.option("--operator", options.operatorName, "Who did it; for the store")
        .named("TEXT")
        .check(whyNoLabel);
}

void addUnitOptions(CommandLine::Command& command, KeepOptions& options, bool withStation) {
    command.option("--serial", options.serial, "Serial number of the unit; for the store")
        .named("TEXT")
        .check(whyNoLabel);
    if (withStation) {
        command.option("--station", options.station, "Where it was done; for the store")
            .named("TEXT")
            .check(whyNoLabel);
    }
}

} // namespace Radio

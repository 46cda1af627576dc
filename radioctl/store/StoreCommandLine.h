#ifndef RADIOCTL_STORE_STORECOMMANDLINE_H
#define RADIOCTL_STORE_STORECOMMANDLINE_H

#include "radioctl/options/Options.h"
#include "radioctl/store/StorePrograms.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Radio::Store {

/** The command lines of "radioctl store list", "show" and so on. */
class StoreCommandLine final : public CommandLine::Verb {
public:
    /** Adds "store" to the program's commands. Must outlive the parsing. */
    explicit StoreCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_store.isCalled(); }
    int run(bool json) override;

private:
    /** Adds a command with what all of them have. */
    CommandLine::Command add(const char* name, const char* help, int (*program)(const StoreOptions&));
    void addSelection(CommandLine::Command command);

    CommandLine::Command m_store;
    StoreOptions m_options;
    std::string m_verdict;
    std::vector<std::pair<CommandLine::Command, int (*)(const StoreOptions&)>> m_commands;
};

} // namespace Radio::Store

#endif

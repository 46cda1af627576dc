#ifndef RADIOCTL_LABORATORY_LABORATORYCOMMANDLINE_H
#define RADIOCTL_LABORATORY_LABORATORYCOMMANDLINE_H

#include "radioctl/laboratory/LaboratoryPrograms.h"
#include "radioctl/options/Options.h"

#include <string>

namespace Radio::Laboratory {

/** "radioctl laboratory" and "radioctl laboratory merge". */
class LaboratoryCommandLine final : public CommandLine::Verb {
public:
    explicit LaboratoryCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_laboratory.isCalled(); }
    int run(bool json) override;

private:
    /** What is wrong with the options; empty: nothing. */
    std::string takeOptions();

    LaboratoryOptions m_options;
    MergeOptions m_mergeOptions;
    std::string m_shard;
    CommandLine::Command m_laboratory;
    CommandLine::Command m_merge;
};

} // namespace Radio::Laboratory

#endif

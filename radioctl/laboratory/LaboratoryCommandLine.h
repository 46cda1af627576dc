#ifndef RADIOCTL_LABORATORY_LABORATORYCOMMANDLINE_H
#define RADIOCTL_LABORATORY_LABORATORYCOMMANDLINE_H

#include "radioctl/laboratory/LaboratoryPrograms.h"
#include "radioctl/laboratory/UnitsProgram.h"
#include "radioctl/options/Options.h"

#include <string>

namespace Radio::Laboratory {

/** "radioctl laboratory", "radioctl laboratory merge" and "radioctl laboratory units". */
class LaboratoryCommandLine final : public CommandLine::Verb {
public:
    explicit LaboratoryCommandLine(CommandLine::Command program);

    bool isCalled() const override { return m_laboratory.isCalled(); }
    int run(bool json) override;

private:
    /** What is wrong with the options; empty: nothing. */
    std::string takeOptions();
    void addUnits();

    LaboratoryOptions m_options;
    MergeOptions m_mergeOptions;
    std::string m_shard;
    CommandLine::Command m_laboratory;
    CommandLine::Command m_merge;
    UnitsOptions m_unitsOptions;
    CommandLine::Command m_units;
};

} // namespace Radio::Laboratory

#endif

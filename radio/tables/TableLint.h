#ifndef RADIO_TABLES_TABLELINT_H
#define RADIO_TABLES_TABLELINT_H

#include "radio/board/Board.h"
#include "radio/board/Finding.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Radio::Tables {

/** The corrections of one branch, and where they stand. */
struct LintedTable {
    /** How messages call it, for example "channel 1, I". */
    std::string label;
    CalibrationTable table;
    /** Where it stands as a whole. */
    Place place;
    /** The line of each value; empty when they have none of their own. */
    std::vector<unsigned> lines;

    Place placeOf(std::size_t node) const;
};

/** Where corrections are needed; nothing: nobody said. */
struct Coverage {
    /** Transmit carriers in kHz. */
    std::optional<Range> carriers;
    /** In degrees Celsius. */
    std::optional<Range> temperatures;
};

/** For example "18700000 kHz at 25 degrees". */
std::string nodeText(const CalibrationTable& table, std::size_t node);

/** Nodes much farther apart than the others, and where the axes end too soon. `label` is in front of each. */
void lintAxes(const std::string& label, const LintedTable& linted, const Coverage& needed,
              std::vector<Finding>& findings);

/** Values that do not go with those around them. */
void lintValues(const LintedTable& linted, std::vector<Finding>& findings);

/** Values that the converter cannot give, or only just. */
void lintConverter(const LintedTable& linted, const CorrectionBranch& converter,
                   std::vector<Finding>& findings);

} // namespace Radio::Tables

#endif

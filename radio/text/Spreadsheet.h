#ifndef RADIO_TEXT_SPREADSHEET_H
#define RADIO_TEXT_SPREADSHEET_H

#include <string>
#include <string_view>

/** How text stands in files that people open with a spreadsheet, which would carry a formula out. */
namespace Radio {

/**
 * `text` as one value of a line that spreadsheets take apart: harmless, behind an apostrophe where it would
 * be a formula, and in quotation marks where it would be several values.
 */
std::string asCell(std::string_view text);

/**
 * The same for what stands in a comment, in which there are no quotation marks: each of the values that a
 * spreadsheet would find behind a comma, a semicolon or a bar has the apostrophe that it needs. `text` itself
 * stands behind other text. What went through once is not changed any more.
 */
std::string asComment(std::string_view text);

} // namespace Radio

#endif

#ifndef RADIOCTL_PAGE_HTML_H
#define RADIOCTL_PAGE_HTML_H

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

/** What the pages have in common that radioctl writes: each stands alone, and asks nobody for anything. */
namespace Radio::Page {

// Colours that people with any colour vision can tell apart.
constexpr const char* blue = "#0072b2";
constexpr const char* orange = "#d55e00";
constexpr const char* green = "#009e73";
constexpr const char* purple = "#aa4499";

/** Text of a page: what would be markup, or nothing that a page may have, is written as something else. */
std::string inHtml(std::string_view text);

/** A cell of a table. These take text that is fit for a page. */
std::string cell(const std::string& text);
/** A cell whose text ends at the right, as numbers do. */
std::string numberCell(const std::string& text);

/** Everything in front of what a page says. `title` is fit for a page. */
void writeBeginning(std::ostream& out, const std::string& title);
void writeEnd(std::ostream& out);

/** What came of it, before anything else is shown. `kind` is "pass", "fail" or "none"; the lines are fit for
 * a page. */
void writeVerdict(std::ostream& out, const std::string& kind, const std::vector<std::string>& lines);

/** A drawing and what it is called. */
void writeFigure(std::ostream& out, const std::string& caption, const std::string& svg);

} // namespace Radio::Page

#endif

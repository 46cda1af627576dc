#include "radioctl/page/Html.h"

#include "radio/text/Words.h"

namespace Radio::Page {

namespace {

/** Drawings keep their colours on a light sheet: in a heat map bright and dark say something. On paper a
 * caption stays with its drawing, and a row in one piece. */
constexpr const char* style = R"(<style>
:root {
  color-scheme: light dark;
  --text: #222; --page: #fff; --sheet: #fff; --faint: #555; --rule: #ccc; --line: #ddd;
  --good: #009e73; --good-page: #e8f5f0; --bad: #d55e00; --bad-page: #fdf0e6;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    --text: #ddd; --page: #181a1b; --sheet: #f0f0f0; --faint: #aaa; --rule: #555; --line: #3a3a3a;
    --good-page: #12352b; --bad-page: #40230b;
  }
}
body { font: 16px/1.5 sans-serif; color: var(--text); background: var(--page); max-width: 62rem; margin: 2rem auto; padding: 0 1rem; }
h1 { font-size: 1.5rem; margin-bottom: 0; }
h2 { font-size: 1.2rem; margin-top: 2.5rem; border-top: 1px solid var(--rule); padding-top: 1rem; }
table { border-collapse: collapse; margin: 1rem 0; font-size: 0.9rem; }
th, td { padding: 0.2rem 0.8rem 0.2rem 0; text-align: left; border-bottom: 1px solid var(--line); }
.number { text-align: right; font-variant-numeric: tabular-nums; }
figure { margin: 1rem 0; }
figcaption { font-weight: bold; }
svg { width: 100%; height: auto; background: var(--sheet); }
.note { color: var(--faint); }
.warning, .verdict { border-left: 0.3rem solid var(--bad); padding: 0.1rem 1rem; background: var(--bad-page); margin: 1rem 0; }
.verdict p { margin: 0.4rem 0; }
.verdict p:first-child { font-weight: bold; }
.pass { border-color: var(--good); background: var(--good-page); }
.none { border-color: var(--rule); background: none; }
.bad { background: var(--bad-page); }
figure, tr, .warning, .verdict { break-inside: avoid; }
h1, h2, figcaption, .note { break-after: avoid; }
@media print { body { max-width: none; margin: 0; padding: 0; font-size: 11pt; } }
</style>
)";

} // namespace

std::string inHtml(std::string_view text) {
    std::string html;
    for (const char character : harmless(text)) {
        switch (character) {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        default:
            html += character;
        }
    }
    return html;
}

std::string cell(const std::string& text) {
    return "<td>" + text + "</td>";
}

std::string numberCell(const std::string& text) {
    return "<td class=\"number\">" + text + "</td>";
}

void writeBeginning(std::ostream& out, const std::string& title) {
    out << "<!DOCTYPE html>\n<html lang=\"en\" xmlns=\"http://www.w3.org/1999/xhtml\">\n<head>\n"
        << "<meta charset=\"utf-8\"/>\n"
        << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
        << "<title>" << title << "</title>\n"
        << style << "</head>\n<body>\n";
}

void writeEnd(std::ostream& out) {
    out << "</body>\n</html>\n";
}

void writeVerdict(std::ostream& out, const std::string& kind, const std::vector<std::string>& lines) {
    out << "<div class=\"verdict " << kind << "\">\n";
    for (const std::string& line : lines) {
        out << "<p>" << inHtml(line) << "</p>\n";
    }
    out << "</div>\n";
}

void writeFigure(std::ostream& out, const std::string& caption, const std::string& svg) {
    out << "<figure>\n<figcaption>" << caption << "</figcaption>\n" << svg << "</figure>\n";
}

} // namespace Radio::Page

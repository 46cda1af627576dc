#include "radioctl/page/Html.h"

namespace Radio::Page {

namespace {

constexpr const char* style = R"(<style>
body { font: 16px/1.5 sans-serif; color: #222; background: #fff; max-width: 62rem; margin: 2rem auto; padding: 0 1rem; }
h1 { font-size: 1.5rem; margin-bottom: 0; }
h2 { font-size: 1.2rem; margin-top: 2.5rem; border-top: 1px solid #ccc; padding-top: 1rem; }
table { border-collapse: collapse; margin: 1rem 0; font-size: 0.9rem; }
th, td { padding: 0.2rem 0.8rem 0.2rem 0; text-align: left; border-bottom: 1px solid #ddd; }
.number { text-align: right; font-variant-numeric: tabular-nums; }
figure { margin: 1rem 0; }
figcaption { font-weight: bold; }
svg { width: 100%; height: auto; }
.note { color: #555; }
.warning { border-left: 0.3rem solid #d55e00; padding: 0.1rem 1rem; background: #fdf0e6; }
.bad { background: #fdf0e6; }
</style>
)";

} // namespace

std::string inHtml(std::string_view text) {
    std::string html;
    for (const char character : text) {
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
            html += static_cast<unsigned char>(character) < ' ' || character == '\x7f' ? '?' : character;
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

void writeFigure(std::ostream& out, const std::string& caption, const std::string& svg) {
    out << "<figure>\n<figcaption>" << caption << "</figcaption>\n" << svg << "</figure>\n";
}

} // namespace Radio::Page

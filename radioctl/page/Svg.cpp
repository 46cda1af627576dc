#include "radioctl/page/Svg.h"

#include "radio/files/InputError.h"
#include "radioctl/page/Gnuplot.h"

#include <string_view>

namespace Radio::Page {

namespace {

/** Puts `text` behind every `mark`. */
void insertBehind(std::string& svg, std::string_view mark, const std::string& text) {
    for (std::size_t at = svg.find(mark); at != std::string::npos; at = svg.find(mark, at + mark.size())) {
        svg.insert(at + mark.size(), text);
    }
}

void replaceBetween(std::string& svg, std::string_view begin, std::string_view end, const std::string& text) {
    const std::size_t first = svg.find(begin);
    const std::size_t last = svg.find(end, first);
    if (first != std::string::npos && last != std::string::npos) {
        svg.replace(first, last + end.size() - first, text);
    }
}

} // namespace

std::string drawSvg(const std::string& script, const std::string& id, const std::string& title) {
    std::string svg = runGnuplot(script);
    // What stands in front of the element belongs to a file of its own.
    svg.erase(0, svg.find("<svg"));
    if (svg.find('>') == std::string::npos) {
        throw InputError({"--html", 0}, "the plots need gnuplot, which drew nothing");
    }
    replaceBetween(svg, "<title>", "</title>", "<title>" + title + "</title>");
    replaceBetween(svg, "<desc>", "</desc>", "");
    svg.insert(std::string_view("<svg").size(), R"( role="img" id=")" + id + '"');
    // Every drawing has the same names inside, and they hold for the whole page.
    const std::size_t content = svg.find('>');
    std::string inside = svg.substr(content);
    for (const std::string_view mark : {" id='", " id=\"", "href='#", "href=\"#", "url(#"}) {
        insertBehind(inside, mark, id + "-");
    }
    return svg.substr(0, content) + inside;
}

} // namespace Radio::Page

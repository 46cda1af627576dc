#ifndef RADIOCTL_PAGE_SVG_H
#define RADIOCTL_PAGE_SVG_H

#include <string>

namespace Radio::Page {

/**
 * Has gnuplot draw what `script` says, which sets its terminal to svg; gives an svg element for a page. The
 * names inside the drawing begin with `id`, which is one of its own for each drawing of a page; `title` is
 * read to those who do not see it. Throws InputError when it cannot be drawn.
 */
std::string drawSvg(const std::string& script, const std::string& id, const std::string& title);

} // namespace Radio::Page

#endif

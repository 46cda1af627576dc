#ifndef RADIOCTL_PAGE_GNUPLOT_H
#define RADIOCTL_PAGE_GNUPLOT_H

#include <string>

namespace Radio::Page {

/** Throws InputError when there is no gnuplot that can be run. */
void requireGnuplot();

/** What gnuplot draws to its standard output when it is given `script`. Throws InputError when it fails. */
std::string runGnuplot(const std::string& script);

} // namespace Radio::Page

#endif

#ifndef RADIOCTL_STORE_EXPORT_H
#define RADIOCTL_STORE_EXPORT_H

#include "radio/store/Run.h"

#include <ostream>
#include <string>

/** Runs as other programs take them. */
namespace Radio::Store {

/** Writes runs one after the other. */
class Exporter {
public:
    /** `format` is "csv", "json" or "junit"; `out` must outlive the object. */
    Exporter(std::ostream& out, const std::string& format);
    /** The run with its measurements and files. */
    void write(const Run& run);
    /** To be called once, behind the last. */
    void end();

private:
    void writeCsv(const Run& run);
    void writeJunit(const Run& run);

    std::ostream& m_out;
    std::string m_format;
};

/** `text` as a cell of comma-separated values: in quotation marks where it has a comma, a quotation mark or
 * the end of a line. */
std::string inCsv(const std::string& text);

} // namespace Radio::Store

#endif

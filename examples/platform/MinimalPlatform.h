// The platform's own side: what a process fills and looks at. One thread drives it.
#ifndef MINIMAL_PLATFORM_H
#define MINIMAL_PLATFORM_H

#include "DriverLayer.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Minimal {

/** A driver, and what stands in place of its hardware. Its record is its first word, and its own context. */
struct Driver {
    DriverInterface record;
    int value;
    int failure; // what it answers; 0: it works
    std::vector<std::uint8_t> bytes;
};

/** One axis: second.size() == 1. For each node of the first axis all values of the second. */
struct Table {
    std::vector<int> first;
    std::vector<int> second;
    std::vector<int> values;
};

// Nodes of these maps stay where they are, which is what the library asks of records and contents.
std::map<std::string, Driver>& drivers();
std::map<std::string, std::vector<int>>& variables(); // whose length stays
std::map<std::string, Table>& tables();

void addDriver(const std::string& name);
/** Publishes "IDriverLayer" and "ITemperatureHandler". Before the first module is made. */
void publishServices();
/** Information is written, too. */
void traceEverything();
/** In degrees Celsius. */
void setTemperature(int degrees);
/** False: a module failed, and those after it were not called. */
bool runPhase(unsigned long phase);

} // namespace Minimal

#endif

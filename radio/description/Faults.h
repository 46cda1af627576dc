#ifndef RADIO_DESCRIPTION_FAULTS_H
#define RADIO_DESCRIPTION_FAULTS_H

#include "radio/description/Inventory.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Radio::Describing {

/** The answers that a described board does not give of its own accord, as faults of a script. */
class Faults {
public:
    /** `inventory` must outlive the object. */
    explicit Faults(const Inventory& inventory) : m_inventory(inventory) {}

    /** Takes the answer to a call of the command that comes next. */
    void add(const Record& call);
    /** The lines before the command; then all is forgotten. */
    std::vector<std::string> take();

private:
    /** So many calls one after the other were answered with the code. */
    struct Run {
        std::int32_t code;
        unsigned times;
        bool isNatural;
    };
    using Key = std::pair<Kind, std::string>;

    bool isOnBoard(const Record& call) const;
    std::int32_t naturalCode(const Record& call) const;

    const Inventory& m_inventory;
    std::map<Key, std::vector<Run>> m_runs;
};

} // namespace Radio::Describing

#endif

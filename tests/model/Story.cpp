#include "Story.h"

#include <set>

namespace Told {

Name::Name(const std::string& text) {
    static std::set<std::string> kept;
    m_text = &*kept.insert(text).first;
}

} // namespace Told

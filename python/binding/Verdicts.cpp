#include "python/binding/BoardHandle.h"
#include "radio/board/Verdict.h"

namespace Radio::Python {

py::dict toPython(const Verdict& verdict) {
    py::list limits;
    for (const JudgedLimit& limit : verdict.limits) {
        limits.append(py::make_tuple(text(limit.name), limit.limit, orNone(limit.found), limit.isHeld(),
                                     orNone(std::string_view(limit.whyUnknown)), orNone(limit.channel),
                                     orNone(limit.frequency), orNone(limit.temperature)));
    }
    py::dict dict;
    dict["kind"] = orNone(toString(verdict.kind()));
    dict["limits"] = limits;
    dict["why_none"] = orNone(std::string_view(verdict.whyNone));
    dict["lines"] = texts(linesOf(verdict));
    return dict;
}

} // namespace Radio::Python

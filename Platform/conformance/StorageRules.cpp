#include "CStorageManager.h"
#include "conformance/Rule.h"

namespace Conformance {

namespace {

constexpr const char* variables =
    "FrequencyHandler: the channel spacing, and the offset array that is read at each carrier";
constexpr const char* record = "FrequencyHandler: the parameters of the frequency plan";
constexpr const char* name = "conformance.variable";

void put(Adapter& adapter, const char* variable, const std::vector<int>& values) {
    need(adapter.putVariable(variable, values), "add a variable");
}

/** Its content through the record; null: the lookup fails, or there is none. */
const int* throughRecord(const char* variable) {
    StorageVariable* found = nullptr;
    return isSuccess(CStorageManager_GetVariableByName(variable, &found)) && found != nullptr
               ? static_cast<const int*>(found->content)
               : nullptr;
}

/** Its content; null: the lookup fails. */
const int* content(const char* variable) {
    void* found = nullptr;
    return isSuccess(CStorageManager_GetVariableContentAddressByName(variable, &found, 0))
               ? static_cast<const int*>(found)
               : nullptr;
}

void hasContent(Adapter& adapter) {
    put(adapter, name, {-38000});
    hold(content(name) != nullptr, "the address of a variable that is there is not given");
    holdSame("its content", *content(name), -38000);
}

void recordHasContent(Adapter& adapter) {
    put(adapter, name, {17});
    hold(throughRecord(name) != nullptr, "the record of a variable that is there is not given");
    holdSame("its content", *throughRecord(name), 17);
}

void bothAreOne(Adapter& adapter) {
    put(adapter, name, {17});
    hold(content(name) != nullptr && content(name) == throughRecord(name),
         "the record leads to another content than the address");
}

void changesAreSeen(Adapter& adapter) {
    put(adapter, name, {17});
    const int* const kept = content(name);
    hold(kept != nullptr, "the address of a variable that is there is not given");
    for (int n = 0; n < 1000; ++n) {
        put(adapter, ("conformance.other." + std::to_string(n)).c_str(), {n});
    }
    put(adapter, name, {18});
    hold(content(name) == kept, "the address is another one after 1000 variables were added");
    holdSame("a change, read through the address that was kept", *kept, 18);
}

void severalLieInARow(Adapter& adapter) {
    put(adapter, name, {250, -1, 7000});
    const int* const first = content(name);
    hold(first != nullptr, "the address of a variable that is there is not given");
    holdSame("the first of three", first[0], 250);
    holdSame("the second of three", first[1], -1);
    holdSame("the third of three", first[2], 7000);
}

void absentIsNone(Adapter& /*adapter*/) {
    hold(throughRecord("conformance.nobody.has.this") == nullptr, "a record of it is given");
    hold(content("conformance.nobody.has.this") == nullptr, "an address of it is given");
}

} // namespace

Rules storageRules() {
    return {
        {"storage.content-is-given", "The address of a variable's content is given by its name.", variables,
         hasContent},
        {"storage.record-leads-to-content", "The second word of its record is the address of its content.",
         record, recordHasContent},
        {"storage.both-are-one", "Both ways lead to the same content.", record, bothAreOne},
        {"storage.address-stays",
         "The address stays as long as the storage manager does, and changes are seen through it.", variables,
         changesAreSeen},
        {"storage.several-lie-in-a-row",
         "Where a variable's content is several ints, the first is at its address and the others follow.",
         variables, severalLieInARow},
        {"storage.absent-is-none", "A variable that is not there gives a failure, or null.", variables,
         absentIsNone},
    };
}

} // namespace Conformance

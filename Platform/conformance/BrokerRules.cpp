#include "CInterfaceBroker.h"
#include "DriverLayer.h"
#include "IInterface_c.h"
#include "ITemperatureHandler.h"
#include "InterfaceBroker.h"
#include "conformance/Rule.h"
#include "conformance/Together.h"

#include <array>

namespace Conformance {

namespace {

constexpr const char* publishing = "FrequencyHandler, LoCancellation: publishing and withdrawing handlers";
constexpr const char* lookingUp =
    "FrequencyHandler::onModuleInit: finding drivers, temperature and remote units";
constexpr const char* lookingUpInC = "CTxIQImbalanceHandler: finding drivers and temperature";

class Thing : public virtual IInterface {};

class Recorded : public IInterface_c {
public:
    Recorded() { m_pCStruct = &m_word; }
    const void* record() const { return &m_word; }

private:
    int m_word = 0;
};

InterfaceBroker& broker() {
    return InterfaceBroker::getInstance();
}

void publish(const std::string& name, IInterface& thing) {
    constexpr std::size_t readable = 60;
    const std::string shown =
        name.size() > readable ? "a name of " + std::to_string(name.size()) + " letters" : name;
    hold(isSuccess(broker().registerInterface(name, &thing)), "publishing " + shown + " fails");
}

void isOne(Adapter& /*adapter*/) {
    hold(isOneForAll([] { return static_cast<const void*>(&InterfaceBroker::getInstance()); }),
         "eight threads that were first at the same time got different brokers");
}

void findsWhatIsPublished(Adapter& /*adapter*/) {
    Thing thing;
    publish("IThing_Of_Conformance", thing);
    hold(broker().findInterface("IThing_Of_Conformance") == &thing, "another object, or none, is found");
}

void absentNameFindsNothing(Adapter& /*adapter*/) {
    hold(broker().findInterface("INobody_Published_This") == nullptr, "something is found");
}

void namesAreWhole(Adapter& /*adapter*/) {
    Thing lower;
    Thing upper;
    Thing longer;
    const std::string name(300, 'n');
    publish("IThing_Of_Conformance", upper);
    publish("ithing_of_conformance", lower);
    publish(name, upper);
    publish(name + "1", longer);
    hold(broker().findInterface("IThing_Of_Conformance") == &upper &&
             broker().findInterface("ithing_of_conformance") == &lower,
         "names that differ in case are taken for one");
    hold(broker().findInterface(name) == &upper && broker().findInterface(name + "1") == &longer,
         "names that differ in the last of 301 letters are taken for one");
}

void keepsNames(Adapter& /*adapter*/) {
    Thing thing;
    std::string name("IThing_Whose_Name_Does_Not_Fit_In_The_String_Itself");
    publish(name, thing);
    name.assign(name.size(), '-'); // where it stood, something else stands
    hold(broker().findInterface("IThing_Whose_Name_Does_Not_Fit_In_The_String_Itself") == &thing,
         "the name was not copied: it is not found once the string of the caller is another");
}

void withdrawnIsNotFound(Adapter& /*adapter*/) {
    Thing thing;
    Thing next;
    publish("IThing_Of_Conformance", thing);
    hold(isSuccess(broker().unregisterInterface("IThing_Of_Conformance", nullptr)),
         "withdrawing with no place for what was withdrawn fails");
    hold(broker().findInterface("IThing_Of_Conformance") == nullptr, "it is still found");
    publish("IThing_Of_Conformance", next);
    hold(broker().findInterface("IThing_Of_Conformance") == &next, "the name cannot be taken again");
}

void withdrawingTellsWhat(Adapter& /*adapter*/) {
    Thing thing;
    IInterface* removed = nullptr;
    publish("IThing_Of_Conformance", thing);
    hold(isSuccess(broker().unregisterInterface("IThing_Of_Conformance", &removed)), "withdrawing fails");
    hold(removed == &thing, "something else, or nothing, is given back");
}

void publishesDriverLayer(Adapter& /*adapter*/) {
    auto* const layer = broker().getInterface<IInterface_c>("IDriverLayer");
    hold(layer != nullptr, "no \"IDriverLayer\" that derives from IInterface_c is found");
    hold(layer->getCStruct() != nullptr, "its record is null");
}

void publishesTemperature(Adapter& /*adapter*/) {
    hold(broker().getInterface<ITemperatureHandler>("ITemperatureHandler") != nullptr,
         "no \"ITemperatureHandler\" of that type is found");
}

void entryMayHoldNothing(Adapter& /*adapter*/) {
    static_cast<void>(broker().registerInterface("INothing_Of_Conformance", nullptr)); // or it is refused
    hold(broker().findInterface("INothing_Of_Conformance") == nullptr, "something is found");
    hold(broker().getInterface<Thing>("INothing_Of_Conformance") == nullptr, "something is seen");
}

void withdrawingNothingHarmsNothing(Adapter& /*adapter*/) {
    Thing thing;
    publish("IThing_Of_Conformance", thing);
    static_cast<void>(broker().unregisterInterface("INobody_Published_This", nullptr));
    static_cast<void>(broker().unregisterInterface("IThing_Of_Conformance_", nullptr));
    hold(broker().findInterface("IThing_Of_Conformance") == &thing,
         "after a name was withdrawn that nobody took, another is not found");
}

/** Says when it goes. */
class Mortal : public virtual IInterface {
public:
    explicit Mortal(bool& isGone) : m_isGone(isGone) {}
    Mortal(const Mortal&) = delete;
    Mortal& operator=(const Mortal&) = delete;
    ~Mortal() override { m_isGone = true; }

private:
    bool& m_isGone;
};

void ownsNothing(Adapter& /*adapter*/) {
    bool isGone = false;
    auto* const thing = new Mortal(isGone); // NOLINT(cppcoreguidelines-owning-memory): whoever takes it
    publish("IThing_Of_Conformance", *thing);
    static_cast<void>(broker().unregisterInterface("IThing_Of_Conformance", nullptr));
    hold(!isGone, "what was withdrawn is destroyed");
    delete thing; // NOLINT(cppcoreguidelines-owning-memory)
}

/** A handle, until it is given back. */
class Handle {
public:
    Handle() {
        hold(isSuccess(CInterfaceBroker_GetInstance(&m_handle)), "CInterfaceBroker_GetInstance fails");
        hold(m_handle != nullptr, "CInterfaceBroker_GetInstance stores no handle");
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { static_cast<void>(CInterfaceBroker_DestroyInstance(m_handle)); }

    /** The record; null: none. */
    void* get(const char* name) const {
        void* record = nullptr;
        return isSuccess(CInterfaceBroker_GetInterface(m_handle, name, &record)) ? record : nullptr;
    }

private:
    void* m_handle = nullptr;
};

void recordIsGiven(Adapter& /*adapter*/) {
    Recorded thing;
    publish("IThing_Of_Conformance", thing);
    hold(Handle().get("IThing_Of_Conformance") == thing.record(), "another record, or none, is given");
}

void absentRecordIsNone(Adapter& /*adapter*/) {
    hold(Handle().get("INobody_Published_This") == nullptr, "a record is given, and the answer is a success");
}

void objectWithoutRecordHasNone(Adapter& /*adapter*/) {
    Thing thing;
    class Unrecorded : public IInterface_c {
    } unrecorded;
    publish("IThing_Of_Conformance", thing);
    publish("IUnrecorded_Of_Conformance", unrecorded);
    hold(Handle().get("IThing_Of_Conformance") == nullptr,
         "a record is given of an object that has no C view");
    hold(Handle().get("IUnrecorded_Of_Conformance") == nullptr,
         "a record is given of an object whose record is null");
}

void handlesAreApart(Adapter& /*adapter*/) {
    Recorded thing;
    publish("IThing_Of_Conformance", thing);
    const Handle stays;
    { const Handle goes; }
    hold(stays.get("IThing_Of_Conformance") == thing.record(),
         "after another handle was given back, nothing is found with this one");
}

void recordOutlivesHandle(Adapter& /*adapter*/) {
    void* kept = nullptr;
    {
        const Handle handle;
        kept = handle.get("IDriverLayer");
    }
    hold(kept != nullptr && Handle().get("IDriverLayer") == kept,
         "the record of \"IDriverLayer\" is not the same with the next handle");
    const auto* const layer = static_cast<const DriverLayerInterface*>(kept);
    hold(layer->getDriverInterface != nullptr, "the record of \"IDriverLayer\" has no operation any more");
    DriverInterface* found = nullptr;
    static_cast<void>(layer->getDriverInterface(&found, "conformance.nobody.has.this"));
}

void recordsAgree(Adapter& /*adapter*/) {
    auto* const layer = broker().getInterface<IInterface_c>("IDriverLayer");
    hold(layer != nullptr, "no \"IDriverLayer\" is found");
    hold(Handle().get("IDriverLayer") == layer->getCStruct(),
         "the C view gives another record of \"IDriverLayer\" than the object has");
}

void handlesComeBack(Adapter& /*adapter*/) {
    for (int n = 0; n < 10000; ++n) {
        void* handle = nullptr;
        hold(isSuccess(CInterfaceBroker_GetInstance(&handle)) && handle != nullptr,
             "handle " + std::to_string(n + 1) + " is refused, although each was given back");
        hold(isSuccess(CInterfaceBroker_DestroyInstance(handle)), "giving a handle back fails");
    }
}

} // namespace

Rules brokerRules() {
    return {
        {"broker.is-one", "The broker is one object for the process, also when several threads are first.",
         publishing, isOne},
        {"broker.finds-what-is-published", "What was published is found under its name.", publishing,
         findsWhatIsPublished},
        {"broker.absent-name-finds-nothing", "Under a name that nobody took nothing is found.", lookingUp,
         absentNameFindsNothing},
        {"broker.names-are-whole",
         "Names are compared to their last letter, however long, and in their case.", publishing,
         namesAreWhole},
        {"broker.keeps-names", "A name is copied: the string need not outlive the call.", publishing,
         keepsNames},
        {"broker.withdrawn-is-not-found", "What was withdrawn is not found, and its name can be taken again.",
         publishing, withdrawnIsNotFound},
        {"broker.withdrawing-tells-what", "Withdrawing gives back what the entry held, where it is asked.",
         "components that withdraw", withdrawingTellsWhat},
        {"broker.entry-may-hold-nothing", "Under an entry that holds nothing, nothing is found.", lookingUp,
         entryMayHoldNothing},
        {"broker.withdrawing-nothing-harms-nothing",
         "A name that nobody took can be withdrawn, and others stay.",
         "FrequencyHandler, LoCancellation: withdrawing handlers that could not be published",
         withdrawingNothingHarmsNothing},
        {"broker.owns-nothing", "What is withdrawn is its owner's, and is not destroyed.", publishing,
         ownsNothing},
        {"broker.publishes-driver-layer",
         "\"IDriverLayer\" is published before the first phase, with a record.", lookingUp,
         publishesDriverLayer},
        {"broker.publishes-temperature", "\"ITemperatureHandler\" is published before the first phase.",
         "CTxIQImbalanceHandler, whose phase 11 fails without it", publishesTemperature},
        {"c-broker.record-is-given", "The C view gives the record of what was published.", lookingUpInC,
         recordIsGiven},
        {"c-broker.absent-record-is-none",
         "Under a name that nobody took it fails, or leaves the record null.", lookingUpInC,
         absentRecordIsNone},
        {"c-broker.object-without-record-has-none", "An object without a C record has none.", lookingUpInC,
         objectWithoutRecordHasNone},
        {"c-broker.handles-are-apart", "A handle is good when another was given back.", lookingUpInC,
         handlesAreApart},
        {"c-broker.record-outlives-handle", "A record is good after the handle was given back.", lookingUpInC,
         recordOutlivesHandle},
        {"c-broker.records-agree", "The C view of \"IDriverLayer\" is the record of the object.",
         lookingUpInC, recordsAgree},
        {"c-broker.handles-come-back", "As many handles as one likes can be had one after the other.",
         lookingUpInC, handlesComeBack},
    };
}

} // namespace Conformance

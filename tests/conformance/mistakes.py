#!/usr/bin/env python3
"""mistakes.py COMPILER MINIMAL ARCHIVE INCLUDE...

Makes one mistake after the other in a copy of the minimal platform in the folder MINIMAL, puts that before the rules in
ARCHIVE, and looks whether the rule that says so is named, and the platform refused. Exits with 1 unless each is found, and
each rule has a mistake that breaks it; and unless docs/porting.md shows what is said of one of them.
"""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

# What is written wrongly, what is written in its place, and the rule that has to find it.
MISTAKES = [
    ("sources depend on static objects that come later", "trace.early-sources-work",
     "OrbiTrace::OrbiTrace(const char* name, OrbiTraceLevel level) : m_name(name), m_level(level) {}",
     "static std::vector<const char*> names;\n"
     "OrbiTrace::OrbiTrace(const char* name, OrbiTraceLevel level) : m_name(name), m_level(level) { names.push_back(name); }",
     "return stream << m_name", "return stream << names.at(0)"),
    ("sources depend on static objects that are gone", "trace.sources-outlive-main",
     "OrbiTrace::~OrbiTrace() = default;",
     "static std::set<int>* open = new std::set<int>{1};\n"
     "static struct Closing { ~Closing() { delete open; open = nullptr; } } closing;\n"
     "OrbiTrace::~OrbiTrace() { if (open->empty()) { m_name = nullptr; } }"),
    ("a message that is not ended is thrown away", "trace.unended-messages-arrive",
     "return stream << m_name", "kept<std::ostringstream>().str({}); return kept<std::ostringstream>() << m_name",
     "void OrbiTrace::endLogMsg() {}", "void OrbiTrace::endLogMsg() { std::clog << kept<std::ostringstream>().str(); }"),
    ("a lock is held from the beginning of a message to its end", "trace.unended-messages-hold-nobody-up",
     "return stream << m_name", "kept<std::recursive_mutex>().lock(); return stream << m_name",
     "void OrbiTrace::endLogMsg() {}", "void OrbiTrace::endLogMsg() { kept<std::recursive_mutex>().unlock(); }"),
    ("threads write into one stream", "trace.messages-of-threads-stay-whole",
     "thread_local Message message;", "static auto& message = *std::clog.rdbuf();",
     "thread_local std::ostream", "static std::ostream"),
    ("errors are the least of all", "trace.errors-are-worst", "isFailure(level) ? 1 :", "isFailure(level) ? 9 :"),
    ("a broker for each thread", "broker.is-one", "static InterfaceBroker broker;",
     "static thread_local InterfaceBroker broker;"),
    ("names are cut", "broker.names-are-whole", "interfaces.emplace(name, iface)",
     "interfaces.emplace(name.substr(0, 64), iface)"),
    ("what is absent is something", "broker.absent-name-finds-nothing",
     "return found != nullptr ? *found : nullptr;",
     "return found != nullptr ? *found : state().interfaces.begin()->second;"),
    ("nothing is withdrawn", "broker.withdrawn-is-not-found", "state().interfaces.erase(name) != 0", "!name.empty()"),
    ("nobody hears what was withdrawn", "broker.withdrawing-tells-what", "*removed = findInterface(name);", ""),
    ("the driver layer is not published", "broker.publishes-driver-layer",
     'registerInterface("IDriverLayer"', 'registerInterface("IDriverlayer"'),
    ("the C view gives the object", "c-broker.record-is-given", "found->getCStruct()", "static_cast<void*>(found)"),
    ("the C view succeeds without a record", "c-broker.absent-record-is-none",
     "*iface = found != nullptr ? found->getCStruct() : nullptr;",
     "*iface = found != nullptr ? found->getCStruct() : broker;"),
    ("handles run out", "c-broker.handles-come-back", "*broker = &InterfaceBroker::getInstance();",
     "static int left = 100; if (left-- == 0) { return ResultFailed; } *broker = &InterfaceBroker::getInstance();"),
    ("modules are forgotten", "modules.phases-reach-modules", "state().modules.push_back(module);", "(void)module;"),
    ("modules that left are called", "modules.gone-modules-are-left-alone",
     "modules.erase(std::remove(modules.begin(), modules.end(), module), modules.end());",
     "(void)module; modules.size();"),
    ("modules are called in every phase", "modules.other-phases-do-not",
     "if (module->wantsPhase(phase) && ", "if (",
     "return phase == 11 ", "return phase == 12 ? onModuleInit() : phase == 11 "),
    ("two phases are exchanged", "modules.activation-calls-the-operation", "phase == 5 ", "phase == 6 "),
    ("a callback's record is copied", "c-modules.record-is-kept-by-address",
     "Callback{record, priority", "Callback{new ModuleCallbackRecord(*record), priority"),
    ("callbacks have the order of their registration", "c-modules.callbacks-have-their-order",
     "std::pair(id, order)", "std::pair(id, 0U * order)"),
    ("callbacks do not get their priority", "c-modules.callbacks-are-called", "phase, callback.priority)",
     "phase, ECallbackPriority{0})"),
    ("an identifier can be taken twice", "c-modules.identifier-is-registered-once",
     "state().identifiers.insert(id).second", "id != 0"),
    ("records have contents of their own", "storage.both-are-one",
     "return CStorageManager_GetVariableContentAddressByName(name, &record.content, 0);",
     "const auto code = CStorageManager_GetVariableContentAddressByName(name, &record.content, 0);\n"
     "    record.content = record.content ? new int(*static_cast<int*>(record.content)) : nullptr; return code;"),
    ("contents are copies", "storage.address-stays", "content->data() :", "new int(content->front()) :"),
    ("contents are lists of their parts", "storage.several-lie-in-a-row", "content->data() :",
     "static_cast<void*>((new std::vector<int*>{new int(content->front())})->data()) :"),
    ("lines are steps", "calibration.between-is-straight",
     "part1 == 0.0 ? along(n1)", "part1 != 1.0 ? along(n1)"),
    ("axes are exchanged", "calibration.axes-have-their-order", "reinterpret_cast<const Table*>(table), x1, x2)",
     "reinterpret_cast<const Table*>(table), x2, x1)"),
    ("a null table is looked into", "calibration.null-is-refused", "if (table == nullptr) {", "if (false) {"),
    ("temperatures are tenths of degrees", "temperature.changes-are-told", "observer->context, degrees)",
     "observer->context, degrees * 10)"),
    ("only the first observer is told", "temperature.all-are-told",
     "notifyTemperature(observer->context, degrees);", "notifyTemperature(observer->context, degrees);\n break;"),
    ("the last observer is told first", "temperature.order-is-kept", "observers.push_back(observer);",
     "observers.insert(state().observers.begin(), observer);"),
    ("the temperature service has no C record", "temperature.c-view-registers", "m_pCStruct = &temperatureRecord;", ""),
    ("what is absent is a driver", "drivers.absent-is-none",
     "*out = driver != nullptr ? &driver->record : nullptr;",
     "static DriverInterface none{}; *out = driver != nullptr ? &driver->record : &none;",
     "EDriverResult{driver != nullptr ? 0 : notFound}", "EDriverResult{0}"),
    ("values are cut to 16 bits", "drivers.write-reaches", ": value;", ": static_cast<std::int16_t>(value);"),
    ("drivers share their hardware", "drivers.are-apart", "Driver& driver = drivers()[name];",
     "Driver& driver = drivers()[name] = drivers()[name.substr(0, 12)]; static Driver& first = driver;",
     "driver.record = {&driver,", "driver.record = {&first,"),
    ("bytes are turned round", "drivers.buffer-reaches", "driver.bytes.assign(bytes, bytes + count);",
     "driver.bytes.assign(std::reverse_iterator(bytes + count), std::reverse_iterator(bytes));"),
    ("a reading has its sign lost", "drivers.read-gives", "*value = driver.value;",
     "*value = driver.value < 0 ? -driver.value : driver.value;"),
    ("every refusal is the same", "drivers.codes-come-through", ": value;\n    return EDriverResult{driver.failure};",
     ": value;\n    return EDriverResult{driver.failure != 0 ? 0x8000 : 0};"),
    ("a context is looked for by what it is", "drivers.record-is-an-argument-too",
     "driver.record = {&driver,", "static std::map<std::string, Driver*> places; places[name] = &driver;\n"
     "    driver.record = {&places[name],",
     "auto& driver = *static_cast<Driver*>(context);\n    driver.value",
     "auto& driver = **static_cast<Driver**>(context);\n    driver.value"),
    ("sources hang when they are destroyed", "trace.sources-outlive-main",
     "OrbiTrace::~OrbiTrace() = default;", "OrbiTrace::~OrbiTrace() { for (;;) { pause(); } }"),
    ("sources end the process when they are destroyed", "trace.sources-outlive-main",
     "OrbiTrace::~OrbiTrace() = default;", "OrbiTrace::~OrbiTrace() { std::abort(); }"),
    ("sources end the process when they are built", "trace.early-sources-work",
     "m_name(name), m_level(level) {}", "m_name(name), m_level(level) { std::abort(); }"),
    ("messages are cut", "trace.messages-arrive", "std::clog << str() <<", "std::clog << str().substr(0, 4096) <<"),
    ("a code has no level", "trace.any-code-has-a-level", "isFailure(level) ? 1 :",
     "level < 0 ? throw level : isFailure(level) ? 1 :"),
    ("an entry that holds nothing holds something", "broker.entry-may-hold-nothing", "interfaces.emplace(name, iface)",
     "interfaces.emplace(name, iface ? iface : static_cast<IInterface*>(&driverLayer()))"),
    ("another one is withdrawn", "broker.withdrawing-nothing-harms-nothing", "state().interfaces.erase(name) != 0",
     "(state().interfaces.erase(name.substr(0, name.size() - 1)), state().interfaces.erase(name)) != 0"),
    ("what is withdrawn is deleted", "broker.owns-nothing", "state().interfaces.erase(name) != 0",
     "(delete findInterface(name), state().interfaces.erase(name)) != 0"),
    ("the temperature service is not published", "broker.publishes-temperature",
     'registerInterface("ITemperatureHandler"', 'registerInterface("ITemperatureService"'),
    ("the C view gives the object where there is no record", "c-broker.object-without-record-has-none",
     "found->getCStruct() : nullptr;", "found->getCStruct() : static_cast<InterfaceBroker*>(broker)->findInterface(name);"),
    ("the first handle that is given back ends all", "c-broker.handles-are-apart",
     "EAFResult CInterfaceBroker_GetInstance(void** broker) {",
     "static bool isOpen = false;\nEAFResult CInterfaceBroker_GetInstance(void** broker) {\n    isOpen = true;",
     "*iface = found != nullptr ?", "*iface = found != nullptr && isOpen ?",
     "CInterfaceBroker_DestroyInstance(void* /*broker*/) {", "CInterfaceBroker_DestroyInstance(void* /*broker*/) { isOpen = false;"),
    ("a module manager for each thread", "modules.manager-is-one", "static CModuleManager manager;",
     "static thread_local CModuleManager manager;"),
    ("modules have another channel", "modules.base-keeps-what-it-is-given", "m_channel(channel)", "m_channel(id)"),
    ("modules hang when they are destroyed", "modules.base-keeps-what-it-is-given",
     "ModuleInterface::~ModuleInterface() = default;", "ModuleInterface::~ModuleInterface() { for (;;) { pause(); } }"),
    ("what a module does not override fails", "modules.base-does-nothing", "onPhaseStop() { return ResultOk; }",
     "onPhaseStop() { return ResultFailed; }"),
    ("what a module answers is lost", "modules.activation-gives-the-answer", "return phase == 11 ",
     "return phase == 11 ? (onModuleInit(), ResultOk) : phase == 11 "),
    ("modules that leave are deleted", "modules.are-not-owned",
     "EAFResult CModuleManager::UnRegisterModule(ModuleInterface* module) {",
     "EAFResult CModuleManager::UnRegisterModule(ModuleInterface* module) {\n    delete module;"),
    ("the last module leaves, whoever wants to", "modules.strangers-may-leave",
     "modules.erase(std::remove(modules.begin(), modules.end(), module), modules.end());", "modules.pop_back();"),
    ("a callback's phases are copied", "c-modules.phases-are-kept-by-address", "Callback{record, priority, phases, count}",
     "Callback{record, priority, new unsigned long(*phases), count}"),
    ("what is absent is a variable", "storage.absent-is-none", "= find(variables(), name);", "= &variables()[name];\n    content->resize(3);"),
    ("what is absent is a table", "calibration.absent-is-none", "(find(tables(), name))", "(&tables()[name])"),
    ("values are rounded up", "calibration.nodes-are-met", "(value < 0 ? -0.5 : 0.5)", "1"),
    ("the second axis has steps", "calibration.between-is-bilinear", "part == 0.0 ? row[0]", "part != 1.0 ? row[0]"),
    ("without a table the value is 0", "calibration.null-is-refused", "return ECHResult{notFound};",
     "*y = 0;\n        return ECHResult{notFound};"),
    ("beyond the end is whatever was there", "calibration.ends-are-answered",
     "*y = valueOf(*reinterpret_cast<const Table*>(table), x1, x2);",
     "static int junk = 0;\n    const Table& asked = *reinterpret_cast<const Table*>(table);\n"
     "    *y = x1 > asked.first.back() ? ++junk : valueOf(asked, x1, x2);"),
    ("an observer's record is copied", "temperature.record-is-kept-by-address", "observers.push_back(observer);",
     "observers.push_back(new ITemperatureObserver(*observer));"),
    ("temperature services end the process when they are destroyed", "temperature.type-is-seen",
     "ITemperatureHandler::~ITemperatureHandler() = default;", "ITemperatureHandler::~ITemperatureHandler() { std::abort(); }"),
    ("remote units end the process when they are destroyed", "remote-units.type-is-seen",
     "IRauHandler::~IRauHandler() = default;", "IRauHandler::~IRauHandler() { std::abort(); }"),
    ("records are made anew at each lookup", "drivers.record-stays", "? &driver->record : nullptr;",
     "? new DriverInterface(driver->record) : nullptr;"),
    ("drivers have no context", "drivers.have-a-context", "driver.record = {&driver,", "driver.record = {nullptr,"),
    ("nothing is found", "broker.finds-what-is-published", "return found != nullptr ? *found : nullptr;", "return nullptr;"),
    ("the C view copies records", "c-broker.records-agree", "found->getCStruct() : nullptr;",
     "new DriverLayerInterface(*static_cast<DriverLayerInterface*>(found->getCStruct())) : nullptr;"),
    ("variables have no content", "storage.content-is-given", "content->data() :", "nullptr :"),
    ("the lookup of an absent driver fails and leaves a record", "drivers.absent-leaves-no-record",
     "*out = driver != nullptr ? &driver->record : nullptr;",
     "static DriverInterface none{}; *out = driver != nullptr ? &driver->record : &none;"),
    ("the lookup of an absent table fails and leaves a handle", "calibration.absent-leaves-no-handle",
     "return ECHResult{*out != nullptr ? 0 : notFound};",
     "if (*out == nullptr) { *out = reinterpret_cast<CalibrationTableHandle>(&tables()); return ECHResult{notFound}; }\n"
     "    return ECHResult{0};"),
    ("names are those of the caller", "broker.keeps-names", "std::map<std::string, IInterface*> interfaces;",
     "std::map<std::string_view, IInterface*> interfaces;"),
    ("there is one table at a time", "calibration.handles-stay",
     "reinterpret_cast<CalibrationTableHandle>(find(tables(), name));",
     "reinterpret_cast<CalibrationTableHandle>(find(tables(), name));\n"
     "    static Table loaded; if (*out) { loaded = tables()[name]; *out = reinterpret_cast<CalibrationTableHandle>(&loaded); }"),
    ("records go with the handle", "c-broker.record-outlives-handle",
     "EAFResult CInterfaceBroker_GetInterface(", "static DriverLayerInterface ofHandle;\nEAFResult CInterfaceBroker_GetInterface(",
     "return *iface != nullptr ? ResultOk : ResultFailed;\n}\nEAFResult CInterfaceBroker_DestroyInstance(void* /*broker*/) {",
     "if (*iface && std::string(name) == \"IDriverLayer\") {\n"
     "        ofHandle = *static_cast<DriverLayerInterface*>(*iface); *iface = &ofHandle; }\n"
     "    return *iface != nullptr ? ResultOk : ResultFailed;\n}\n"
     "EAFResult CInterfaceBroker_DestroyInstance(void* /*broker*/) { ofHandle = {};"),
    ("remote units exchange their directions", "remote-units.are-published",
     "{ return keep(tx, frequency); }", "{ return keep(rx, frequency); }",
     "override { return keep(rx, frequency); }\n    static", "override { return keep(tx, frequency); }\n    static"),
    ("bytes that are refused are a success", "drivers.codes-come-through",
     "driver.bytes.assign(bytes, bytes + count);\n    }\n    return EDriverResult{driver.failure};",
     "driver.bytes.assign(bytes, bytes + count);\n    }\n    return EDriverResult{0};"),
    ("every reading that fails has one code", "drivers.codes-come-through",
     "*value = driver.value;\n    return EDriverResult{driver.failure};",
     "*value = driver.value;\n    return EDriverResult{driver.failure != 0 ? 0x8000 : 0};"),
    ("beyond the end of the second axis is whatever was there", "calibration.ends-are-answered",
     "*y = valueOf(*reinterpret_cast<const Table*>(table), x1, x2);",
     "static int junk = 0;\n    const Table& asked = *reinterpret_cast<const Table*>(table);\n"
     "    *y = asked.second.size() > 1 && x2 > asked.second.back() ? ++junk : valueOf(asked, x1, x2);"),
    ("the first word of a variable's record leads to its content", "storage.record-leads-to-content", "*out = &record;",
     "*out = reinterpret_cast<StorageVariable*>(&record.content);"),
]

# The mistake of which docs/porting.md shows what is said.
SHOWN = "names are cut"


def sources(minimal):
    return [minimal / name for name in ("MinimalPlatform.cpp", "MinimalDrivers.cpp", "MinimalTables.cpp")]


def changed(platform, adapter, replacements):
    """Both texts, with what is replaced in the one or the other."""
    for old, new in zip(replacements[::2], replacements[1::2]):
        count = platform.count(old) + adapter.count(old)
        if count != 1:
            raise ValueError(f"{count} times in the minimal platform and its adapter, expected once: {old}")
        platform = platform.replace(old, new)
        adapter = adapter.replace(old, new)
    return platform, adapter


def not_in_the_guide(said, minimal):
    """What is said of the rule that does not hold, and in the end, and does not stand in the guide; empty: all does."""
    guide = (minimal.parents[1] / "docs/porting.md").read_text(encoding="utf-8")
    shown = [re.search(r"^BROKEN .*\n(?: .*\n)+", said, re.MULTILINE).group(), said.splitlines()[-1]]
    return "\n".join(text for text in shown if text not in guide)


def look(compiler, minimal, archive, includes, folder, mistake):
    """The names of all rules, and what is wrong with how the mistake was met; empty: nothing."""
    what, rule, *replacements = mistake
    stem = pathlib.Path(folder) / "".join(letter if letter.isalnum() else "-" for letter in what)
    source = stem.with_name(stem.name + ".cpp")
    adapter = (minimal / "MinimalAdapter.cpp").read_text()
    platform, adapter_changed = changed("".join(file.read_text() for file in sources(minimal)), adapter, replacements)
    source.write_text("#include <sstream>\n#include <cstdlib>\n#include <iterator>\n#include <unistd.h>\n" + platform)
    linked = folder + "/adapter.o"
    if adapter_changed != adapter:
        linked = str(stem) + "-adapter.cpp"
        pathlib.Path(linked).write_text(adapter_changed)
    program = str(stem) + ".program"
    subprocess.run([compiler, "-std=c++17", "-O0", "-w", "-o", program, str(source), linked, archive,
                    "-I", str(minimal), *includes, "-pthread"], check=True)
    # What hangs does so in several rules; what takes longer than that for another reason is one more that is broken.
    run = subprocess.run([program, "--json", "--deadline", "5"], capture_output=True, text=True, check=False)
    states = {one["rule"]: one["state"] for one in map(json.loads, run.stdout.splitlines())}
    broken = [name for name, state in states.items() if state == "BROKEN"]
    print(f"{what}: {', '.join(broken)}", flush=True)
    if what == SHOWN:
        lost = not_in_the_guide(subprocess.run([program], capture_output=True, text=True, check=False).stdout, minimal)
        if lost:
            return states.keys(), f"{what}: docs/porting.md does not show this: {lost}"
    if run.returncode != 1 or rule not in broken:
        return states.keys(), f"{what}: ended with {run.returncode}, expected 1 and {rule} among the broken rules: {broken}"
    return states.keys(), ""


def main(compiler, minimal, archive, *directories):
    minimal = pathlib.Path(minimal)
    includes = [word for directory in directories for word in ("-I", directory)]
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([compiler, "-std=c++17", "-O0", "-c", "-o", folder + "/adapter.o", str(minimal / "MinimalAdapter.cpp"),
                        *includes], check=True)
        with ThreadPoolExecutor(os.cpu_count()) as workers:
            looks = list(workers.map(lambda mistake: look(compiler, minimal, archive, includes, folder, mistake), MISTAKES))
    wrong = [text for _, text in looks if text]
    print(f"{len(MISTAKES)} mistakes, {len(MISTAKES) - len(wrong)} found")
    # A rule that no mistake breaks may be one that cannot be broken.
    wrong += [f"{rule}: no mistake shows that it can be broken"
              for rule in sorted(set().union(*(rules for rules, _ in looks)) - {mistake[1] for mistake in MISTAKES})]
    if wrong:
        sys.exit("\n".join(wrong))


if __name__ == "__main__":
    main(*sys.argv[1:])

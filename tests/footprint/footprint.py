"""footprint.py READELF NM LIBRARY OBJECT-DIRECTORY BUDGET INDIRECT-CALLS

Prints what the library takes on the target, and fails when that is more than its budget: sections of LIBRARY, and for
each exported operation the stack of the longest chain of calls inside the library, from the call graphs (*.ci) that
the compiler left in OBJECT-DIRECTORY.

Not counted, because they belong to others: the stack of the platform, of clients and of the standard library, which
the chain may call at its end. A call through a pointer or a table does not say where it leads; INDIRECT-CALLS does,
and an operation that is missing there is a failure, and so are recursion and frames without a bound.
"""

import fnmatch
import pathlib
import re
import subprocess
import sys

INDIRECT = "__indirect_call"


def run(*command, text=None):
    return subprocess.run(command, input=text, stdout=subprocess.PIPE, check=True, text=True).stdout


def section_sizes(readelf, library):
    lines = run(readelf, "--sections", "--wide", library).splitlines()
    rows = [re.match(r" +\[ *\d+\] (\S+) +\S+ +\S+ \S+ (\S+) ", line) for line in lines]
    return {row[1]: int(row[2], 16) for row in rows if row}


class CallGraph:
    """The functions of the library by their linker's names: frames in bytes, and who calls whom."""

    def __init__(self, directory):
        self.frames = {}
        self.calls = {}
        self.unbounded = set()
        for file in sorted(pathlib.Path(directory).rglob("*.ci")):
            self._read(file)

    def _read(self, file):
        def local(title):
            # What only one file knows is told apart by that file's name.
            return f"{file.name}:{title.rsplit(':', 1)[1]}" if ":" in title else title

        for line in file.read_text().splitlines():
            node = re.match(r'node: \{ title: "([^"]*)" label: "[^"]*\\n(\d+) bytes \(([a-z,]+)\)', line)
            edge = re.match(r'edge: \{ sourcename: "([^"]*)" targetname: "([^"]*)"', line)
            if node:
                name = local(node[1])
                self.frames[name] = max(int(node[2]), self.frames.get(name, 0))
                if node[3] == "dynamic":
                    self.unbounded.add(name)
            elif edge:
                self.calls.setdefault(local(edge[1]), set()).add(local(edge[2]))


def readable(names):
    """{name: what a person calls it, without parameters}"""
    names = sorted(names)
    plain = [name.split(":", 1)[1] if ":" in name else name for name in names]
    shown = run("c++filt", "--no-params", text="\n".join(plain)).splitlines()
    return dict(zip(names, [re.sub(r" \[clone .*", "", text) for text in shown]))


def resolve_indirect_calls(graph, names, table):
    """Puts those in the place of an indirect call to which it may lead. Gives what is wrong with the table."""
    wrong = []
    rules = {}
    for line in pathlib.Path(table).read_text().splitlines():
        if line and not line.startswith("#"):
            caller, _, targets = line.partition(" -> ")
            rules[caller.strip()] = targets.split()
    used = set()
    for caller, callees in graph.calls.items():
        if INDIRECT not in callees:
            continue
        callees.discard(INDIRECT)
        rule = next((rule for rule in rules if fnmatch.fnmatchcase(names[caller], rule)), None)
        if rule is None:
            wrong.append(f"{names[caller]} makes an indirect call; where does it lead?")
            continue
        used.add(rule)
        for target in rules[rule]:
            found = [name for name in graph.frames if fnmatch.fnmatchcase(names[name], target) and name != caller]
            if target != "others" and not found:
                wrong.append(f"{rule} -> {target}: there is no such operation")
            callees.update(found)
    wrong += [f"{rule}: makes no indirect call" for rule in sorted(set(rules) - used)]
    return wrong


class Depth:
    def __init__(self, graph):
        self.graph = graph
        self.known = {}
        self.recursive = set()

    def below(self, name, above=()):
        """(bytes, chain) of the deepest chain of calls that begins with `name`."""
        if name in above:
            self.recursive.add(name)
            return 0, []
        if name not in self.known:
            inside = [callee for callee in self.graph.calls.get(name, ()) if callee in self.graph.frames]
            deepest = max((self.below(callee, above + (name,)) for callee in inside), default=(0, []))
            self.known[name] = (self.graph.frames[name] + deepest[0], [name] + deepest[1])
        return self.known[name]


class Symbols:
    """Symbols at one address are one function, of which the graph knows one name."""

    def __init__(self, nm, library, graph):
        self.graph = graph
        self.exported = []
        self.addresses = {}
        self.at = {}
        for line in run(nm, "--defined-only", library).splitlines():
            address, _, symbol = line.split()
            self.addresses[symbol] = address
            self.at.setdefault(address, set()).add(symbol)
        for line in run(nm, "-D", "--defined-only", library).splitlines():
            _, kind, symbol = line.split()
            if kind in "TW" and not symbol.startswith("_ZT"):
                self.exported.append(symbol)
        undefined = run(nm, "-D", "--undefined-only", library).splitlines()
        self.elsewhere = {line.split()[-1].partition("@")[0] for line in undefined}

    def node(self, symbol):
        """The function's name in the graph; None for a function that the graph does not know."""
        same = self.at.get(self.addresses.get(symbol), ())
        return next((name for name in [symbol, *sorted(same)] if name in self.graph.frames), None)


def resolve_aliases(graph, symbols):
    """Has every call lead to the one name that the graph knows of a function. Gives the calls that lead nowhere."""
    wrong = []
    for caller, callees in graph.calls.items():
        for callee in sorted(callees - graph.frames.keys() - {INDIRECT}):
            callees.discard(callee)
            file, _, symbol = callee.rpartition(":")
            symbol = re.sub(r"\.localalias$", "", symbol)
            if symbol.startswith("*.LTHUNK"):  # a thunk, or the deleting destructor, calls what it stands for
                symbol = re.sub(r"^_ZT(?:hn?\d+|vn?\d+_n?\d+)_", "_Z", caller).replace("D0Ev", "D1Ev")
            base = re.sub("D1Ev$", "D2Ev", symbol)  # the same function, unless there are virtual bases
            node = next((node for node in (symbols.node(symbol), f"{file}:{base}", base) if node in graph.frames), None)
            if node is not None:
                callees.add(node)
            elif symbol not in symbols.elsewhere and not symbol.startswith(("__aeabi_", "__builtin_")):
                wrong.append(f"{caller} calls {callee}, which is not in the call graph")
    return wrong


def main():
    readelf, nm, library, directory, budget_file, table = sys.argv[1:]
    budget = {}
    for line in pathlib.Path(budget_file).read_text().splitlines():
        if line and not line.startswith("#"):
            name, value = line.split()
            budget[name] = int(value)
    wrong = []

    sections = section_sizes(readelf, library)
    taken = {"text": sections[".text"], "data+bss": sections.get(".data", 0) + sections.get(".bss", 0)}
    print("Memory of the library, in bytes, and its budget:")
    for name, value in taken.items():
        print(f"  {name:10} {value:6} of {budget[name]}")
        if value > budget[name]:
            wrong.append(f"{name} takes {value} bytes of {budget[name]}")
    others = {name: sections[name] for name in (".rodata", ".data.rel.ro", ".got") if name in sections}
    print("  not counted: " + ", ".join(f"{name} {value}" for name, value in others.items()))

    graph = CallGraph(directory)
    names = readable(set(graph.frames) | set(graph.calls))
    symbols = Symbols(nm, library, graph)
    wrong += resolve_aliases(graph, symbols)
    wrong += resolve_indirect_calls(graph, names, table)
    depth = Depth(graph)
    operations = {}  # both forms of a destructor have one name
    for symbol in symbols.exported:
        node = symbols.node(symbol)
        if node is None:
            wrong.append(f"{symbol}: not in the call graph")
        else:
            found = depth.below(node)
            operations[names[node]] = max(found, operations.get(names[node], found))
    print(f"\nStack of each exported operation inside the library, in bytes, of {budget['stack']}:")
    for name, (stack, chain) in sorted(operations.items(), key=lambda item: (-item[1][0], item[0])):
        print(f"  {stack:5}  {name}")
        if stack > budget["stack"]:
            wrong.append(f"{name} takes {stack} bytes of stack of {budget['stack']}: "
                         + ", ".join(f"{names[link]} {graph.frames[link]}" for link in chain))
    wrong += [f"{names[name]} calls itself" for name in sorted(depth.recursive)]
    wrong += [f"the stack of {names[name]} has no bound" for name in sorted(graph.unbounded)]
    if not graph.frames:
        wrong.append(f"no call graph in {directory}")

    print("\nNot counted: the platform, clients and the standard library, which an operation may call at its deepest.")
    for line in wrong:
        print(f"FAILED: {line}")
    return 1 if wrong else 0


sys.exit(main())

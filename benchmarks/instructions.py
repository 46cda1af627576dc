"""instructions.py BUDGET PAGE PROCESSOR PROGRAM [--plugin FILE EMULATOR...]
instructions.py --growth PROGRAM

Counts the instructions of each operation of PROGRAM, which is count_instructions: on this computer with callgrind,
under an EMULATOR with its plugin. Fails when an operation, by the library or on a floor, takes more or less than its
budget by over 2 %, when a cost that has to be constant or linear is not, or when PAGE shows other figures than BUDGET.
benchmarks/report records the counts anew, in both.

With --growth it fails only when many channels cost the platform more for each than few: a ratio within one run, which holds
with every compiler.

Counts are of instructions, not of time: every run on one computer gives the same ones. On another computer some differ
by fractions of a percent, although the C library is told to use none of the variants of its functions that only some
processors have.
"""

import math
import os
import pathlib
import re
import subprocess
import sys
import tempfile

MARGIN = 0.02
RENEW = "benchmarks/report records it anew"
LIBRARY = "libFrequencyHandler.so"
PLATFORM = "libStandalonePlatform.so"
# Each of many channels may cost the platform that many times what each of few does.
FEW, MANY, GROWTH = 64, 4096, 1.5
FLOORS = {"floor": "floor.", "with checks": "checked-floor."}
# What the library takes itself of an operation has a budget of its own, under a name that begins so.
OWN = "own."
# As the page calls them.
PROCESSORS = {"x86-64": "x86-64", "32-bit ARM": "armhf"}
# Names of the processor's abilities as the C library knows them: what is left is what every x86-64 can do.
ABILITIES = ("AVX AVX2 AVX512F AVX512VL AVX512BW AVX512DQ BMI1 BMI2 ERMS FSRM LZCNT MOVBE POPCNT RTM "
             "SSE4_1 SSE4_2 SSSE3 XSAVE XSAVEC")
ENVIRONMENT = {"PATH": os.environ.get("PATH", ""), "LC_ALL": "C", "LD_BIND_NOW": "1",
               "GLIBC_TUNABLES": "glibc.cpu.hwcaps=" + ",".join("-" + name for name in ABILITIES.split())}


class Count:
    """What one operation took: instructions in all, and, where that is known, by shared object and by the function in it."""

    def __init__(self, total, objects=None, functions=None):
        self.total = total
        self.objects = objects or {}
        self.functions = functions or {}

    def less(self, nothing, repetitions):
        return Count((self.total - nothing.total) / repetitions,
                     {name: cost / repetitions for name, cost in self.objects.items()},
                     {name: cost / repetitions for name, cost in self.functions.items()})


def read_callgrind(path):
    """The own costs, without those of called functions, of one dump."""
    names = {}

    def name(text):
        number, _, given = text.partition(" ")
        if given:
            names[number] = given
        return names.get(number, number)

    objects, functions, total = {}, {}, 0
    place = {"ob": "", "fn": ""}
    is_of_callee = False
    for line in path.read_text().splitlines():
        key, _, value = line.partition("=")
        if key in ("ob", "fn"):
            place[key] = name(key + value)
        elif key in ("cob", "cfn"):
            name(key[1:] + value)
        elif key == "calls":
            is_of_callee = True
        elif re.match(r"[0-9+*-]+ \d+$", line):
            cost = 0 if is_of_callee else int(line.split()[1])
            is_of_callee = False
            total += cost
            library = pathlib.Path(place["ob"]).name
            objects[library] = objects.get(library, 0) + cost
            function = (library, place["fn"])
            functions[function] = functions.get(function, 0) + cost
    return Count(total, objects, functions)


def count_with_callgrind(program):
    with tempfile.TemporaryDirectory() as folder:
        run = subprocess.run(
            ["valgrind", "-q", "--tool=callgrind", "--toggle-collect=measured", "--dump-after=measured",
             f"--callgrind-out-file={folder}/count", program],
            env=ENVIRONMENT, stdout=subprocess.PIPE, check=True, text=True)
        lines = run.stdout.splitlines()
        return lines, [read_callgrind(pathlib.Path(f"{folder}/count.{number + 1}")) for number in range(len(lines))]


def count_with_emulator(program, plugin, emulator):
    run = subprocess.run([*emulator, "-E", "LD_BIND_NOW=1", "-plugin", plugin, program],
                         stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=True, text=True)
    # What was executed before each beginning, and then between beginning and end: in all, and in the library.
    counts = [[int(word) for word in line.split()] for line in run.stderr.splitlines()[1::2]]
    return run.stdout.splitlines(), [Count(total, {LIBRARY: inside}) for total, inside in counts]


def count(program, plugin=None, emulator=()):
    """{operation: Count for one time}"""
    lines, counts = count_with_emulator(program, plugin, emulator) if plugin else count_with_callgrind(program)
    if len(lines) != len(counts):
        sys.exit(f"{program} carried out {len(lines)} operations, and {len(counts)} were counted")
    measured = {}
    for line, raw in zip(lines, counts):
        name, repetitions = line.split()
        measured[name] = raw if name.startswith("nothing.") else raw.less(measured[f"nothing.{repetitions}"],
                                                                         int(repetitions))
    return {name: value for name, value in measured.items() if not name.startswith("nothing.")}


def read_budget(path):
    """{operation: {processor: instructions}}"""
    processors, budget = [], {}
    for line in pathlib.Path(path).read_text().splitlines():
        words = line.split()
        if words[:2] == ["#", "operation"]:
            processors = words[2:]
        elif words and words[0] != "#":
            budget[words[0]] = {processor: int(word) for processor, word in zip(processors, words[1:])
                                if word != "-"}
    return budget


def write_budget(path, budget):
    processors = PROCESSORS.values()
    text = ["# Instructions that each operation takes, with a margin of 2 %: benchmarks/instructions.py compares,",
            "# benchmarks/report records them anew.",
            f"{'# operation':<56}" + "".join(f"{processor:>10}" for processor in processors)]
    text += [f"{name:<56}" + "".join(f"{row.get(processor, '-'):>10}" for processor in processors)
             for name, row in budget.items()]
    pathlib.Path(path).write_text("\n".join(text) + "\n")


def has_own_budget(name):
    """Whether `name` is an operation of the library in service: not a floor, a boot, a lookup or a variation."""
    return not re.search(r"floor\.|^boot|^shutdown|^lookup|\.(observers|channel|trace)-", name)


def figures(counts):
    """{name in the budget: instructions}"""
    return {**{name: round(value.total) for name, value in counts.items()},
            **{OWN + name: round(own(value)) for name, value in counts.items() if has_own_budget(name)}}


def off_budget(counts, budget, processor):
    """What is wrong, line by line."""
    measured = figures(counts)
    for name in budget:
        if name not in measured:
            yield f"{name} has a budget, and there is no such operation"
    for name, taken in measured.items():
        allowed = budget.get(name, {}).get(processor)
        if allowed is None:
            yield f"{name} takes {taken} instructions on {processor} and has no budget; {RENEW}"
        elif is_off(taken, allowed, MARGIN):
            difference = 100 * taken / allowed - 100
            advice = "" if difference > 0 else f"; so that it stays so, {RENEW}"
            yield (f"{name} takes {taken} instructions on {processor}, {abs(difference):.1f} % "
                   f"{'more' if difference > 0 else 'less'} than its budget of {allowed}{advice}")


def off_page(page, budget):
    """Which figures of the page are not those of the budget, line by line."""
    columns, shown = [], set()
    for line in pathlib.Path(page).read_text().splitlines():
        cells = [cell.strip() for cell in line.strip("| ").split("|")] if line.startswith("|") else []
        if not cells:
            columns = []
        elif cells[0] == "operation":
            columns = cells
        elif columns and cells[0].startswith("`"):
            processor = before = ""
            for column, cell in zip(columns, cells):
                is_of_the_library = column == "own" and before in PROCESSORS
                processor, before = PROCESSORS.get(column, processor), column
                name = cells[0].strip("`")
                if is_of_the_library and not has_own_budget(name):
                    continue
                if column in PROCESSORS or column in FLOORS or is_of_the_library:
                    name = (OWN if is_of_the_library else FLOORS.get(column, "")) + name
                    shown.add((name, processor))
                    figure = budget.get(name, {}).get(processor)
                    if cell != ("" if figure is None else f"{figure:,}"):
                        yield f"the page shows {cell or 'nothing'} for {name} on {processor}, its budget is {figure}; {RENEW}"
    for name, row in budget.items():
        for processor in row:
            if (name, processor) not in shown:
                yield f"the page does not show {name} on {processor}; {RENEW}"


def is_off(value, expected, tolerance):
    return abs(value - expected) > tolerance * expected


def uneven(counts):
    """Costs that have to be constant or linear and are not, line by line."""
    observed = "tx.microwave-hz.observers-"
    numbers = sorted(int(name[len(observed):]) for name in counts if name.startswith(observed))
    none = counts[f"{observed}0"].total
    each = {number: (counts[f"{observed}{number}"].total - none) / number for number in numbers if number}
    for number, cost in each.items():
        if is_off(cost, each[100], 0.1):
            yield f"an observer costs {cost:.1f} instructions among {number}, and {each[100]:.1f} among 100"
    alone = counts["tx.microwave-hz"].total
    for channels in (8, 64):
        cost = counts[f"tx.microwave-hz.channel-{channels}"].total
        if is_off(cost, alone, 0.01):
            yield f"a frequency change takes {cost:.0f} instructions among {channels} channels, and {alone:.0f} alone"
    # The platform finds names in maps, whose depth grows by one when the channels double. The library's part grows by a
    # letter in each name where the number of a channel has two digits.
    one = counts["boot.1"]
    for channels in (2, 4, 8, 16, 32, 64):
        boot = counts[f"boot.{channels}"]
        most = one.total * (1 + 0.4 * math.log2(channels) / math.log2(64))
        if boot.total / channels > most:
            yield (f"the boot of {channels} channels takes {boot.total / channels:.0f} instructions for each; "
                   f"{most:.0f} would still be linear")
        if is_off(own(boot) / channels, own(one), 0.03):
            yield (f"the library's part of the boot of {channels} channels takes {own(boot) / channels:.0f} instructions "
                   f"for each, and {own(one):.0f} for one alone")
    yield from overgrown(counts)


def overgrown(counts):
    """Costs of the platform that grow faster than the number of channels, line by line."""
    # Whoever searches or moves all channels for each one is far above this. The platform may have the C and C++ libraries
    # do that for it; what these do for the library is in the sum too, and the same for each.
    for what in ("boot", "shutdown"):
        for title, cost in (("the platform takes", platform), ("all but the library takes", all_but_library)):
            few, many = few_and_many(counts, what, cost)
            if many > GROWTH * few:
                yield (f"in the {what} of {MANY} channels {title} {many:.0f} instructions for each, and {few:.0f} among "
                       f"{FEW}; {GROWTH * few:.0f} would still be linear")


def few_and_many(counts, what, cost):
    """What each of few channels costs, and each of many."""
    return tuple(cost(counts[f"{what}.{channels}"]) / channels for channels in (FEW, MANY))


def inside(value, file):
    """Instructions of the file of that name; 0 where that is not known."""
    return sum(cost for name, cost in value.objects.items() if name.startswith(file))


def own(value):
    """Instructions inside the library."""
    return inside(value, LIBRARY)


def platform(value):
    return inside(value, PLATFORM)


def all_but_library(value):
    return value.total - own(value)


def main(arguments):
    if len(arguments) == 2 and arguments[0] == "--growth":
        wrong = list(overgrown(count(arguments[1])))
        print("\n".join(wrong) or f"{MANY} channels cost the platform at most {GROWTH} times as much for each as {FEW}")
        return 1 if wrong else 0
    if len(arguments) < 4:
        sys.exit(__doc__)
    budget_file, page, processor, program, *rest = arguments
    counts = count(program, rest[1], rest[2:]) if rest else count(program)
    budget = read_budget(budget_file)
    wrong = [*off_budget(counts, budget, processor), *uneven(counts), *off_page(page, budget)]
    for line in wrong:
        print(line)
    if not wrong:
        print(f"{len(counts)} operations counted, all within their budgets, as the page shows them")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

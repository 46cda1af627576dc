#!/usr/bin/env python3
"""manual.py PROGRAM PAGES TEST: the manual pages in the folder PAGES, held against what PROGRAM itself says."""

import os
import re
import subprocess
import sys
import tempfile

PROGRAM, PAGES = sys.argv[1:3]


def run(*words, text=None):
    return subprocess.run([PROGRAM, *words], input=text, capture_output=True, text=True, check=False, timeout=120)


def plain(text):
    """Text of a page without fonts and escapes."""
    text = re.sub(r"\\f[BIR]", "", text)
    for escape, character in (("\\-", "-"), ("\\(aq", "'"), ("\\(ga", "`"), ("\\(ha", "^"), ("\\(ti", "~"), ("\\&", ""), ("\\e", "\\")):
        text = text.replace(escape, character)
    return text


class Page:
    """A page's sections: for each, with "SUBSECTION" behind where there is one, its tagged paragraphs and its other text."""

    def __init__(self, name):
        self.tags = {}
        self.text = {}
        section = heading = ""
        tag = None
        isTagNext = False
        with open(os.path.join(PAGES, name), encoding="utf-8") as stream:
            for line in stream.read().splitlines():
                request = re.match(r"\.(SH|SS) (.*)", line)
                if request:
                    heading = plain(request[2]) if request[1] == "SH" else heading
                    section = heading if request[1] == "SH" else f"{heading} {plain(request[2])}"
                    self.tags[section] = []
                    self.text[section] = ""
                    tag = None
                elif line == ".TP":
                    isTagNext = True
                elif isTagNext:
                    tag = [plain(line), ""]
                    self.tags[section].append(tag)
                    isTagNext = False
                elif line.startswith((".PP", ".IP")):
                    tag = None
                elif section and tag is not None and not line.startswith("."):
                    tag[1] = f"{tag[1]} {plain(line)}".strip()
                elif section and not line.startswith("."):
                    self.text[section] = f"{self.text[section]} {plain(line)}".strip()
                elif section and line == ".br":
                    self.text[section] += " |"


class Help:
    """What the program prints about a command."""

    def __init__(self, words):
        text = run(*words, "--help").stdout
        self.description = " ".join(text[:text.index("Usage: ")].split())
        self.usage = re.search(r"Usage: (.*)", text)[1]
        self.commands = {}
        self.options = {}
        part = ""
        for line in text[:text.index("Exit codes:")].splitlines():
            part = line if re.match(r"\S", line) else part
            option = re.match(r" {2,6}(?:-(\w),)?(--[\w-]+)(?: (.*))?$", line)
            command = re.match(r"  ([a-z]\S*) ", line)
            if option:
                # Behind two spaces stands what it does; what there is before that, its value.
                value = re.split(r"  +", option[3] or "")[0] if not re.match(r" ", option[3] or "") else ""
                value = re.sub(r"( REQUIRED| Excludes: .*| \.\.\.| x \d|:\{.*)", "", value)
                if value and value not in ("F F", "LOW HIGH") and " " in value:
                    value = ""
                names = [f"-{option[1]}"] * bool(option[1]) + [option[2]]
                self.options[option[2]] = (names, value)
            elif part == "Subcommands:" and command:
                self.commands[command[1]] = ""
        self.exits = {}
        code = ""
        for line in text[text.index("Exit codes:"):].splitlines()[1:]:
            code = line[2:7].strip() or code
            self.exits[code] = f"{self.exits.get(code, '')} {line[7:]}".strip()


def documented(tags):
    """The options of tagged paragraphs: by their long names, all names, value and text."""
    options = {}
    for tag, text in tags:
        words = re.findall(r"(-{1,2}[\w-]+)(?: ([^-,][^,]*))?", tag)
        short = [word for word, _ in words if not word.startswith("--")]
        for word, value in words:
            if word.startswith("--"):
                options[word] = (short + [word], value.strip(), text)
    return options


COMMANDS = Help([]).commands
WRONG = []


def complain(text):
    WRONG.append(text)


def compare(what, found, expected):
    if found != expected:
        complain(f"{what}: the page has {found!r}, the program {expected!r}")


def test_lint():
    """mandoc has nothing to say about any page."""
    pages = sorted(os.listdir(PAGES))
    for page in (page for page in pages if re.search(r"\.[15]$", page)):
        lint = subprocess.run(["mandoc", "-Tlint", os.path.join(PAGES, page)], capture_output=True, text=True, check=False)
        if lint.returncode or lint.stdout or lint.stderr:
            complain(lint.stdout + lint.stderr)


def test_commands():
    """There is a page for each command, and for nothing else, and radioctl(1) lists them."""
    pages = {page for page in os.listdir(PAGES) if page.endswith(".1")}
    compare("pages of commands", sorted(pages), sorted({"radioctl.1"} | {f"radioctl-{name}.1" for name in COMMANDS}))
    listed = Page("radioctl.1").tags["SUBCOMMANDS"]
    compare("radioctl(1)", [tag for tag, _ in listed], list(COMMANDS))
    for name, text in listed:
        compare(f"radioctl(1), {name}", text, f"{Help([name]).description}: radioctl-{name}(1).")


def each_command():
    """The words of each command, its page, and which of the page's options are its own."""
    yield [], Page("radioctl.1"), "OPTIONS"
    for name in COMMANDS:
        page = Page(f"radioctl-{name}.1")
        yield [name], page, "OPTIONS"
        for below in Help([name]).commands:
            yield [name, below], page, f"OPTIONS {name} {below}"


def test_options():
    """Each option, with its names, its value and the words that this can be, is in its page; and no other."""
    count = choicesFound = 0
    for words, page, section in each_command():
        printed = Help(words).options
        written = documented(page.tags.get(section, []))
        compare(f"radioctl {' '.join(words)}", sorted(written), sorted(printed))
        for name in sorted(set(written) & set(printed)):
            names, value = printed[name]
            offered = run("completion-words", *words, name, "").stdout if value else ""
            choices = [line.split("\t")[0] for line in offered.splitlines() if not line.startswith(":")]
            choicesFound += len(choices)
            compare(f"radioctl {' '.join(words)} {name}", [set(written[name][0]) >= set(names), written[name][1]], [True, value])
            missing = [choice for choice in choices if not re.search(rf"\b{choice}\b", written[name][2])]
            compare(f"radioctl {' '.join(words)} {name}, words left out", missing, [])
            count += 1
    if count < 70 or choicesFound < 20:
        complain(f"only {count} options and {choicesFound} words for their values were found")


def test_names():
    """NAME says what the help says, and SYNOPSIS how the command is called."""
    for name in [None, *COMMANDS]:
        words = [name] if name else []
        page = Page("-".join(["radioctl", *words]) + ".1")
        told = Help(words)
        sentence = told.description.rstrip(".")
        # The program's own help tells what it does, as a sentence of its own.
        if name:
            compare(f"NAME of {name}", page.text["NAME"], f"radioctl-{name} - {sentence[0].lower()}{sentence[1:]}")
        usages = [Help([name, below]).usage for below in told.commands] if name else []
        # Where a command below need not be there, it is called without as well.
        if not usages:
            usages = [told.usage]
        elif told.usage.endswith(" [SUBCOMMAND]"):
            usages = [told.usage.removesuffix(" [SUBCOMMAND]"), *usages]
        compare(f"SYNOPSIS of {name}", page.text["SYNOPSIS"], " | ".join(usages))


def test_exits():
    """The exit codes, and each reason for them."""
    for name in [None, *COMMANDS]:
        page = Page("radioctl.1" if not name else f"radioctl-{name}.1")
        written = {tag: text.rstrip(".").replace("; ", " ") for tag, text in page.tags["EXIT STATUS"]}
        compare(f"exit codes of {name}", written, Help([name] if name else []).exits)


BOARD = '''name = "radio"
[[channel]]
number = 1
type = "rf-module"
%s
[drivers]
"channel.1.tx.rf.frequency" = {%s}
"channel.1.rx.rf.frequency" = {}
"a" = {}
"b" = {}
"c" = {}
'''
# For each section of radioctl-board(5), boards with a key that nobody knows.
LEAKAGE = '''[[leakage]]
channel = 1
reference = 7000000
paths = [ { level = -20, phase = 0%s } ]
i = { driver = "a", gain = 0.1, range = [0, 9]%s }
q = { driver = "b", gain = 0.1, range = [0, 9] }
detector = { driver = "c", slope = 1, zero = 0, range = [0, 9]%s }
%s
'''
STRANGE = {
    "[[channel]]": [BOARD % ("strange = 1", "")],
    "[[transmitter]]": [BOARD % ("[[transmitter]]\nstrange = 1", "")],
    "[[leakage]]": [BOARD % (LEAKAGE % strange, "") for strange in
                    ((", strange = 1", "", "", ""), ("", ", strange = 1", "", ""), ("", "", ", strange = 1", ""), ("", "", "", "strange = 1"))],
    "[[calibration]]": [BOARD % ("[[calibration]]\nstrange = 1", "")],
    "[drivers]": [BOARD % ("", "strange = 1")],
    "[tables]": [BOARD % ("[tables]\nt = { strange = 1 }", "")],
    "[[raster]]": [BOARD % ("[[raster]]\nstrange = 1", "")],
    "[limits]": [BOARD % ("[limits]\nstrange = 1", "")],
    "[devices]": [BOARD % ("[devices]\nd = { strange = 1 }", "")],
    "[hardware]": [BOARD % ("[hardware.a]\nstrange = 1", "")],
    "[sensor]": [BOARD % ("[sensor]\nstrange = 1", "")],
}


def known_keys(board):
    with tempfile.TemporaryDirectory() as folder:
        file = os.path.join(folder, "board.toml")
        with open(file, "w", encoding="utf-8") as stream:
            stream.write(board)
        message = run("check", file).stderr
    keys = re.search(r"strange: unknown key.*, expected one of (.*)", message)
    if not keys:
        complain(f"no key was refused, but: {message}")
        return set()
    return set(keys[1].rstrip(".\n").split(", "))


def test_keys():
    """Each key of a board file is in its section, and no section has a key that there is not."""
    page = Page("radioctl-board.5")
    sections = {heading.strip("[]") for heading in page.tags if re.match(r"\[", heading)}
    compare("sections and keys of a board", sorted(sections | {tag for tag, _ in page.tags["THE RADIO"]}),
            sorted(known_keys("strange = 1\n" + BOARD % ("", ""))))
    for section, boards in STRANGE.items():
        tags = {key for tag, _ in page.tags[section] for key in tag.split(", ") if re.fullmatch(r"[a-z_]+", key)}
        compare(section, sorted(tags), sorted(set().union(*[known_keys(board) for board in boards])))


def test_script():
    """Each command and expectation is in radioctl-script(5), as help has its usage, and nothing else is."""
    with tempfile.TemporaryDirectory() as folder:
        file = os.path.join(folder, "board.toml")
        with open(file, "w", encoding="utf-8") as stream:
            stream.write(BOARD % ("", ""))
        names = re.findall(r"^ *((?:expect )?(?:no )?[a-z?]+)  +[A-Z]", run("console", file, text="help\n").stdout, re.M)
        asked = run("console", file, text="".join(f"help {name}\n" for name in names)).stdout
    usages = " ".join(asked.split())
    page = Page("radioctl-script.5")
    written = [tag for section in ("COMMANDS", "EXPECTATIONS") for tag, _ in page.tags[section]]
    if len(names) < 25:
        complain(f"only these commands were found: {names}")
    for name in names:
        here = [tag for tag in written if tag == name or tag.startswith(name + " ")]
        if not here:
            complain(f"radioctl-script(5) does not have {name}")
        compare(f"usage of {name}", [tag for tag in here if f"{tag} " not in usages], [])
    compare("commands that there are not", [tag for tag in written if not any(tag == name or tag.startswith(name + " ") for name in names)], [])


def main():
    tests = {name[5:]: test for name, test in globals().items() if name.startswith("test_")}
    tests[sys.argv[3]]()
    print("\n".join(WRONG))
    return 1 if WRONG else 0


if __name__ == "__main__":
    sys.exit(main())

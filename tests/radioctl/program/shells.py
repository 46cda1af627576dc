#!/usr/bin/env python3
"""shells.py SHELL PROGRAM SCRIPT: what a real shell completes command lines of radioctl to, with the script that is
installed for it. Where one word fits, Tab completes it; where several do, what they have in common."""

import os
import pty
import re
import select
import subprocess
import sys
import tempfile
import time

SHELL, PROGRAM, SCRIPT = sys.argv[1:]

# What is typed, and what it becomes. The folder has board.toml, board.txt, day.csv, day.txt, "two words.toml", night.journal,
# the recording unit.rec and the folder below.
CASES = {
    "radioctl tables w": "radioctl tables why ",
    "radioctl qual": "radioctl qualify ",
    "radioctl --json desc": "radioctl --json describe ",
    "radioctl calibrate board.toml --meth": "radioctl calibrate board.toml --method ",
    "radioctl calibrate board.toml --method se": "radioctl calibrate board.toml --method search ",
    "radioctl calibrate board.toml --band 18 GHz 19 GHz --restar": "radioctl calibrate board.toml --band 18 GHz 19 GHz --restart ",
    "radioctl calibrate --offline ni": "radioctl calibrate --offline night.journal ",
    "radioctl run --trace=not": "radioctl run --trace=notice ",
    "radioctl plan explain board.toml --t": "radioctl plan explain board.toml --tx ",
    "radioctl laboratory bo": "radioctl laboratory board.toml ",
    "radioctl laboratory me": "radioctl laboratory merge ",
    "radioctl laboratory merge --js": "radioctl laboratory merge --json ",
    "radioctl laboratory board.toml --sh": "radioctl laboratory board.toml --shard ",
    "radioctl check bo": "radioctl check board.toml ",
    "radioctl check tw": "radioctl check two\\ words.toml ",
    "radioctl check bel": "radioctl check below/",
    "radioctl check below/in": "radioctl check below/inner.toml ",
    "radioctl thermal board.toml da": "radioctl thermal board.toml day.csv ",
    "radioctl record diff unit.rec un": "radioctl record diff unit.rec unit.rec ",
    "radioctl serve board.toml --trace no": "radioctl serve board.toml --trace notice ",
    "radioctl serve bo": "radioctl serve board.toml ",
    "radioctl completion fi": "radioctl completion fish ",
    # None fits, or all that fit are told apart by the next letter alone.
    "radioctl nonsense bo": "radioctl nonsense bo",
    "radioctl run --no": "radioctl run --no",
    "radioctl record show --": "radioctl record show --",
}


def complete_by_fish(lines, environment):
    result = {}
    for line in lines:
        asked = subprocess.run(
            ["fish", "--no-config", "-c", f"source {SCRIPT}; complete -C $argv[1]", line],
            env=environment, capture_output=True, text=True, check=True, timeout=60)
        words = [offer.split("\t")[0] for offer in asked.stdout.splitlines()]
        if not words:
            result[line] = line
            continue
        common = os.path.commonprefix(words)
        head, _, _ = line.rpartition(" ")
        word = common.replace(" ", "\\ ")
        # What fish puts behind a word that it has completed alone is a space, unless it is a folder.
        result[line] = f"{head} {word}{' ' if len(words) == 1 and not word.endswith('/') else ''}"
    return result


class Terminal:
    """A shell at a terminal of its own."""

    def __init__(self, words, environment):
        self.process, self.keys = pty.fork()
        if self.process == 0:
            os.execvpe(words[0], words, environment)
        self.seen = ""

    def type(self, text):
        os.write(self.keys, text.encode())

    def await_text(self, pattern):
        """What the pattern found in what was shown since the last time."""
        end = time.monotonic() + 60
        while time.monotonic() < end:
            found = re.search(pattern, self.seen)
            if found:
                self.seen = self.seen[found.end():]
                return found
            if select.select([self.keys], [], [], 1)[0]:
                try:
                    self.seen += os.read(self.keys, 65536).decode(errors="replace")
                except OSError:
                    break
        sys.exit(f"{SHELL}: {pattern!r} was not shown, but: {self.seen!r}")

    def leave(self):
        self.type("\x15exit\r")
        os.waitpid(self.process, 0)


def complete_at_a_terminal(lines, environment):
    if SHELL == "bash":
        terminal = Terminal(["bash", "--norc", "--noprofile", "-i"], environment)
        terminal.type(f"set +o history; bind 'set enable-bracketed-paste off'; bind 'set bell-style none'; source {SCRIPT}\r"
                      "show() { printf '<%s>\\n' \"$READLINE_LINE\"; READLINE_LINE=; }; bind -x '\"\\C-xs\": show'\r")
    else:
        terminal = Terminal(["zsh", "-f", "-i"], environment)
        terminal.type(f"unsetopt zle_bracketed_paste beep; zle_bracketed_paste=(); autoload -Uz compinit; compinit -u -D; source {SCRIPT}\r"
                      "show() { print -r -- \"<$BUFFER>\"; BUFFER=; }; zle -N show; bindkey '^Xs' show; setopt no_auto_menu no_auto_list\r")
    terminal.type("echo rea''dy\r")
    terminal.await_text("ready\r?\n")
    result = {}
    for line in lines:
        terminal.type(line + "\t")
        terminal.type("\x18s")
        # Lines that are broken for want of columns would not be read.
        result[line] = terminal.await_text("<(radioctl [^>\r\n]*)>")[1]
    terminal.leave()
    return result


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.makedirs(f"{folder}/bin")
        os.makedirs(f"{folder}/here/below")
        os.symlink(PROGRAM, f"{folder}/bin/radioctl")
        for name in ("board.toml", "board.txt", "day.csv", "day.txt", "two words.toml", "night.journal", "unit.rec", "below/inner.toml"):
            with open(f"{folder}/here/{name}", "w", encoding="utf-8"):
                pass
        os.chdir(f"{folder}/here")
        environment = {"PATH": f"{folder}/bin:{os.environ['PATH']}", "HOME": folder, "TERM": "dumb", "LC_ALL": "C.UTF-8", "COLUMNS": "500"}
        complete = complete_by_fish if SHELL == "fish" else complete_at_a_terminal
        completed = complete(CASES, environment)
    wrong = {line: (expected, completed[line]) for line, expected in CASES.items() if completed[line] != expected}
    for line, (expected, found) in wrong.items():
        print(f"{SHELL}: {line!r} became {found!r}, expected {expected!r}")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())

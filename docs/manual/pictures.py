#!/usr/bin/env python3
"""pictures.py draw|compare run|calibration PROGRAM PROJECT [BROWSER]: the pictures in docs/ of what radioctl shows.

Each is of what PROGRAM shows now, "run" of the demonstration, "calibration" of a page, for which drawing takes a headless
browser. Comparing says what is otherwise in the picture that is there: of a page, which no two browsers draw alike, the picture
says by a sum what was on it.
"""

import hashlib
import html
import os
import pty
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib

WIDTH, HEIGHT = 8.43, 18.7  # of a character of 14 pixels
COLOURS = {"1": 'font-weight="bold"', "31": 'fill="#ff6b60"', "32": 'fill="#7ee2a8"', "33": 'fill="#f0c674"'}
BROWSER_FLAGS = ("--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
                 "--blink-settings=preferredColorScheme=1")
SUM = b"Sum of the page"


def on_a_terminal(words, folder):
    """What a program shows on a terminal, colours included."""
    reader, writer = pty.openpty()
    environment = {**os.environ, "TERM": "xterm"}
    environment.pop("NO_COLOR", None)
    with subprocess.Popen(words, cwd=folder, stdin=subprocess.DEVNULL, stdout=writer, stderr=writer, env=environment) as process:
        os.close(writer)
        shown = b""
        while True:
            try:
                part = os.read(reader, 65536)
            except OSError:  # how a terminal ends
                part = b""
            if not part:
                break
            shown += part
    os.close(reader)
    if process.returncode != 0:
        sys.exit(f"{' '.join(words)} ended with {process.returncode}")
    return shown.decode().replace("\r\n", "\n")


def spans(line):
    """A line of a terminal in parts that look alike: how, and what is there."""
    attributes = ""
    for at, part in enumerate(re.split(r"\x1b\[([0-9;]*)m", line)):
        if at % 2 == 1:
            attributes = " ".join(COLOURS[code] for code in part.split(";") if code in COLOURS)
        elif part:
            # Spaces that no reader of pictures leaves out.
            yield attributes, html.escape(part, quote=False).replace(" ", "\u00a0")


def picture_of_run(program, project):
    shown = on_a_terminal([program, "run", "boards/rf-module-7ghz.toml", "boards/rf-module-7ghz.script"], project)
    # To the end of the first command that fails: the rest is more of the same.
    commands = shown.split("\n\n")
    last = next(at for at, command in enumerate(commands) if "FAILED" in command)
    lines = ["\x1b[1m$ ./run\x1b[0m"] + "\n\n".join(commands[:last + 1]).split("\n")
    plain = [re.sub(r"\x1b\[[0-9;]*m", "", line) for line in lines]
    width, height = round(max(map(len, plain)) * WIDTH) + 28, round(len(lines) * HEIGHT) + 28
    result = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}">',
              "<title>./run</title>", f'<rect width="{width}" height="{height}" fill="#1f2430"/>',
              '<g font-family="DejaVu Sans Mono, Menlo, Consolas, monospace" font-size="14" fill="#ffffff">']
    for at, line in enumerate(lines):
        text = "".join(f"<tspan {attributes}>{part}</tspan>" if attributes else part for attributes, part in spans(line))
        if text:
            result.append(f'<text x="14" y="{28 + at * HEIGHT:.1f}">{text}</text>')
    return "\n".join([*result, "</g>", "</svg>", ""])


def page_of_calibration(program, project):
    with tempfile.TemporaryDirectory() as folder:
        board = "lo-leakage-18ghz.toml"
        shutil.copy(os.path.join(project, "boards", board), folder)
        words = [program, "calibrate", board, "--channel", "1", "--station", "Bench 3", "--html", "page.html"]
        done = subprocess.run(words, cwd=folder, capture_output=True, text=True, check=False)
        if done.returncode != 0:
            sys.exit(f"{' '.join(words)} ended with {done.returncode}: {done.stderr}")
        with open(os.path.join(folder, "page.html"), encoding="utf-8") as stream:
            return stream.read()


def sum_of(page):
    """Of what is said on a page and when; how plots are drawn is the business of who draws them."""
    page = re.sub(r"<style>.*?</style>|<svg.*?</svg>", "", page, flags=re.S)
    return hashlib.sha256(re.sub(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", "", page).encode()).hexdigest()


def cut(page):
    """The page without what a picture has no room for: the verdict, the worst figures and three plots remain."""
    head, body = page.split("<h2>", 1)
    figures = re.findall(r"<figure>.*?</figure>", body, flags=re.S)
    kept = [next(figure for figure in figures if f'id="{name}"' in figure) for name in ("before", "between", "levels")]
    head = re.sub(r'<p class="note">.*?</p>', "", head, flags=re.S)
    return head + "\n".join(kept) + "</body></html>"


def chunk(kind, content):
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))


def chunks(picture):
    at = 8
    while at < len(picture):
        size, kind = struct.unpack(">I4s", picture[at:at + 8])
        yield kind, picture[at + 8:at + 8 + size]
        at += 12 + size


def draw_page(page, browser, file):
    with tempfile.TemporaryDirectory() as folder:
        source, target = os.path.join(folder, "page.html"), os.path.join(folder, "page.png")
        with open(source, "w", encoding="utf-8") as stream:
            stream.write(cut(page).replace("</style>", "body { margin: 1rem auto; } figure { margin: 0.4rem 0; }\n</style>"))
        subprocess.run([browser, *BROWSER_FLAGS, f"--user-data-dir={folder}/profile", f"--screenshot={target}",
                        "--window-size=1000,1520", f"file://{source}"], check=True, capture_output=True)
        with open(target, "rb") as stream:
            drawn = list(chunks(stream.read()))
    with open(file, "wb") as stream:
        stream.write(b"\x89PNG\r\n\x1a\n")
        for kind, content in drawn:
            if kind == b"IEND":
                stream.write(chunk(b"tEXt", SUM + b"\0" + sum_of(page).encode()))
            stream.write(chunk(kind, content))


def main():
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    action, which, program, project = sys.argv[1:5]
    drawn = {"run": "run.svg", "calibration": "calibration.png"}[which]
    file = os.path.join(project, "docs", drawn)
    if which == "run":
        picture = picture_of_run(program, project).encode()
        if action == "draw":
            with open(file, "wb") as stream:
                stream.write(picture)
        with open(file, "rb") as stream:
            isCurrent = stream.read() == picture
    else:
        page = page_of_calibration(program, project)
        if action == "draw":
            draw_page(page, sys.argv[5], file)
        with open(file, "rb") as stream:
            isCurrent = (b"tEXt", SUM + b"\0" + sum_of(page).encode()) in chunks(stream.read())
    if not isCurrent:
        sys.exit(f"docs/{drawn} shows something else than radioctl does now: cmake --build build/check --target pictures")


if __name__ == "__main__":
    main()

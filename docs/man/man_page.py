#!/usr/bin/env python3
"""Makes a manual page of a page in Markdown.

man_page.py [--name TEXT] [--see TEXT] [--sections A|B|...] PAGE DATE VERSION SOURCE OUTPUT

The source begins with a heading and one sentence, which becomes NAME unless --name says another, and for commands with
a block of code, which becomes SYNOPSIS; what follows up to the first "##" is DESCRIPTION. A list whose items begin with
code and a colon, and a table, become tagged paragraphs, since a terminal has no room for columns. Of --sections only
these headings are taken, in the order of the source.
"""

import argparse
import re
import textwrap

WIDTH = 78


def escaped(text):
    """Text with nothing in it that a formatter would take for its own."""
    return text.replace("\\", "\\e").replace("'", "\\(aq").replace("`", "\\(ga").replace("^", "\\(ha").replace("~", "\\(ti")


def code(text, font="B"):
    return f"\\f{font}{escaped(text).replace('-', chr(92) + '-')}\\fR"


def inline(text):
    """One paragraph's text with fonts in place of marks; links are their texts, and an address is told behind them."""
    result = []
    for part in re.split(r"(`[^`]+`)", text.replace("\\|", "|")):
        if part.startswith("`") and len(part) > 1:
            result.append(code(part[1:-1]))
        else:
            result.append(escaped(part))
    text = "".join(result)
    text = re.sub(r"\[([^\]]+)\]\((https?:[^)]+)\)", r"\1 (\2)", text)
    text = re.sub(r"\[([^\]]+)\]\([^)]*\)", r"\1", text)
    text = re.sub(r"\*\*([^*]+)\*\*", r"\\fB\1\\fR", text)
    return re.sub(r"(?<![\w*])\*([^* ][^*]*)\*(?![\w*])", r"\\fI\1\\fR", text)


def lines_of(text):
    """A paragraph in lines of a page's source; none begins like a request."""
    # What is set in one font is one word to the filling, as far as it fits.
    joined = re.sub(r"\\f[BI][^\\]{1,60}(?:\\[^f][^\\]*)*\\fR", lambda found: found.group().replace(" ", "\0"), text)
    filled = textwrap.wrap(joined, WIDTH, break_long_words=False, break_on_hyphens=False)
    return [("\\&" if line[0] in ".'" else "") + line.replace("\0", " ") for line in filled]


def blocks_of(lines):
    """("heading", level, text), ("code", [lines]), ("table", [[cells]]), ("item", text) and ("text", text)."""
    at = 0
    while at < len(lines):
        line = lines[at]
        heading = re.match(r"(#+) (.*)", line)
        if not line.strip() or re.match(r"!\[", line):
            at += 1
        elif heading:
            yield "heading", len(heading[1]), heading[2]
            at += 1
        elif line.startswith("```"):
            end = lines.index("```", at + 1)
            yield "code", lines[at + 1:end]
            at = end + 1
        elif line.startswith("|"):
            rows = []
            while at < len(lines) and lines[at].startswith("|"):
                rows.append([cell.strip() for cell in re.split(r"(?<!\\)\|", lines[at])[1:-1]])
                at += 1
            yield "table", rows
        else:
            kind = "item" if line.startswith("- ") else "text"
            text = [line[2:] if kind == "item" else line]
            at += 1
            while at < len(lines) and lines[at].strip() and not re.match(r"- |\||```|#+ ", lines[at]):
                text.append(lines[at].strip())
                at += 1
            yield kind, " ".join(text)


def tagged(term, text):
    return [".TP", term, *lines_of(text)]


def row_of(headings, cells):
    """A row as a tagged paragraph; a column without a heading in front belongs to the next."""
    cells = list(cells)
    headings = list(headings)
    if not headings[0] and len(cells) > 2:
        cells[0:2] = [f"{cells[0]} {cells[1]}"]
        headings[0:1] = []
    sentences = []
    for heading, cell in zip(headings[1:], cells[1:]):
        if cell:
            isNamed = heading and len(headings) > 2 and heading != headings[1]
            sentences.append(inline(f"{heading}: {cell}" if isNamed else cell))
    text = "; ".join(sentences)
    if cells[0].startswith("`"):
        return tagged(inline(cells[0]), text or "\\&")
    return [".IP \\(bu 2", *lines_of(f"{inline(cells[0])}: {text}" if text else inline(cells[0]))]


def body_of(blocks):
    page = []
    parted = True  # a heading parts, too
    for block in blocks:
        if block[0] == "heading":
            heading = escaped(block[2].replace("`", ""))
            page += [f".SH {heading if '`' in block[2] else heading.upper()}" if block[1] == 2 else f".SS {heading}"]
            parted = True
            continue
        if block[0] == "code":
            lines = [escaped(line).replace("-", "\\-") for line in block[1]]
            lines = [("\\&" if line.startswith(".") else "") + line for line in lines]
            page += [".IP", ".nf", *lines, ".fi"]
        elif block[0] == "table":
            for row in block[1][2:]:
                page += row_of(block[1][0], row)
        elif block[0] == "item":
            term = re.match(r"((?:`[^`]+`(?:, )?)+): (.*)", block[1])
            page += tagged(inline(term[1]), inline(term[2])) if term else [".IP \\(bu 2", *lines_of(inline(block[1]))]
        else:
            page += ([] if parted else [".PP"]) + lines_of(inline(block[1]))
        parted = False
    return page


def chosen(blocks, sections):
    taken = False
    for block in blocks:
        if block[0] == "heading" and block[1] == 2:
            taken = block[2].replace("`", "") in sections
        if taken:
            yield block


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--name")
    parser.add_argument("--see")
    parser.add_argument("--sections")
    for argument in ("page", "date", "version", "source", "output"):
        parser.add_argument(argument)
    arguments = parser.parse_args()
    name, _, section = arguments.page.rpartition(".")
    with open(arguments.source, encoding="utf-8") as stream:
        blocks = list(blocks_of(stream.read().splitlines()))[1:]  # without the heading of the page
    volume = {"1": "User Commands", "5": "File Formats"}[section]
    page = [f".TH {name.upper()} {section} {arguments.date} \"radioctl {arguments.version}\" \"{volume}\"", ".SH NAME"]
    if arguments.name:
        sentence = arguments.name
    else:
        sentence = blocks.pop(0)[1].rstrip(".")
        sentence = sentence[0].lower() + sentence[1:]
    page += lines_of(f"{code(name, 'R')[3:-3]} \\- {escaped(sentence)}")
    if arguments.sections is not None:
        blocks = list(chosen(blocks, arguments.sections.split("|")))
    if section == "1":
        page.append(".SH SYNOPSIS")
        usages = blocks.pop(0)[1]
        for usage in usages:
            page += [".br"] * (usage is not usages[0]) + [code(usage, "R")[3:-3]]
    if blocks[0][0] != "heading":
        page.append(".SH DESCRIPTION")
    page += body_of(blocks)
    if arguments.see:
        page += [".SH SEE ALSO"]
        others = arguments.see.split(",")
        page += [f".BR {other[:-3].replace('-', chr(92) + '-')} {other[-3:]}{'' if other == others[-1] else ' ,'}" for other in others]
    with open(arguments.output, "w", encoding="utf-8") as stream:
        stream.write("\n".join(page) + "\n")


if __name__ == "__main__":
    main()

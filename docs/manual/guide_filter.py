#!/usr/bin/env python3
"""guide_filter.py PROJECT FILE: a page in Markdown as Doxygen is to read it, on standard output.

Headings get names, by which links of other pages find them; links to pages become references; links to what is not in the
manual become their texts. Each heading of the contents (docs/README.md) becomes a chapter, and what it links to the pages of
this chapter.
"""

import os
import posixpath
import re
import sys

CONTENTS = "docs/README.md"
REFERENCE = "- [Classes](annotated.html) and [files](files.html) of interfaces, contracts and engines"


def is_page(path):
    return path in ("README.md", "CONTRIBUTING.md", "CHANGELOG.md") or re.fullmatch(r"docs/(man/)?[\w-]+\.md", path) is not None


def name_of(path, heading=""):
    """What Doxygen calls a page, or a heading in it that GitHub has under this name."""
    page = "mainpage" if path == "README.md" else re.sub(r"\W", "_", "guide/" + path[:-3].lower().replace("docs/", ""))
    return page + ("_" + re.sub(r"\W", "_", heading) if heading else "")


def slug(heading):
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def title(project, path):
    with open(os.path.join(project, path), encoding="utf-8") as stream:
        return stream.readline().lstrip("#").strip()


def link(project, path, text, target):
    if re.match(r"\w+:", target):
        return f"[{text}]({target})"
    file, _, heading = target.partition("#")
    file = posixpath.normpath(posixpath.join(posixpath.dirname(path), file)) if file else path
    if not os.path.exists(os.path.join(project, file)):
        sys.exit(f"{path}: there is no {file}")
    if not is_page(file):
        return text
    if file == "README.md" and not heading:
        return f"[{text}](index.html)"
    if re.fullmatch(r"[\w./-]+\.md", text):
        text = title(project, file)
    return f"[{text}](@ref {name_of(file, heading)})"


def for_doxygen(line):
    """A line in which nothing is a command of Doxygen that is not meant: names behind @, and backslashes in code."""
    parts = re.split(r"(`+[^`]+`+)", line)
    for at, part in enumerate(parts):
        if not part.startswith("`"):
            parts[at] = re.sub(r"(?<!\S)@(?!(?:sub)?page|ref)", r"\\@", part)
        elif "\\" in part.replace("\\|", ""):
            code = part.strip("`").replace("\\", "\\\\").replace('"', '\\"').replace("<", "&lt;")
            parts[at] = f"<code>{code}</code>"
        elif "'" in part and not part.startswith("``"):
            # Behind a single backtick, Doxygen takes an apostrophe for the end of a quotation.
            parts[at] = f"`{part}`"
    return "".join(parts)


def named(path, text):
    """The text with a name for each heading; of those that are called the same, the second has "-1" behind it, and so on."""
    count = {}

    def name(found):
        heading = slug(found[2]) if len(found[1]) > 1 else ""
        before = count.setdefault(heading, 0)
        count[heading] += 1
        return f"{found[1]} {found[2]} {{#{name_of(path, f'{heading}-{before}' if before else heading)}}}"

    return re.sub(r"^(#+) (.*)$", name, text, flags=re.M)


def chapters(text):
    """The contents with a page for each heading, which the pages below that heading belong to."""
    head, *parts = re.split(r"^## (.*) \{#(\w+)\}\n", text, flags=re.M)
    listed, pages = "", ""
    for heading, name, body in zip(parts[::3], parts[1::3], parts[2::3]):
        body = body.strip()
        if heading == "Reference":
            body += "\n" + REFERENCE
        items = re.sub(r"^", "  ", body, flags=re.M)
        listed += f'- @subpage {name} "{heading}"\n{items}\n'
        # The pages themselves belong to the chapter, the links on the contents lead there as well.
        pages += f"\n@page {name} {heading}\n\n" + re.sub(r"\[([^\]]*)\]\(@ref (guide_\w+)\)", r'@subpage \2 "\1"', body) + "\n"
    return head + listed + pages


def main():
    project, path = sys.argv[1:]
    path = posixpath.relpath(path, project)
    with open(os.path.join(project, path), encoding="utf-8") as stream:
        text = stream.read()
    # A link may be broken between two lines, and its text may be code.
    parts = re.split(r"(^```.*?^```$)", text, flags=re.M | re.S)
    for at in range(0, len(parts), 2):
        part = re.sub(r"!\[([^\]]*)\]\(([^)]*)\)", lambda found: f"\0({found[1]}\0{posixpath.basename(found[2])})", parts[at])
        # What stands in code is no link, whatever it looks like.
        part = re.sub(r"(?<!\0)\[((?:[^\]`]|`[^`]*`)+)\]\(([^)\s]+)\)|`[^`]+`",
            lambda found: link(project, path, found[1].replace("\n", " "), found[2]) if found[1] else found[0], part)
        part = re.sub("\0\\(([^\0]*)\0([^)]*)\\)", lambda found: "![" + found[1].replace("\n", " ") + f"]({found[2]})", part)
        parts[at] = part
    sys.stdout.reconfigure(encoding="utf-8")
    text = ""
    whole = named(path, "".join(parts))
    if path == CONTENTS:
        whole = chapters(whole)
    for part in re.split(r"(^```.*?^```$)", whole, flags=re.M | re.S):
        text += part if part.startswith("```") else "".join(map(for_doxygen, part.splitlines(keepends=True)))
    sys.stdout.write(text)


if __name__ == "__main__":
    main()

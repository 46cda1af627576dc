#!/usr/bin/env python3
"""manual.py HTML WARNINGS: the manual in the folder HTML was made without a warning, and leads nowhere that there is nothing."""

import html.parser
import os
import re
import sys
import urllib.parse

HTML, WARNINGS = sys.argv[1:]
CHAPTERS = [
    "The first five minutes",
    "My board on the bench",
    "Calibrate a batch",
    "Load it into my platform",
    "A radio in the field",
    "Reference",
]
LOADS = r"""<(?:script|img|link|iframe|object|embed)\b[^>]*(?:src|href|data)=["'](?:https?:)?//|url\(\s*["']?(?:https?:)?//|@import"""


def read(file):
    with open(file, encoding="utf-8") as stream:
        return stream.read()


class Links(html.parser.HTMLParser):
    """What a page refers to, and the names in it that others can refer to."""

    def __init__(self, file):
        super().__init__()
        self.targets = []
        self.names = set()
        self.feed(read(file))

    def handle_starttag(self, tag, attributes):
        for key, value in attributes:
            if key in ("href", "src") and value:
                self.targets.append(value)
            elif key in ("id", "name") and value:
                self.names.add(value)


def main():
    wrong = read(WARNINGS).splitlines()
    pages = {name: Links(os.path.join(HTML, name)) for name in sorted(os.listdir(HTML)) if name.endswith(".html")}
    count = 0
    for name, page in pages.items():
        for target in page.targets:
            parts = urllib.parse.urlsplit(target)
            # What is elsewhere is not asked for: nothing here needs a network.
            if parts.scheme in ("http", "https", "mailto") or target.startswith("javascript:"):
                continue
            count += 1
            file = urllib.parse.unquote(parts.path) or name
            place = urllib.parse.unquote(parts.fragment)
            if parts.scheme or not os.path.exists(os.path.join(HTML, file)):
                wrong.append(f"{name}: there is no {target}")
            # Where all nested classes are private, Doxygen refers to a list of them all the same.
            elif place and file in pages and place not in pages[file].names | {"nested-classes"}:
                wrong.append(f"{name}: {file} has no {place}")
    # Nothing is loaded from elsewhere, neither by pages nor by how they look.
    for name in sorted(os.listdir(HTML)):
        if name.endswith((".html", ".css")) and re.search(LOADS, read(os.path.join(HTML, name))):
            wrong.append(f"{name} loads something from a network")
    # The contents lead to each guide, in the order of somebody's first day, and so does the search.
    contents = read(os.path.join(HTML, "guide_readme.html"))
    found = re.findall(r'<li><a class="el" href="guide_readme_\w+\.html">([^<]*)</a>', contents)
    if found != CHAPTERS:
        wrong.append(f"the chapters are {found}")
    index = "".join(read(os.path.join(HTML, "search", file)) for file in os.listdir(os.path.join(HTML, "search")) if file.startswith("pages_"))
    guides = 0
    for name in pages:
        if not re.fullmatch(r"guide_(?!readme)\w+\.html", name):
            continue
        guides += 1
        if f'href="{name}"' not in contents:
            wrong.append(f"the contents do not lead to {name}")
        if f"'../{name}'" not in index:
            wrong.append(f"no search finds {name}")
    if guides < 35:
        wrong.append(f"there are only {guides} guides")
    if count < 5000 or len(pages) < 100:
        wrong.append(f"only {count} links in {len(pages)} pages were looked at")
    for each in sorted(set(wrong)):
        print(each)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())

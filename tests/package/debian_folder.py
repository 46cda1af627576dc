#!/usr/bin/env python3
"""debian_folder.py PROJECT VERSION INSTALLED LIBDIR: what debian/ says fits what is built, without building packages.

INSTALLED is the tree that "cmake --install" makes; its libraries are in LIBDIR, those of a package in a folder for the
processor. Each of its files belongs to one package and each pattern to a file; the version is the project's.
"""

import fnmatch
import pathlib
import re
import sys

PROJECT, VERSION, INSTALLED, LIBDIR = sys.argv[1:]
DEBIAN = pathlib.Path(PROJECT, "debian")


def files():
    """The installed files by the names that they have in a package."""
    for path in sorted(pathlib.Path(INSTALLED).rglob("*")):
        name = "usr/" + path.relative_to(INSTALLED).as_posix()
        if not path.is_dir() or path.is_symlink():
            isArchitecture = name.startswith(f"usr/{LIBDIR}/") and not name.startswith(("usr/lib/python3/", "usr/lib/systemd/"))
            yield name.replace(f"usr/{LIBDIR}/", "usr/lib/processor/", 1) if isArchitecture else name


def packages():
    """The packages of debian/control, and the patterns of their files."""
    control = (DEBIAN / "control").read_text(encoding="utf-8")
    for package in re.findall(r"^Package: (.*)$", control, re.M):
        listed = DEBIAN / f"{package}.install"
        yield package, listed.read_text(encoding="utf-8").split() if listed.exists() else []
    # What is not there in every build: debian/rules has it installed where it is.
    for package, pattern in re.findall(r"\bdh_install -p(\S+) (\S+) \S+;", (DEBIAN / "rules").read_text(encoding="utf-8")):
        yield package, ["?" + pattern]


def wherePossible():
    """The patterns of files that are not built everywhere, with their packages, as debian/rules has them installed."""
    return re.findall(r"dh_install -p(\S+) (\S+) \S+$", (DEBIAN / "rules").read_text(encoding="utf-8"), re.M)


def belongs(name, pattern):
    return fnmatch.fnmatchcase(name, pattern) or fnmatch.fnmatchcase(name, pattern + "/*")


def main():
    wrong = []
    there = list(files())
    patterns = [(package, pattern.lstrip("?")) for package, listed in packages() for pattern in listed]
    optional = {pattern[1:] for _, listed in packages() for pattern in listed if pattern.startswith("?")}
    for name in there:
        owners = [package for package, pattern in patterns + wherePossible() if belongs(name, pattern)]
        if len(owners) != 1:
            wrong.append(f"{name} belongs to {owners or 'no package'}")
    for package, pattern in patterns:
        hasPython = "python3" not in package or any("/python3/" in name for name in there)
        if hasPython and pattern not in optional and not any(belongs(name, pattern) for name in there):
            wrong.append(f"debian/{package}.install has {pattern}, which is no file")
    for listed in DEBIAN.glob("*.install"):
        if listed.stem not in [package for package, _ in packages()]:
            wrong.append(f"{listed.name} is of no package in debian/control")
    first = re.match(r"frequencyhandler \((.*?)\)", (DEBIAN / "changelog").read_text(encoding="utf-8"))
    if not first or first[1] != VERSION:
        wrong.append(f"debian/changelog begins with {first and first[1]}, the project has the version {VERSION}")
    if len(there) < 100:
        wrong.append(f"only {len(there)} files are installed")
    print("\n".join(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())

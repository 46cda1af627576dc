#!/usr/bin/env python3
"""sbom.py PROJECT FOLDER RULE: one rule of packaging/sbom, such as IsTheSame, which is is_the_same here, tried on packages made in FOLDER."""

import csv
import hashlib
import json
import pathlib
import re
import shutil
import subprocess
import sys

PROJECT, FOLDER, RULE = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
INSTALLED = ["libasio-dev (= 1:1.22.1-1)", "libc6 (= 2.36-9+deb12u14)", "libiio0 (= 0.24-4)"]


def package(name, depends):
    tree = FOLDER / name
    (tree / "DEBIAN").mkdir(parents=True)
    (tree / "DEBIAN/control").write_text(
        f"Package: {name}\nVersion: 0.9.1\nArchitecture: amd64\nMaintainer: nobody <nobody@localhost>\n"
        + (f"Depends: {depends}\n" if depends else "") + "Description: for a test\n", encoding="utf-8")
    file = FOLDER / f"{name}_0.9.1_amd64.deb"
    subprocess.run(["dpkg-deb", "--root-owner-group", "--build", tree, file], check=True, stdout=subprocess.DEVNULL)
    return file


def buildinfo(files, installed=None):
    lines = [f" {hashlib.sha256(file.read_bytes()).hexdigest()} {file.stat().st_size} {file.name}" for file in files]
    path = FOLDER / "frequencyhandler_0.9.1_amd64.buildinfo"
    path.write_text(
        "Format: 1.0\nSource: frequencyhandler\nArchitecture: all amd64\nVersion: 0.9.1\nChecksums-Sha256:\n" + "\n".join(lines)
        + "\nInstalled-Build-Depends:\n " + ",\n ".join(INSTALLED if installed is None else installed) + "\n", encoding="utf-8")
    return path


def radio(*more):
    """libfrequencyhandler0, of the C library alone, and libradiodevices0, of libiio and the headers of Asio as well."""
    return [
        package("libfrequencyhandler0", "libc6 (>= 2.34)"),
        package("libradiodevices0", ", ".join(["libc6 (>= 2.34)", "libiio0 (>= 0.24)", "libfrequencyhandler0 (>= 0.9.1)", *more])),
    ]


def run(*arguments):
    return subprocess.run([PROJECT / "packaging/sbom", *arguments], capture_output=True, text=True, check=False)


def shown(*arguments):
    result = run(*arguments)
    assert result.returncode == 0, result.stderr
    return json.loads(result.stdout)


def refused(expected, *arguments):
    result = run(*arguments)
    assert result.returncode == 1 and not result.stdout, (result.returncode, result.stdout)
    assert result.stderr == f"sbom: {expected}\n", result.stderr


def names_each_package_with_its_sum_and_what_it_is_linked_with():
    files = radio("python3 (>= 3.11~) | python3.11")
    document = shown(buildinfo(files))
    assert document["spdxVersion"] == "SPDX-2.3" and document["dataLicense"] == "CC0-1.0"
    assert document["name"] == "frequencyhandler-0.9.1-amd64"
    assert re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", document["creationInfo"]["created"])
    relations = [(each["spdxElementId"][8:], each["relationshipType"], each["relatedSpdxElement"][8:]) for each in document["relationships"]]
    assert relations == [
        ("DOCUMENT", "DESCRIBES", "libfrequencyhandler0"),
        ("DOCUMENT", "DESCRIBES", "libradiodevices0"),
        ("libfrequencyhandler0", "DYNAMIC_LINK", "libc6"),
        ("libradiodevices0", "DYNAMIC_LINK", "libc6"),
        ("libradiodevices0", "DYNAMIC_LINK", "libiio0"),
        ("libradiodevices0", "DEPENDS_ON", "libfrequencyhandler0"),
        ("libradiodevices0", "DEPENDS_ON", "python3"),
        ("libradiodevices0", "STATIC_LINK", "libasio-dev"),
    ], relations
    described = {each["name"]: each for each in document["packages"]}
    assert set(described) == {"libfrequencyhandler0", "libradiodevices0", "libc6", "libiio0", "libasio-dev", "python3"}
    ours = described["libradiodevices0"]
    assert ours["checksums"] == [{"algorithm": "SHA256", "checksumValue": hashlib.sha256(files[1].read_bytes()).hexdigest()}]
    assert (ours["versionInfo"], ours["licenseDeclared"]) == ("0.9.1", "NONE")
    asio = described["libasio-dev"]
    assert (asio["versionInfo"], asio["licenseDeclared"], asio["summary"]) == ("1:1.22.1-1", "BSL-1.0", "Asio")
    assert asio["externalRefs"][0]["referenceLocator"] == "pkg:deb/debian/libasio-dev@1%3A1.22.1-1?arch=amd64"
    assert described["python3"]["versionInfo"] == "NOASSERTION"  # it was not there when the packages were built
    # Each is identified once, as the format wants it, and nothing is referred to that is not described.
    identifiers = [each["SPDXID"] for each in document["packages"]]
    assert len(set(identifiers)) == len(identifiers) == 6
    assert all(re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", each) for each in identifiers)
    assert {each["relatedSpdxElement"] for each in document["relationships"]} <= set(identifiers)


def has_what_is_left_out_of_a_build_only_where_it_is_in_it():
    """Boost and Chart.js are in radioctl where it is linked with OpenSSL; on a processor without it, it cannot serve."""
    always = ["libcli11-dev (= 1)", "libeigen3-dev (= 2)", "nlohmann-json3-dev (= 3)"]
    related = {"libcli11-dev": "STATIC_LINK", "libeigen3-dev": "STATIC_LINK", "nlohmann-json3-dev": "STATIC_LINK", "libc6": "DYNAMIC_LINK"}
    for depends, installed, wanted in (
            ("libc6", always, related),
            ("libc6, libssl3 (>= 3.0)", always + ["libboost-dev (= 4)", "libjs-chart.js (= 5)"],
             related | {"libssl3": "DYNAMIC_LINK", "libboost-dev": "STATIC_LINK", "libjs-chart.js": "CONTAINS"})):
        shutil.rmtree(FOLDER / "radioctl", ignore_errors=True)
        document = shown(buildinfo([package("radioctl", depends)], installed))
        assert {each["relatedSpdxElement"][8:]: each["relationshipType"] for each in document["relationships"]
                if each["spdxElementId"] == "SPDXRef-radioctl"} == wanted, document["relationships"]
    shutil.rmtree(FOLDER / "radioctl")
    info = buildinfo([package("radioctl", "libc6, libssl3 (>= 3.0)")], always + ["libboost-dev (= 4)"])
    refused(f"{info}: it was built without libjs-chart.js, whose content is to be in radioctl, says packaging/parts.csv", info)


def is_the_same_for_the_same_packages():
    info = buildinfo(radio())
    assert run(info).stdout == run(info).stdout != ""


def takes_versions_from_the_system_of_another_processor():
    info = buildinfo(radio(), ["cmake (= 3.25.1-1)"])
    status = FOLDER / "status"
    status.write_text("".join(
        f"Package: {name}\nArchitecture: armhf\nVersion: {version}\nDescription: short\n Version: of nothing\n\n"
        for name, version in (("libasio-dev", "1.2-3"), ("libc6", "2.41-12"), ("libiio0", "0.26-2"))), encoding="utf-8")
    versions = {each["name"]: each["versionInfo"] for each in shown(info, status)["packages"]}
    assert versions == {"libfrequencyhandler0": "0.9.1", "libradiodevices0": "0.9.1", "libc6": "2.41-12", "libiio0": "0.26-2",
                        "libasio-dev": "1.2-3"}, versions


def refuses_a_library_that_nobody_has_told_it_of():
    info = buildinfo(radio("libz3-4 (>= 4.8)"))
    refused("libradiodevices0_0.9.1_amd64.deb depends on libz3-4, which packaging/parts.csv does not have for libradiodevices0: "
            "expected a row for it", info)


def refuses_packages_that_are_not_those_of_the_build():
    files = radio()
    info = buildinfo(files)
    files[0].write_bytes(files[0].read_bytes() + b"x")
    result = run(info)
    assert result.returncode == 1 and f"{files[0]}: its SHA-256 is " in result.stderr, result.stderr
    files[0].unlink()
    refused(f"{files[0]}: No such file or directory", info)


def refuses_a_build_without_headers_that_are_to_be_in_it():
    info = buildinfo(radio(), INSTALLED[1:])
    refused(f"{info}: it was built without libasio-dev, whose headers are to be in libradiodevices0, says packaging/parts.csv", info)


def refuses_what_is_no_record_of_a_build():
    other = FOLDER / "other"
    other.write_text("Version: 1\n", encoding="utf-8")
    refused(f"{other}: expected Version, Architecture, Checksums-Sha256 and Installed-Build-Depends, as dpkg-buildpackage writes them", other)
    refused(f"{FOLDER}/none: No such file or directory", FOLDER / "none")


def has_the_parts_that_the_page_and_the_build_have():
    """The table in docs/packages.md names each part with its licence and packages, and Debian's build each header among them."""
    with open(PROJECT / "packaging/parts.csv", encoding="utf-8", newline="") as stream:
        parts = list(csv.DictReader(stream))
    table = (PROJECT / "docs/packages.md").read_text(encoding="utf-8").partition("| part | licence | in |\n|---|---|---|\n")[2]
    rows = [[cell.strip() for cell in line.strip("|").split("|")] for line in table.split("\n\n")[0].splitlines()]
    told = {}
    for part, licence, where in rows:
        name, _, how = re.sub(r"\[(.*?)\]\(.*?\)", r"\1", part).partition(", ")
        told[name] = (licence, where, how)
    shown_as = {"dynamic": "", "headers": "headers", "content": "as it is"}
    wanted = {each["part"]: (each["licence"], "everything" if each["in"] == "*" else ", ".join(f"`{name}`" for name in each["in"].split()),
                             shown_as[each["link"]]) for each in parts}
    assert told == wanted, {part: (told.get(part), wanted.get(part)) for part in told.keys() | wanted.keys() if told.get(part) != wanted.get(part)}
    control = (PROJECT / "debian/control").read_text(encoding="utf-8")
    needed = re.findall(r"^ ([a-z0-9+.-]+)", control.partition("Build-Depends-Indep")[0], re.M)
    built_with = {each["packages"] for each in parts if each["link"] != "dynamic"}
    assert built_with <= set(needed), built_with - set(needed)
    packages = set(re.findall(r"^Package: (.*)$", control, re.M))
    assert {name for each in parts if each["in"] != "*" for name in each["in"].split()} <= packages


def main():
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir(parents=True)
    globals()[re.sub("(?<=.)(?=[A-Z])", "_", RULE).lower()]()


main()

"""Makes a wheel with CMake, for pip: PEP 517, and nothing but the standard library.

It has the extension module, the package around it, and the two shared libraries of the project that the module needs; those
of others are the system's. It is built as ./run builds, by the preset release. CMAKE_ARGS has what CMake is to be told beside that,
"-DCMAKE_CXX_FLAGS_RELEASE=-O0" for example, as words of a shell; CMAKE_BUILD_PARALLEL_LEVEL says how many compilers run at once.
FREQUENCYHANDLER_BUILD names a build directory that is built already, whose files are then taken.
"""

import base64
import hashlib
import io
import os
import pathlib
import re
import shlex
import subprocess
import sys
import sysconfig
import tarfile
import tempfile
import zipfile

TOP = pathlib.Path(__file__).resolve().parents[2]
NAME = "frequencyhandler"
MISSING = "the build has no package for Python: python3-dev or pybind11-dev is missing"


def version():
    """As the headers of the library have it."""
    header = (TOP / "PlatformServices/FrequencyHandler/interface/FrequencyHandlerVersion.h").read_text()
    return ".".join(re.findall(r"_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$", header, re.MULTILINE))


def tag():
    """For which Python, which interface of it and which system the wheel is."""
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    return f"{python}-{python}-{re.sub('[^a-zA-Z0-9]', '_', sysconfig.get_platform())}"


def run(*command):
    """What goes wrong ends the build, with what was said of it."""
    subprocess.run([str(word) for word in command], check=True)


def build():
    """A build directory with everything that the wheel has."""
    given = os.environ.get("FREQUENCYHANDLER_BUILD")
    if given:
        return pathlib.Path(given)
    directory = TOP / "build" / f"wheel-{tag()}"
    try:
        wishes = shlex.split(os.environ.get("CMAKE_ARGS", ""))
    except ValueError as error:
        raise SystemExit(f"CMAKE_ARGS: {error}, expected words as a shell has them") from None
    # From the beginning: what an earlier call was told, or found, is none of this one's.
    for configured in directory.glob("python/*.dist-info/METADATA"):
        configured.unlink()
    run("cmake", "--fresh", "-S", TOP, "-B", directory, "--preset", "release", "-DFREQUENCYHANDLER_PYTHON=ON",
        f"-DPython_EXECUTABLE={sys.executable}", *wishes)
    if not any(directory.glob("python/*.dist-info/METADATA")):  # configured with the package, and only then
        raise SystemExit(MISSING)
    run("cmake", "--build", directory, "--target", "python_engine")
    return directory


def contents(stage):
    """What is in the wheel: names and files. A library goes by the name that the loader looks for."""
    links = {path.resolve() for path in stage.rglob("*") if path.is_symlink()}
    root = next(stage.rglob(NAME)).parent
    for path in sorted(root.rglob("*")):
        if path.is_file() and (path.is_symlink() or path.resolve() not in links):
            yield path.relative_to(root).as_posix(), path.read_bytes()


def digest(data):
    """As RECORD has it."""
    return "sha256=" + base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    """The hook of PEP 517; gives the name of the wheel."""
    info = f"{NAME}-{version()}.dist-info"
    name = f"{NAME}-{version()}-{tag()}.whl"
    directory = build()
    with tempfile.TemporaryDirectory() as stage:
        for component in ("python", "wheel"):
            run("cmake", "--install", directory, "--component", component, "--prefix", stage, "--strip")
        files = dict(contents(pathlib.Path(stage)))
    if f"{info}/METADATA" not in files:
        raise SystemExit(MISSING)
    files[f"{info}/WHEEL"] = (f"Wheel-Version: 1.0\nGenerator: cmake_wheel\nRoot-Is-Purelib: false\nTag: {tag()}\n").encode()
    record = "".join(f"{file},{digest(data)},{len(data)}\n" for file, data in files.items()) + f"{info}/RECORD,,\n"
    files[f"{info}/RECORD"] = record.encode()
    with zipfile.ZipFile(pathlib.Path(wheel_directory) / name, "w", zipfile.ZIP_DEFLATED) as wheel:
        for file, data in files.items():
            entry = zipfile.ZipInfo(file)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = (0o755 if ".so" in file else 0o644) << 16
            wheel.writestr(entry, data)
    return name


def build_sdist(sdist_directory, config_settings=None):
    """The hook of PEP 517: the sources as they are, without what was built."""
    base = f"{NAME}-{version()}"
    name = f"{base}.tar.gz"
    with tarfile.open(pathlib.Path(sdist_directory) / name, "w:gz") as archive:
        for path in sorted(TOP.iterdir()):
            if path.name not in ("build", ".git", ".cache"):
                archive.add(path, f"{base}/{path.name}")
        metadata = (TOP / "python/METADATA.in").read_text().replace("@PROJECT_VERSION@", version()).encode()
        entry = tarfile.TarInfo(f"{base}/PKG-INFO")
        entry.size = len(metadata)
        archive.addfile(entry, io.BytesIO(metadata))
    return name

"""A wheel, made by pip without a network, and installed where nothing else is; and what CMake installs."""

import importlib
import os
import subprocess
import sys
import tarfile
from pathlib import Path

import pytest

TOP = Path(__file__).parents[2]
CHECK = """
import frequencyhandler, sys
with frequencyhandler.Radio(sys.argv[1]) as radio:
    print(radio.tune("tx", 1, "7.442 GHz")["channel.1.tx.rf.frequency"])
print(frequencyhandler.__file__)
print(*sorted({line.split()[-1] for line in open("/proc/self/maps") if "libStandalonePlatform" in line or "libRadio" in line}))
"""


@pytest.fixture(scope="module")
def installed(tmp_path_factory):
    folder = tmp_path_factory.mktemp("site")
    build = os.environ["RADIO_BUILD"]
    done = subprocess.run(
        [sys.executable, "-m", "pip", "install", "--no-index", "--no-deps", "--quiet", "--disable-pip-version-check",
         "--no-warn-script-location", "--target", folder, TOP],
        capture_output=True, text=True,
        env=dict(os.environ, FREQUENCYHANDLER_BUILD=build, PIP_NO_CACHE_DIR="1", PIP_ROOT_USER_ACTION="ignore"))
    assert done.returncode == 0, done.stderr
    return folder


def run(installed, *arguments):
    return subprocess.run([sys.executable, *map(str, arguments)], capture_output=True, text=True,
                          env=dict(os.environ, PYTHONPATH=str(installed)), cwd=installed)


def test_it_has_its_libraries_beside_it(installed, board_file):
    done = run(installed, "-c", CHECK, board_file)
    assert done.returncode == 0, done.stderr
    carrier, package, libraries = done.stdout.splitlines()
    assert carrier == "7442000"
    assert package == f"{installed}/frequencyhandler/__init__.py"
    assert [Path(library).parent for library in libraries.split()] == [installed / "frequencyhandler"] * 2


def test_pytest_finds_the_fixtures_by_itself(installed, board_file):
    done = run(installed, "-m", "pytest", "-q", "-p", "no:cacheprovider", "--radio-board", board_file,
               TOP / "examples" / "test_acceptance.py")
    assert done.returncode == 0, done.stdout + done.stderr


def test_it_says_that_it_is_typed(installed):
    assert (installed / "frequencyhandler" / "py.typed").exists()
    assert (installed / "frequencyhandler" / "_engine.pyi").exists()
    metadata = next(installed.glob("frequencyhandler-*.dist-info")) / "METADATA"
    assert "Requires-Dist: numpy" in metadata.read_text()


@pytest.mark.parametrize("prefix, folder", [
    ("/usr/local", "/usr/local/lib/python{}.{}/dist-packages"),
    ("/usr", "/usr/lib/python3/dist-packages"),
])
def test_cmake_installs_it_where_python_looks(prefix, folder, tmp_path, board_file):
    build = os.environ["RADIO_BUILD"]
    done = subprocess.run(["cmake", "--install", build, "--component", "python", "--prefix", prefix],
                          capture_output=True, text=True, env=dict(os.environ, DESTDIR=str(tmp_path)))
    assert done.returncode == 0, done.stderr
    place = folder.format(*sys.version_info)
    without = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}
    looked = subprocess.run([sys.executable, "-c", "import sys; print(*sys.path, sep='\\n')"], capture_output=True, text=True,
                            env=without).stdout.splitlines()
    if "/usr/lib/python3/dist-packages" in looked:  # Debian's interpreter, for which it is built
        assert place in looked or not os.path.exists(place)
    imported = subprocess.run([sys.executable, "-c", "import frequencyhandler; print(frequencyhandler.__file__)"], text=True,
                              capture_output=True, env=dict(without, PYTHONPATH=f"{tmp_path}{place}",
                                                            LD_LIBRARY_PATH=f"{build}/lib"))
    assert imported.stdout.strip() == f"{tmp_path}{place}/frequencyhandler/__init__.py", imported.stderr


@pytest.fixture
def backend(monkeypatch):
    monkeypatch.syspath_prepend(str(TOP / "python" / "backend"))
    return importlib.import_module("cmake_wheel")


class Commands:
    """What would be called; configuring finds the package for Python, or does not."""

    def __init__(self, metadata):
        self.metadata, self.is_found, self.done = metadata, True, []

    def __call__(self, *words):
        self.done.append([str(word) for word in words])
        if "--preset" in words and self.is_found:
            self.metadata.parent.mkdir(parents=True, exist_ok=True)
            self.metadata.touch()


@pytest.fixture
def commands(backend, monkeypatch, tmp_path):
    for name in ("FREQUENCYHANDLER_BUILD", "CMAKE_ARGS"):
        monkeypatch.delenv(name, raising=False)
    monkeypatch.setattr(backend, "TOP", tmp_path)
    directory = tmp_path / "build" / f"wheel-{backend.tag()}"
    commands = Commands(directory / "python" / "frequencyhandler-0.1.dist-info" / "METADATA")
    monkeypatch.setattr(backend, "run", commands)
    return commands


def test_wheel_without_what_it_needs_says_what_is_missing(backend, commands):
    backend.build()
    assert [words[1] for words in commands.done] == ["--fresh", "--build"]
    commands.is_found, commands.done = False, []
    with pytest.raises(SystemExit, match="python3-dev or pybind11-dev is missing"):
        backend.build()  # and what was found before does not count
    assert [words[1] for words in commands.done] == ["--fresh"]  # nothing is built


def test_wheel_tells_cmake_what_its_user_wishes(backend, commands, monkeypatch):
    monkeypatch.setenv("CMAKE_ARGS", "-DA=1 '-DB=-O0 -g'")
    backend.build()
    configured, built = commands.done
    assert configured[-2:] == ["-DA=1", "-DB=-O0 -g"]
    assert built[-2:] == ["--target", "python_engine"]
    monkeypatch.setenv("CMAKE_ARGS", "-DA='1")
    with pytest.raises(SystemExit, match="^CMAKE_ARGS: No closing quotation, expected words as a shell has them$"):
        backend.build()
    assert len(commands.done) == 2  # nothing more was done


def test_archive_of_the_sources_says_what_it_is(backend, monkeypatch, tmp_path):
    top = tmp_path / "top"
    for name in ("python/METADATA.in", "PlatformServices/FrequencyHandler/interface/FrequencyHandlerVersion.h"):
        (top / name).parent.mkdir(parents=True)
        (top / name).write_text((TOP / name).read_text())
    (top / "build").mkdir()
    monkeypatch.setattr(backend, "TOP", top)
    name = backend.build_sdist(tmp_path)
    base = f"frequencyhandler-{backend.version()}"
    assert name == f"{base}.tar.gz"
    with tarfile.open(tmp_path / name) as archive:
        said = archive.extractfile(f"{base}/PKG-INFO").read().decode()
        assert f"{base}/build" not in archive.getnames()
    assert f"\nName: frequencyhandler\nVersion: {backend.version()}\n" in said

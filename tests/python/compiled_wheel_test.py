"""What people do who have a copy of the project: pip compiles the package from what git knows, and installs it.

Nothing is optimised, since compilers take long enough as it is; all else is as it is for everybody.
"""

import os
import runpy
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

TOP = Path(__file__).parents[2]
CHECK = """
import sys
from frequencyhandler import Radio, __file__
with Radio(sys.argv[1]) as radio:
    print(radio.tune("tx", 1, "7.442 GHz")["channel.1.tx.rf.frequency"])
print(__file__)
"""


@pytest.fixture
def clean():
    """An environment in which nothing tells Python, pip or the build where to look, and pip has nowhere to download from."""
    told = ("PYTHON", "FREQUENCYHANDLER_", "CMAKE_ARGS", "LD_", "PIP_")
    kept = {name: value for name, value in os.environ.items() if not name.startswith(told)}
    return dict(kept, PIP_NO_INDEX="1", PIP_NO_CACHE_DIR="1", PIP_DISABLE_PIP_VERSION_CHECK="1")


def test_pip_compiles_and_installs_a_fresh_copy(clean, tmp_path, board_file):
    project, place = tmp_path / "project", tmp_path / "radio"
    runpy.run_path(str(TOP / "tests/package/guide"))["copy_of_files"](TOP, project)

    def run(*command, **wishes):
        done = subprocess.run([str(word) for word in command], cwd=project, env=dict(clean, **wishes), text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        assert done.returncode == 0, done.stdout
        return done.stdout

    run(sys.executable, "-m", "venv", "--system-site-packages", "--without-pip", place)
    run(place / "bin" / "python", "-m", "pip", "install", ".", CMAKE_BUILD_PARALLEL_LEVEL="2",
        CMAKE_ARGS="-DCMAKE_C_FLAGS_RELEASE=-O0 -DCMAKE_CXX_FLAGS_RELEASE=-O0 -DFREQUENCYHANDLER_ROOM_OPTIONS=")
    shutil.rmtree(project)  # nothing of it is needed any more
    project.mkdir()
    carrier, where = run(place / "bin" / "python", "-c", CHECK, board_file).splitlines()
    assert carrier == "7442000"
    assert where == f"{place}/lib/python{sys.version_info.major}.{sys.version_info.minor}/site-packages/frequencyhandler/__init__.py"

"""Runs the examples in the package and in docs/python.md beside the boards and recordings that they are about."""

import doctest
import importlib
import os
import pkgutil
import shutil
import sys
import tempfile

import frequencyhandler

tried = failed = 0
with tempfile.TemporaryDirectory() as folder:
    boards = os.path.join(folder, "boards")
    shutil.copytree(os.environ["RADIO_BOARDS"], boards)
    # As they lie in the project, seen from the boards.
    shutil.copytree(os.environ["RADIO_RECORDINGS"], os.path.join(folder, "tests", "recording", "kept"))
    os.chdir(boards)
    names = [module.name for module in pkgutil.iter_modules(frequencyhandler.__path__, "frequencyhandler.")]
    for name in ["frequencyhandler", *names]:
        if name != "frequencyhandler._engine":
            outcome = doctest.testmod(importlib.import_module(name))
            tried += outcome.attempted
            failed += outcome.failed
    page = doctest.testfile(os.path.join(os.environ["RADIO_DOCS"], "python.md"), module_relative=False)
    tried += page.attempted
    failed += page.failed
    os.chdir("/")
print(f"{tried} examples, {failed} failed")
sys.exit(failed != 0 or tried < 20)

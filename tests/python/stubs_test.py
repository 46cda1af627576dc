"""What _engine.pyi says is what the module has: names, what they are, and how many arguments they take."""

import ast
import inspect
import re
from pathlib import Path

import pytest

import frequencyhandler
from frequencyhandler import Board, Radio, _engine
from frequencyhandler.board import Tables
from frequencyhandler.drivers import Drivers, Variables
from frequencyhandler.expectations import Expectations
from frequencyhandler.faults import Faults
from frequencyhandler.listening import Events
from frequencyhandler.pytest_plugin import MockedHardware

STUB = Path(inspect.getfile(frequencyhandler)).with_name("_engine.pyi")


def kind_of_definition(node):
    """("function" or "method" or "static" or "property", how many arguments without the object)."""
    decorators = [decorator.id for decorator in node.decorator_list]
    count = len(node.args.args)
    if "property" in decorators:
        return "property", 0
    return ("static", count) if "staticmethod" in decorators else ("function", count)


def written():
    """What the stub has: names, those of a class as "Class.name"."""
    names = {}
    for node in ast.parse(STUB.read_text()).body:
        if isinstance(node, ast.FunctionDef):
            names[node.name] = kind_of_definition(node)
        elif isinstance(node, ast.AnnAssign):
            names[node.target.id] = "value", 0
        elif isinstance(node, ast.ClassDef):
            names[node.name] = "class", 0
            for member in (one for one in node.body if isinstance(one, ast.FunctionDef)):
                kind, count = kind_of_definition(member)
                names[f"{node.name}.{member.name}"] = ("method", count - 1) if kind == "function" else (kind, count)
    return names


def count_of(made, name):
    """How many arguments a function of pybind11 takes, which its documentation begins with."""
    said = re.match(rf"{name}\((.*?)\)( ->|$)", made.__doc__.splitlines()[0])
    assert said, made.__doc__
    return len(re.findall(r"(?:^|, )(?:self|arg\d+): ", said[1]))


def kind_of_object(owner, name, made):
    if isinstance(made, property):
        return "property", 0
    if isinstance(made, type):
        return "class", 0
    if not callable(made):
        return "value", 0
    if not isinstance(owner, type):
        return "function", count_of(made, name)
    is_static = isinstance(inspect.getattr_static(owner, name), staticmethod)
    return ("static", count_of(made, name)) if is_static else ("method", count_of(made, name) - 1)


#: What every class and module of pybind11 has.
OF_ALL = {"__doc__", "__module__", "__init__", "__new__", "__file__", "__loader__", "__name__", "__package__", "__spec__",
          "__dict__", "__weakref__"}


def there():
    names = {}
    for name, made in vars(_engine).items():
        if name in OF_ALL:
            continue
        names[name] = kind_of_object(_engine, name, made)
        if isinstance(made, type):
            names.update({f"{name}.{member}": kind_of_object(made, member, getattr(made, member))
                          for member in vars(made) if member not in OF_ALL and not member.startswith("_pybind11")})
    return names


def test_stubs_are_of_the_module():
    assert written() == there()


def test_difference_is_seen():
    with pytest.raises(AssertionError):
        count_of(len, "khz")
    assert count_of(_engine.why, "why") == 4
    assert there()["Radio.tune"] == ("method", 4) and there()["Board.load"] == ("static", 1)


@pytest.mark.parametrize("kind", [Radio, Expectations, Faults, Variables, Drivers, Tables, Board, Events, MockedHardware])
def test_what_takes_arguments_says_what_it_raises(kind):
    quiet = {"copy", "cancel", "close", "gather", "events", "injected", "count", "index", "get", "tell"}
    for name, made in vars(kind).items():
        function = getattr(made, "__func__", made)
        if name.startswith("_") or name in quiet or not inspect.isfunction(function):
            continue
        if len(inspect.signature(function).parameters) > 1:
            assert re.search(r"[Rr]aise|is\s+raised", function.__doc__), f"{kind.__name__}.{name}"

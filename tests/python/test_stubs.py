"""The type stubs name exactly what the module offers, so editors complete the real API."""

import ast
import enum
import inspect
import pathlib

import pytest

import cvn73100
from cvn73100 import sim

PACKAGE = pathlib.Path(cvn73100.__file__).parent
# Written in Python with instance attributes the stub spells out; nothing to compare.
PURE_PYTHON = {name for name in cvn73100.__all__ if name.startswith("Scope") and name.endswith("Error")}


def public(names):
    return {name for name in names if not name.startswith("_")}


def stub_names(body):
    names = set()
    for node in body:
        if isinstance(node, (ast.ClassDef, ast.FunctionDef)):
            names.add(node.name)
        elif isinstance(node, ast.AnnAssign) and isinstance(node.target, ast.Name):
            names.add(node.target.id)
        elif isinstance(node, ast.Assign):
            names.update(target.id for target in node.targets if isinstance(target, ast.Name))
        elif isinstance(node, ast.ImportFrom) and node.module is None:
            names.update(alias.asname or alias.name for alias in node.names)
    return public(names)


def runtime_members(cls):
    if issubclass(cls, enum.Enum):
        return set(cls.__members__)
    if issubclass(cls, tuple):
        return set(cls._fields)
    return public(vars(cls))


@pytest.mark.parametrize("module, stub", [(cvn73100, "__init__.pyi"), (sim, "sim.pyi")], ids=["cvn73100", "sim"])
def test_stubs_name_exactly_what_the_module_offers(module, stub):
    tree = ast.parse((PACKAGE / stub).read_text())
    assert stub_names(tree.body) == set(module.__all__)

    for node in tree.body:
        if not isinstance(node, ast.ClassDef) or node.name in PURE_PYTHON:
            continue
        cls = getattr(module, node.name)
        assert inspect.isclass(cls)
        assert stub_names(node.body) == runtime_members(cls), node.name

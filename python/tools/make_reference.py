"""Prints the reference of the package from its sources: docs/PYTHON-REFERENCE.md.

Usage: python python/tools/make_reference.py >docs/PYTHON-REFERENCE.md
"""

import ast
import inspect
import re
from collections.abc import Iterator
from pathlib import Path

PACKAGE = Path(__file__).parents[1] / "marovine"
Definition = ast.ClassDef | ast.FunctionDef | ast.AsyncFunctionDef


def text(docstring: str | None) -> str:
    """A docstring as Markdown."""
    plain = inspect.cleandoc(docstring or "").replace("``", "`")
    return re.sub(r"^:param (\w+):", r"- `\1`:", plain, flags=re.MULTILINE)


def signature(function: ast.FunctionDef | ast.AsyncFunctionDef) -> str:
    """Name, parameters without `self`, and result."""
    arguments = ast.unparse(function.args)
    arguments = re.sub(r"^(self|cls)(, /)?(, )?", "", arguments)
    result = f" -> {ast.unparse(function.returns)}" if function.returns else ""
    prefix = "await " if isinstance(function, ast.AsyncFunctionDef) else ""
    return f"{prefix}{function.name}({arguments}){result}"


def is_marked(function: ast.FunctionDef | ast.AsyncFunctionDef, mark: str) -> bool:
    return any(ast.unparse(decorator).endswith(mark) for decorator in function.decorator_list)


def attributes(body: list[ast.stmt]) -> Iterator[tuple[str, str]]:
    """Attributes with the texts behind them."""
    for statement, after in zip(body, [*body[1:], ast.Pass()], strict=True):
        documented = isinstance(after, ast.Expr) and isinstance(after.value, ast.Constant)
        doc = text(str(after.value.value)) if documented else ""  # type: ignore[attr-defined]
        if isinstance(statement, ast.AnnAssign):
            name = ast.unparse(statement.target).removeprefix("self.")
            if not name.startswith("_"):
                yield f"{name}: {ast.unparse(statement.annotation)}", doc
        elif isinstance(statement, ast.Assign) and documented:
            yield ast.unparse(statement.targets[0]).removeprefix("self."), doc


def members(definition: ast.ClassDef) -> Iterator[tuple[str, str]]:
    """What a class offers: headings and texts."""
    yield from attributes(definition.body)
    for member in definition.body:
        if not isinstance(member, ast.FunctionDef | ast.AsyncFunctionDef):
            continue
        if member.name == "__init__":
            yield from attributes(member.body)
        doc = ast.get_docstring(member)
        if doc is None or is_marked(member, ".setter"):
            continue
        if is_marked(member, "property"):
            result = ast.unparse(member.returns) if member.returns else ""
            yield f"{member.name}: {result}", text(doc)
        elif not member.name.startswith("_") or member.name.startswith("__"):
            yield signature(member), text(doc)


def definitions() -> dict[str, Definition]:
    found: dict[str, Definition] = {}
    for file in sorted(PACKAGE.glob("*.py")):
        for statement in ast.parse(file.read_text("utf-8")).body:
            if isinstance(statement, Definition):
                found[statement.name] = statement
    return found


def reference() -> str:
    known = definitions()
    tree = ast.parse((PACKAGE / "__init__.py").read_text("utf-8"))
    names = next(ast.literal_eval(s.value) for s in tree.body if isinstance(s, ast.Assign))
    lines = ["# Reference of the Python package", ""]
    lines += ["Made by `python/tools/make_reference.py` from the sources; [PYTHON.md](PYTHON.md) is where to begin.", ""]
    for name in names:
        definition = known.get(name)
        if definition is None:  # a module
            continue
        if not isinstance(definition, ast.ClassDef):
            lines += [f"## `{signature(definition)}`", "", text(ast.get_docstring(definition)), ""]
            continue
        bases = ", ".join(ast.unparse(base) for base in definition.bases if "_native" not in ast.unparse(base))
        lines += [f"## {name}" + (f"({bases})" if bases else ""), "", text(ast.get_docstring(definition)), ""]
        start = next((m for m in definition.body if getattr(m, "name", "") == "__init__"), None)
        if isinstance(start, ast.FunctionDef) and name not in ("Refused", "UnknownParameter"):
            lines += [f"`{signature(start).replace('__init__', name).removesuffix(' -> None')}`", ""]
        for heading, doc in members(definition):
            lines += [f"- **`{heading}`**" + (f": {doc}".replace("\n", "\n  ") if doc else "")]
        lines += [""]
    return "\n".join(line.rstrip() for line in "\n".join(lines).splitlines()) + "\n"


if __name__ == "__main__":
    print(reference(), end="")

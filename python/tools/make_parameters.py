"""Writes what follows from the applet's parameters into a built package: parameters.py and _attributes.pyi.

Usage: make_parameters.py FOLDER, where FOLDER is the package with its extension.
"""

import sys
import types
from pathlib import Path

TYPES = {"text": "str", "real": "float", "integer": "int", "table": "NDArray[np.uint32]"}
TAKEN = {"text": "str | os.PathLike[str]", "real": "float", "integer": "int", "table": "ArrayLike"}


def docstring(applet, name: str) -> str:
    facts = applet.describe(name)
    text = applet.description(name) or facts["title"] or name
    # Ranges move with other settings: these are the ones of the start.
    unit = f" {facts['unit']}" if facts["unit"] else ""
    accepts = f"At the start: {facts['accepted']}{unit}." if facts["kind"] != "enumeration" else ""
    return " ".join(f"{text} {accepts}".split()).replace("\\", "\\\\").replace('"', "'")


def enumerations(applet) -> str:
    lines = ['"""The enumerations of the applet\'s parameters, made from the applet."""', ""]
    lines += ["from marovine._enumerations import Enumeration", ""]
    for name in applet.names():
        entries = applet.describe(name)["entries"]
        if not entries:
            continue
        lines += ["", f"class {name}(Enumeration):", f'    """{docstring(applet, name)}"""', ""]
        lines += [f"    {entry.name} = ({int(entry)}, {entry.title!r})" for entry in entries]
        lines += [""]
    return "\n".join(lines)


def attributes(applet) -> str:
    lines = ["import os", "", "import numpy as np", "from numpy.typing import ArrayLike, NDArray", ""]
    lines += ["from marovine import parameters", "", "class ParameterAttributes:"]
    for name in applet.names():
        facts = applet.describe(name)
        given = TYPES.get(facts["kind"], f"parameters.{name}")
        taken = TAKEN.get(facts["kind"], f"parameters.{name} | int | str")
        lines += ["    @property", f"    def {name}(self) -> {given}:", f'        """{docstring(applet, name)}"""']
        if not facts["read_out"]:
            lines += [f"    @{name}.setter", f"    def {name}(self, value: {taken}) -> None: ..."]
    return "\n".join(lines) + "\n"


def main() -> None:
    folder = Path(sys.argv[1])
    # The package itself needs what is written here.
    package = types.ModuleType("marovine")
    package.__path__ = [str(folder)]
    sys.modules["marovine"] = package
    from marovine import _native

    applet = _native.Applet(_native.Board(), True, False)
    (folder / "parameters.py").write_text(enumerations(applet), encoding="utf-8")
    (folder / "_attributes.pyi").write_text(attributes(applet), encoding="utf-8")


if __name__ == "__main__":
    main()

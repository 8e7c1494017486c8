"""What calls on the applet answer with."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, NamedTuple

from marovine._html import table

__all__ = ["Change", "Difference", "Finding", "SetReport", "SetValue", "Skipped", "Write"]


class Write(NamedTuple):
    """A write that reached the design."""

    name: str
    """Full name of the design's parameter."""
    value: Any
    first_index: int
    """First element of a write to a table, else 0."""
    result: int
    """0, or the negative code with which the design refused it."""


class SetValue(NamedTuple):
    """A parameter that was set."""

    parameter: str
    before: Any
    after: Any


class Change(NamedTuple):
    """Something about a parameter that moved with another one."""

    parameter: str
    aspect: str
    """"value", "minimum", "maximum", "step" or "access"."""
    before: str
    after: str
    unit: str


@dataclass(frozen=True)
class SetReport:
    """What ``applet.set`` did."""

    set: tuple[SetValue, ...]
    """What was asked for, in order."""
    moved: tuple[Change, ...]
    """Whatever else differs, read-outs left out."""
    writes: tuple[Write, ...]
    """What reached the design, in order."""

    def __str__(self) -> str:
        lines = [f"{name} = {after}  (was {before})" for name, before, after in self.set]
        if self.moved:
            lines += ["", "Also moved"]
            lines += [f"{c.parameter}  {c.aspect}  {c.before} -> {c.after} {c.unit}".rstrip() for c in self.moved]
        count = len(self.writes)
        return "\n".join([*lines, "", f"{count} design write{'' if count == 1 else 's'}"])

    def _repr_html_(self) -> str:
        rows = [(name, "value", before, after, "") for name, before, after in self.set]
        return table(("parameter", "what", "before", "after", "unit"), [*rows, *self.moved])


class Skipped(NamedTuple):
    """A value of a file that a load did not take."""

    line: int
    sentence: str
    advice: list[str]


class Finding(NamedTuple):
    """Something about a configuration file."""

    line: int
    """0 for what is missing."""
    weight: str
    """"note", "misread", "not kept", "not tried", "skipped" or "load fails"."""
    text: str
    advice: list[str]


class Difference(NamedTuple):
    """A parameter that two configurations say differently; None where one says nothing."""

    parameter: str
    first: Any
    second: Any

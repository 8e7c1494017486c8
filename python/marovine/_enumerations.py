"""Enumeration parameters as ``enum`` classes."""

from __future__ import annotations

import enum
import sys
from collections.abc import Iterable
from typing import Any


class Enumeration(enum.IntEnum):
    """Base of all enumerations: whole numbers that also take their text, ``FG_LUT_TYPE("LUT_TYPE_CUSTOM")``.

    The text is a constant's name or its title, in letters of either case.
    """

    title: str

    def __new__(cls, value: int | str, title: str = "") -> Enumeration:
        member = int.__new__(cls, value)
        member._value_ = int(member)
        member.title = title
        return member

    @classmethod
    def _missing_(cls, value: object) -> Any:
        if not isinstance(value, str):
            return None
        for member in cls:
            if value.casefold() in (member.name.casefold(), member.title.casefold()):
                return member
        names = ", ".join(member.name for member in cls)
        raise ValueError(f"{cls.__name__}: {value!r} is no entry; entries: {names}")

    def __str__(self) -> str:
        return self.name


_made: dict[tuple[Any, ...], type[Enumeration]] = {}


def enumeration(name: str, entries: Iterable[tuple[str, int, str]]) -> type[Enumeration]:
    """The class of a parameter: that of ``marovine.parameters`` where it has these entries, else one made now."""
    wanted = [tuple(entry) for entry in entries]
    written = getattr(sys.modules.get("marovine.parameters"), name, None)
    if written is not None and [(m.name, m.value, m.title) for m in written] == wanted:
        return written  # type: ignore[no-any-return]
    key = (name, *wanted)
    if key not in _made:
        base: Any = Enumeration  # called as a maker of classes
        _made[key] = base(name, [(entry, (value, title)) for entry, value, title in wanted])
    return _made[key]

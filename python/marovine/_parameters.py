"""Parameters with all that is known about them."""

from __future__ import annotations

from collections.abc import Iterator, Mapping
from typing import TYPE_CHECKING, Any

from marovine._enumerations import Enumeration
from marovine._html import table
from marovine.errors import Error, Refused

if TYPE_CHECKING:
    from marovine._applet import Applet


class Parameter:
    """A parameter of an applet. Every property is asked for anew: ranges move when other parameters are set."""

    __slots__ = ("_applet", "name")

    def __init__(self, applet: Applet, name: str) -> None:
        self._applet = applet
        self.name = name
        """SDK name."""

    def _fact(self, key: str) -> Any:
        return self._applet.describe(self.name)[key]

    @property
    def value(self) -> Any:
        """The value now. Setting it raises ``Refused``, ``TypeError``, ``ValueError`` or ``OverflowError``."""
        return self._applet.get(self.name)

    @value.setter
    def value(self, value: Any) -> None:
        self._applet.put(self.name, value)

    @property
    def id(self) -> int:
        """What the typed calls of the C interface take."""
        return int(self._fact("id"))

    @property
    def kind(self) -> str:
        """ "integer", "real", "enumeration", "text" or "table"."""
        return str(self._fact("kind"))

    @property
    def group(self) -> str:
        """Path of groups, "Digital I/O > GPO"."""
        return str(self._fact("group"))

    @property
    def title(self) -> str:
        """What a person calls it."""
        return str(self._fact("title"))

    @property
    def description(self) -> str:
        """What it does; empty when nobody wrote that down."""
        return self._applet.description(self.name)

    @property
    def unit(self) -> str:
        """Unit of the value and its range; empty without one."""
        return str(self._fact("unit"))

    @property
    def minimum(self) -> int | float | None:
        """Smallest value accepted now; None for texts and enumerations."""
        minimum: int | float | None = self._fact("minimum")
        return minimum

    @property
    def maximum(self) -> int | float | None:
        """Largest value accepted now; None for texts and enumerations."""
        maximum: int | float | None = self._fact("maximum")
        return maximum

    @property
    def step(self) -> int | float | None:
        """What values must be multiples of; None without one."""
        step: int | float | None = self._fact("step")
        return step

    @property
    def entries(self) -> list[Enumeration]:
        """The members of an enumeration; empty for others."""
        return list(self._fact("entries"))

    @property
    def elements(self) -> int:
        """Elements of a table, else 0."""
        return int(self._fact("elements"))

    @property
    def writable(self) -> bool:
        """Whether it is reported writable now."""
        return bool(self._fact("writable"))

    @property
    def limits(self) -> list[str]:
        """What limits it now, a sentence each: tried out on a second board, which takes some milliseconds."""
        return self._applet.limits(self.name)

    @property
    def drives(self) -> list[str]:
        """The design parameters that a set writes."""
        return self._applet.drives(self.name)

    def _known_limits(self) -> list[str]:
        try:
            return self.limits
        except Error:  # opened without explanations
            return []

    def _value_text(self) -> str:
        try:
            value = self.value
        except Refused as refusal:
            return f"(not readable: {refusal.code})"
        if self.elements:
            return f"{self.elements} elements"
        return repr(value) if isinstance(value, str) else str(value)

    def __repr__(self) -> str:
        facts = self._applet.describe(self.name)
        unit = f" {facts['unit']}" if facts["unit"] else ""
        parts = [f"{self.name} = {self._value_text()}{unit}", f"accepts {facts['accepted']}", *self._known_limits()]
        if not facts["writable"]:
            parts.append("read-only")
        return f"<{'; '.join(parts)}>"

    def _repr_html_(self) -> str:
        facts = self._applet.describe(self.name)
        rows: list[tuple[str, object]] = [("value", f"{self._value_text()} {facts['unit']}")]
        rows += [("accepts", facts["accepted"])]
        rows += [("limited", text) for text in self._known_limits()]
        rows += [("group", facts["group"]), ("description", self.description)]
        return table((self.name, facts["title"]), rows)


class Parameters(Mapping[str, Parameter]):
    """All parameters of an applet, in display order: ``applet.parameters.FG_WIDTH`` or
    ``applet.parameters["FG_WIDTH"]``. In a notebook it shows itself as a tree."""

    def __init__(self, applet: Applet) -> None:
        self._applet = applet

    def __getitem__(self, name: str) -> Parameter:
        return Parameter(self._applet, self._applet.name_of(name))

    def __getattr__(self, name: str) -> Parameter:
        if name.startswith("_"):
            raise AttributeError(name)
        return self[name]

    def __iter__(self) -> Iterator[str]:
        listed = self._applet.display_order()
        yield from listed
        shown = set(listed)
        yield from (name for name in self._applet.names() if name not in shown)

    def __len__(self) -> int:
        return len(self._applet.names())

    def __dir__(self) -> list[str]:
        return [*super().__dir__(), *self._applet.names()]

    def _ipython_key_completions_(self) -> list[str]:
        return self._applet.names()

    def __repr__(self) -> str:
        return f"<{len(self)} parameters>"

    def _repr_html_(self) -> str:
        groups: dict[str, list[tuple[object, ...]]] = {}
        for name in self:
            facts = self._applet.describe(name)
            row = (name, self[name]._value_text(), facts["unit"], facts["accepted"])
            groups.setdefault(facts["group"], []).append(row)
        headings = ("parameter", "value", "unit", "accepts")
        return "".join(
            f"<details><summary>{group}</summary>{table(headings, rows)}</details>"
            for group, rows in groups.items()
        )

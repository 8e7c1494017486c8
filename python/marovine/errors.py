"""What can go wrong, as exceptions that say why.

Beside these the package raises Python's own: ``TypeError`` for a value of the wrong type, ``ValueError`` for one that
cannot be meant, ``OverflowError`` for a number that no value of a parameter's type reaches, and ``TimeoutError`` when
no picture comes in time.
"""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from marovine.reports import SetReport

__all__ = ["Cause", "ClosedError", "Error", "ForkedError", "Refused", "UnknownParameter", "WorldError"]


class Error(Exception):
    """Base of what the applet, its board and their files are to blame for."""


class ClosedError(Error, ValueError):
    """The board, the applet or the acquisition is closed."""


class ForkedError(Error, RuntimeError):
    """The object belongs to the parent of this forked process."""


class UnknownParameter(Error, AttributeError, KeyError):
    """No parameter has this name. Also an ``AttributeError`` and a ``KeyError``.

    ``suggestions`` are the nearest names that exist, best first.
    """

    def __init__(self, text: str, suggestions: Sequence[str] = ()) -> None:
        super().__init__(text)
        self.suggestions: tuple[str, ...] = tuple(suggestions)

    def __str__(self) -> str:
        return str(self.args[0])


class WorldError(Error, ValueError):
    """A world makes no sense; the text has a line for each fault, and the board keeps the world that it has."""


@dataclass(frozen=True)
class Cause:
    """Another parameter whose present value rules a value out."""

    parameter: str
    value: str
    """Its present value, as text."""
    remedies: tuple[str, ...]
    """Values of it that would do, as text."""
    direction: str
    """Whether the remedy is meant "exactly", "or more" or "or less"."""
    advice: str
    """The remedy as a sentence."""


class Refused(Error):
    """The applet refused a value or a call.

    ``str()`` is the refusal with its rule, its causes and what to do.
    """

    def __init__(
        self,
        text: str,
        code: int,
        parameter: str = "",
        value: Any = None,
        rule: str = "",
        nearest: Sequence[Any] = (),
        causes: Sequence[tuple[str, str, Sequence[str], str, str]] = (),
        accepted: str = "",
        advice: Sequence[str] = (),
    ) -> None:
        super().__init__(text, code, parameter, value, rule, nearest, causes, accepted, advice)
        self.text = text
        self.code = code
        """The applet's code, negative: -6000 out of range, -7080 wrong step, -12 not allowed, ..."""
        self.parameter = parameter
        """The parameter's name; empty when the call names none."""
        self.value = value
        """What was to be set."""
        self.rule = rule
        """What the value breaks: "above 4096", "not a multiple of 8"."""
        self.nearest: list[Any] = list(nearest)
        """Accepted values next to the refused one."""
        self.causes = [Cause(name, held, tuple(remedies), *rest) for name, held, remedies, *rest in causes]
        """The parameters whose present values rule the value out, the likeliest first."""
        self.accepted = accepted
        """The range or the entries as they are now."""
        self.advice: list[str] = list(advice)
        """What to do, a sentence each."""
        self.report: SetReport | None = None
        """What was done before, when several parameters were to be set at once."""

    @property
    def cause(self) -> Cause | None:
        """The likeliest of the causes."""
        return self.causes[0] if self.causes else None

    @property
    def remedies(self) -> list[str]:
        """What to do about the causes, a sentence each."""
        return [cause.advice for cause in self.causes]

    def __str__(self) -> str:
        return "\n  ".join([self.text, *self.advice])

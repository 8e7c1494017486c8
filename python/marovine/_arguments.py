"""Arguments of calls, checked."""

from __future__ import annotations

import operator
import os
from typing import Any


def whole_number(name: str, value: Any, least: int, most: int, accepted: str = "") -> int:
    """The whole number of ``least`` to ``most`` that an argument is. Raises ``TypeError`` or ``ValueError``."""
    accepted = accepted or f"{least} to {most}"
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f"{name} must be a whole number, {accepted}, not {type(value).__name__}") from None
    if not least <= number <= most:
        raise ValueError(f"{name} must be {accepted}, not {number}")
    return number


def path_text(path: Any) -> str:
    """A path as text. Raises ``TypeError`` for what is none and ``ValueError`` for one that no file can have."""
    text = os.fsdecode(path)
    if b"\0" in os.fsencode(text):
        raise ValueError("a path must not hold a zero byte")
    return text

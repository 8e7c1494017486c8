"""Tables for notebooks."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from html import escape


def table(headings: Sequence[str], rows: Iterable[Sequence[object]]) -> str:
    """A table of plain texts."""
    head = "".join(f"<th>{escape(heading)}</th>" for heading in headings)
    body = "".join("<tr>" + "".join(f"<td>{escape(str(cell))}</td>" for cell in row) + "</tr>" for row in rows)
    return f"<table><thead><tr>{head}</tr></thead><tbody>{body}</tbody></table>"

"""Events of the design."""

from __future__ import annotations

from collections import deque
from collections.abc import AsyncIterator, Iterator
from contextlib import suppress
from dataclasses import dataclass
from typing import Any

from marovine import _native
from marovine._waiting import elsewhere
from marovine.errors import ClosedError


@dataclass(frozen=True)
class Event:
    """An event that happened."""

    name: str
    time: int
    """ns of the board's clock."""
    count: int
    """How often it has happened since the subscription, lost ones too; from 1."""
    payload: int
    """What else there is to say, by the sort of event."""
    lost: int
    """Events of the subscription that were lost between the one before and this one."""


class Events(Iterator[Event], AsyncIterator[Event]):
    """Events as they happen, from ``applet.events`` on; ends with ``end`` or a ``with`` block.

    A board whose clock does not run in real time has its events when the clock moves.
    """

    def __init__(self, board: _native.Board, masks: dict[str, int], timeout: float | None, room: int) -> None:
        self._names = {mask.bit_length() - 1: name for name, mask in masks.items()}
        self._events = _native.Events(board, sum(masks.values()), room)
        self.timeout = timeout
        """Seconds to wait for an event; None waits for good."""
        self._kept: deque[Event] = deque()  # that came to a cancelled wait

    def _wait(self, timeout: float | None, interrupt: _native.Interrupt | None = None) -> Event | None:
        if self._kept:
            with suppress(IndexError):  # another thread was quicker
                return self._kept.popleft()
        happened: Any = self._events.next_event(timeout, interrupt)
        if happened is None:
            return None
        number, *rest = happened
        return Event(self._names[number], *rest)

    def __iter__(self) -> Events:
        return self

    def __next__(self) -> Event:
        event = self._wait(self.timeout)
        if event is None:
            raise StopIteration
        return event

    def next(self, timeout: float | None = None) -> Event:
        """The next event, waited for at most ``timeout`` seconds (None: the subscription's own timeout).

        Raises ``TimeoutError``, and ``ClosedError`` when the subscription is over.
        """
        event = self._wait(self.timeout if timeout is None else timeout)
        if event is None:
            raise ClosedError("no more events come: the subscription is over")
        return event

    def __aiter__(self) -> Events:
        return self

    async def __anext__(self) -> Event:
        event = await elsewhere(lambda interrupt: self._wait(self.timeout, interrupt), self._kept)
        if event is None:
            raise StopAsyncIteration
        return event

    def end(self) -> None:
        """Ends the subscription, and a wait of another thread with it. May be called again."""
        self._events.end()
        self._kept.clear()

    def __enter__(self) -> Events:
        return self

    def __exit__(self, *_: object) -> None:
        self.end()

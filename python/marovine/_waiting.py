"""Waiting in an event loop for what a thread can wait for."""

from __future__ import annotations

import asyncio
from collections import deque
from collections.abc import Callable
from typing import TypeVar

from marovine import _native

T = TypeVar("T")


async def elsewhere(wait: Callable[[_native.Interrupt], T | None], kept: deque[T]) -> T | None:
    """Waits in a thread of the event loop's; a cancelled task ends the wait there too.

    What comes to a cancelled wait at the last moment goes to ``kept``, for the next wait to take.
    """
    interrupt = _native.Interrupt()
    waiting = asyncio.get_running_loop().run_in_executor(None, wait, interrupt)

    def keep(ended: asyncio.Future[T | None]) -> None:
        if ended.cancelled() or ended.exception() is not None:
            return  # the wait's own end is no news
        result = ended.result()
        if result is not None:
            kept.append(result)

    try:
        return await asyncio.shield(waiting)
    except asyncio.CancelledError:
        interrupt.set()
        waiting.add_done_callback(keep)  # a second cancellation does not lose it either
        await asyncio.wait([waiting])
        raise

"""Waiting in an event loop for what a thread can wait for."""

from __future__ import annotations

import asyncio
from collections.abc import Callable
from typing import TypeVar

T = TypeVar("T")


async def elsewhere(wait: Callable[[], T], interrupt: Callable[[], object]) -> T:
    """Waits in a thread of the event loop's; a cancelled task ends the wait there too."""
    waiting = asyncio.get_running_loop().run_in_executor(None, wait)
    try:
        return await asyncio.shield(waiting)
    except asyncio.CancelledError:
        interrupt()
        await asyncio.wait([waiting])
        waiting.exception()  # the wait's own end is no news
        raise

"""Pictures as arrays, and the acquisition that they come from."""

from __future__ import annotations

import enum
import json
from collections import deque
from collections.abc import AsyncIterator, Iterator
from contextlib import suppress
from typing import TYPE_CHECKING, Any, NamedTuple

import numpy as np
from numpy.typing import NDArray

from marovine import _native
from marovine._arguments import whole_number
from marovine._waiting import elsewhere
from marovine.errors import ClosedError

if TYPE_CHECKING:
    from marovine._applet import Applet

_WIDEST_SHOWN = 1024
_PNG_SIDE = 1_000_000  # what readers of PNG files take
_PICTURES, _LOST = 1, 2


def png_of(picture: NDArray[np.uint8]) -> bytes:
    """An array of shape (height, width, 3), ``uint8``, blue first, as a PNG file. Raises ``ValueError`` for others."""
    picture = np.asarray(picture)
    if picture.ndim != 3 or picture.shape[2] != 3 or picture.dtype != np.uint8 or picture.size == 0:
        raise ValueError(f"an array of shape {picture.shape} and type {picture.dtype} is no colour picture")
    if max(picture.shape) > _PNG_SIDE:
        raise ValueError(f"a PNG file has at most {_PNG_SIDE} pixels a side, the picture is of {picture.shape}")
    return _native.encode_png(np.ascontiguousarray(picture))


class Trigger(enum.IntEnum):
    """What made a picture begin."""

    NONE = 0
    """Free run."""
    CAMERA = 1
    """The source's own frame."""
    INPUT = 2
    """An edge of the image trigger's input."""
    GATE = 3
    """Its level."""
    SOFTWARE = 4
    """A software trigger."""
    BEFORE = 5
    """A further picture of the window that the picture before began."""


class PictureInfo(NamedTuple):
    """What is known of a picture beside its pixels. Times are in ns of the board's clock."""

    number: int
    """Number in the acquisition, from 1; lost pictures take none."""
    frame: int
    """Number since the start, from 0; lost and unselected pictures count."""
    trigger: Trigger
    first_line_time: int
    """When its first line began."""
    last_line_time: int
    """When its last line was complete."""
    trigger_time: int
    """When its trigger came; as ``first_line_time`` without one."""
    first_line: int
    """Lines of the acquisition before its first one."""
    encoder_position: int
    """Encoder pulses at its first line, backward ones taken off."""
    lost_before: int
    """Pictures lost between the one before and this one."""
    truth_text: str
    """The ground truth as JSON; empty without a world."""


class Picture(np.ndarray[Any, np.dtype[np.uint8]]):
    """A picture: a read-only array of shape (height, width, 3), ``uint8``, blue first.

    The array lies in the board's own buffer, taken out of the ring of buffers: nothing is copied, and the pixels stay
    for as long as the array or a view of it is there. What is computed from a picture is a plain array.
    """

    info: PictureInfo | None

    def __array_finalize__(self, obj: Any) -> None:
        self.info = getattr(obj, "info", None)

    def __array_wrap__(self, array: Any, context: Any = None, return_scalar: bool = False) -> Any:
        plain = np.asarray(array)
        return plain[()] if return_scalar else plain

    @property
    def number(self) -> int:
        """Number in the acquisition, from 1; 0 for an array that is no picture of one."""
        return self.info.number if self.info is not None else 0

    @property
    def truth(self) -> dict[str, Any] | None:
        """What the picture shows, known without looking at it: the parts and defects of the board's world, in pixels
        of the whole picture. None without a world."""
        text = self.info.truth_text if self.info is not None else ""
        return dict(json.loads(text)) if text else None

    def png(self) -> bytes:
        """The picture as a PNG file. Raises ``ValueError`` for an array that is no colour picture."""
        return png_of(self)

    def _repr_png_(self) -> bytes | None:
        if self.ndim != 3 or self.shape[2] != 3 or self.dtype != np.uint8 or self.size == 0:
            return None
        step = -(-max(self.shape[:2]) // _WIDEST_SHOWN)
        return png_of(self[::step, ::step])


class Acquisition(Iterator[Picture], AsyncIterator[Picture]):
    """Pictures as they come, from ``applet.acquire`` on. It ends with its last picture, with ``stop``, at the end of
    a ``with`` block, with its applet, or when nobody holds it any more.

    Several threads may ask for pictures; each gets its own.
    """

    def __init__(self, applet: Applet, count: int | None, timeout: float | None, buffers: int) -> None:
        pictures = -1 if count is None else whole_number("count", count, 1, 2**63 - 1, "1 or more, or None")
        self._acquisition = applet.begin_acquisition(pictures, whole_number("buffers", buffers, 1, 1024))
        self.timeout = timeout
        """Seconds to wait for a picture; None waits for good."""
        self._kept: deque[Picture] = deque()  # that came to a cancelled wait

    def _wait(self, timeout: float | None, interrupt: _native.Interrupt | None = None) -> Picture | None:
        if self._kept:
            with suppress(IndexError):  # another thread was quicker
                return self._kept.popleft()
        taken: Any = self._acquisition.next(timeout, interrupt)
        if taken is None:
            self._acquisition.stop()  # whoever ended it: it is over when this returns
            return self._kept.popleft() if self._kept else None
        pixels, number, frame, trigger, *rest = taken
        picture: Picture = pixels.view(Picture)
        picture.info = PictureInfo(number, frame, Trigger(trigger), *rest)
        return picture

    def __iter__(self) -> Acquisition:
        return self

    def __next__(self) -> Picture:
        picture = self._wait(self.timeout)
        if picture is None:
            raise StopIteration
        return picture

    def next(self, timeout: float | None = None) -> Picture:
        """The next picture, waited for at most ``timeout`` seconds (None: the acquisition's own timeout).

        Raises ``TimeoutError``, which says why none came, and ``ClosedError`` when no more will come.
        """
        picture = self._wait(self.timeout if timeout is None else timeout)
        if picture is None:
            raise ClosedError("no more pictures come: the acquisition is over")
        return picture

    def __aiter__(self) -> Acquisition:
        return self

    async def __anext__(self) -> Picture:
        picture = await elsewhere(lambda interrupt: self._wait(self.timeout, interrupt), self._kept)
        if picture is None:
            raise StopAsyncIteration
        return picture

    def stop(self) -> None:
        """Ends the acquisition; arrays that were taken stay. May be called again, and from any thread."""
        self._acquisition.stop()
        self._kept.clear()

    @property
    def running(self) -> bool:
        """Whether more pictures may come."""
        return bool(self._kept) or not self._acquisition.over

    @property
    def delivered(self) -> int:
        """Pictures that the board has finished so far."""
        return self._acquisition.status(_PICTURES)

    @property
    def lost(self) -> int:
        """Pictures that the board lost because no buffer was free."""
        return self._acquisition.status(_LOST)

    def __enter__(self) -> Acquisition:
        return self

    def __exit__(self, *_: object) -> None:
        self.stop()

    def __repr__(self) -> str:
        return f"<Acquisition {'running' if self.running else 'over'}, {self.delivered} pictures, {self.lost} lost>"



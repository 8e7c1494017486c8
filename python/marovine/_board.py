"""The virtual board."""

from __future__ import annotations

import enum
import json
import os
from collections.abc import Callable, Iterable, Iterator
from contextlib import contextmanager
from typing import Any

import numpy as np
from numpy.typing import ArrayLike

from marovine import _native
from marovine._arguments import path_text, whole_number
from marovine.reports import Write


class Clock(enum.Enum):
    """How a board's time passes."""

    REAL_TIME = "real time"
    """With the machine's time."""
    MANUAL = "manual"
    """Only with ``board.advance``."""
    FAST = "fast"
    """From picture to picture, as the program asks for them; else it stands. No picture is ever lost."""

    @classmethod
    def _missing_(cls, value: object) -> Any:
        names = ", ".join(repr(member.value) for member in cls)
        raise ValueError(f"{value!r} is no clock; there are {names}")


_MODES = list(Clock)


def _plain(value: object) -> Any:
    """What JSON has no word for, in a world: NumPy's numbers and arrays."""
    if isinstance(value, (np.generic, np.ndarray)):
        return value.tolist()
    raise TypeError(f"a world holds dicts, lists, texts and numbers, not {type(value).__name__}")


class Board(_native.Board):
    """A virtual board in the machine: what an applet opens on, and what stands around it.

    Boards are independent of each other, and every function may be called from any thread. A closed board raises
    ``ClosedError``; it stays in the machine until the last applet on it is closed.
    """

    def __init__(self, clock: Clock | str = Clock.FAST) -> None:
        super().__init__()
        self.clock = Clock(clock)

    def __enter__(self) -> Board:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __repr__(self) -> str:
        return "<Board, closed>" if self.closed else f"<Board, clock: {self.clock.value}>"

    # ---- clock ----

    @property
    def clock(self) -> Clock:
        """How time passes; also takes the text, ``board.clock = "manual"``."""
        return _MODES[self.clock_mode]

    @clock.setter
    def clock(self, clock: Clock | str) -> None:
        self.set_clock_mode(_MODES.index(Clock(clock)))

    @property
    def now(self) -> int:
        """The time, in ns since the board was put into the machine."""
        return self.time()

    def advance(self, seconds: float) -> None:
        """Moves the clock forward by 0 to 1e9 seconds. Raises ``ValueError`` for anything else."""
        self.advance_clock(seconds)

    # ---- values of the design ----

    def names(self) -> list[str]:
        """Full names of all parameters of the design."""
        return super().names()

    def __getitem__(self, name: str) -> Any:
        """The value of a parameter of the design, by its full name. Raises ``UnknownParameter``."""
        return self.value(name)

    def __setitem__(self, name: str, value: Any) -> None:
        """Forces a value past all range checks; read-outs, such as a temperature, are set this way."""
        self.force(name, value)

    # ---- what stands around the board ----

    def put_scene(self, picture: ArrayLike | None, field_width: int = 0) -> None:
        """Lays a picture of shape (height, width, 3), ``uint8``, blue first, on the belt, endlessly repeated; None
        is the built-in chart. ``field_width`` is the number of sensor pixels over which the optics spread it; 0 shows
        a pixel as a pixel.

        Raises ``TypeError`` or ``ValueError`` for what is no such picture.
        """
        if picture is None:
            self.show_test_chart()
            return
        array = np.asarray(picture)
        if array.dtype != np.uint8:
            raise TypeError(f"a scene has elements of uint8, not {array.dtype}")
        if array.ndim != 3 or array.shape[2] != 3:
            raise ValueError(f"a scene has the shape (height, width, 3), not {array.shape}")
        width = whole_number("field_width", field_width, 0, 2**32 - 1, "0 or more")
        self.set_scene(np.ascontiguousarray(array), width)

    def load_world(self, world: dict[str, Any] | str | os.PathLike[str], folder: str | os.PathLike[str] = ".") -> None:
        """Puts a world around the board, from a dict or a file: belt, encoder, inputs, parts, camera and light, as
        docs/WORLD.md describes them. Names of files in a dict are relative to ``folder``.

        Raises ``WorldError``, whose text has a line for each fault; then all stays as it was.
        """
        if isinstance(world, dict):
            self.set_world(json.dumps(world, default=_plain), path_text(folder))
        else:
            self.load_world_file(path_text(world))

    def move_belt(self, speed: float = 500.0, object_pixel: float = 0.1, encoder_pitch: float = 0.1) -> None:
        """Lets the belt run at ``speed`` mm/s. One sensor pixel sees ``object_pixel`` mm of it, and the encoder on its
        drive gives a pulse every ``encoder_pitch`` mm. Raises ``ValueError`` for numbers that cannot be."""
        self.set_belt(speed, object_pixel, encoder_pitch)

    def use_camera(self, sensor_width: int = 16384, phase: int = 0, neutral_exposure: float = 19.0) -> None:
        """The camera: its pixels, the Bayer phase of its first pixel, and the exposure in µs that shows the scene's
        colours as they are."""
        sensor_width = whole_number("sensor_width", sensor_width, 0, 2**32 - 1, "0 or more")
        self.set_camera(sensor_width, whole_number("phase", phase, 0, 3), neutral_exposure)

    def set_input(self, input: int, high: bool) -> None:
        """The level at an input: 0 to 7 are the inputs, 8 to 11 the front inputs. Raises ``ValueError`` for others."""
        super().set_input(whole_number("input", input, 0, 11), bool(high))

    def set_render_threads(self, threads: int) -> None:
        """Threads that render a large picture, from the next acquisition on; 0, as at first: one for each core."""
        super().set_render_threads(whole_number("threads", threads, 0, 2**32 - 1, "0 or more"))

    # ---- faults ----

    @contextmanager
    def faults(self, *, writes: dict[str, int] | None = None, reads: dict[str, int] | None = None) -> Iterator[None]:
        """Makes every write or read of the named design parameters fail with a code, until the block ends. The end
        ends all faults of the board.

            with board.faults(writes={"Device1_Process0_Buffer_0_DRAM_A_0_XLength": -31005}):
                ...
        """
        try:
            for name, code in (writes or {}).items():
                self.refuse_writes(name, code)
            for name, code in (reads or {}).items():
                self.refuse_reads(name, code)
            yield
        finally:
            if not self.closed:
                self.clear_faults()

    def refuse_nth_write(self, n: int, code: int) -> None:
        """Makes the n-th write from now (1 is the next one), whatever its parameter, fail once with a code."""
        super().refuse_nth_write(whole_number("n", n, 1, 2**31 - 1, "1 or more"), code)

    def refuse_nth_read(self, n: int, code: int) -> None:
        """Makes the n-th read from now fail once with a code."""
        super().refuse_nth_read(whole_number("n", n, 1, 2**31 - 1, "1 or more"), code)

    def clear_faults(self) -> None:
        """Ends all faults of the board."""
        super().clear_faults()

    @contextmanager
    def opening_faults(self, *, design: bool = False, handle: int = 0, hidden: Iterable[str] = ()) -> Iterator[None]:
        """Makes openings fail, on whichever board of this process, until the block ends: the design does not load, no
        handle opens and the runtime reports a code, or designs lack some parameters, events or registers."""
        try:
            self.refuse_design(design)
            self.refuse_handle(handle != 0, handle)
            for name in hidden:
                self.hide(name)
            yield
        finally:
            if not self.closed:
                self.clear_opening_faults()

    # ---- writes ----

    @contextmanager
    def journal(self) -> Iterator[list[Write]]:
        """Collects every write to the design; the list is filled when the block ends. One journal at a
        time: a second one raises ``Error``."""
        writes: list[Write] = []
        self.keep_journal(True)
        try:
            yield writes
        finally:
            if not self.closed:
                writes += [Write(*write) for write in self.take_journal()]
                self.keep_journal(False)

    def watch(self, function: Callable[[Write], object] | None) -> None:
        """Calls a function at each write, in the thread that made it; None ends that. An exception in the function
        makes the write fail and comes out of the call that led to it. The function cannot set parameters of an applet
        on this board: ``Error``."""
        if function is not None and not callable(function):
            raise TypeError(f"watch takes a function or None, not {type(function).__name__}")
        self.call_at_writes(None if function is None else lambda write: function(Write(*write)))

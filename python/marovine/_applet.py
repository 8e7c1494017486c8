"""The applet."""

from __future__ import annotations

import difflib
import os
import warnings
from collections.abc import Iterator, Mapping
from typing import Any, NamedTuple

import numpy as np
from numpy.typing import ArrayLike, NDArray

from marovine import _native, parameters as _generated  # noqa: F401 - its classes are found by name
from marovine._arguments import path_text, whole_number
from marovine._attributes import ParameterAttributes
from marovine._board import Board
from marovine._events import Events
from marovine._parameters import Parameters
from marovine._pictures import Acquisition
from marovine.errors import UnknownParameter
from marovine.reports import Change, Difference, Finding, SetReport, SetValue, Skipped, Write

Path = str | os.PathLike[str]


class Curves(NamedTuple):
    """The lookup tables as they are: what each level of a channel becomes."""

    level: NDArray[np.uint32]
    red: NDArray[np.uint32]
    green: NDArray[np.uint32]
    blue: NDArray[np.uint32]


class Applet(_native.Applet, ParameterAttributes):
    """The applet, open on a board.

    Every parameter is an attribute and an item: ``applet.FG_WIDTH = 2048``, ``applet["FG_LUT_TYPE"]``; items take
    letters of either case. Enumerations are members of their class in ``marovine.parameters`` and also take a number
    or a text; tables are arrays. A value that the applet refuses raises ``Refused`` and leaves it as it was.

    Any thread may call anything. A closed applet raises ``ClosedError``, and one of another process ``ForkedError``.

    :param board: the board to open on; without one the applet gets a board of its own, which ends with it.
    :param write_defaults: False attaches to the design as it is.
    :param explain: False leaves the reasons out of refusals. Reasons are found by trying on a second board, some
        milliseconds each, and need every accepted set to be remembered, about 100 bytes each.
    """

    def __init__(self, board: Board | None = None, *, write_defaults: bool = True, explain: bool = True) -> None:
        self._own_board = board is None
        self._board = Board() if board is None else board
        super().__init__(self._board, write_defaults, explain)

    @property
    def board(self) -> Board:
        """The board that the applet is open on."""
        return self._board

    def close(self) -> None:
        """Ends acquisitions and the applet, and a board of its own. May be called again."""
        super().close()
        if self._own_board:
            self._board.close()

    def __enter__(self) -> Applet:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __repr__(self) -> str:
        return "<Applet, closed>" if self.closed else f"<Applet, {len(self.names())} parameters>"

    # ---- parameters ----

    def names(self) -> list[str]:
        """Names of all parameters, in list order."""
        return super().names()

    def __getitem__(self, name: str) -> Any:
        return self.get(name)

    def __setitem__(self, name: str, value: Any) -> None:
        self.put(name, value)

    def __iter__(self) -> Iterator[str]:
        return iter(self.names())

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and self.has(name)

    def __len__(self) -> int:
        return len(self.names())

    def __dir__(self) -> list[str]:
        return [*super().__dir__(), *([] if self.closed else self.names())]

    def _ipython_key_completions_(self) -> list[str]:
        return self.names()

    @property
    def parameters(self) -> Parameters:
        """All parameters with their units, ranges and reasons; shows itself as a tree in a notebook."""
        return Parameters(self)

    def set(self, settings: Mapping[str, Any] | None = None, /, **more: Any) -> SetReport:
        """Sets several parameters, in this order, and tells what moved with them and what reached the design.

        Everything is read before anything is set. The first refused value ends it: ``Refused``, whose ``report``
        tells what was done before. Takes a few milliseconds, for all parameters are looked at before and after.
        """
        pairs = [*(settings or {}).items(), *more.items()]
        done = self.set_many(pairs)
        report = SetReport(
            tuple(SetValue(*entry) for entry in done["set"]),
            tuple(Change(*change) for change in done["moved"]),
            tuple(Write(*write) for write in done["writes"]),
        )
        if done["refused"] is None:
            return report
        done["refused"].report = report
        raise done["refused"]

    def set_elements(self, name: str, first: int, values: ArrayLike) -> None:
        """Sets the elements of a table from ``first`` on."""
        self.put_elements(name, whole_number("first", first, 0, 2**32 - 1), values)

    def curves(self) -> Curves:
        """The lookup tables as arrays to plot."""
        red, green, blue = (self[f"FG_LUT_VALUE_{colour}"] for colour in ("RED", "GREEN", "BLUE"))
        return Curves(np.arange(red.size, dtype=np.uint32), red, green, blue)

    # ---- pictures ----

    def acquire(
        self, count: int | None = None, *, timeout: float | None = 5.0, buffers: int = 4
    ) -> Acquisition:
        """Takes pictures of the size that the applet is set to: ``for picture in applet.acquire(100): ...``

        :param count: how many, 1 or more; None takes pictures until the acquisition is stopped.
        :param timeout: seconds to wait for each, ``TimeoutError`` after that; None waits for good.
        :param buffers: of the ring that the board fills while the program is busy, 1 to 1024.

        Raises ``Refused`` when another acquisition runs on the board.
        """
        return Acquisition(self, count, timeout, buffers)

    def trigger(self) -> None:
        """Sends one software trigger, for ``FG_IMGTRIGGERINSRC = TRGINSOFTWARE``."""
        self.put("FG_SENDSOFTWARETRIGGER", 1)

    # ---- files ----

    def save(self, file: Path) -> None:
        """Saves the configuration; the name must hold ".mcf". Warns of tables that the file has no place for."""
        lost = self.save_file(path_text(file))
        if lost:
            warnings.warn(f"{file} has no place for the elements of {', '.join(lost)}", stacklevel=2)

    def load(self, file: Path) -> list[Skipped]:
        """Loads a configuration; what it skipped because a parameter refuses it, empty when all was taken.

        Raises ``Error`` with every reason that can be found when the applet refuses the file.
        """
        return [Skipped(*skipped) for skipped in self.load_file(path_text(file))]

    def check(self, file: Path) -> list[Finding]:
        """What a load of the file would fail on, skip, misread or not keep, in line order. Changes nothing."""
        return [Finding(*finding) for finding in self.check_file(path_text(file))]

    def diff(self, first: Path, second: Path | None = None) -> list[Difference]:
        """The parameters in which two files, or a file and the applet as it is, differ."""
        found = self.diff_files(path_text(first), "" if second is None else path_text(second))
        return [Difference(*difference) for difference in found]

    def xml(self) -> str:
        """The XML description of all parameters, as the library gives it to hosts."""
        return self.xml_text()

    def info(self) -> dict[str, Any]:
        """What the library says of itself: name, version, build, capabilities, icon (a PNG file), ..."""
        return dict(self.info_dict())

    # ---- events ----

    @property
    def event_masks(self) -> dict[str, int]:
        """The events of the design and the masks under which a host waits for them."""
        return dict(self.mask_list())

    def events(self, *names: str, timeout: float | None = 5.0, room: int = 1024) -> Events:
        """Collects events from now on: ``for event in applet.events("FG_START_OF_FRAME_CAM_PORT_0"): ...``

        :param names: which; without any, all of them.
        :param timeout: seconds to wait for each, ``TimeoutError`` after that; None waits for good.
        :param room: events that may wait to be taken; further ones are lost and counted.

        Raises ``UnknownParameter`` for a name that the design lacks.
        """
        masks = {name: self._mask_of(name) for name in names} or self.event_masks
        return Events(self._board, masks, timeout, whole_number("room", room, 1, 2**32 - 1, "1 or more"))

    def raise_event(self, name: str, payload: int = 0) -> None:
        """Lets an event happen on the board now, such as an alarm that nothing on it brings about. Raises
        ``UnknownParameter`` for a name that the design lacks."""
        self._board.raise_event(self._mask_of(name), payload)

    def _mask_of(self, name: str) -> int:
        masks = self.event_masks
        if name not in masks:
            raise UnknownParameter(f"no event is named {name}", difflib.get_close_matches(name, masks))
        return masks[name]

"""libMarovine: a frame-grabber applet on a virtual board, with pictures as NumPy arrays.

    >>> import marovine
    >>> with marovine.Applet() as applet:
    ...     applet.FG_WIDTH = 2048
    ...     applet.FG_HEIGHT = 1024
    ...     for picture in applet.acquire(3):
    ...         print(picture.shape, picture.mean())
"""

from marovine import parameters
from marovine._applet import Applet, Curves
from marovine._board import Board, Clock
from marovine._events import Event, Events
from marovine._parameters import Parameter, Parameters
from marovine._pictures import Acquisition, Picture, PictureInfo, Trigger, png_of
from marovine.errors import Cause, ClosedError, Error, ForkedError, Refused, UnknownParameter, WorldError
from marovine.reports import Change, Difference, Finding, SetReport, SetValue, Skipped, Write

__all__ = [
    "Acquisition",
    "Applet",
    "Board",
    "Cause",
    "Change",
    "Clock",
    "ClosedError",
    "Curves",
    "Difference",
    "Error",
    "Event",
    "Events",
    "Finding",
    "ForkedError",
    "Parameter",
    "Parameters",
    "Picture",
    "PictureInfo",
    "Refused",
    "SetReport",
    "SetValue",
    "Skipped",
    "Trigger",
    "UnknownParameter",
    "WorldError",
    "Write",
    "parameters",
    "png_of",
]

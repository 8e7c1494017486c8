#!/usr/bin/env python3
"""Drives a virtual board from Python through its C interface, with the standard library alone.

    python3 examples/board.py build/release

Puts a light barrier's pulses onto input 0, lets the clock run over them and prints the events that follow.
"""
import ctypes
import sys
from ctypes import byref, c_char_p, c_double, c_int, c_int64, c_uint32, c_uint64, c_void_p
from pathlib import Path


class Event(ctypes.Structure):
    _fields_ = [("size", c_uint32), ("number", c_uint32), ("time", c_int64), ("count", c_int64),
                ("payload", c_int64), ("lost", c_int64)]


class Train(ctypes.Structure):
    _fields_ = [("first", c_int64), ("period", c_int64), ("width", c_int64), ("count", c_uint64)]


class Signal(ctypes.Structure):
    _fields_ = [("size", c_uint32), ("high", c_uint32), ("edge_count", c_uint64), ("train_count", c_uint64),
                ("edges", c_void_p), ("trains", ctypes.POINTER(Train))]


folder = Path(sys.argv[1] if len(sys.argv) > 1 else "build/release").resolve()
board_library = ctypes.CDLL(str(folder / "libvirtualboard.so"), mode=ctypes.RTLD_GLOBAL)
applet = ctypes.CDLL(str(folder / "libMarovine.so"))
board_library.VirtualBoardInsert.restype = c_void_p
board_library.VirtualBoardLastError.restype = c_char_p
applet.Std_entry.restype = c_void_p
applet.Fg_getEventMask.restype = c_uint64


def call(name, *arguments):
    """Calls a function of the board; what it refuses is raised in its own words."""
    if getattr(board_library, "VirtualBoard" + name)(*arguments) != 0:
        raise RuntimeError(name + ": " + board_library.VirtualBoardLastError().decode())


board = c_void_p(board_library.VirtualBoardInsert())
record = (c_void_p * 1)(applet.Std_entry(board, byref(c_int()), 0))  # all that a host knows of the applet
rising = applet.Fg_getEventMask(record, b"FG_TRIGGER_INPUT0_RISING")
call("SetClockMode", board, 1)  # by hand
events = c_void_p()
call("Subscribe", board, c_uint64(rising), 100, byref(events))
start = c_int64()
call("Time", board, byref(start))
train = Train(first=1_000_000, period=2_000_000, width=500_000, count=3)
call("PlayInput", board, 0, byref(Signal(ctypes.sizeof(Signal), train_count=1, trains=ctypes.pointer(train))))
call("AdvanceClock", board, c_double(0.01))
event = Event(size=ctypes.sizeof(Event))
while board_library.VirtualBoardWaitEvent(events, c_double(0), byref(event)) == 0:
    print(f"pulse {event.count}, {(event.time - start.value) / 1e6:.3f} ms")
call("Unsubscribe", events)
applet.Fg_FreeGrabber(record)
board_library.VirtualBoardRemove(board)

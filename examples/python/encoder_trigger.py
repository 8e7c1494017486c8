"""Triggered acquisition with a shaft encoder: parts keep their length, whatever the belt's speed."""

import numpy as np
from numpy.typing import NDArray

import marovine

PIXEL = 0.1  # mm of belt that a sensor pixel sees
PART = 60  # rows


def belt_with_part() -> NDArray[np.uint8]:
    """Dark belt with one bright part, endlessly repeated."""
    scene = np.full((400, 512, 3), 30, np.uint8)
    scene[100 : 100 + PART, 128:384] = 220
    return scene


def length_of_part(picture: marovine.Picture) -> int:
    """Rows of the longest bright stretch in the middle of a picture."""
    bright = np.concatenate(([0], (picture[:, 256].mean(axis=1) > 125).astype(np.int8), [0]))
    begins, ends = np.flatnonzero(np.diff(bright) == 1), np.flatnonzero(np.diff(bright) == -1)
    return int((ends - begins).max())


def measure(applet: marovine.Applet, speed: float) -> int:
    """The part's length at a speed in mm/s, in one picture that a software trigger asks for."""
    applet.board.move_belt(speed=speed, object_pixel=PIXEL, encoder_pitch=PIXEL)
    with applet.acquire(1) as acquisition:
        applet.trigger()
        return length_of_part(acquisition.next())


def main() -> None:
    with marovine.Applet() as applet:
        applet.board.put_scene(belt_with_part())
        applet.set(
            FG_WIDTH=512,
            FG_HEIGHT=1024,
            FG_IMGTRIGGERMODE="ASYNC_TRIGGER",
            FG_IMGTRIGGERINSRC="TRGINSOFTWARE",
        )
        for mode, meaning in (("GRABBER_CONTROLLED", "a line every 200 µs"), ("ASYNC_TRIGGER", "a line per pulse")):
            applet.FG_LINETRIGGERMODE = mode
            lengths = {speed: measure(applet, speed) for speed in (250.0, 500.0, 1000.0)}
            print(f"{meaning}:")
            for speed, length in lengths.items():
                print(f"  at {speed:6.0f} mm/s the part is {length:3d} rows long")
            if mode == "ASYNC_TRIGGER":
                same = all(abs(length - PART) <= 2 for length in lengths.values())
                print("as long as before at every speed" if same else f"not {PART} rows at every speed")


if __name__ == "__main__":
    main()

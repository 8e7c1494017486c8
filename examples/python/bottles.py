"""Inspection of bottles against ground truth: finds scratched and stained labels, and counts what it missed.

Uses OpenCV to separate the defects where it is installed, else NumPy alone.
"""

import tempfile
from pathlib import Path
from typing import Any

import numpy as np
from numpy.typing import NDArray

import marovine

try:
    import cv2
except ImportError:
    cv2 = None

GLASS = (60, 110, 30)  # blue, green, red
LABEL = (225, 225, 225)


def bottle() -> NDArray[np.uint8]:
    """A bottle seen from above its side: a rectangle of glass with a bright label."""
    picture = np.full((240, 96, 3), GLASS, np.uint8)
    picture[100:200, 12:84] = LABEL
    return picture


def world() -> dict[str, Any]:
    """Bottles on a belt; some have spots or scratches on their labels. Lengths are mm."""
    label = {"left": 0.25, "top": 0.5, "width": 0.5, "height": 0.25}
    dark = {"colour": "#200000", "region": label, "severity": 1}
    return {
        "format": 1,
        "seed": 7,
        "belt": {"speed": 500, "objectPixel": 0.1, "colour": "#282828"},
        "parts": [
            {
                "name": "bottle",
                "picture": "bottle.png",
                "across": 2,
                "spacing": 30,
                "jitterAlong": 1,
                "jitterAcross": 1,
                "defects": [
                    {"kind": "spot", "probability": 0.25, "size": [1.2, 2.0], **dark},
                    {"kind": "scratch", "probability": 0.25, "size": [2, 3], "width": 0.6, **dark},
                ],
            }
        ],
    }


def defects_on(label: NDArray[np.uint8]) -> int:
    """Dark patches on a cut-out label, small ones left out."""
    dark = (label.max(axis=2) < 150).astype(np.uint8)
    if cv2 is None:
        return int(dark.sum() >= 20)
    count, _, stats, _ = cv2.connectedComponentsWithStats(dark)
    return sum(int(stats[i, cv2.CC_STAT_AREA]) >= 20 for i in range(1, count))


def main() -> None:
    right = missed = false_alarms = 0
    with tempfile.TemporaryDirectory() as folder, marovine.Applet() as applet:
        Path(folder, "bottle.png").write_bytes(marovine.png_of(bottle()))
        applet.board.load_world(world(), folder)
        applet.set(FG_WIDTH=256, FG_HEIGHT=2048)
        for picture in applet.acquire(10):
            assert picture.truth is not None
            for part in picture.truth["parts"]:
                if not part["complete"]:
                    continue
                box = part["box"]
                rows, columns = slice(box["top"] + 104, box["top"] + 196), slice(box["left"] + 16, box["left"] + 80)
                found, real = defects_on(picture[rows, columns]) > 0, bool(part["defects"])
                right += found == real
                missed += real and not found
                false_alarms += found and not real
    print(f"{right + missed + false_alarms} bottles: {right} judged right, missed {missed}, false alarms {false_alarms}")


if __name__ == "__main__":
    main()

"""Gamma and white balance: what the lookup tables and the scaling factors do to a grey chart in yellow light."""

import numpy as np
from numpy.typing import NDArray

import marovine

STEPS = np.arange(16, 256, 16)


def grey_chart() -> NDArray[np.uint8]:
    """Grey steps beside each other, as a lamp with little blue shows them."""
    greys = np.repeat(STEPS, 32)
    light = np.array([0.60, 0.85, 1.00])  # blue, green, red
    row = np.rint(greys[:, np.newaxis] * light).astype(np.uint8)
    return np.broadcast_to(row, (64, *row.shape)).copy()


def step_colours(applet: marovine.Applet) -> NDArray[np.float64]:
    """Mean blue, green and red of each step."""
    picture = applet.acquire(1).next()
    middle = picture[16:48].reshape(32, STEPS.size, 32, 3)[:, :, 8:24]
    return np.asarray(middle.mean(axis=(0, 2)))


def balance(applet: marovine.Applet) -> None:
    """Raises blue and green until the middle step is grey, as far as the factors' step allows."""
    blue, green, red = step_colours(applet)[STEPS.size // 2]
    step = applet.parameters.FG_SCALINGFACTOR_BLUE.step or 1.0
    applet.set(
        FG_SCALINGFACTOR_BLUE=round(red / blue / step) * step,
        FG_SCALINGFACTOR_GREEN=round(red / green / step) * step,
    )


def spread(colours: NDArray[np.float64]) -> float:
    """How far the channels of the steps are apart at most."""
    return float(np.ptp(colours, axis=1).max())


def main() -> None:
    with marovine.Applet() as applet:
        applet.board.put_scene(grey_chart())
        applet.set(FG_WIDTH=int(STEPS.size) * 32, FG_HEIGHT=64)
        print(f"before balance the channels are up to {spread(step_colours(applet)):.1f} grey values apart")
        balance(applet)
        colours = step_colours(applet)
        blue, green = applet.FG_SCALINGFACTOR_BLUE, applet.FG_SCALINGFACTOR_GREEN
        print(f"grey after balance with blue x {blue:.3f}, green x {green:.3f}: {spread(colours):.1f} apart")
        print("\ngamma   table at 64, 128, 192   mean of the picture")
        for gamma in (0.5, 1.0, 2.2):
            applet.FG_PROCESSING_GAMMA = gamma
            table = applet.curves().green[[64, 128, 192]]
            mean = step_colours(applet).mean()
            print(f"{gamma:5.1f}   {'  '.join(f'{value:5d}' for value in table)}          {mean:6.1f}")


if __name__ == "__main__":
    main()

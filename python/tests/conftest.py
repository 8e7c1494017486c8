from collections.abc import Iterator

import pytest

import marovine


@pytest.fixture
def applet() -> Iterator[marovine.Applet]:
    """An applet on a board of its own that takes small pictures."""
    with marovine.Applet() as opened:
        opened.set(FG_WIDTH=256, FG_HEIGHT=64)
        yield opened

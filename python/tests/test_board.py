"""The board, the ends of objects, and what happens in other processes."""

import asyncio
import multiprocessing
import os
import sys
import threading
from collections.abc import Callable

import numpy as np
import pytest

import marovine

X_LENGTH = "Device1_Process0_Buffer_0_DRAM_A_0_XLength"


def test_clock_and_values(applet: marovine.Applet) -> None:
    board = applet.board
    assert board.clock is marovine.Clock.FAST
    board.clock = "manual"
    assert board.clock is marovine.Clock.MANUAL
    with pytest.raises(ValueError, match="real time"):
        marovine.Board("sometimes")
    for seconds in (-1, float("nan")):
        with pytest.raises(ValueError):
            board.advance(seconds)
    assert board[X_LENGTH] == 256 and X_LENGTH in board.names()
    board[X_LENGTH] = 512
    assert board[X_LENGTH] == 512
    for name, value, error in ((X_LENGTH, "x", TypeError), ("Nothing", 1, KeyError), (X_LENGTH, -1, OverflowError)):
        with pytest.raises(error):
            board[name] = value


def test_faults_and_journal(applet: marovine.Applet) -> None:
    board = applet.board
    with board.journal() as writes:
        applet.FG_WIDTH = 512
        with pytest.raises(marovine.Error, match="one journal"), board.journal():
            pass
        with board.faults(writes={X_LENGTH: -31005}), pytest.raises(marovine.Refused, match="-31005"):
            applet.FG_WIDTH = 1024
    assert applet.FG_WIDTH == 512
    assert [(write.value, write.result) for write in writes if write.name == X_LENGTH][0] == (512, 0)
    assert any(write.result == -31005 for write in writes)
    with pytest.raises(KeyError), board.faults(reads={"Nothing": -1}):
        pass


def test_events(applet: marovine.Applet) -> None:
    name = next(iter(applet.event_masks))
    with applet.events(name, timeout=10) as events:
        applet.raise_event(name, 7)
        event = next(events)
        assert (event.name, event.count, event.payload, event.lost) == (name, 1, 7, 0)
        assert event.time <= applet.board.now
        with pytest.raises(TimeoutError, match="clock"):
            events.next(0.05)
        applet.raise_event(name)

        async def wait() -> int:
            return (await anext(events)).count

        assert asyncio.run(wait()) == 2
    with pytest.raises(marovine.ClosedError):
        events.next()
    with pytest.raises(KeyError, match="no event is named"):
        applet.events("Nothing")
    with pytest.raises(KeyError):
        applet.raise_event("Nothing")


def test_callbacks(applet: marovine.Applet) -> None:
    seen: list[marovine.Write] = []
    applet.board.watch(seen.append)
    applet.FG_WIDTH = 512
    assert any(write.name == X_LENGTH and write.value == 512 for write in seen)

    def fail(write: marovine.Write) -> None:
        raise ZeroDivisionError(write.name)

    applet.board.watch(fail)
    calls: list[Callable[[], object]] = [lambda: setattr(applet, "FG_WIDTH", 1024), lambda: applet.set(FG_WIDTH=1024)]
    for call in calls:
        with pytest.raises(ZeroDivisionError):
            call()

    def set_again(write: marovine.Write) -> None:
        applet.FG_WIDTH = 256

    applet.board.watch(set_again)  # not allowed from within a set
    with pytest.raises(marovine.Error, match="watches writes cannot set"):
        applet.FG_WIDTH = 1024
    applet.board.watch(None)
    with pytest.raises(TypeError, match="a function or None"):
        applet.board.watch(5)  # type: ignore[arg-type]
    assert applet.FG_WIDTH == 512
    applet.FG_WIDTH = 1024


def test_surroundings(applet: marovine.Applet) -> None:
    board = applet.board
    for scene, error in (
        (np.zeros((4, 4), np.uint8), ValueError),
        (np.zeros((4, 4, 3)), TypeError),
        (np.zeros((0, 4, 3), np.uint8), ValueError),
    ):
        with pytest.raises(error):
            board.put_scene(scene)
    with pytest.raises(ValueError):
        board.put_scene(np.zeros((1, 4, 3), np.uint8), field_width=70000)
    for speed, pixel in ((float("nan"), 0.1), (500.0, 0.0)):
        with pytest.raises(ValueError):
            board.move_belt(speed, pixel)
    for input in (-1, 12):
        with pytest.raises(ValueError, match="input must be 0 to 11"):
            board.set_input(input, True)
    for phase in (-1, 4):
        with pytest.raises(ValueError, match="phase must be 0 to 3"):
            board.use_camera(phase=phase)
    board.use_camera(sensor_width=128)
    picture = applet.acquire(1).next()
    assert picture[:, :100].any() and not picture[:, 140:].any()  # beyond its sensor a line is black
    board.put_scene(None)


def test_objects_after_their_end() -> None:
    with marovine.Board() as board, marovine.Applet(board) as applet:
        applet.FG_WIDTH = 256
        board.close()
        assert applet.FG_WIDTH == 256  # the board stays for the applet
        with pytest.raises(marovine.ClosedError):
            board.advance(1)
        with pytest.raises(marovine.ClosedError):
            marovine.Applet(board)
    calls: list[Callable[[], object]] = [
        lambda: applet.FG_WIDTH,
        lambda: setattr(applet, "FG_WIDTH", 8),
        lambda: applet["FG_WIDTH"],
        lambda: applet.set(FG_WIDTH=8),
        lambda: applet.acquire(1),
        lambda: applet.parameters.FG_WIDTH.value,
        lambda: applet.info(),
        lambda: board.names(),
    ]
    for call in calls:
        with pytest.raises(marovine.ClosedError, match="is closed"):
            call()
    applet.close()
    board.close()
    assert applet.closed and "closed" in repr(applet) and "closed" in repr(board)
    unmade = marovine.Applet.__new__(marovine.Applet)
    with pytest.raises((AttributeError, TypeError)):
        unmade.FG_WIDTH  # noqa: B018


def test_closing_while_others_work() -> None:
    applet = marovine.Applet()

    def work() -> None:
        try:
            while True:
                applet.FG_LINEEXPOSURE = 19.0
        except marovine.ClosedError:
            pass

    threads = [threading.Thread(target=work) for _ in range(3)]
    for thread in threads:
        thread.start()
    applet.close()
    for thread in threads:
        thread.join(10)
        assert not thread.is_alive()


def test_boards_that_do_not_open() -> None:
    with marovine.Board() as board:
        for faults in (board.opening_faults(design=True), board.opening_faults(handle=-31001)):
            with faults, pytest.raises(marovine.Refused, match="opening the applet refused"):
                marovine.Applet(board)
        marovine.Applet(board).close()


def use_in_child(applet: marovine.Applet, acquisition: marovine.Acquisition, picture: marovine.Picture) -> None:
    calls: list[Callable[[], object]] = [
        lambda: applet.FG_WIDTH,
        lambda: applet.board.names(),
        lambda: acquisition.next(1),
        lambda: acquisition.stop(),
        lambda: applet.close(),
    ]
    for call in calls:
        try:
            call()
        except marovine.ForkedError as error:
            assert "forked" in str(error)
        else:
            os._exit(1)
    total = int(picture.sum())  # the memory itself is the child's own
    del applet, acquisition, picture
    with marovine.Applet() as own:
        own.FG_WIDTH = 512
    os._exit(0 if total > 0 else 2)


@pytest.mark.skipif(sys.version_info >= (3, 12), reason="Python warns of a fork beside threads")
def test_use_from_a_forked_process(applet: marovine.Applet) -> None:
    acquisition = applet.acquire()
    child = multiprocessing.get_context("fork").Process(
        target=use_in_child, args=(applet, acquisition, acquisition.next())
    )
    child.start()
    child.join(30)
    assert child.exitcode == 0
    assert acquisition.next().number == 2

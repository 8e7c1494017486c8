"""Pictures: what they are, how long they stay, and how a wait ends."""

import asyncio
import gc
import json
import signal
import threading
import time
from collections.abc import Iterator
from contextlib import contextmanager, suppress
from pathlib import Path
from typing import Any

import numpy as np
import pytest

import marovine


def waits_for_triggers(applet: marovine.Applet) -> None:
    applet.set(FG_IMGTRIGGERMODE="ASYNC_TRIGGER", FG_IMGTRIGGERINSRC="TRGINSOFTWARE")


def test_pictures_are_read_only_arrays(applet: marovine.Applet) -> None:
    scene = np.zeros((64, 256, 3), np.uint8)
    scene[:, :, 0] = 200  # blue
    applet.board.put_scene(scene)
    pictures = list(applet.acquire(3))
    assert [picture.number for picture in pictures] == [1, 2, 3]
    for picture in pictures:
        assert picture.shape == (64, 256, 3) and picture.dtype == np.uint8
        blue, green, red = picture[8:-8, 8:-8].reshape(-1, 3).mean(axis=0)
        assert blue > 150 and green < 30 and red < 30
        with pytest.raises(ValueError):
            picture[0, 0, 0] = 1
    assert pictures[0].png().startswith(b"\x89PNG")
    half = pictures[0][::2]
    assert isinstance(half, marovine.Picture) and half._repr_png_() is not None and half.number == 1
    assert type(pictures[0] > 3) is np.ndarray and isinstance(pictures[0].mean(), float)
    with pytest.raises(ValueError, match="no colour picture"):
        pictures[0][0].png()
    with pytest.raises(ValueError, match="pixels a side"):
        marovine.png_of(np.zeros((2, 2**20, 3), np.uint8))
    first, second = (picture.info for picture in pictures[:2])
    assert first is not None and second is not None
    assert first.first_line_time < first.last_line_time <= second.first_line_time
    assert (second.first_line - first.first_line, second.lost_before, second.trigger) == (64, 0, 0)


def test_worlds_and_their_truth(applet: marovine.Applet, tmp_path: Path) -> None:
    assert applet.acquire(1).next().truth is None
    part = np.full((10, 20, 3), 250, np.uint8)
    (tmp_path / "part.png").write_bytes(marovine.png_of(part))
    world: dict[str, Any] = {
        "format": 1,
        "belt": {"speed": np.int64(500), "objectPixel": 0.1, "colour": "#000000"},
        "parts": [{"name": "chip", "picture": "part.png", "spacing": 3, "across": 5}],
    }
    (tmp_path / "world.json").write_text(json.dumps(world, default=int))
    for source, folder in ((world, tmp_path), (tmp_path / "world.json", Path("."))):
        applet.board.load_world(source, folder)
        picture = applet.acquire(1).next()
        assert picture.truth is not None
        box = next(part["box"] for part in picture.truth["parts"] if part["complete"])
        inside = picture[box["top"] + 2 : box["top"] + 8, box["left"] + 2 : box["left"] + 18]
        assert (box["width"], box["height"]) == (20, 10) and inside.min() > 200
    wrongs: list[dict[str, Any]] = [{}, {"format": 1, "bolt": 3}, {"format": 1, "belt": {"speed": float("nan")}}]
    for wrong in wrongs:
        with pytest.raises(marovine.WorldError):
            applet.board.load_world(wrong)
    with pytest.raises(TypeError, match="a world holds"):
        applet.board.load_world({"format": object()})
    assert applet.acquire(1).next().truth is not None  # the last good one


def test_kept_pictures_stay_as_they_are(applet: marovine.Applet) -> None:
    # Far more than the ring has buffers; the belt moves, so that neighbours differ.
    kept, copies = [], []
    for picture in applet.acquire(40, buffers=2):
        kept.append(picture)
        copies.append(picture.copy())
    row = applet.acquire(1).next()[3, ::4]
    applet.close()
    gc.collect()
    assert all(np.array_equal(*pair) for pair in zip(kept, copies, strict=True))
    assert any(not np.array_equal(copies[0], other) for other in copies[1:])
    assert row.shape == (64, 3) and row.sum() > 0


def test_an_acquisition_ends(applet: marovine.Applet) -> None:
    with applet.acquire() as endless:
        assert endless.next().number == 1 and next(endless).number == 2
        with pytest.raises(marovine.Refused, match="-31022"):
            applet.acquire()
    assert not endless.running and endless.delivered >= 2 and endless.lost == 0
    with pytest.raises(marovine.ClosedError):
        endless.next()
    for _ in applet.acquire():
        break  # the loop's end drops the acquisition
    one = applet.acquire(1)
    assert one.next().number == 1 and not one.running and one.delivered == 1
    two = applet.acquire(2)  # the last picture left the board free
    assert len(list(two)) == 2 and list(two) == [] and "over" in repr(two)
    for count, buffers in ((-1, 4), (0, 4), (1, 0), (1, 10**9)):
        with pytest.raises(ValueError):
            applet.acquire(count, buffers=buffers)
    running = applet.acquire()
    applet.close()
    with pytest.raises(marovine.ClosedError):
        running.next()


def test_a_picture_that_does_not_come(applet: marovine.Applet) -> None:
    waits_for_triggers(applet)
    acquisition = applet.acquire(3)
    for timeout in (0, 0.12):
        begin = time.monotonic()
        with pytest.raises(TimeoutError, match="TRGINSOFTWARE; applet.trigger\\(\\) sends one"):
            acquisition.next(timeout)
        assert timeout <= time.monotonic() - begin < timeout + 2
    applet.trigger()
    picture = acquisition.next(10)
    assert picture.number == 1 and picture.info is not None and picture.info.trigger == marovine.Trigger.SOFTWARE
    wrongs: list[tuple[Any, type[Exception]]] = [(-1.0, ValueError), (float("nan"), ValueError), ("x", TypeError)]
    for wrong, error in wrongs:
        with pytest.raises(error, match="a timeout is a number of seconds"):
            acquisition.next(wrong)


@contextmanager
def signalled(number: signal.Signals, after: float) -> Iterator[None]:
    timer = threading.Timer(after, signal.pthread_kill, (threading.main_thread().ident, number))
    timer.start()
    yield
    timer.join()


def test_an_interrupt_ends_a_wait(applet: marovine.Applet) -> None:
    waits_for_triggers(applet)
    acquisition = applet.acquire(timeout=None)
    begin = time.monotonic()
    with pytest.raises(KeyboardInterrupt), signalled(signal.SIGINT, 0.1):
        acquisition.next()
    assert time.monotonic() - begin < 2
    applet.trigger()
    assert acquisition.next(10).number == 1


def test_threads_get_a_picture_each(applet: marovine.Applet) -> None:
    numbers: list[int] = []

    def take() -> None:
        numbers.extend(picture.number for picture in acquisition)

    def disturb() -> None:
        while acquisition.running:
            applet.FG_LINEEXPOSURE = 19.0
            assert applet.FG_WIDTH == 256

    acquisition = applet.acquire(60, timeout=30)
    threads = [threading.Thread(target=target) for target in (take, take, take, disturb)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sorted(numbers) == list(range(1, 61))


def test_the_interpreter_runs_while_a_thread_waits(applet: marovine.Applet) -> None:
    waits_for_triggers(applet)
    acquisition = applet.acquire(timeout=None)
    waiter = threading.Thread(target=lambda: list(acquisition))
    waiter.start()
    turns = 0
    end = time.monotonic() + 0.2
    while time.monotonic() < end:
        turns += 1
    assert turns > 1000
    applet.close()  # ends the wait
    waiter.join(10)
    assert not waiter.is_alive()


def test_waiting_in_an_event_loop(applet: marovine.Applet) -> None:
    async def take() -> list[int]:
        return [picture.number async for picture in applet.acquire(3)]

    async def give_up() -> float:
        waits_for_triggers(applet)
        acquisition = applet.acquire(timeout=None)
        begin = time.monotonic()
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(anext(acquisition), 0.1)
        return time.monotonic() - begin

    async def cancel_one_of_many() -> int:
        acquisition = applet.acquire(timeout=None)
        tasks = [asyncio.ensure_future(anext(acquisition)) for _ in range(12)]  # more than there are threads
        await asyncio.sleep(0.1)
        for task in tasks[1:]:
            task.cancel()
        done, pending = await asyncio.wait(tasks[1:], timeout=10)
        assert not pending and all(task.cancelled() for task in done)
        applet.trigger()
        return (await asyncio.wait_for(tasks[0], 10)).number

    assert asyncio.run(take()) == [1, 2, 3]
    assert asyncio.run(give_up()) < 2
    assert asyncio.run(cancel_one_of_many()) == 1


def test_a_cancelled_wait_loses_no_picture(applet: marovine.Applet) -> None:
    async def take() -> list[int]:
        numbers: list[int] = []
        acquisition = applet.acquire(timeout=None, buffers=64)
        for _ in range(40):
            with suppress(asyncio.TimeoutError):
                numbers.append((await asyncio.wait_for(anext(acquisition), 0.005)).number)
        acquisition.stop()
        return numbers

    applet.board.clock = "real time"
    numbers = asyncio.run(take())
    assert numbers == list(range(1, len(numbers) + 1))

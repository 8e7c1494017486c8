"""What Python adds to a call of the applet, and how many pictures it gets beside a C++ client.

Usage: PYTHONPATH=build/release/python python python/bench/bench.py [BUILD], where BUILD has the C++ benchmarks
(build/release). Both sides run in turns, and the best of each counts: other programs only ever slow a run down.
"""

import json
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import marovine

BUILD = Path(sys.argv[1] if len(sys.argv) > 1 else "build/release")
TURNS = 5
CALLS = 100_000
PICTURES = 150


def seconds_of(program: str, benchmark: str) -> float:
    """Seconds that one turn of a C++ benchmark takes."""
    with tempfile.NamedTemporaryFile(suffix=".json") as file:
        arguments = [f"--benchmark_filter=^{benchmark}", f"--benchmark_out={file.name}", "--benchmark_out_format=json"]
        subprocess.run([BUILD / program, *arguments], capture_output=True, check=True)
        entry = json.load(file)["benchmarks"][0]
    scale = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3}[entry["time_unit"]]
    return float(entry["real_time"]) * scale


def seconds_to_get(applet: marovine.Applet) -> float:
    begin = time.perf_counter()
    for _ in range(CALLS):
        applet.FG_WIDTH  # noqa: B018
    return (time.perf_counter() - begin) / CALLS


def seconds_to_set(applet: marovine.Applet) -> float:
    applet.board.clock = marovine.Clock.REAL_TIME  # as for the C call
    begin = time.perf_counter()
    for call in range(CALLS):
        applet.FG_LINE_DOWNSCALE = call % 128 + 1
    return (time.perf_counter() - begin) / CALLS


def seconds_to_set_plainly(_: marovine.Applet) -> float:
    with marovine.Board("real time") as board, marovine.Applet(board, explain=False) as applet:
        return seconds_to_set(applet)


def seconds_per_picture(applet: marovine.Applet) -> float:
    applet.board.clock = marovine.Clock.FAST
    # Two more are in the program's hands: four buffers, as many as the C++ client goes through.
    with applet.acquire(timeout=60, buffers=2) as acquisition:
        for _ in range(8):  # the first round also fetches the memory's pages
            acquisition.next()
        begin = time.perf_counter()
        for _ in range(PICTURES):
            picture = acquisition.next()
        duration = time.perf_counter() - begin
    assert picture.shape == (1024, 2048, 3)
    return duration / PICTURES


def main() -> None:
    with marovine.Applet() as applet:
        applet.set(FG_WIDTH=2048, FG_HEIGHT=1024)
        rows = (
            ("get FG_WIDTH", seconds_to_get, "applet_bench", "GetSameId"),
            ("set FG_LINE_DOWNSCALE", seconds_to_set, "applet_bench", "SetOneWrite"),
            ("set, without reasons", seconds_to_set_plainly, "applet_bench", "SetOneWrite"),
            ("picture of 2048 x 1024", seconds_per_picture, "acquisition_bench", "takePicture/width:2048/height:1024/threads:0"),
        )
        for what, python, program, benchmark in rows:
            turns = [(python(applet), seconds_of(program, benchmark)) for _ in range(TURNS)]
            ours, theirs = (min(side) for side in zip(*turns, strict=True))
            if ours < 1e-5:
                print(f"{what:24} {ours * 1e9:7.0f} ns   C {theirs * 1e9:7.0f} ns   {(ours - theirs) * 1e9:.0f} ns over it")
            else:
                print(f"{what:24} {1 / ours:7.1f} /s   C++ {1 / theirs:7.1f} /s   {theirs / ours * 100:.1f} %")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Runs what documents say, against an installation of its own or, without a build folder, what the machine has.

In a fence marked `console` every line behind "$ " is a command, joined with the next one while it ends in a backslash;
what follows is what it prints, where "..." stands for any lines. A fence marked with a language and a file name holds
that file. All fences of a document share a folder that is empty at first.

Usage: documents_test.py [--build FOLDER] [--python PYTHON] DOCUMENT...
"""
import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

FENCE = re.compile(r"^```(\w+)(?: (\S+))?\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def commands(text):
    """The commands of a console fence with what each prints."""
    found = []
    for line in text.splitlines():
        if found and found[-1][0].endswith("\\") and not found[-1][1]:
            found[-1][0] += "\n" + line.lstrip("> ")
        elif line.startswith("$ "):
            found.append([line[2:], []])
        elif found:
            found[-1][1].append(line.rstrip())
    return found


def fits(expected, lines):
    """Whether lines are the expected ones, "..." standing for any number of lines or characters."""
    pattern = "\n".join(re.escape(line) for line in expected).replace(re.escape("..."), "(?s:.*)")
    return re.fullmatch(pattern, "\n".join(line.rstrip() for line in lines)) is not None


def run(document, environment):
    faults = 0
    with tempfile.TemporaryDirectory() as folder:
        for language, name, text in FENCE.findall(document.read_text()):
            if name:
                (pathlib.Path(folder) / name).write_text(text)
            if language != "console":
                continue
            for command, expected in commands(text):
                done = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, text=True, timeout=120,
                                      stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                if not fits(expected, done.stdout.splitlines()):
                    faults += 1
                    print(f"{document}: {command}\n--- expected\n" + "\n".join(expected) +
                          f"\n--- printed, status {done.returncode}\n{done.stdout}", file=sys.stderr)
    return faults


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", help="the build folder to install from")
    parser.add_argument("--python", help="an interpreter that has the package")
    parser.add_argument("documents", nargs="+", type=pathlib.Path)
    arguments = parser.parse_args()
    environment = dict(os.environ, NO_COLOR="1")
    environment.pop("COLUMNS", None)  # in a pipe, lines are as long as they are
    if arguments.python:
        environment["PATH"] = f"{pathlib.Path(arguments.python).parent.resolve()}:{environment['PATH']}"
    with tempfile.TemporaryDirectory() as prefix:
        if arguments.build:
            subprocess.run(["cmake", "--install", arguments.build, "--prefix", prefix], check=True,
                           stdout=subprocess.DEVNULL)
            environment |= {"PATH": f"{prefix}/bin:{environment['PATH']}", "LD_LIBRARY_PATH": f"{prefix}/lib",
                            "PKG_CONFIG_PATH": f"{prefix}/lib/pkgconfig", "CMAKE_PREFIX_PATH": prefix}
        sys.exit(1 if sum(run(document, environment) for document in arguments.documents) else 0)


if __name__ == "__main__":
    main()

"""Every example runs and says what it should."""

import subprocess
import sys
from pathlib import Path

import pytest

EXAMPLES = Path(__file__).parents[2] / "examples" / "python"


@pytest.mark.parametrize(
    ("name", "says"),
    [
        ("bottles.py", "missed 0, false alarms 0"),
        ("gamma_white_balance.py", "grey after balance"),
        ("encoder_trigger.py", "as long as before"),
    ],
)
def test_example(name: str, says: str, tmp_path: Path) -> None:
    done = subprocess.run(
        [sys.executable, EXAMPLES / name], capture_output=True, text=True, timeout=120, cwd=tmp_path, check=False
    )
    assert done.returncode == 0, done.stderr
    assert says in done.stdout


def test_all_examples_are_named_here() -> None:
    named = {mark.args[1][i][0] for mark in test_example.pytestmark for i in range(3)}  # type: ignore[attr-defined]
    assert named == {file.name for file in EXAMPLES.glob("*.py")}

"""Days of a shop in half a minute; bench/endurance plays for longer."""

import os
import subprocess
import sys

import pytest

from harness.faults import times

# As many as show what is lost each time, in a few seconds. In about one of twenty runs on a busy machine,
# GStreamer's libav decoder crashes when a film that is wound back is stopped; so keys wait for the night.
COUNTS = {"changes": 80, "relaunches": 20, "turns": 20, "popups": 20, **times({}, {"keys": 300})}


@pytest.mark.parametrize("load", COUNTS)
def test_everything_again_and_again_ends_nothing_and_leaves_nothing_behind(build_dir, source_dir, load):
    """Good and bad files of every kind; with `changes` all of the others between them."""
    harness = os.path.join(source_dir, "tests", "e2e")
    done = subprocess.run(
        [sys.executable, os.path.join(source_dir, "bench", "endurance.py"), "--build", build_dir,
         f"--{load}", str(COUNTS[load])], capture_output=True, text=True, timeout=300, check=False,
        env={**os.environ, "PYTHONPATH": harness, "PYTHONDONTWRITEBYTECODE": "1"})
    assert done.returncode == 0, done.stdout + done.stderr

"""Days of a shop in half a minute; bench/endurance plays for longer."""

import os
import subprocess
import sys

CHANGES = 70


def test_everything_at_once_ends_nothing_and_leaves_nothing_behind(build_dir, source_dir):
    """Good and bad files of every kind, and between them relaunches, turns, options and keys."""
    harness = os.path.join(source_dir, "tests", "e2e")
    done = subprocess.run(
        [sys.executable, os.path.join(source_dir, "bench", "endurance.py"), "--build", build_dir,
         "--changes", str(CHANGES)], capture_output=True, text=True, timeout=300, check=False,
        env={**os.environ, "PYTHONPATH": harness, "PYTHONDONTWRITEBYTECODE": "1"})
    assert done.returncode == 0, done.stdout + done.stderr

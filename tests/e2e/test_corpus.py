"""Damaged files of every kind, as tests/corpus makes them; tests/corpus/run plays thousands."""

import os
import sys

import pytest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(__file__)), "corpus"))

import faults  # noqa: E402
import show  # noqa: E402
import specimens  # noqa: E402

SEED = 1


@pytest.mark.sanitized
def test_a_folder_of_damaged_files_is_got_over(tv, screen, content, shelf, tmp_path, monkeypatch):
    # Noting where each piece of memory comes from takes three times as long as all else.
    # tests/corpus/run does, and looks for leaks.
    monkeypatch.setenv("ASAN_OPTIONS",
                       os.environ["ASAN_OPTIONS"] + ":detect_leaks=0:fast_unwind_on_malloc=1")
    files = specimens.make_all(tmp_path)
    cases = faults.all_cases(files, SEED)
    carrier = next(case for case in cases if case.name == "mkv-h264-whole")
    show.play(tv, screen, shelf, content, faults.sample(cases, 150, SEED), carrier)

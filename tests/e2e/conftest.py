"""Fixtures of the end-to-end tests: a set to play on, content to play, and the audit afterwards."""

import fcntl
import json
import os
import shutil
import subprocess
import sys

import pytest

sys.path.insert(0, os.path.dirname(__file__))

from harness.content import VideoShelf  # noqa: E402
from harness.player import Tv  # noqa: E402
from harness.references import References  # noqa: E402
from harness.screen import Screen, lit  # noqa: E402

SOURCE_DIR = os.path.realpath(os.path.join(os.path.dirname(__file__), "..", ".."))


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    """Lets the fixtures know whether the test itself has failed."""
    outcome = yield
    if outcome.get_result().failed:
        item.has_failed = True


@pytest.fixture
def screen(request):
    """A landscape panel with nothing on it; its size may be given as the fixture's parameter."""
    with lit(lambda folder: Screen(folder, *getattr(request, "param", ()))) as panel:
        yield panel


@pytest.fixture
def tv(screen, tmp_path, build_dir, request):
    """A set as it leaves the factory. Afterwards nothing may be left of what ran on it, and nothing
    may have been logged as an error without a reason."""
    machine = Tv(tmp_path, build_dir, screen).start_bus()
    yield machine
    failed = getattr(request.node, "has_failed", False)
    if failed:
        screen.save(tmp_path / "screen.png")
    problems = machine.finish()
    if failed or problems:
        keep = os.path.join(SOURCE_DIR, "out", "e2e", request.node.name)
        shutil.rmtree(keep, ignore_errors=True)
        os.makedirs(keep)
        for place in (tmp_path, screen.folder):
            for name in os.listdir(place):
                if name.endswith((".log", ".png", ".conf")):
                    shutil.copy(os.path.join(place, name), keep)
        problems.append(f"logs and pictures: {keep}")
    if not failed:
        assert not problems, "\n".join(problems)
    for problem in problems:
        print(problem, file=sys.stderr)


@pytest.fixture
def references(screen, request):
    """Compares the screen with the kept pictures."""
    out = os.path.join(SOURCE_DIR, "out", "e2e", f"{request.node.name}.pictures")
    return References(screen, out, request.config.getoption("--update-references"))


@pytest.fixture(scope="session")
def shared_folder(tmp_path_factory):
    """One folder for all workers of this run."""
    base = tmp_path_factory.getbasetemp()
    folder = base.parent if os.environ.get("PYTEST_XDIST_WORKER") else base
    shared = folder / "shared"
    shared.mkdir(exist_ok=True)
    return shared


@pytest.fixture(scope="session")
def shelf(shared_folder):
    return VideoShelf(str(shared_folder / "videos"))


@pytest.fixture
def content(tmp_path):
    """An empty folder for the files to be played."""
    folder = tmp_path / "content"
    folder.mkdir()
    return folder


@pytest.fixture(scope="session")
def sample(shared_folder, build_dir):
    """The small variant of the sample content, made once."""
    folder = shared_folder / "sample"
    tool = os.path.join(build_dir, "tools", "sample_content", "make-sample-content")
    with open(shared_folder / "sample.lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        made = subprocess.run([tool, "--quick", folder], capture_output=True, text=True,
                              timeout=300, check=False)
    assert made.returncode == 0, made.stderr
    return folder


@pytest.fixture(scope="session")
def sample_colours(source_dir):
    """The colour of each sample file's frame, by the file's name."""
    table = os.path.join(source_dir, "tools", "sample_content", "colors.json")
    with open(table, encoding="utf-8") as file:
        return json.load(file)

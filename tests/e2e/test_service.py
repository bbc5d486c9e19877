"""The user service that an installation brings."""

import configparser
import os
import shlex
import subprocess

import pytest


@pytest.fixture
def installation(build_dir, tmp_path):
    """A folder into which the program has been installed."""
    folder = tmp_path / "installation"
    installed = subprocess.run(["cmake", "--install", build_dir], capture_output=True, text=True,
                               env={**os.environ, "DESTDIR": str(folder)}, check=False)
    assert installed.returncode == 0, installed.stderr
    return folder


@pytest.fixture
def unit(installation):
    units = list(installation.rglob("lib/systemd/user/*.service"))
    assert [unit.name for unit in units] == ["ostrel-demo-player-tv.service"]
    sections = configparser.ConfigParser(interpolation=None)
    sections.optionxform = str
    sections.read(units[0], encoding="utf-8")
    return sections


def test_service_starts_the_installed_player_however_often_it_ends(installation, unit):
    program = f"{installation}{unit['Service']['ExecStart']}"
    answer = subprocess.run([program, "--help"], capture_output=True, text=True, timeout=60,
                            check=False)
    assert answer.returncode == 0 and "folder_path" in answer.stdout, answer.stderr
    assert unit["Service"]["Restart"] == "always"
    # Otherwise systemd gives up after five starts in ten seconds.
    assert unit["Unit"]["StartLimitIntervalSec"] == "0"


@pytest.mark.parametrize("demo_mode, starts", [(None, True), ("0", True), ("2", True), ("-1", False)])
def test_service_stays_down_after_off_was_chosen(installation, unit, tmp_path, demo_mode, starts):
    state = tmp_path / "state"
    if demo_mode is not None:
        key = state / "db" / "ostrel-demo-player-tv" / "demo_mode"
        key.parent.mkdir(parents=True)
        key.write_text(f"{demo_mode}\n")
    tool = next(installation.rglob("bin/tvctl"))
    command = shlex.split(unit["Service"]["ExecCondition"])
    # A dollar sign is written twice there, and the tool lies elsewhere for this test.
    command = [word.replace("$$", "$").replace(f"/{tool.relative_to(installation)}", str(tool))
               for word in command]
    assert str(tool) in command[-1]
    asked = subprocess.run(command, env={"HOME": str(tmp_path), "OSTREL_DEMO_STATE_DIR": str(state)},
                           timeout=60, check=False)
    assert (asked.returncode == 0) == starts

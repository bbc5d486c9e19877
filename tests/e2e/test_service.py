"""The user service that an installation brings."""

import configparser
import os
import subprocess


def test_installed_service_starts_the_installed_player_however_often_it_ends(build_dir, tmp_path):
    installed = subprocess.run(["cmake", "--install", build_dir], capture_output=True, text=True,
                               env={**os.environ, "DESTDIR": str(tmp_path)}, check=False)
    assert installed.returncode == 0, installed.stderr
    units = list(tmp_path.rglob("lib/systemd/user/*.service"))
    assert [unit.name for unit in units] == ["ostrel-demo-player-tv.service"]

    unit = configparser.ConfigParser(interpolation=None)
    unit.optionxform = str
    unit.read(units[0], encoding="utf-8")
    program = f"{tmp_path}{unit['Service']['ExecStart']}"
    answer = subprocess.run([program, "--help"], capture_output=True, text=True, timeout=60,
                            check=False)
    assert answer.returncode == 0 and "folder_path" in answer.stdout, answer.stderr
    assert unit["Service"]["Restart"] == "always"
    # Otherwise systemd gives up after five starts in ten seconds.
    assert unit["Unit"]["StartLimitIntervalSec"] == "0"

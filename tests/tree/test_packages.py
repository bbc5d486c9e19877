"""The one list of Debian packages: well formed, explained, and complete on this machine."""

import os
import re
import subprocess

import pytest


@pytest.fixture(scope="module")
def lines(source_dir):
    with open(os.path.join(source_dir, "packages.txt"), encoding="utf-8") as file:
        return file.read().splitlines()


def packages(lines):
    return [line.split()[0] for line in lines
            if line.strip() and not line.startswith(("#", "["))]


def test_each_package_stands_once_and_says_why(lines):
    names = packages(lines)
    assert len(names) == len(set(names)), "a package is listed twice"
    unexplained = [line for line in lines if line.strip() and not line.startswith(("#", "["))
                   and not re.match(r"^[a-z0-9][a-z0-9.+-]+\s+# \S.+$", line)]
    assert not unexplained


def test_sections_are_those_the_scripts_ask_for(lines):
    assert [line for line in lines if line.startswith("[")] == [
        "[build]", "[run]", "[demo]", "[test]", "[bench]"]


def test_all_packages_are_installed(source_dir):
    missing = subprocess.run(
        [os.path.join(source_dir, "packaging", "install-missing.sh"), "--list", "build", "run",
         "demo", "test"], capture_output=True, text=True, check=True)
    assert missing.stdout == ""


def test_unknown_section_is_refused(source_dir):
    refused = subprocess.run(
        [os.path.join(source_dir, "packaging", "install-missing.sh"), "--list", "nonsense"],
        capture_output=True, text=True, check=False)
    assert refused.returncode == 2
    assert "Usage" in refused.stderr


@pytest.mark.parametrize("arguments", [["--seconds", "0"], ["--seconds", "soon"], ["--nonsense"],
                                       ["/no/such/folder"], ["--seconds"]])
def test_demo_refuses_a_bad_command_line(source_dir, arguments):
    refused = subprocess.run([os.path.join(source_dir, "demo.sh"), *arguments],
                             capture_output=True, text=True, check=False)
    assert refused.returncode == 2
    assert refused.stderr


@pytest.mark.parametrize("script", ["demo.sh", "test.sh"])
def test_scripts_explain_themselves(source_dir, script):
    explained = subprocess.run([os.path.join(source_dir, script), "--help"], capture_output=True,
                               text=True, check=True)
    assert "Usage" in explained.stdout

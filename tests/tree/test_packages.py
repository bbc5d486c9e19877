"""The one list of Debian packages: well formed, explained, and complete on this machine. The scripts
that use it, and the commands of the README, which are tried with nothing else installed."""

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
        "[build]", "[run]", "[demo]", "[kiosk]", "[test]", "[package]", "[vm]", "[fuzz]", "[bench]"]


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


def test_failed_tests_are_named_with_what_they_say(source_dir, tmp_path):
    """As ctest and pytest tell of them."""
    (tmp_path / "CTestTestfile.cmake").write_text("""
        add_test(Suite.Passes true)
        add_test(Suite.Expects sh -c "echo first; echo a_test.cpp:1: Failure; echo Value of: x; exit 1")
        add_test(Suite.IsCaught sh -c "echo '==1==ERROR: AddressSanitizer: SEGV'; exit 1")
        add_test(Suite.IsMute false)
        add_test(Suite.IsGone /nonexistent)""")
    (tmp_path / "test_it.py").write_text("""
def test_passes(): pass
def test_asserts(): assert False, "one\\ntwo"
@__import__("pytest").fixture
def broken(): raise ValueError("three")
def test_is_not_begun(broken): pass""")
    results = tmp_path / "results"
    results.mkdir()
    for command in (["ctest", "--output-junit", results / "build.ctest.xml"],
                    ["/usr/bin/python3", "-m", "pytest", "-p", "no:cacheprovider",
                     f"--junitxml={results}/build-asan.e2e.xml", "test_it.py"]):
        assert subprocess.run(command, cwd=tmp_path, capture_output=True, check=False).returncode != 0
    printed = subprocess.run([os.path.join(source_dir, "tests", "results.py"), "failed",
                              results], capture_output=True, text=True, check=True)
    assert re.sub(r"after [0-9.]+ s", "after N s", printed.stdout).splitlines() == [
        "  test_asserts (build-asan): AssertionError: one",
        '  test_is_not_begun (build-asan): failed on setup with "ValueError: three"',
        "  Suite.Expects (build): a_test.cpp:1: Failure Value of: x",
        "  Suite.IsCaught (build): ==1==ERROR: AddressSanitizer: SEGV",
        "  Suite.IsMute (build): says nothing, after N s",
        "  Suite.IsGone (build): Unable to find executable: /nonexistent"]


def listed_commands(source_dir, text, folder):
    readme = folder / "README.md"
    readme.write_text(text)
    return subprocess.run(
        [os.path.join(source_dir, "packaging", "trial", "readme-commands.sh"), "list", readme],
        capture_output=True, text=True, check=False)


@pytest.fixture
def readme(source_dir):
    with open(os.path.join(source_dir, "README.md"), encoding="utf-8") as file:
        return file.read()


def test_each_command_of_the_readme_is_run_or_says_where(source_dir, readme, tmp_path):
    listed = listed_commands(source_dir, readme + "\n```sh\nmake coffee  # at last\n```\n", tmp_path)
    assert listed.returncode == 0, listed.stderr
    how = dict(line.rsplit(": ", 1) for line in listed.stdout.splitlines())
    blocks = re.findall(r"^```sh\n(.*?)^```", readme, re.MULTILINE | re.DOTALL)
    assert len(how) == sum(block.count("\n") for block in blocks) + 1
    assert how.pop("make coffee") == "run"
    assert {command for command, where in how.items() if where != "run"} == {
        "./demo.sh", "./test.sh", "packaging/install-missing.sh build package",
        "packaging/build-deb.sh", "sudo apt-get update", 
        "sudo apt-get install -y -o Dpkg::Options::=--force-confold ./out/packages/*.deb",
        "sudo ostrel-demo-kiosk on", "sudo ostrel-demo-copy"}


@pytest.mark.parametrize("block", ["```console\nmake coffee\n```", "```\nmake coffee\n```",
                                   "    make coffee", "~~~sh\nmake coffee\n~~~",
                                   "- so:\n  ```sh\n  make coffee\n  ```"])
def test_a_block_of_the_readme_that_would_not_be_run_is_refused(source_dir, readme, tmp_path, block):
    refused = listed_commands(source_dir, f"{readme}\n{block}\n", tmp_path)
    assert refused.returncode == 1
    assert f"line {readme.count(chr(10)) + 2 + block.startswith('-')}: " in refused.stderr


def test_a_command_that_left_the_readme_is_excused_no_more(source_dir, readme, tmp_path):
    refused = listed_commands(source_dir, readme.replace("./test.sh", "./try.sh"), tmp_path)
    assert refused.returncode == 1
    assert '"./test.sh"' in refused.stderr

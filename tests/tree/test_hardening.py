"""What makes a hole in a program harder to use: flags of the compiler and linker that the installed
programs were built with, and what they may not call."""

import os
import re
import subprocess

import pytest

PROGRAMS = ("src/ostrel-demo-player-tv", "tools/tvctl/tvctl",
            "tools/demo_copy/ostrel-demo-copy", "tools/sample_content/make-sample-content",
            "tools/standby/ostrel-demo-standby")


def tool(*command):
    # Its words would be translated otherwise.
    return subprocess.run(command, check=True, capture_output=True, text=True,
                          env={**os.environ, "LC_ALL": "C"}).stdout


@pytest.fixture(params=PROGRAMS, ids=os.path.basename)
def program(request, build_dir):
    return os.path.join(build_dir, request.param)


def imports(program):
    """Names that a program has from its libraries, without their versions."""
    return {line.split()[-1].split("@")[0]
            for line in tool("nm", "-D", "--undefined-only", program).splitlines() if line.strip()}


def test_program_lies_at_another_address_each_time(program):
    assert re.search(r"Type:\s+DYN", tool("readelf", "-Wh", program))
    assert re.search(r"\(FLAGS_1\).*\bPIE\b", tool("readelf", "-Wd", program))


def test_program_has_all_its_symbols_before_it_begins_and_locks_the_table(program):
    assert "GNU_RELRO" in tool("readelf", "-Wl", program)
    dynamic = tool("readelf", "-Wd", program)
    assert re.search(r"\(FLAGS\).*\bBIND_NOW\b", dynamic) and re.search(r"\(FLAGS_1\).*\bNOW\b", dynamic)


def test_program_keeps_data_and_code_apart(program):
    segments = tool("readelf", "-Wl", program).splitlines()
    stack = next(line.split() for line in segments if "GNU_STACK" in line)
    assert "E" not in stack[-2]
    loaded = [line for line in segments if line.split()[:1] == ["LOAD"]]
    assert loaded and not [line for line in loaded if " RWE " in line]


def test_program_notices_a_stack_that_was_written_over(program):
    assert "__stack_chk_fail" in imports(program)


def test_program_checks_the_sizes_of_what_it_copies(program):
    assert [name for name in imports(program) if re.fullmatch(r"__\w+_chk", name)]


def test_program_starts_no_other(program):
    # So no shell, and nothing else that would take a file's name for something else, sees one.
    starters = re.compile(r"system|popen|wordexp|v?fork|clone3?|posix_spawnp?|exec[lv]\w*|fexecve|"
                          r"ecore_exe_\w+|efl_exe\w*|elm_exec\w*|g_spawn\w*|g_subprocess_\w+|"
                          r"g_app_info_launch\w*|efreet_desktop_command\w*")
    assert not {name for name in imports(program) if starters.fullmatch(name)}

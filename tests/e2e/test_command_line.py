"""The command line of the program."""

import os

import pytest


@pytest.mark.parametrize("arguments", [
    ["--no-such-option"],
    ["--folder_path"],
    ["--extra", "without-equals-sign"],
    ["stray"],
])
def test_bad_command_line_is_refused(tv, arguments):
    player = tv.start(*arguments)
    player.tolerate(".*")
    assert player.wait_end() == 2
    assert any("Usage" in line or "usage" in line for line in player.log.lines), player.log.lines


@pytest.mark.parametrize("argument, answer", [("--help", "--folder_path"), ("--version", "1.")])
def test_questions_are_answered_without_a_display(tv, argument, answer):
    player = tv.start(argument, WAYLAND_DISPLAY="none", OSTREL_DEMO_LOG_LEVEL="info")
    assert player.wait_end() == 0
    assert answer in player.output()
    assert not player.log.lines


def test_without_a_compositor_the_program_says_so(tv, content):
    player = tv.start(folder=content, WAYLAND_DISPLAY="no-such-compositor")
    player.tolerate(".*")
    assert player.wait_end() == 1
    assert any("ompositor" in line or "WAYLAND_DISPLAY" in line for line in player.log.lines)


def test_without_a_compositor_nothing_waits_for_the_first_look_at_all_plugins(tv, content):
    scanner = os.path.join(tv.folder, "scanner-that-never-answers")
    with open(scanner, "w", encoding="ascii") as script:
        # It goes when the player does, which is at the other end of its standard input.
        script.write("#!/bin/sh\nexec cat >/dev/null\n")
    os.chmod(scanner, 0o755)
    player = tv.start(folder=content, WAYLAND_DISPLAY="no-such-compositor",
                      GST_PLUGIN_SCANNER=scanner,
                      GST_REGISTRY=os.path.join(tv.folder, "no-registry-yet"))
    player.tolerate(".*")
    assert player.wait_end() == 1

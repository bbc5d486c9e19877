"""The command line of the program."""

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

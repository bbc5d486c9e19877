"""Waiting for conditions, with a deadline instead of a guess at how long things take."""

import socket
import threading
import time

# Generous on purpose: nothing here measures speed, and the machine may be busy with other tests.
DEADLINE_S = 60.0
STEP_S = 0.02


def wait_until(condition, what, deadline_s=DEADLINE_S):
    """Calls `condition` until it returns something true, and returns that.

    Fails the test, naming `what` was waited for, when the deadline passes first. `what` may be a
    function, so that the message can tell how things stood at the end.
    """
    end = time.monotonic() + deadline_s
    idle = threading.Event()
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(
                f"waited {deadline_s:.0f} s in vain for {what() if callable(what) else what}")
        idle.wait(STEP_S)


def wait_served(path, what):
    """Waits until somebody listens at a socket, which is there before anybody does."""
    def served():
        with socket.socket(socket.AF_UNIX) as client:
            return client.connect_ex(path) == 0
    wait_until(served, what)

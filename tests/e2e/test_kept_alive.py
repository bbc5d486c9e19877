"""The player under a service manager: when it is ready, and how the picture comes back."""

import itertools
import signal
import time

import pytest

from harness.faults import times
from harness.player import GROW, STAND
from harness.service import Service, settings
from harness.waiting import wait_until


def wait_shown(screen, *colours):
    """As the screen itself waits, but the player may end meanwhile."""
    wait_until(lambda: screen.shown() in colours, lambda: f"{colours}, not {screen.shown()}")


def test_service_is_ready_when_its_first_picture_is_there(tv, screen, content, shelf):
    """Not when its main loop begins: as long as nothing can be played it asks for more time."""
    tv.configure(content={"broken_video": "skip"})
    film = content / "film.mp4"
    film.write_bytes(b"no film")
    with Service(tv, content, changed={"TimeoutStartSec": "3"}) as service:
        service.lives[0].log.wait("film.mp4 cannot be played")
        service.watch()
        service.wait_told("EXTEND_TIMEOUT_USEC", count=6)
        service.watch(False)
        assert not service.ready()

        shelf.video(film, "red")
        service.wait_told("READY")
        wait_shown(screen, "red")
        service.wait_told("WATCHDOG", count=3)
        assert len(service.lives) == 1


def kill(service, _):
    service.lives[0].process.send_signal(signal.SIGKILL)
    return -signal.SIGKILL


def crash(service, _):
    service.lives[0].process.send_signal(signal.SIGSEGV)
    return -signal.SIGSEGV


def stand(service, _):
    """The main loop stands, and the film goes on."""
    service.lives[0].process.send_signal(STAND)
    service.watch()
    return -signal.SIGABRT


def stop(service, _):
    service.lives[0].process.send_signal(signal.SIGSTOP)
    service.watch()
    return -signal.SIGABRT


def leave(_, screen):
    screen.key("Escape")
    return 0


def comings(recorder):
    """When the picture came to the dark screen."""
    seen = [(when, name) for when, name in recorder.changes if name]
    return [when for (_, before), (when, _) in itertools.pairwise(seen) if before == "black"]


def wait_comings(recorder, count):
    wait_until(lambda: len(comings(recorder)) == count, lambda: f"the picture, in {recorder.changes}")
    return comings(recorder)


def soon_s(service, first):
    """Seconds within which a player that waits for nothing has its picture. A start takes more or less
    of them as the machine has other things to do."""
    return service.pause_s + 3 * (first - service.began[0]) + 3


@pytest.mark.parametrize("end", [kill, crash, stand, stop, leave])
def test_picture_comes_back(tv, screen, content, shelf, end):
    shelf.video(content / "red.mp4", "red")
    environment = tv.faulty()
    # A sanitizer would make an end of its own of a crash.
    environment["ASAN_OPTIONS"] += ":handle_segv=0"
    with screen.record() as recorder, Service(tv, content, **environment) as service:
        first, = wait_comings(recorder, 1)
        service.wait_told("WATCHDOG", count=2)

        fault = time.monotonic()
        status = end(service, screen)

        assert service.lives[0].wait_end() == status
        _, again = wait_comings(recorder, 2)
        # One start brings it back, and no wait but that for a sign of life.
        assert len(service.lives) == 2
        silence_s = service.silence_s if end in (stand, stop) else 0
        assert again - fault < silence_s + soon_s(service, first)


def test_start_that_stands_before_its_first_picture_is_given_up(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    tv.break_storage(dead=content)
    patience = times("2", settings()["TimeoutStartSec"])
    with Service(tv, content, changed={"TimeoutStartSec": patience}, **tv.breakable()) as service:
        service.lives[0].log.wait("m_CreatePlayList")
        service.watch()
        assert service.lives[0].wait_end() == -signal.SIGKILL
        assert not service.ready(life=0)

        tv.break_storage()
        service.wait_back(life=1)
        wait_shown(screen, "red")


def test_crash_loop_leaves_the_screen_dark_for_no_longer_than_a_start_waits(tv, screen, content, shelf):
    """Each life ends as soon as it has a picture. The next one waits a little longer, 8 s at most."""
    shelf.video(content / "red.mp4", "red")
    crashes = times(3, 8)
    with screen.record() as recorder, Service(tv, content) as service:
        first, = wait_comings(recorder, 1)
        darkest_s = 0
        for life in range(crashes):
            crashed = time.monotonic()
            service.lives[life].process.kill()
            darkest_s = max(darkest_s, wait_comings(recorder, life + 2)[-1] - crashed)
        assert len(service.lives) == crashes + 1
        longest_wait_s = min(8, 0.25 * 2 ** (crashes - 2))
        assert darkest_s < longest_wait_s + soon_s(service, first)


def test_player_that_has_grown_is_started_anew_between_two_items(tv, screen, content, shelf):
    shelf.video(content / "red.mp4", "red")
    shelf.video(content / "green.mp4", "green")
    with Service(tv, content, **tv.faulty()) as service:
        player = service.lives[0]
        # In the second lap, so that this change has been seen before.
        player.log.wait(r"OnPlayVideo\(\d+\) > /", count=4)
        player.process.send_signal(GROW)

        assert player.wait_end() == 0
        moments = [match.group() for _, match in player.log.find_all(
            "has come to its end|opening .* ahead|private memory has grown")]
        noticed = moments.index("private memory has grown")
        assert moments[noticed - 1] == "has come to its end"
        service.wait_back(life=1)
        wait_shown(screen, "red", "green")

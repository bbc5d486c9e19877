"""Plays cases in the real player, as a folder of files that it has to get over: each has to come up,
whatever it holds, and a good film that takes the place of the first has to be on the screen after all
of them."""

import os
import time

from specimens import VIDEOS, ending_of, is_subtitle

from harness.content import order_in
from harness.waiting import wait_until

# A damaged file may well say that one of its pictures stands for hours. Staff would press a key. What
# has stopped to come has the player itself notice after 10 s.
PATIENCE_S = 15.0
PHOTO_SPEED = 25
GOOD = "red"
FILM_ENDINGS = tuple({f".{ending_of(name)}" for name in VIDEOS})

# The player's words where it takes up a file, and what may be said about one that is no good.
TAKEN_UP = r"OnPlay(?:Video|Photo)\(\d+\) > \S*/([^ ./]+)\."
PASSED_OVER = r"/\d{4}-([^ ./]+)\.\S+ cannot be played: "
SILENT = r"\d{4}-([^ ./]+)\.\S+ plays in silence: "
WHAT_MAY_BE_SAID = (r"PLATFORM", r"still_picture", r"EventDispatcher.* > decode failed",
                    # The libraries that read it.
                    r"(GStreamer|GLib)(-\w+)*-(CRITICAL|WARNING) \*\*",
                    r"^(Didn't get subframe DSYNC$|bitalloc index .* too big|check failed: |"
                    r"ERROR: block code look-up failed$|Stream with high frequencies VQ coding$|"
                    r"Joint stereo coding not supported$)")


def lay_out(folder, cases, carrier):
    """Writes the files. A subtitle lies beside a film and has a name that begins with the film's.

    @return the names that the player has to take up, without their endings
    """
    films = [case for case in cases if not is_subtitle(case.name.rpartition("-")[0])]
    subtitles = [case for case in cases if is_subtitle(case.name.rpartition("-")[0])]
    hosts = [case for case in films if case.ending not in ("jpg", "jpeg")]
    films += [carrier] * (len(subtitles) - len(hosts))
    taken_up = []
    waiting = list(subtitles)
    for number, case in enumerate(films):
        stem = f"{number:04d}-{case.name}"
        taken_up.append(stem)
        (folder / f"{stem}.{case.ending}").write_bytes(case.content())
        if waiting and case.ending not in ("jpg", "jpeg"):
            subtitle = waiting.pop()
            (folder / f"{stem}.{subtitle.name}.{subtitle.ending}").write_bytes(subtitle.content())
    assert not waiting
    return taken_up


def waits_for_its_time(tv, stem):
    """Whether the file has a picture on the screen behind which the player expects another one: it is
    not being opened, nor decoded for the first, nor has it stalled."""
    told = tv.status()["player"]
    return stem in (told["file"] or "") and stem not in (told["last_stall"] or "") \
        and told["state"] == "playing" and told["position_ms"] is not None \
        and told["video"] is not None and told["video"]["shown"] > 0


def play(tv, screen, shelf, folder, cases, carrier):
    """Plays all of them once in the empty folder, then from the beginning, where the good film is now.

    Fails when one does not come up in time, or the player ends, or a whole file is passed over or not
    heard. A file whose picture stands for long because the next one's time is far is left by a key; any
    other one has to come to its end by itself.
    @return the names of those that were left by a key
    """
    tv.configure(content={"broken_video": "skip"})
    stems = lay_out(folder, cases, carrier)
    left = set(stems)
    first = folder / order_in(folder, FILM_ENDINGS)[0]
    player = tv.start(folder=folder, **tv.timers(PHOTO_SPEED))
    player.tolerate(*WHAT_MAY_BE_SAID)
    long, seen, present, last = [], 0, "nothing", None
    # The last one has to come to its end as well, and only one file plays over and over.
    while left or present == last and len(stems) > 1:
        since = time.monotonic()
        wait_until(lambda: not player.running() or player.log.find_all(TAKEN_UP, after=seen) or
                   present not in long and time.monotonic() - since > PATIENCE_S
                   and waits_for_its_time(tv, present),
                   f"what follows {present}")
        assert player.running(), f"the player ended at {present}"
        # What comes between the two is found once more, which does no harm.
        begin, seen = seen, player.log.position()
        names = [match.group(1) for _, match in player.log.find_all(TAKEN_UP, after=begin)]
        if names:
            present = names[-1]
            if left and not left - set(names):
                last = present
            left -= set(names)
        else:
            long.append(present)
            tv.press("Right")
    os.replace(shelf.video(folder / "good.mp4", GOOD), first)
    # A second start has the first one begin anew.
    tv.relaunch(folder=folder)
    wait_until(lambda: screen.shown() == GOOD, f"the good film after {present}")
    broken = [match.group() for _, match in player.log.find_all(f"{PASSED_OVER}|{SILENT}")
              if "-whole." in match.group()]
    assert not broken, f"these are not damaged: {broken}"
    return long

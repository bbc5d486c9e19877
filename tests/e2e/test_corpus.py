"""Damaged files of every kind, as tests/corpus makes them; tests/corpus/run plays thousands."""

import os
import subprocess
import sys

import pytest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(__file__)), "corpus"))

import faults  # noqa: E402
import show  # noqa: E402
import specimens  # noqa: E402
from harness.waiting import DEADLINE_S  # noqa: E402

SEED = 1


@pytest.mark.sanitized
def test_a_folder_of_damaged_files_is_got_over(tv, screen, content, shelf, tmp_path, monkeypatch):
    # Noting where each piece of memory comes from takes three times as long as all else.
    # tests/corpus/run does, and looks for leaks.
    monkeypatch.setenv("ASAN_OPTIONS",
                       os.environ["ASAN_OPTIONS"] + ":detect_leaks=0:fast_unwind_on_malloc=1")
    files = specimens.make_all(tmp_path)
    cases = faults.all_cases(files, SEED)
    carrier = next(case for case in cases if case.name == "mkv-h264-whole")
    show.play(tv, screen, shelf, content, faults.sample(cases, 150, SEED), carrier)


# Each names places on the network of this machine, where every attempt counts.
LURES = {
    "hls.mp4": "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\nhttp://127.0.0.1:9/film.ts\n#EXT-X-ENDLIST\n",
    "master.ts": "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=100000\nhttp://127.0.0.1:9/film.m3u8\n",
    "addresses.flv": "rtsp://127.0.0.1:9/film\n",
    "session.avi": "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=x\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\n"
                   "m=video 9 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\n",
    "references.asf": "[Reference]\r\nRef1=http://127.0.0.1:9/film.asf\r\n",
}
# Of a network of its own, on which nobody listens: what it has told the kernel to send.
WITHOUT_NETWORK = ("unshare", "--map-current-user", "--net", "--")
SENT = {"Ip:": ("OutRequests", "OutNoRoutes"), "Tcp:": ("ActiveOpens", "PassiveOpens"),
        "Udp:": ("OutDatagrams", "InErrors")}


# One that tries, and tells the same.
TRY = """import socket
socket.socket(socket.AF_INET).connect_ex(("127.0.0.1", 9))
print(open("/proc/self/net/snmp").read(), end="")"""


def sent(table):
    """What a network has counted, without what is none."""
    rows = [line.split() for line in table.splitlines()]
    counts = {f"{names[0]}{name}": int(value) for names, values in zip(rows[::2], rows[1::2])
              for name, value in zip(names, values) if name in SENT.get(names[0], ())}
    assert len(counts) == sum(len(names) for names in SENT.values())
    return {name: count for name, count in counts.items() if count}


def test_files_that_name_the_network_reach_for_nothing_on_it(tv, screen, content, shelf):
    tv.configure(content={"broken_video": "skip"})
    for name, text in LURES.items():
        (content / name).write_text(text)
    shelf.video(content / "red.mkv", "red", seconds=1)
    player = tv.start(folder=content, prefix=WITHOUT_NETWORK)
    for name in LURES:
        player.log.wait(f"/{name} cannot be played")
    screen.wait_for("red")
    with open(f"/proc/{player.pid}/net/snmp", encoding="ascii") as file:
        assert sent(file.read()) == {}
    tried = subprocess.run([*WITHOUT_NETWORK, sys.executable, "-c", TRY], capture_output=True,
                           text=True, timeout=DEADLINE_S, check=True)
    assert sent(tried.stdout) != {}

"""ostrel-demo-copy: what is on a stick comes into the set whole, or not at all."""

import os
import pty
import signal
import stat
import subprocess

import pytest

from harness.waiting import wait_until

FILMS = {"a.mp4": b"film " * 700_000, "portrait_b.jpg": b"photo", "a.srt": b"subtitle"}
OLD = {"old.mp4": b"the old film", "old.txt": b"notes"}


class Copying:
    """A stick, a set and the program between them."""

    def __init__(self, folder, build_dir):
        self.program = os.path.join(build_dir, "tools", "demo_copy", "ostrel-demo-copy")
        self.stick = folder / "stick"
        self.set = folder / "set"
        self.content = self.set / "demo_movie"
        fill(self.stick / "Demo", FILMS)
        fill(self.content, OLD)
        self.conf = folder / "tv.conf"
        self.conf.write_text(f"[usb]\nmounts = {self.stick}\n")
        self.faults = folder / "faults"
        checks = os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"
        self.environment = {
            **os.environ, "OSTREL_DEMO_TV_CONF": str(self.conf), "OSTREL_DEMO_RUNTIME_DIR": str(folder),
            "LD_PRELOAD": os.path.join(build_dir, "tests", "preload", "libstorage_faults.so"),
            "STORAGE_FAULTS": str(self.faults), "ASAN_OPTIONS": checks.lstrip(":")}

    def start(self, *arguments, **options):
        arguments = arguments or (self.stick / "Demo", self.content)
        return subprocess.Popen([self.program, *arguments], env=self.environment, text=True,
                                **{"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options})

    def run(self, *arguments):
        return self.finish(self.start(*arguments))

    def run_with_mounts(self, script, *arguments):
        """Runs it where a script has mounted what nobody else sees."""
        return self.finish(subprocess.Popen(
            ["unshare", *(["--map-root-user"] if os.getuid() else []), "--mount", "sh", "-c",
             f'{script} && exec "$0" "$@"', self.program, *arguments], text=True,
            env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE))

    @staticmethod
    def finish(process):
        try:
            process.out, process.err = process.communicate(timeout=60)
        except subprocess.TimeoutExpired:
            process.kill()  # what it writes may have no end
            raise
        return process

    def break_storage(self, fault, path):
        self.faults.write_text(f"{fault} {path}\n")

    def fresh(self):
        """Where the new files are until they are complete."""
        return self.set / ".demo_movie.new"

    def assert_as_it_was(self, refused, reason):
        assert refused.returncode == 1 and reason in refused.err, refused.err
        assert refused.err.endswith("The content is as it was.\n")
        assert os.listdir(self.set) == ["demo_movie"] and held(self.content) == OLD


def fill(folder, files):
    folder.mkdir(parents=True, exist_ok=True)
    for name, what in files.items():
        (folder / name).write_bytes(what)


def held(folder):
    return {name: (folder / name).read_bytes() for name in os.listdir(folder)}


@pytest.fixture
def copying(tmp_path, build_dir):
    return Copying(tmp_path, build_dir)


def test_content_of_the_stick_takes_the_place_of_the_old_one(copying):
    for name in ("notes.pdf", "._a.mp4"):
        (copying.stick / "Demo" / name).write_bytes(b"no film")
    (copying.stick / "Demo" / "more.ts").mkdir()
    os.utime(copying.stick / "Demo" / "a.mp4", (1_000_000, 1_000_000))
    copying.content.chmod(0o2770)
    done = copying.run()
    assert done.returncode == 0 and done.err == "", done.err
    assert held(copying.content) == FILMS and os.listdir(copying.set) == ["demo_movie"]
    assert (copying.content / "a.mp4").stat().st_mtime == 1_000_000
    assert stat.S_IMODE(copying.content.stat().st_mode) == 0o2770
    assert stat.S_IMODE((copying.content / "a.mp4").stat().st_mode) == 0o664
    lines = done.out.splitlines()
    assert lines[0].startswith("3 files, 3.5 MB, from ") and "All files are copied and checked." in lines
    for name in ("notes.pdf", "more.ts"):
        assert f"Left out, for the demo does not play it: {name}" in lines
    assert sorted(line.split()[-1] for line in lines if line.startswith("[")) == sorted(FILMS)
    assert [line.split()[0] for line in lines if line.startswith("[")] == ["[1/3]", "[2/3]", "[3/3]"]


@pytest.mark.parametrize("names, told", [
    (("a.mp4", "b.jpg"), "They are for a landscape screen: names for an upright one begin with portrait_."),
    (("portrait_a.mp4", "Portrait_b.jpg"), "They are for an upright screen: their names begin with portrait_."),
    (("a.mp4", "portrait_b.jpg"), "All files are copied and checked.")])
def test_screen_that_the_files_are_for_is_told(copying, names, told):
    for path in (copying.stick / "Demo").iterdir():
        path.unlink()
    fill(copying.stick / "Demo", dict.fromkeys(names, b"film"))
    assert copying.run().out.splitlines()[-1] == told


def test_names_do_nothing_to_a_terminal(copying):
    played = os.fsdecode(b"clear\033[2J\xc2\x9b2J.mp4")
    for name in (played, "title\033]0;x\007.pdf"):
        (copying.stick / "Demo" / name).write_bytes(b"film")
    told = copying.run()
    assert told.returncode == 0 and r"clear\x1b[2J\xc2\x9b2J.mp4" in told.out, told.out
    assert r"title\x1b]0;x\x07.pdf" in told.out
    assert "\033" not in told.out and "\x9b" not in told.out and played in held(copying.content)


def test_links_on_a_stick_lead_nowhere(copying, tmp_path):
    """Root runs it, who may read what the stick's owner may not."""
    (tmp_path / "secret").write_bytes(b"secret")
    (copying.stick / "Demo" / "c.mp4").symlink_to(tmp_path / "secret")
    done = copying.run()
    assert done.returncode == 0 and "does not play it: c.mp4" in done.out, done.err
    assert held(copying.content) == FILMS
    (copying.stick / "demo").symlink_to(tmp_path / "set" / "demo_movie")
    refused = copying.run(copying.stick / "demo", copying.set / "other")
    assert refused.returncode == 1 and "stick/demo cannot be read" in refused.err
    first = tmp_path / "first"
    first.mkdir()
    (first / "Demo").symlink_to(copying.content)
    copying.conf.write_text(f"[usb]\nmounts = {first}:{tmp_path / 'second'}\n")
    copying.stick.rename(tmp_path / "second")
    (tmp_path / "second" / "demo").unlink()
    done = copying.run_with_mounts("mount -t tmpfs none /opt && mkdir -p /opt/data")
    assert done.returncode == 0 and f"from {tmp_path}/second/Demo/ to " in done.out, done.err


def test_a_folder_that_is_exchanged_meanwhile_gives_nothing_of_the_other(copying):
    demo = copying.stick / "Demo"
    first = os.listdir(demo)[0]
    copying.break_storage("hangs", demo / first)
    process = copying.start()
    wait_until((copying.fresh() / first).exists, "the file that hangs")
    demo.rename(copying.stick / "was")
    fill(demo, {name: bytes(len(what)) for name, what in FILMS.items()})
    copying.faults.unlink()
    assert copying.finish(process).returncode == 0, process.err
    assert held(copying.content) == FILMS


@pytest.mark.parametrize("type_of_set, played", [(0, False), (1, True)])
def test_what_is_played_is_for_the_set_to_say(copying, type_of_set, played):
    fill(copying.stick / "demo", {"a.smp4": b"film"})
    copying.conf.write_text(f"[product]\nstore_content_type = {type_of_set}\n[usb]\nmounts = {copying.stick}\n")
    done = copying.run(copying.stick / "demo", copying.content)
    assert done.returncode == (0 if played else 1), done.err
    assert held(copying.content) == ({"a.smp4": b"film"} if played else OLD)


@pytest.mark.parametrize("absolute", [True, False])
def test_a_folder_is_made_where_there_is_none(copying, absolute):
    # No file system that cannot exchange is in its way.
    copying.break_storage("plain", copying.set)
    to = copying.set / "other" if absolute else "other"
    done = copying.finish(copying.start(copying.stick / "Demo", to, cwd=copying.set))
    assert done.returncode == 0, done.err
    assert held(copying.set / "other") == FILMS and held(copying.content) == OLD


def test_without_arguments_the_stick_goes_into_the_built_in_folder(copying):
    done = copying.run_with_mounts("mount -t tmpfs none /opt && mkdir -p /opt/data")
    assert done.returncode == 0, done.err
    assert done.out.startswith(
        f"3 files, 3.5 MB, from {copying.stick}/Demo/ to /opt/data/demo_movie/\n")


@pytest.mark.parametrize("named", [True, False])
def test_the_kiosk_says_where_its_sticks_are(copying, tmp_path, named):
    fill(tmp_path / "kiosk" / "Demo", FILMS)
    done = copying.run_with_mounts(
        "mount -t tmpfs none /opt && mkdir -p /opt/data && mount -t tmpfs none /etc &&"
        "mkdir /etc/ostrel-demo-kiosk && cd /etc/ostrel-demo-kiosk &&"
        f"printf '[usb]\\nmounts = {tmp_path}/kiosk\\n' >tv.conf"
        + ("" if named else " && unset OSTREL_DEMO_TV_CONF"))
    assert done.returncode == 0, done.err
    assert f"from {copying.stick if named else tmp_path / 'kiosk'}/Demo/" in done.out


def test_the_purge_of_the_kiosk_takes_what_a_cut_off_copy_left(copying, source_dir):
    postrm = os.path.join(source_dir, "packaging", "debian", "ostrel-demo-kiosk.postrm")
    purged = copying.run_with_mounts(
        "for place in /opt /etc /var/lib; do mount -t tmpfs none $place || exit; done &&"
        "mkdir -p /opt/data/demo_movie /opt/data/.demo_movie.new && echo film >/opt/data/.demo_movie.new/a.mp4 &&"
        f"sh {postrm} purge && exec find /opt -mindepth 1")
    assert (purged.returncode, purged.out) == (0, ""), purged.err


def test_what_cannot_be_exchanged_is_told_before_anything_is_copied(copying):
    copying.break_storage("plain", copying.set)
    refused = copying.run()
    copying.assert_as_it_was(refused, f"the file system of {copying.set} cannot exchange two folders in one step")
    assert "[1/3]" not in refused.out
    copying.faults.unlink()
    refused = copying.run_with_mounts(f"mount --bind {copying.content} {copying.content}",
                                      copying.stick / "Demo", copying.content)
    copying.assert_as_it_was(refused, f"something is mounted at {copying.content}, which cannot be exchanged")
    assert "[1/3]" not in refused.out
    link = copying.stick / "link"
    link.symlink_to("/nowhere")
    refused = copying.run(copying.stick / "Demo", link)
    copying.assert_as_it_was(refused, "stick/link is a link that leads nowhere")
    assert "[1/3]" not in refused.out


@pytest.mark.parametrize("fault, place, reason", [
    ("eio", "stick", "stick/Demo/a.mp4 cannot be read: Input/output error"),
    ("unlisted", "stick", "stick/Demo cannot be read: Input/output error"),
    ("eio", "set", "set/.demo_movie.new/a.mp4 cannot be read: Input/output error"),
    ("full", "set", "set/.demo_movie.new/a.mp4 cannot be written: No space left on device"),
    ("read_only", "set", "set/.demo_movie.new/a.mp4 cannot be made: Read-only file system"),
    ("corrupt", "set", "set/.demo_movie.new/a.mp4 is not what was written")])
def test_storage_that_fails_leaves_the_old_content(copying, tmp_path, fault, place, reason):
    folder = {"stick": copying.stick / "Demo", "set": copying.fresh()}[place]
    copying.break_storage(fault, folder if fault == "unlisted" else folder / "a.mp4")
    copying.assert_as_it_was(copying.run(), f"{tmp_path}/{reason}")


def test_what_has_no_room_is_not_begun(copying):
    os.truncate(copying.stick / "Demo" / "a.mp4", 2**43)
    # Were it begun all the same, a write would fail here and not fill the disk.
    copying.break_storage("full", f"{copying.fresh()}/a.mp4")
    refused = copying.run()
    copying.assert_as_it_was(refused, "there is no room for it in ")
    assert "it takes 8.8 TB beside the content that is there" in refused.err
    assert "[1/3]" not in refused.out


def test_sizes_that_add_up_to_nothing_have_no_room(copying):
    """On a file system for files of any size: twice 2^63 - 1 bytes, and two."""
    stick = copying.stick
    copying.break_storage("full", f"{copying.fresh()}/")
    refused = copying.run_with_mounts(
        f"mount -t tmpfs none {stick} && mkdir {stick}/Demo && cd {stick}/Demo && printf ab >c.mp4 &&"
        f"truncate -s {2**63 - 1} a.mp4 b.mp4", stick / "Demo", copying.content)
    copying.assert_as_it_was(refused, "there is no room for it in ")
    assert "it takes 18446744.1 TB" in refused.err


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGKILL])
def test_a_copy_that_is_cut_off_leaves_the_old_content_and_the_next_one_is_whole(copying, number):
    copying.break_storage("hangs", f"{copying.stick}/Demo/portrait_b.jpg")
    process = copying.start()
    wait_until((copying.fresh() / "portrait_b.jpg").exists, "the file that hangs")
    process.send_signal(number)
    copying.faults.unlink()
    copying.finish(process)
    assert held(copying.content) == OLD
    if number == signal.SIGTERM:
        copying.assert_as_it_was(process, "stopped")
    done = copying.run()
    assert done.returncode == 0 and held(copying.content) == FILMS
    assert os.listdir(copying.set) == ["demo_movie"]


@pytest.mark.parametrize("what, reason", [
    ("empty", "holds nothing that the demo plays"), ("missing", "cannot be read: No such file"),
    ("same", "is what is to be copied"), ("file", "is no folder"),
    ("above", "lie one within the other"), ("below", "lie one within the other")])
def test_a_wrong_folder_is_refused(copying, what, reason):
    films = copying.stick / "Demo"
    arguments = {"empty": (copying.set, copying.content), "missing": ("/nowhere", copying.content),
                 "same": (films, films), "file": (films, films / "a.mp4"),
                 "above": (films, copying.stick), "below": (films, films / "new")}[what]
    refused = copying.run(*arguments)
    copying.assert_as_it_was(refused, reason)
    assert "[1/3]" not in refused.out and held(films) == FILMS
    assert os.listdir(copying.stick) == ["Demo"]


def test_only_files_of_one_folder_are_ever_replaced(copying):
    """A slip of the keyboard, as root, shall not take a home or /etc away."""
    fill(copying.content / "letters", {"dear.txt": b"dear"})
    refused = copying.run()
    assert refused.returncode == 1 and "is more than content, for it holds the folder letters" in refused.err
    assert "[1/3]" not in refused.out and os.listdir(copying.set) == ["demo_movie"]
    assert held(copying.content / "letters") == {"dear.txt": b"dear"}
    (copying.content / "letters").rename(copying.set / "letters")
    (copying.content / "link").symlink_to(copying.set / "letters")
    (copying.content / "to_nowhere").symlink_to("/nowhere")
    done = copying.run()
    assert done.returncode == 0 and held(copying.content) == FILMS, done.err
    assert held(copying.set / "letters") == {"dear.txt": b"dear"}


def test_a_folder_in_the_place_of_the_new_files_is_left_alone(copying):
    fill(copying.fresh() / "letters", {"dear.txt": b"dear"})
    refused = copying.run()
    assert refused.returncode == 1 and ".demo_movie.new cannot be removed: Is a directory" in refused.err
    assert held(copying.fresh() / "letters") == {"dear.txt": b"dear"} and held(copying.content) == OLD


def test_what_a_power_cut_left_can_be_saved(copying):
    """That may be the old films, when it came between the exchange and the tidying up."""
    fill(copying.fresh(), FILMS)
    refused = copying.run(copying.fresh(), copying.content)
    assert refused.returncode == 1 and "is where the new files go: rename it first" in refused.err
    assert held(copying.fresh()) == FILMS and held(copying.content) == OLD


def test_without_a_stick_there_is_nothing_to_copy(copying):
    (copying.stick / "Demo").rename(copying.stick / "films")
    process = subprocess.run([copying.program], env=copying.environment, capture_output=True,
                             text=True, timeout=60, check=False)
    assert process.returncode == 1 and "no USB stick is plugged in that has a folder \"demo\"" in process.stderr


def test_a_terminal_shows_a_bar(copying):
    ours, theirs = pty.openpty()
    process = copying.start(stdout=theirs)
    os.close(theirs)
    shown = b""
    try:
        while piece := os.read(ours, 4096):
            shown += piece
    except OSError:
        pass  # the other side is closed
    os.close(ours)
    assert copying.finish(process).returncode == 0, process.err
    assert b"\r\033[?7l[..............................]   0 %  " in shown
    assert b"\r\033[?7l[##############################] 100 %  " in shown
    assert shown.count(b"\033[?7l") == shown.count(b"\033[?7h") > 1
    assert b"All files are copied and checked.\r\n" in shown


@pytest.mark.parametrize("arguments, status", [(["--help"], 0), (["-x"], 2), (["a", "b", "c"], 2)])
def test_usage_is_told(copying, arguments, status):
    told = copying.run(*arguments)
    assert told.returncode == status and "Usage: ostrel-demo-copy" in told.out + told.err

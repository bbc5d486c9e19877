"""The Debian packages as far as they can be judged without making them: what they depend on, the
services of the kiosk and the command that switches it on and off."""

import configparser
import os
import pathlib
import re
import subprocess

import pytest

KIOSK = "packaging/kiosk"


def names(source_dir, *sections):
    listed = subprocess.run(
        [os.path.join(source_dir, "packaging", "install-missing.sh"), "--names", *sections],
        capture_output=True, text=True, check=True)
    return set(listed.stdout.split())


@pytest.fixture(scope="module")
def control(source_dir):
    """The paragraphs of debian/control by the package they are about, each a dictionary."""
    with open(os.path.join(source_dir, "packaging/debian/control"), encoding="utf-8") as file:
        paragraphs = [dict(re.findall(r"^([A-Z][\w-]+):((?:.*\n(?: .*\n)*))", text + "\n", re.MULTILINE))
                      for text in file.read().split("\n\n")]
    return {fields.get("Package", "source").strip(): fields for fields in paragraphs}


def alternatives(field):
    return {re.sub(r" .*", "", item.strip()) for item in field.split(",") if item.strip()}


def test_packages_are_built_with_what_the_list_names(source_dir, control):
    needed = alternatives(control["source"]["Build-Depends"]) - {"debhelper-compat"}
    # A compiler is taken for granted, and packaging/build-deb.sh asks git what is committed.
    assert needed | {"ccache", "g++", "git"} == names(source_dir, "build")


def test_player_depends_on_what_it_loads_while_it_runs(source_dir, control):
    assert "${packages:run}" in alternatives(control["ostrel-demo-player-tv"]["Depends"])
    rules = subprocess.run(
        ["make", "-n", "-f", "packaging/debian/rules", "override_dh_gencontrol"],
        cwd=source_dir, capture_output=True, text=True, check=True)
    given = re.search(r"packages:run=([^']*)'", rules.stdout).group(1)
    assert set(given.split(",")) == names(source_dir, "run")


def test_kiosk_depends_on_what_the_list_names(source_dir, control):
    fields = control["ostrel-demo-kiosk"]
    needed = alternatives(fields["Depends"]) | alternatives(fields["Recommends"])
    assert needed - {"${misc:Depends}", "ostrel-demo-player-tv", "weston"} == names(source_dir, "kiosk")
    assert "weston" in needed & names(source_dir, "demo")


@pytest.fixture(scope="module")
def installation(build_dir, tmp_path_factory):
    folder = tmp_path_factory.mktemp("installation")
    subprocess.run(["cmake", "--install", build_dir], capture_output=True, check=True,
                   env={**os.environ, "DESTDIR": str(folder)})
    return folder


def test_each_program_has_a_manual_page(source_dir, installation):
    pages = [*installation.rglob("man/man?/*"), *pathlib.Path(source_dir, KIOSK).glob("*.[1-8]")]
    programs = {program.name for program in installation.rglob("bin/*")} | {"ostrel-demo-kiosk"}
    assert "tvctl" in programs and programs == {page.stem for page in pages}
    for page in pages:
        assert f".SH NAME\n{page.stem} ".replace("-", "\\-") in page.read_text(encoding="utf-8")


@pytest.fixture(scope="module")
def units(source_dir, build_dir, tmp_path_factory):
    """The services, with the programs at places where these are while the tests run."""
    folder = tmp_path_factory.mktemp("units")
    for path in pathlib.Path(source_dir, KIOSK).glob("*.service"):
        text = path.read_text(encoding="utf-8")
        for program in ("src/ostrel-demo-player-tv", "tools/tvctl/tvctl",
                        "tools/standby/ostrel-demo-standby"):
            text = text.replace(f"/usr/bin/{os.path.basename(program)}", f"{build_dir}/{program}")
        (folder / path.name).write_text(text)
    return folder


def test_services_say_nothing_that_systemd_does_not_understand(units):
    verified = subprocess.run(
        ["systemd-analyze", "verify", "--man=no", "--recursive-errors=no", *sorted(units.iterdir())],
        capture_output=True, text=True, check=False)
    complaints = [line for line in verified.stderr.splitlines() if str(units) in line
                  or line.startswith("ostrel-demo-kiosk")]
    assert verified.returncode == 0 and not complaints, verified.stderr


@pytest.mark.parametrize("unit", ["player", "standby"])
def test_sandbox_leaves_little_exposed(units, unit):
    judged = subprocess.run(
        ["systemd-analyze", "security", "--offline=true", "--threshold=25", "--no-pager",
         units / f"ostrel-demo-kiosk-{unit}.service"], capture_output=True, text=True, check=False)
    assert judged.returncode == 0, judged.stdout + judged.stderr
    assert re.search(r"Overall exposure level.*: [0-2]\.\d", judged.stdout)


def unit_lines(source_dir, name):
    with open(os.path.join(source_dir, KIOSK, name), encoding="utf-8") as file:
        return file.read().splitlines()


def names_in(unit, key):
    return {name for line in unit if line.startswith(f"{key}=") for name in line.split("=")[1].split()}


def test_player_comes_and_goes_with_the_card_and_both_with_the_compositor(source_dir):
    """A card that came after the player would lie above it."""
    names = {"compositor": "ostrel-demo-kiosk.service", "card": "ostrel-demo-kiosk-standby.service",
             "player": "ostrel-demo-kiosk-player.service"}
    compositor, card, player = (unit_lines(source_dir, name) for name in names.values())
    for key in ("BindsTo", "After"):
        assert names_in(card, key) == {names["compositor"]}
        assert names_in(player, key) == {names["compositor"], names["card"]}
    assert {names["card"], names["player"]} <= names_in(compositor, "Wants")
    assert names_in(card, "Wants") == {names["player"]}
    socket = re.search(r"--socket=(\S+)", "\n".join(compositor)).group(1)
    for unit in (compositor, card, player):
        assert {"Restart=always", "StartLimitIntervalSec=0", "User=ostrel-demo",
                "Type=notify"} <= set(unit)
    for unit in (card, player):
        assert f"WAYLAND_DISPLAY={socket} " in "\n".join(unit)
    # The screen is black while one of the two is away, and with it the other.
    pauses = [names_in(unit, "RestartSec") for unit in (card, player)]
    assert pauses[0] == pauses[1] == {"100ms"}


def service_settings(path):
    unit = configparser.ConfigParser(interpolation=None, strict=False)
    unit.optionxform = str
    unit.read(path, encoding="utf-8")
    return dict(unit["Service"]), dict(unit["Unit"])


def test_players_two_services_keep_it_alive_alike(source_dir):
    """Tests and measurements are made with the user's."""
    kiosk, kiosk_unit = service_settings(os.path.join(source_dir, KIOSK, "ostrel-demo-kiosk-player.service"))
    users, users_unit = service_settings(
        os.path.join(source_dir, "packaging/ostrel-demo-player-tv.service.in"))
    del users["ExecStart"]
    users["ExecCondition"] = users["ExecCondition"].replace("@CMAKE_INSTALL_FULL_BINDIR@", "/usr/bin")
    assert {key: kiosk.get(key) for key in users} == users
    # Back in five seconds after the main loop has stood still, and in one after an end.
    assert (users["WatchdogSec"], users["RestartSec"]) == ("3", "100ms")
    assert users["MemoryMax"] == "1536M"
    assert kiosk_unit["StartLimitIntervalSec"] == users_unit["StartLimitIntervalSec"]


def test_card_has_the_players_sandbox_and_no_device(source_dir):
    def sandbox(name):
        lines = unit_lines(source_dir, name)
        return {line for line in lines[lines.index("NoNewPrivileges=yes"):] if "=" in line
                and not line.startswith("#")}

    card, player = (sandbox(f"ostrel-demo-kiosk-{unit}.service") for unit in ("standby", "player"))
    assert {line for line in player - card if not line.startswith("DeviceAllow=")} \
        == {"RestrictAddressFamilies=AF_UNIX AF_NETLINK"}
    assert not [line for line in card if line.startswith("DeviceAllow=")]


def test_nothing_blanks_the_screen_or_leads_away_from_it(source_dir):
    kiosk = os.path.join(source_dir, KIOSK)
    compositor, logins = (configparser.ConfigParser() for _ in range(2))
    assert compositor.read(os.path.join(kiosk, "weston.ini"))
    assert compositor["core"]["idle-time"] == "0"
    assert compositor["core"]["require-input"] == "false"
    assert compositor["keyboard"]["vt-switching"] == "false"
    assert logins.read(os.path.join(kiosk, "etc/systemd/logind.conf.d/ostrel-demo-kiosk.conf"))
    assert dict(logins["Login"]) == {"nautovts": "0", "reservevt": "0"}
    kernel = subprocess.run(
        ["sh", "-c", '. "$0"; echo "$GRUB_CMDLINE_LINUX_DEFAULT"',
         os.path.join(kiosk, "etc/default/grub.d/ostrel-demo-kiosk.cfg")],
        capture_output=True, text=True, check=True)
    assert {"quiet", "console=tty12", "systemd.show_status=no", "vt.global_cursor_default=0"} \
        <= set(kernel.stdout.split())


def test_sticks_are_mounted_for_reading_alone(source_dir):
    with open(os.path.join(source_dir, KIOSK, "etc/udev/rules.d/90-ostrel-demo-kiosk.rules"),
              encoding="utf-8") as file:
        options = re.findall(r'(?:ENV\{ID_FS_TYPE\}=="(\S+)", )?ENV\{OSTREL_DEMO_OPTIONS\}="(\S+)"',
                             file.read())
    assert [kind for kind, _ in options] == ["", "vfat", "exfat", "ntfs", "ext[34]"]
    for kind, given in options:
        # The journal of a stick that was pulled would be played back.
        own = {"vfat": {"utf8=1"}, "exfat": {"iocharset=utf8"}, "ext[34]": {"noload"}}.get(kind, set())
        assert {"ro", "nosuid", "nodev", "noexec"} | own <= set(given.split(","))


def test_kiosks_completion_offers_what_the_command_knows(source_dir):
    kiosk = os.path.join(source_dir, KIOSK, "ostrel-demo-kiosk")

    def offered(*words):
        script = '. "$0"; COMP_WORDS=(ostrel-demo-kiosk "$@"); COMP_CWORD=$#; _ostrel_demo_kiosk; ' \
            'printf "%s\\n" "${COMPREPLY[@]}"'
        told = subprocess.run(["bash", "-euc", script, f"{kiosk}.bash", *words], capture_output=True,
                              text=True, check=True)
        return set(told.stdout.split())

    usage = subprocess.run([kiosk, "--help"], capture_output=True, text=True, check=True).stdout
    commands = {word for line in re.findall(r"ostrel-demo-kiosk (\S+)", usage) for word in line.split("|")}
    assert offered("") == commands | {"--help"} and len(commands) == 6
    assert offered("st") == {"status"}
    orientations = set(re.search(r"ostrel-demo-kiosk panel (\S+)", usage).group(1).split("|"))
    assert offered("panel", "") == orientations and len(orientations) == 4


@pytest.mark.parametrize("script", [
    "packaging/build-deb.sh", "packaging/kiosk/ostrel-demo-kiosk",
    "packaging/debian/ostrel-demo-kiosk.postinst", "packaging/debian/ostrel-demo-kiosk.prerm",
    "packaging/debian/ostrel-demo-kiosk.postrm"])
def test_scripts_of_the_packages_are_clean(source_dir, script):
    checked = subprocess.run(["shellcheck", os.path.join(source_dir, script)], capture_output=True,
                             text=True, check=False)
    assert checked.returncode == 0, checked.stdout


class Machine:
    """A machine's files in a folder, and stand-ins for the commands that would change a real one.
    Each notes its call; what it answers stands in `answers`, by the beginning of the call, with its
    status behind a "!" where that is not 0."""

    COMMANDS = ("systemctl", "udevadm", "update-grub", "runuser", "id")

    def __init__(self, folder, source_dir):
        self.root = folder / "root"
        self.script = os.path.join(source_dir, KIOSK, "ostrel-demo-kiosk")
        self.parts = os.path.join(source_dir, KIOSK, "etc")
        self.calls_file = folder / "calls"
        self.answers = {"id -u": "0", "id -u ostrel-demo": "998",
                        "systemctl is-enabled --quiet display-manager": "!1",
                        "systemctl is-active ostrel-demo-kiosk-player": "active"}
        self.share = self.root / "usr/share/ostrel-demo-kiosk"
        self.share.mkdir(parents=True)
        (self.share / "etc").symlink_to(self.parts)
        (self.root / "etc").mkdir()
        (self.root / "run/systemd/system").mkdir(parents=True)
        self.programs = folder / "bin"
        self.programs.mkdir()
        for command in self.COMMANDS:
            self.stand_in(command)
        for command in ("sh", "find", "grep", "mkdir", "ln", "rm", "cat"):
            (self.programs / command).symlink_to(f"/bin/{command}" if command in ("sh", "cat") else
                                                 f"/usr/bin/{command}")

    def stand_in(self, command):
        program = self.programs / command
        program.write_text("#!/bin/sh\n"
                           f'call="{command}${{*:+ $*}}"\n'
                           f'echo "$call" >>{self.calls_file}\n'
                           f'. {self.programs}/answers\n')
        program.chmod(0o755)

    def run(self, *arguments):
        self.calls_file.write_text("")
        cases = "".join(
            f"    '{call}'*) printf %s '{answer.partition('!')[0]}'; exit {answer.partition('!')[2] or 0} ;;\n"
            for call, answer in sorted(self.answers.items(), reverse=True))
        (self.programs / "answers").write_text(f'case "$call" in\n{cases}esac\n')
        done = subprocess.run([self.script, *arguments], capture_output=True, text=True, check=False,
                              timeout=60, env={"PATH": str(self.programs),
                                               "OSTREL_DEMO_KIOSK_ROOT": str(self.root)})
        self.calls = [call for call in self.calls_file.read_text().splitlines()
                      if not call.startswith("id ")]
        return done

    def never_switched_on(self):
        self.answers |= {"systemctl is-enabled --quiet ostrel-demo-kiosk": "!1",
                         "systemctl is-active": "!3",
                         "systemctl is-active ostrel-demo-kiosk-player": "inactive!3"}

    def changes(self):
        """The calls that ask for more than an answer."""
        return [call for call in self.calls if not call.startswith(("systemctl is-", "runuser"))]

    def links(self):
        return {str(path.relative_to(self.root)): os.readlink(path)
                for path in (self.root / "etc").rglob("*") if path.is_symlink()}

    def expected_links(self):
        return {f"etc/{path}": f"/usr/share/ostrel-demo-kiosk/etc/{path}"
                for path in (os.path.relpath(os.path.join(folder, name), self.parts)
                             for folder, _, files in os.walk(self.parts) for name in files)}


@pytest.fixture
def machine(source_dir, tmp_path):
    return Machine(tmp_path, source_dir)


FOR_USER = ("runuser -u ostrel-demo -- env -i HOME=/var/lib/ostrel-demo-kiosk "
            "XDG_RUNTIME_DIR=/run/user/998 OSTREL_DEMO_TV_CONF=/etc/ostrel-demo-kiosk/tv.conf "
            "/usr/bin/tvctl")
RELOADS = ["update-grub", "udevadm control --reload", "systemctl kill --signal=HUP systemd-logind.service",
           "systemctl try-restart systemd-journald.service"]
ENABLES = "systemctl enable --quiet ostrel-demo-kiosk.service"
# A player without content is never ready.
STARTS = ["systemctl start ostrel-demo-kiosk.service ostrel-demo-kiosk-standby.service",
          "systemctl --no-block start ostrel-demo-kiosk-player.service"]


def test_on_makes_a_demo_set_and_off_undoes_it(machine):
    for _ in range(2):
        switched = machine.run("on")
        assert switched.returncode == 0 and switched.stderr == "", switched.stderr
        assert "/opt/data/demo_movie" in switched.stdout and "folder demo" in switched.stdout
        assert machine.links() and machine.links() == machine.expected_links()
        # The rules and the boot's text are in force before the screen is taken, and the card before
        # the player.
        assert [call for call in machine.changes() if "trigger" not in call] == [ENABLES, *RELOADS, *STARTS]
    switched = machine.run("off")
    assert switched.returncode == 0, switched.stderr
    assert not machine.links()
    assert machine.changes() == [
        ENABLES.replace("enable", "disable"), *RELOADS,
        STARTS[0].replace("start", "stop", 1) + " ostrel-demo-kiosk-player.service",
        "systemctl stop user-998.slice run-media-ostrel-*.mount",
        "systemctl --no-block start getty@tty1.service"]


def test_on_says_where_to_look_when_there_is_no_screen(machine):
    machine.answers[STARTS[0]] = "!1"
    failed = machine.run("on")
    assert failed.returncode == 1 and "journalctl -u ostrel-demo-kiosk" in failed.stderr


@pytest.mark.parametrize("command", ["off", "refresh"])
def test_where_it_is_off_nothing_is_touched(machine, command):
    """On a desktop the package is removed and upgraded without the screen being taken."""
    machine.never_switched_on()
    assert machine.run(command).returncode == 0
    assert not machine.changes() and not machine.links()


def test_a_system_made_for_another_machine_is_upgraded_without_being_switched_on(machine):
    """systemctl answers there as if each unit ran."""
    machine.answers["systemctl is-enabled --quiet ostrel-demo-kiosk"] = "!1"
    (machine.root / "run/systemd/system").rmdir()
    assert machine.run("refresh").returncode == 0
    assert not machine.links() and not machine.changes()


def test_one_that_is_on_by_half_can_be_switched_off(machine):
    machine.run("on")
    machine.never_switched_on()
    machine.run("off")
    assert not machine.links() and ENABLES.replace("enable", "disable") in machine.calls


def test_another_version_has_its_files_and_no_others_in_force(machine, tmp_path):
    """What staff have put in the place of one stays."""
    assert machine.run("on").returncode == 0
    before = machine.links()
    ours = machine.root / "etc/systemd/journald.conf.d/ostrel-demo-kiosk.conf"
    ours.unlink()
    ours.write_text("[Journal]\n")
    later = tmp_path / "later"
    (later / "udev/rules.d").mkdir(parents=True)
    (later / "systemd/journald.conf.d").mkdir(parents=True)
    for name in ("udev/rules.d/91-new.rules", "systemd/journald.conf.d/ostrel-demo-kiosk.conf"):
        (later / name).write_text("")
    (machine.share / "etc").unlink()
    (machine.share / "etc").symlink_to(later)
    assert machine.run("refresh").returncode == 0
    assert len(before) > 1 and machine.links() == {
        "etc/udev/rules.d/91-new.rules": "/usr/share/ostrel-demo-kiosk/etc/udev/rules.d/91-new.rules"}
    assert machine.changes() == RELOADS
    assert machine.run("off").returncode == 0
    assert not machine.links() and ours.read_text() == "[Journal]\n"


def test_an_upgrade_refreshes_before_it_starts_anew(source_dir, tmp_path):
    script = pathlib.Path(source_dir, "packaging/debian/ostrel-demo-kiosk.postinst").read_text(encoding="utf-8")
    called = tmp_path / "ostrel-demo-kiosk"
    called.write_text("#!/bin/sh\necho $*\n")
    called.chmod(0o755)
    for arguments, done in ((["configure", "1.0"], "refresh\nrestart\n"), (["configure", ""], "restart\n"),
                            (["abort-upgrade", "1.0"], "restart\n")):
        ran = subprocess.run(["sh", "-c", script.replace("#DEBHELPER#", "echo restart"), "postinst", *arguments],
                             capture_output=True, text=True, check=True,
                             env={"PATH": f"{tmp_path}:{os.environ['PATH']}"})
        assert ran.stdout == done


def test_journal_of_a_set_is_bounded(source_dir):
    path = os.path.join(source_dir, KIOSK, "etc/systemd/journald.conf.d/ostrel-demo-kiosk.conf")
    journal = configparser.ConfigParser()
    journal.optionxform = str
    journal.read(path)
    assert dict(journal["Journal"]) == {"SystemMaxUse": "64M", "RuntimeMaxUse": "32M"}


def test_on_leaves_the_screen_to_a_desktop(machine):
    machine.answers["systemctl is-enabled --quiet display-manager"] = "enabled"
    refused = machine.run("on")
    assert refused.returncode == 1 and "display-manager" in refused.stderr
    assert not machine.links()
    assert not machine.changes()


@pytest.mark.parametrize("demo_mode, set_anew", [("-1", True), ("0", False), ("2", False)])
def test_on_brings_a_demo_back_that_was_ended_in_its_options(machine, demo_mode, set_anew):
    machine.answers[f"{FOR_USER} config get demo_mode"] = demo_mode
    assert machine.run("on").returncode == 0
    assert (f"{FOR_USER} config set demo_mode 0" in machine.calls) == set_anew


def test_on_in_a_system_made_for_another_machine_starts_nothing(machine):
    (machine.root / "run/systemd/system").rmdir()
    assert machine.run("on").returncode == 0
    assert machine.links() == machine.expected_links()
    assert machine.changes() == [ENABLES, "update-grub"]


def test_a_machine_without_grub_is_told_what_it_will_show(machine):
    (machine.programs / "update-grub").unlink()
    switched = machine.run("on")
    assert switched.returncode == 0 and "GRUB" in switched.stderr
    assert machine.changes()[-2:] == STARTS


@pytest.mark.parametrize("command", ["on", "off", "refresh", "panel portrait", "tvctl"])
def test_only_root_switches_the_kiosk(machine, command):
    machine.answers["id -u"] = "1000"
    refused = machine.run(*command.split())
    assert refused.returncode == 1 and "root" in refused.stderr
    assert not machine.links() and not machine.calls


@pytest.mark.parametrize("stands, state", [("landscape", 1), ("portrait", 2), ("landscape-reverse", 3),
                                           ("portrait-reverse", 0)])
def test_set_is_told_how_its_screen_hangs(machine, stands, state):
    assert machine.run("panel", stands).returncode == 0
    assert machine.calls == [f"{FOR_USER} config set rotation_state {state}",
                             "systemctl --no-block try-restart ostrel-demo-kiosk-player.service"]


def test_status_tells_whether_it_plays(machine):
    machine.answers[f"{FOR_USER} status"] = "Playing:        video \"nothing can be played.mp4\""
    playing = machine.run("status")
    assert playing.returncode == 0 and playing.stdout.count("yes\n") == 3
    assert playing.stdout.endswith('.mp4"\n')
    machine.never_switched_on()
    machine.answers[f"{FOR_USER} status"] = "!3"
    stopped = machine.run("status")
    assert stopped.returncode == 3 and stopped.stdout.count(": no") == 3
    assert "Plays: no, it is off" in stopped.stdout


@pytest.mark.parametrize("state, key, told, says", [
    ("activating", "", "Playing:        nothing can be played; looks again in 8 s", "none of the files"),
    ("active", "", "Playing:        nothing can be played; looks again in 8 s", "none of the files"),
    ("activating", "config get playback_status=2", "", "nothing to play"),
    ("activating", "", "Playing:        video \"a.mp4\", about to start", "no picture yet"),
    ("inactive", "config get demo_mode=-1", "", '"Off" in its options')])
def test_status_tells_why_it_does_not_play(machine, state, key, told, says):
    machine.answers |= {"systemctl is-active ostrel-demo-kiosk-player": f"{state}!{0 if state == 'active' else 3}",
                        f"{FOR_USER} status": told or "!3"}
    if key:
        call, _, value = key.partition("=")
        machine.answers[f"{FOR_USER} {call}"] = value
    asked = machine.run("status")
    assert asked.returncode == 3
    assert re.search(f"^Plays: no, .*{says}", asked.stdout, re.MULTILINE), asked.stdout
    assert told in asked.stdout
    machine.answers["id -u"] = "1000"
    assert machine.run("status").returncode == (0 if state == "active" else 3)
    assert not [call for call in machine.calls if "tvctl" in call]


def test_status_tells_that_there_is_no_screen(machine):
    machine.answers |= {"systemctl is-active ostrel-demo-kiosk-player": "inactive!3",
                        "systemctl is-active --quiet ostrel-demo-kiosk.service": "!3",
                        f"{FOR_USER} status": "!3", f"{FOR_USER} config get playback_status": "2"}
    assert "Plays: no, the screen is not there" in machine.run("status").stdout


@pytest.mark.parametrize("arguments", [[], ["of"], ["on", "off"], ["--now"], ["panel"], ["panel", "upright"]])
def test_a_wrong_command_changes_nothing(machine, arguments):
    refused = machine.run(*arguments)
    assert refused.returncode == 2 and "Usage" in refused.stderr
    assert not machine.calls

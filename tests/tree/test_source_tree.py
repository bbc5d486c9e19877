"""The tree keeps its own rules: layers, style, size, and documents that tell the truth about it."""

import os
import re
import shutil
import subprocess

import pytest

CODE = (".cpp", ".h")
LARGEST_FILE = 600


def tracked_files(source_dir):
    """What the next commit would hold: tracked files, and new ones not yet added."""
    listed = subprocess.run(
        ["git", "-C", source_dir, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        check=True, capture_output=True, text=True)
    files = sorted(name for name in set(listed.stdout.split("\0"))
                   if name and os.path.exists(os.path.join(source_dir, name)))
    assert files
    return files


@pytest.fixture(scope="module")
def files(source_dir):
    return tracked_files(source_dir)


def read(source_dir, name):
    with open(os.path.join(source_dir, name), encoding="utf-8") as file:
        return file.read()


def includes(text):
    return re.findall(r'^\s*#\s*include\s*([<"][^>"]+[>"])', text, re.MULTILINE)


# Headers of the C and C++ standard libraries and of the C library that the player may use.
STANDARD = re.compile(
    r"^<([a-z_]+|(assert|ctype|dirent|errno|fcntl|inttypes|libintl|limits|locale|math|signal|"
    r"stdarg|stdbool|stddef|stdint|stdio|stdlib|string|strings|time|unistd|wchar|sys/stat|sys/types)\.h)>$")
EFL = re.compile(r"^<(E(core|vas|ina|dje|et|fl|lementary)(_[A-Za-z0-9_]+)?)\.h>$")


def test_player_includes_only_efl_and_the_platform_interfaces(source_dir, files):
    interfaces = {os.path.basename(name) for name in files if name.startswith("platform/include/")}
    own = {name.removeprefix("src/") for name in files
           if name.startswith("src/") and name.endswith(".h")}
    wrong = []
    for name in files:
        if not name.startswith("src/") or not name.endswith(CODE):
            continue
        beside = os.path.dirname(name).removeprefix("src").lstrip("/")
        for include in includes(read(source_dir, name)):
            path = include[1:-1]
            if include[0] == '"':
                here = os.path.normpath(os.path.join(beside, path))
                fits = path in own or here in own or path in interfaces
            else:
                fits = STANDARD.match(include) or EFL.match(include)
            if not fits:
                wrong.append(f"{name} includes {include}")
    assert not wrong, "\n".join(wrong)


def test_platform_includes_nothing_of_the_player(source_dir, files):
    own = {os.path.basename(name) for name in files
           if name.startswith("src/") and name.endswith(".h")}
    wrong = [f"{name} includes {include}"
             for name in files if name.startswith(("platform/", "tools/")) and name.endswith(CODE)
             for include in includes(read(source_dir, name))
             if os.path.basename(include[1:-1]) in own or "src/" in include]
    assert not wrong, "\n".join(wrong)


def floors(source_dir):
    """The folders of the Linux platform by floor, counted from the ground, as DESIGN.md has them."""
    section = re.search(r"^## Floors[^\n]*\n(.*?)^## ", read(source_dir, "DESIGN.md"),
                        re.MULTILINE | re.DOTALL).group(1)
    found = {}
    for item in re.findall(r"^(\d+)\. (.*?)(?::|\n(?! ))", section, re.MULTILINE | re.DOTALL):
        for folder in re.findall(r"`(\w+)`", item[1]):
            assert folder not in found, f"{folder} stands on two floors"
            found[folder] = int(item[0])
    return found


def needs(source_dir, folder):
    text = read(source_dir, f"platform/linux/{folder}/CMakeLists.txt")
    match = re.search(r"^platform_service\([^)]*\bNEEDS ([^)]*)\)", text, re.MULTILINE)
    return set(match.group(1).split()) if match else set()


def circle(arrows):
    """Folders that reach each other along the arrows; empty when there are none."""
    left = {folder: set(targets) for folder, targets in arrows.items()}
    while ends := [folder for folder, targets in left.items() if not targets & left.keys()]:
        for folder in ends:
            del left[folder]
    return sorted(left)


def test_platform_folders_lean_only_on_lower_floors(source_dir, files):
    floor = floors(source_dir)
    folders = {name.split("/")[2] for name in files
               if name.startswith("platform/linux/") and name.count("/") > 2}
    assert floor.keys() == folders
    included = {folder: set() for folder in folders}
    for name in files:
        if name.startswith("platform/linux/") and name.endswith(CODE):
            own = name.split("/")[2]
            targets = {include[1:-1].split("/")[0] for include in includes(read(source_dir, name))}
            included[own] |= (targets & folders) - {own}
    linked = {folder: needs(source_dir, folder) for folder in folders}
    wrong = [f"{folder} leans on {target}, which stands above it"
             for folder in sorted(folders) for target in sorted(included[folder] | linked[folder])
             if floor[target] > floor[folder]]
    wrong += [f"{folder} includes {target}, but NEEDS does not name it"
              for folder in sorted(folders) for target in sorted(included[folder] - linked[folder])]
    assert not wrong, "\n".join(wrong)
    assert not circle({folder: included[folder] | linked[folder] for folder in folders})


# Folders of tests/contract that no service has the name of; its CMakeLists.txt tells what they are.
NO_SERVICE = {"desktop_support", "sample_content", "seam", "store_support"}


def test_each_service_has_a_folder_of_contract_tests(source_dir, files):
    tested = {name.split("/")[2] for name in files
              if name.startswith("tests/contract/") and name.count("/") > 2}
    assert tested == set(floors(source_dir)) | NO_SERVICE
    listfile = read(source_dir, "tests/contract/CMakeLists.txt")
    assert not [name for name in NO_SERVICE if name not in listfile]


def test_platform_headers_define_each_type_once(source_dir, files):
    # Two types of one name are undefined behaviour that no compiler sees: the linker keeps one.
    places = {}
    for name in files:
        if name.startswith("platform/linux/") and name.endswith(".h"):
            for kind in re.findall(r"^(?:struct|class|enum class|enum|union) (\w+)[^;\n]*\{$",
                                   read(source_dir, name), re.MULTILINE):
                places.setdefault(kind, []).append(name)
    assert "Size" in places
    twice = [f"{kind}: {', '.join(where)}" for kind, where in places.items() if len(where) > 1]
    assert not twice, "\n".join(twice)


def test_platform_interfaces_include_no_implementation(source_dir, files):
    interfaces = {os.path.basename(name) for name in files if name.startswith("platform/include/")}
    wrong = [f"{name} includes {include}"
             for name in files if name.startswith("platform/include/")
             for include in includes(read(source_dir, name))
             if not (include[1:-1] in interfaces or STANDARD.match(include) or EFL.match(include))]
    assert not wrong, "\n".join(wrong)


def test_letters_are_the_same_in_every_locale(source_dir, files):
    # What these functions of the C library say follows the locale: in a Turkish one an I is no i.
    of_the_locale = re.compile(
        r"\b(strn?casecmp|strcasestr|strcoll|to(?:lower|upper)|is(?:al\w+|lower|upper))\(")
    wrong = [f"{name} calls {call}"
             for name in files if name.startswith(("src/", "platform/")) and name.endswith(CODE)
             for call in of_the_locale.findall(read(source_dir, name))]
    assert not wrong, "\n".join(wrong)


# EFL's pkg-config modules, and nothing of what the Linux platform asks for beside them.
PKG_CONFIG_OF_A_SET = """#!/bin/sh
for word; do
    case $word in
        -* | elementary | ecore-evas | ecore-input | ecore-wl2 | efreet) ;;
        *) echo "a set has no $word" >&2; exit 1 ;;
    esac
done
exec pkg-config "$@"
"""


def run(*command, **options):
    done = subprocess.run(command, capture_output=True, text=True, check=False, **options)
    assert done.returncode == 0, f"{command}:\n{done.stdout}{done.stderr}"
    return done


@pytest.fixture
def set_tree(source_dir, tmp_path):
    """The player as a set gets it, installed: built with EFL alone and no tool but the compiler's."""
    pkg_config = tmp_path / "pkg-config"
    pkg_config.write_text(PKG_CONFIG_OF_A_SET)
    pkg_config.chmod(0o755)
    run("cmake", "-S", source_dir, "-B", tmp_path / "build", "-G", "Ninja", "-DPLATFORM=none",
        "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
        f"-DCMAKE_INSTALL_PREFIX={tmp_path / 'usr'}", f"-DPKG_CONFIG_EXECUTABLE={pkg_config}",
        "-DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF", "-DCMAKE_FIND_USE_SYSTEM_ENVIRONMENT_PATH=OFF",
        *(f"-D{variable}={shutil.which(tool)}" for variable, tool in (
            ("CMAKE_MAKE_PROGRAM", "ninja"), ("CMAKE_C_COMPILER", "cc"),
            ("CMAKE_CXX_COMPILER", "c++"), ("CMAKE_CXX_COMPILER_LAUNCHER", "ccache"))))
    run("cmake", "--build", tmp_path / "build")
    run("cmake", "--install", tmp_path / "build")
    return tmp_path / "usr"


def test_player_lacks_nothing_but_the_platform_interfaces(set_tree, tmp_path):
    headers = sorted((set_tree / "include" / "ostrel-demo-player-tv").glob("*.h"))
    assert len(headers) > 10
    source = tmp_path / "set.cpp"
    source.write_text("".join(f"#include <{header.name}>\n" for header in headers))
    flags = run("pkg-config", "--cflags", "--libs", "ostrel-demo-player-tv", env={
        **os.environ, "PKG_CONFIG_PATH": str(set_tree / "lib" / "pkgconfig")}).stdout.split()
    linked = run("c++", source, *flags, "-Wl,--warn-unresolved-symbols", "-o", tmp_path / "set",
                 env={**os.environ, "LC_ALL": "C"})
    # A C++ name, such as SettingsAPI::Get(), is declared by its last part.
    missing = {re.sub(r"\(.*", "", name).split("::")[-1]
               for name in re.findall(r"undefined reference to `(.*)'", linked.stderr)}
    assert {"ui_app_main", "player_create", "Get"} <= missing
    interfaces = "\n".join(header.read_text() for header in headers)
    strangers = {name for name in missing if not re.search(rf"\b{name}\b", interfaces)}
    assert not strangers, f"the player imports from elsewhere: {strangers}"


def symbols(arguments):
    listed = subprocess.run(["nm", *arguments], check=True, capture_output=True, text=True)
    return [line.split() for line in listed.stdout.splitlines()
            if len(line.split()) >= 2 and not line.endswith(":")]


def exported_by(libraries):
    names = set()
    for library in libraries:
        for fields in symbols(["-D", "--defined-only", library]):
            names.add(fields[-1].split("@")[0])
    return names


def library_paths(pattern):
    cache = subprocess.run(["/sbin/ldconfig", "-p"], check=True, capture_output=True, text=True)
    return sorted({line.rpartition("=> ")[2] for line in cache.stdout.splitlines()
                   if re.search(pattern, line.split()[0] if line.split() else "")})


def test_functions_in_the_toolkits_place_are_those_that_the_design_names(source_dir, build_dir):
    program = os.path.join(build_dir, "src", "ostrel-demo-player-tv")
    efl = exported_by(library_paths(
        r"^lib(elementary|evas|ecore|ecore_evas|ecore_input|ecore_wl2|edje|eina|eo|efl)\.so\.1$"))
    for_all = {fields[-1] for fields in symbols(["-D", "--defined-only", program])
               if fields[-2] == "T"} & efl
    assert for_all == {"ecore_wl2_input_pointer_set", "ecore_wl2_window_buffer_attach",
                       "ecore_wl2_window_free", "ecore_wl2_window_hide"}
    redirected = set(re.findall(
        r"--wrap=(\w+)", read(source_dir, "platform/linux/window/CMakeLists.txt")))
    rows = re.findall(r"^\| (`.*?) \|", read(source_dir, "DESIGN.md"), re.MULTILINE)
    named = {name for row in rows for name in re.findall(r"`(\w+)`", row)}
    assert redirected and named == for_all | redirected


def test_nothing_waits_for_a_time_of_day(build_dir):
    """The day's clock may be set by a day; what is meant to last for a while must not notice."""
    program = os.path.join(build_dir, "src", "ostrel-demo-player-tv")
    wanted = {fields[-1].split("@")[0] for fields in symbols(["-D", "--undefined-only", program])}
    assert "pthread_cond_clockwait" in wanted, "no thread waits by the steady clock"
    by_the_day = {"pthread_cond_timedwait", "pthread_mutex_timedlock", "sem_timedwait",
                  "pthread_rwlock_timedrdlock", "pthread_rwlock_timedwrlock", "alarm", "setitimer"}
    assert not wanted & by_the_day
    assert not {name for name in wanted if "system_clock" in name}


def test_code_is_formatted(source_dir, files):
    tool = shutil.which("clang-format-14") or shutil.which("clang-format")
    assert tool, "clang-format is not installed"
    code = [name for name in files if name.endswith(CODE)]
    checked = subprocess.run([tool, "--dry-run", "-Werror", "--style=file", *code],
                             cwd=source_dir, capture_output=True, text=True, check=False)
    wrong = sorted(set(re.findall(r"^(\S+?):\d+:\d+: error", checked.stderr, re.MULTILINE)))
    assert checked.returncode == 0, f"not formatted: {wrong or checked.stderr}"


def test_no_file_is_too_long(source_dir, files):
    long = {}
    for name in files:
        if name.endswith((".cpp", ".h", ".py", ".sh", ".edc", ".cmake")):
            lines = read(source_dir, name).count("\n")
            if lines > LARGEST_FILE:
                long[name] = lines
    assert not long, f"split by topic what is longer than {LARGEST_FILE} lines: {long}"


def test_scripts_are_sound_shell(source_dir, files):
    scripts = [name for name in files
               if not name.endswith((".py", ".po")) and is_bash(source_dir, name)]
    assert {"demo.sh", "test.sh"} <= set(scripts)
    for name in scripts:
        path = os.path.join(source_dir, name)
        checked = subprocess.run(["bash", "-n", path], capture_output=True, text=True, check=False)
        assert checked.returncode == 0, checked.stderr
        assert os.access(path, os.X_OK), f"{name} cannot be executed"


def is_bash(source_dir, name):
    with open(os.path.join(source_dir, name), "rb") as file:
        return file.readline().startswith(b"#!") and b"bash" in (file.seek(0), file.readline())[1]


# Folders whose contents the file map names one by one, down to this many levels below them.
MAPPED = {"src": 9, "platform": 2, "tools": 1, "tests": 1, "res": 1, "packaging": 1, "bench": 0}


def mapped_paths(text):
    """Paths of the file map: in DESIGN.md's fenced lists, lines of the form "path — what it is"."""
    paths = []
    for block in re.findall(r"^```[^\n]*\n(.*?)^```", text, re.MULTILINE | re.DOTALL):
        for line in block.splitlines():
            match = re.match(r"\s*(\S+)\s+—\s+\S", line)
            if match:
                paths.append(match.group(1).rstrip("/"))
    return paths


def paths_to_map(files):
    """Every file of the folders above, or the folder that holds it where the levels end."""
    wanted = set()
    for name in files:
        parts = name.split("/")
        if parts[0] in MAPPED and parts[-1] != "CMakeLists.txt":
            wanted.add("/".join(parts[:MAPPED[parts[0]] + 1]))
    return wanted


def test_file_map_matches_the_tree(source_dir, files):
    named = mapped_paths(read(source_dir, "DESIGN.md"))
    assert named, "DESIGN.md has no file map"
    assert len(named) == len(set(named)), "a path stands twice in the file map"
    gone = [path for path in named if not os.path.exists(os.path.join(source_dir, path))]
    assert not gone, f"named in DESIGN.md, but not in the tree: {gone}"
    unnamed = sorted(path for path in paths_to_map(files) - set(named)
                     if not any(path.startswith(f"{other}/") for other in named
                                if other.count("/") >= 1))
    assert not unnamed, f"in the tree, but not in DESIGN.md: {unnamed}"

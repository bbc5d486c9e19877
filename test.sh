#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test there is.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")"

usage() {
    cat <<TEXT
Usage: ./test.sh [OPTION]...
Builds the player plainly into build/, with the address and undefined-behaviour sanitizers into
build-asan/, and what has threads with the thread sanitizer into build-tsan/, and runs all tests. Each
suite ends with the test runner's own summary; the last lines tell where the time went, and which tests
failed.

With one or more of these, only the named suites run:
  --unit         the player against the recording platform, and the checks of the source tree
  --contract     each service of the Linux platform by itself
  --e2e          the real program in a real compositor, looked at from outside
  --lint         clang-tidy and cppcheck over the sources
  --tsan         the tests of what has threads, with the thread sanitizer
  --asan         --unit, --contract and --e2e, or those of them that are named, in build-asan/ only
  --coverage     unit and contract tests in build-coverage/, and a report of the lines they reach
  --quick        for between two edits: --unit and --contract, and of --e2e one demo loop

  --nightly      a million events against the model of the player instead of 50,000, and new ones
                 each day; each fault of a shop as often as the player is to stand it, but for the
                 long loads of bench/endurance; the thread sanitizer looks at the unit tests as
                 well, and clang-tidy more deeply; after all suites, plays 5,000 damaged files,
                 looks for a minute each for inputs that break what reads other people's bytes, and
                 breaks the Linux platform on purpose to see whether its tests notice
  -k EXPR        only tests whose name matches (a regular expression; for --e2e a pytest expression)
  -j N           use N processors (default: all); tests that mostly wait run several to a processor
  --no-install   do not install missing packages
  -h, --help     this text

Logs and pictures of failed end-to-end tests are kept in out/e2e/, results and times in out/tests/.
TEXT
}

# What is wanted: the options that name suites or choose among them.
declare -A want=()
# any_of NAME...: whether one of them is wanted.
any_of() {
    local name
    for name in "$@"; do
        [ -z "${want[$name]:-}" ] || return 0
    done
    return 1
}

nightly=no install=yes expression=""
jobs=$(nproc)
while [ $# -gt 0 ]; do
    case $1 in
        --unit | --contract | --e2e | --lint | --tsan | --asan | --coverage | --quick)
            want[${1#--}]=yes ;;
        --nightly)
            nightly=yes
            export FAULTS=${FAULTS:-many} CONFIG_KILLS=${CONFIG_KILLS:-2000}
            export MODEL_EVENTS=${MODEL_EVENTS:-1000000} MODEL_SEED=${MODEL_SEED:-$(date +%Y%m%d)0000}
            echo "== The model's first sequence is MODEL_SEED=$MODEL_SEED" ;;
        --no-install) install=no ;;
        -k | -j)
            [ $# -ge 2 ] || { usage >&2; exit 2; }
            if [ "$1" = -k ]; then expression=$2; else jobs=$2; fi
            shift ;;
        -h | --help) usage; exit 0 ;;
        *) usage >&2; exit 2 ;;
    esac
    shift
done
case $jobs in '' | *[!0-9]* | 0) usage >&2; exit 2 ;; esac
# refuse OPTION WHY OTHER...: when it is wanted together with one of the others.
refuse() {
    local option=$1 why=$2
    shift 2
    if any_of "$option" && any_of "$@"; then
        echo "test.sh: --$option $why" >&2
        exit 2
    fi
}
refuse coverage "goes with --unit and --contract only" e2e lint tsan asan quick
refuse asan "goes with --unit, --contract and --e2e only" lint tsan
refuse quick "chooses the suites itself" unit contract e2e lint tsan asan
all=no
if ! any_of unit contract e2e lint tsan; then
    any_of asan coverage quick || all=yes want[lint]=yes want[tsan]=yes
    want[unit]=yes want[contract]=yes want[e2e]=yes
fi

if [ $install = yes ]; then
    packaging/install-missing.sh build run demo test
fi

# A call stack ends with the 14 innermost calls: where it is walked the slow way, so that the leaks in
# libraries are recognised, longer ones would take longer than all else.
export ASAN_OPTIONS="detect_leaks=1:malloc_context_size=14:detect_stack_use_after_return=1:strict_string_checks=1${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1${UBSAN_OPTIONS:+:$UBSAN_OPTIONS}"
# What the C library reads or writes for its caller is left out: mostly that is another library's.
export TSAN_OPTIONS="suppressions=$PWD/tests/tsan.supp:ignore_interceptors_accesses=1:second_deadlock_stack=1${TSAN_OPTIONS:+:$TSAN_OPTIONS}"
# Without these ccache keeps nothing that is compiled with precompiled headers.
export CCACHE_SLOPPINESS=pch_defines,time_macros

results=$PWD/out/tests
mkdir -p "$results"
rm -f "$results"/*

# timed NAME COMMAND...: runs it and notes its seconds for the end.
timed() {
    local name=$1 began=$SECONDS status=0
    shift
    echo "== $name"
    "$@" || status=$?
    printf '%6d s  %s\n' $((SECONDS - began)) "$name" >>"$results/seconds"
    return $status
}

# build_into DIRECTORY [CMake option...]
build_into() {
    local directory=$1 targets=()
    shift
    mkdir -p "$directory"
    cmake -S . -B "$directory" -G Ninja -DBUILD_TESTING=ON "$@" \
        >"$directory/configure.log" 2>&1 || { cat "$directory/configure.log" >&2; return 1; }
    if [ "$directory" = build-tsan ]; then
        targets=("${with_threads[@]}")
    elif ! any_of unit contract; then
        # The end-to-end tests alone need only what they start.
        targets=(ostrel-demo-player-tv ostrel-demo-copy ostrel-demo-standby tvctl
            make-sample-content resources timer_speed cost_counter faults storage_faults shortage)
    fi
    ninja -C "$directory" "${targets[@]}"
}

build_plainly() {
    build_into build -DCMAKE_BUILD_TYPE= -DSANITIZE=OFF
}

# build_with SANITIZER DIRECTORY: with lines and no variables either, which take a fifth of the
# compiler's time here.
build_with() {
    build_into "$2" -DCMAKE_BUILD_TYPE=RelWithDebInfo "-DSANITIZE=$1" \
        "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1" "-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O1 -g1"
}

# What the thread sanitizer looks at: the programs, and the labels of their tests. The rest of the
# player runs on the main loop, so that it has little to find there and looks at night only.
with_threads=(unit_event_manager_threads contract_base contract_config_store
    contract_media_player contract_video_plane)
threads_label=threads
lint_depth=()
if [ $nightly = yes ]; then
    lint_depth=(--deep)
    with_threads+=(unit_util unit_control unit_main unit_model)
    threads_label='threads|unit'
fi

# beside NAME COMMAND...: runs it in the background, at the lowest priority, while suites run that
# mostly wait. await NAME shows what it has printed, and ends with its status.
declare -A background=()
beside() {
    # With a process group of its own, to be ended with all that it has started.
    set -m
    { renice -n 19 -p $BASHPID >/dev/null; timed "$@"; } >"$results/$1.log" 2>&1 &
    background[$1]=$!
    set +m
}

await() {
    local status=0
    wait "${background[$1]}" || status=$?
    unset "background[$1]"
    cat "$results/$1.log"
    return $status
}

end_background() {
    local group
    for group in "${background[@]}"; do
        kill -- "-$group" 2>/dev/null || true
    done
}
trap end_background EXIT

# The suites go on after a failure, so that one run shows all there is to mend.
failed=()
# Whether any suite had a test to run: a mistyped -k has none, and must not look like success.
found=no
suite() {
    timed "$@" || failed+=("$1")
}

# run_ctest DIRECTORY: the unit and contract tests wanted. The contract tests are named after their
# programs' suites, so they are told apart by the folder they were built in. Four at a time on each
# processor, because most wait most of the time; those that compute count as several.
run_ctest() {
    local folder=$1 arguments=(--output-on-failure --timeout 400 -j $((4 * jobs)))
    [ -z "$expression" ] || arguments+=(-R "$expression")
    if [ "$1" = build-tsan ]; then
        # What is looked at picture by picture has no threads of its own, and such a build is too slow
        # to show each in time, or to be faster than a film.
        arguments+=(-L "$threads_label" -E '^Interlaced[.]|[.]IsFasterAtDoubleSpeed')
    elif ! any_of contract; then
        folder+=/tests/unit
    elif ! any_of unit; then
        folder+=/tests/contract
    fi
    arguments+=(--test-dir "$folder")
    [ "$(ctest "${arguments[@]}" -N | sed -n 's/^Total Tests: //p')" = 0 ] || found=yes
    ctest "${arguments[@]}" --output-junit "$results/$1.ctest.xml"
}

# run_pytest BUILD_DIRECTORY FOLDER [pytest argument...]
run_pytest() {
    local directory=$1 folder=$2
    shift 2
    [ -z "$expression" ] || set -- "$@" -k "$expression"
    # The directory is one word with its option: pytest learns of the option only from our conftest,
    # and takes a word of its own for a place to look for tests.
    local status=0
    /usr/bin/python3 -m pytest -p no:cacheprovider "--build-dir=$directory" \
        "--junitxml=$results/$directory.$folder.xml" -rs "$@" "tests/$folder" || status=$?
    # With -k, that this suite has no such test is no failure of it.
    [ $status -ne 5 ] || [ -z "$expression" ] || return 0
    found=yes
    return $status
}

# run_suites BUILD_DIRECTORY NOTE [pytest argument...]: those wanted, in one build. The end-to-end
# tests wait for the screen most of the time.
run_suites() {
    local directory=$1 note=$2
    shift 2
    ! any_of unit contract || suite "Unit and contract tests$note" run_ctest "$directory"
    ! any_of e2e ||
        suite "End-to-end tests$note" run_pytest "$directory" e2e -n $((2 * jobs)) "$@"
}

if any_of coverage; then
    timed "Building build-coverage" build_into build-coverage -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=--coverage \
        -DCMAKE_EXE_LINKER_FLAGS=--coverage
    find build-coverage -name '*.gcda' -delete
    suite "Unit and contract tests, counting lines" run_ctest build-coverage
    suite "Coverage" gcovr -j "$jobs" --filter '(src|platform/linux|tools)/' \
        --exclude-throw-branches --gcov-ignore-parse-errors --print-summary \
        --json build-coverage/coverage.json --txt build-coverage/unreached.txt build-coverage
    # The contract tests alone do not run the player's own code.
    ! any_of unit || suite "Coverage of src/" gcovr -a build-coverage/coverage.json \
        --filter src/ --fail-under-line 98 --fail-under-branch 90 --print-summary
elif [ $all = yes ]; then
    timed "Building build" build_plainly
    beside "Building build-asan" build_with address build-asan
    suite "Source tree" run_pytest build tree -q -n "$jobs"
    run_suites build "" -m "not sanitized"
    await "Building build-asan"
    beside "Building build-tsan" build_with thread build-tsan
    [ -n "$expression" ] || beside "Lint" tests/lint "${lint_depth[@]}" build
    run_suites build-asan " with sanitizers" -m "demo_loop or sanitized"
    await "Building build-tsan"
    suite "Tests of threads" run_ctest build-tsan
    [ -n "$expression" ] || await "Lint" || failed+=("Lint")
    if [ $nightly = yes ] && [ -z "$expression" ]; then
        suite "Damaged files" tests/corpus/run --jobs "$jobs"
        suite "Fuzzing" tests/fuzz/run --jobs "$jobs"
        suite "Faults on purpose" tests/mutation/run --platform --at-least 78 --jobs "$jobs"
    fi
else
    if any_of asan; then
        timed "Building build-asan" build_with address build-asan
        run_suites build-asan " with sanitizers"
    elif any_of unit contract e2e lint; then
        timed "Building build" build_plainly
        ! any_of unit || suite "Source tree" run_pytest build tree -q -n "$jobs"
        ! any_of lint || suite "Lint" tests/lint "${lint_depth[@]}" build
        if any_of quick; then run_suites build "" -m demo_loop; else run_suites build ""; fi
    fi
    if any_of tsan; then
        timed "Building build-tsan" build_with thread build-tsan
        suite "Tests of threads" run_ctest build-tsan
    fi
fi

echo "== Where the time went"
cat "$results/seconds"
printf '%6d s  all\n' $SECONDS
tests/results.py slowest "$results"

if [ $found = no ] && [ -n "$expression" ]; then
    failed+=("no test is named like '$expression'")
fi
if [ ${#failed[@]} -gt 0 ]; then
    printf 'Failed: %s\n' "${failed[@]}" >&2
    tests/results.py failed "$results" >&2
    exit 1
fi

#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test there is.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")"

usage() {
    cat <<TEXT
Usage: ./test.sh [OPTION]...
Builds the player twice, plainly into build/ and with the address and undefined-behaviour sanitizers
into build-asan/, and runs all tests. The last lines are the test runners' own summaries.

With one or more of these, only the named suites run:
  --unit         the player against the recording platform, and the checks of the source tree
  --contract     each service of the Linux platform by itself
  --e2e          the real program in a real compositor, looked at from outside
  --lint         clang-tidy and cppcheck over the sources
  --asan         the suites above (or, alone: all of them) in the build with sanitizers only
  --coverage     unit and contract tests in build-coverage/, and a report of the lines they reach

  --nightly      a million events against the model of the player instead of 50,000, and new ones
                 each day; alone: with all suites
  -k EXPR        only tests whose name matches (a regular expression; for --e2e a pytest expression)
  -j N           run N tests side by side (default: the number of processors)
  --no-install   do not install missing packages
  -h, --help     this text

Logs and pictures of failed end-to-end tests are kept in out/e2e/.
TEXT
}

unit=no contract=no e2e=no lint=no asan_only=no coverage=no install=yes
expression=""
jobs=$(nproc)
while [ $# -gt 0 ]; do
    case $1 in
        --unit) unit=yes ;;
        --contract) contract=yes ;;
        --e2e) e2e=yes ;;
        --lint) lint=yes ;;
        --asan) asan_only=yes ;;
        --coverage) coverage=yes ;;
        --nightly)
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
if [ $coverage = yes ] && { [ $e2e = yes ] || [ $lint = yes ] || [ $asan_only = yes ]; }; then
    echo "test.sh: --coverage goes with --unit and --contract only" >&2
    exit 2
fi
all=no
if [ $unit$contract$e2e$lint = nononono ]; then
    unit=yes contract=yes e2e=yes lint=yes all=yes
fi

if [ $install = yes ]; then
    packaging/install-missing.sh build run demo test
fi

# The list of leaks in libraries needs whole call stacks to recognise them.
export ASAN_OPTIONS="detect_leaks=1:fast_unwind_on_malloc=0:detect_stack_use_after_return=1:strict_string_checks=1${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1${UBSAN_OPTIONS:+:$UBSAN_OPTIONS}"

# build_into DIRECTORY [CMake option...]
build_into() {
    local directory=$1 launcher=()
    shift
    if command -v ccache >/dev/null; then
        launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    echo "== Building into $directory/"
    mkdir -p "$directory"
    cmake -S . -B "$directory" -G Ninja -DBUILD_TESTING=ON "${launcher[@]}" "$@" \
        >"$directory/configure.log" 2>&1 || { cat "$directory/configure.log" >&2; return 1; }
    # The end-to-end tests alone need only what they start.
    local targets=()
    if [ $unit$contract = nono ]; then
        targets=(ostrel-demo-player-tv tvctl make-sample-content resources timer_speed)
    fi
    ninja -C "$directory" "${targets[@]}"
}

# The suites go on after a failure, so that one run shows all there is to mend.
failed=()
# Whether any suite had a test to run: a mistyped -k has none, and must not look like success.
found=no
suite() {
    local name=$1
    shift
    echo "== $name"
    "$@" || failed+=("$name")
}

# run_ctest DIRECTORY: the unit and contract tests wanted. The contract tests are named after their
# programs' suites, so they are told apart by the folder they were built in.
run_ctest() {
    local directory=$1 arguments=(--output-on-failure --timeout 400 -j "$jobs")
    [ -z "$expression" ] || arguments+=(-R "$expression")
    if [ $unit = no ]; then
        directory+=/tests/contract
    elif [ $contract = no ]; then
        directory+=/tests/unit
    fi
    arguments+=(--test-dir "$directory")
    [ "$(ctest "${arguments[@]}" -N | sed -n 's/^Total Tests: //p')" = 0 ] || found=yes
    ctest "${arguments[@]}"
}

# run_pytest BUILD_DIRECTORY [pytest argument...]
run_pytest() {
    local directory=$1
    shift
    [ -z "$expression" ] || set -- "$@" -k "$expression"
    # The directory is one word with its option: pytest learns of the option only from our conftest,
    # and takes a word of its own for a place to look for tests.
    local status=0
    /usr/bin/python3 -m pytest -p no:cacheprovider -n "$jobs" "--build-dir=$directory" "$@" || status=$?
    # With -k, that this suite has no such test is no failure of it.
    [ $status -ne 5 ] || [ -z "$expression" ] || return 0
    found=yes
    return $status
}

if [ $coverage = yes ]; then
    build_into build-coverage -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=--coverage \
        -DCMAKE_EXE_LINKER_FLAGS=--coverage
    find build-coverage -name '*.gcda' -delete
    e2e=no
    suite "Unit and contract tests, counting lines" run_ctest build-coverage
    suite "Coverage" gcovr -j "$jobs" --filter '(src|platform/linux|tools)/' \
        --exclude-throw-branches --gcov-ignore-parse-errors --print-summary \
        --json build-coverage/coverage.json --txt build-coverage/unreached.txt build-coverage
    # The contract tests alone do not run the player's own code.
    [ $unit = no ] || suite "Coverage of src/" gcovr -a build-coverage/coverage.json \
        --filter src/ --fail-under-line 98 --fail-under-branch 90 --print-summary
else
    if [ $asan_only = no ]; then
        build_into build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSANITIZE=OFF
    fi
    if [ $all = yes ] || [ $asan_only = yes ]; then
        build_into build-asan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DSANITIZE=address \
            "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g" "-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O1 -g"
    fi
    if [ $unit = yes ]; then
        checked=build
        [ $asan_only = no ] || checked=build-asan
        suite "Source tree" run_pytest $checked -q tests/tree
    fi
    if [ $lint = yes ] && [ $asan_only = no ] && [ -z "$expression" ]; then
        suite "Lint" packaging/lint.sh build
    fi
    if [ $unit = yes ] || [ $contract = yes ]; then
        [ $asan_only = yes ] || suite "Unit and contract tests" run_ctest build
        if [ $all = yes ] || [ $asan_only = yes ]; then
            suite "Unit and contract tests with sanitizers" run_ctest build-asan
        fi
    fi
    if [ $e2e = yes ]; then
        if [ $asan_only = yes ]; then
            suite "End-to-end tests with sanitizers" run_pytest build-asan tests/e2e
        else
            suite "End-to-end tests" run_pytest build tests/e2e
            if [ $all = yes ]; then
                suite "One demo loop with sanitizers" run_pytest build-asan -m sanitizer_loop tests/e2e
            fi
        fi
    fi
fi

if [ $found = no ] && [ -n "$expression" ]; then
    failed+=("no test is named like '$expression'")
fi
if [ ${#failed[@]} -gt 0 ]; then
    printf 'Failed: %s\n' "${failed[@]}" >&2
    exit 1
fi

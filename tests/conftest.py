"""Options shared by the checks of the source tree and the end-to-end tests."""

import os

import pytest

SOURCE_DIR = os.path.realpath(os.path.join(os.path.dirname(__file__), ".."))

# For builds with sanitizers. The list of leaks in libraries needs whole call stacks to recognise them,
# which the tests' own programs ask for themselves.
os.environ["ASAN_OPTIONS"] = "fast_unwind_on_malloc=0:" + os.environ.get(
    "ASAN_OPTIONS",
    "detect_leaks=1:detect_stack_use_after_return=1:strict_string_checks=1")
os.environ.setdefault("LSAN_OPTIONS", "print_suppressions=0:suppressions="
                      + os.path.join(SOURCE_DIR, "tests", "lsan.supp"))
os.environ.setdefault("UBSAN_OPTIONS", "print_stacktrace=1:halt_on_error=1")


def pytest_addoption(parser):
    parser.addoption("--build-dir", default=os.path.join(SOURCE_DIR, "build"),
                     help="where the program under test was built (default: build/)")
    parser.addoption("--update-references", action="store_true",
                     help="keep how it looks now as the pictures in tests/e2e/reference")


@pytest.fixture(scope="session")
def build_dir(pytestconfig):
    return os.path.realpath(pytestconfig.getoption("--build-dir"))


@pytest.fixture(scope="session")
def source_dir():
    return SOURCE_DIR

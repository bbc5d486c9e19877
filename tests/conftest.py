"""Options shared by the checks of the source tree and the end-to-end tests."""

import os

import pytest

SOURCE_DIR = os.path.realpath(os.path.join(os.path.dirname(__file__), ".."))


def pytest_addoption(parser):
    parser.addoption("--build-dir", default=os.path.join(SOURCE_DIR, "build"),
                     help="where the program under test was built (default: build/)")


@pytest.fixture(scope="session")
def build_dir(pytestconfig):
    return os.path.realpath(pytestconfig.getoption("--build-dir"))


@pytest.fixture(scope="session")
def source_dir():
    return SOURCE_DIR

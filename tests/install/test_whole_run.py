"""scripts/test: its status and totals, and that nothing is left of the tests when it is ended."""

import signal
import sys

import pytest
from clone import Clone
from deadline import wait_until
from suite import Suite

PASSED = '<testcase name="{}"/>'
FAILED = '<testcase name="{}"><failure message="no"/></testcase>'
SKIPPED = '<testcase name="{}"><skipped message="only on Sundays"/></testcase>'


class WholeRun:
    """A clone in which nothing is built; `tests` are the lines of a shell script in place of CTest."""

    def __init__(self, folder, ports):
        build = folder / "tree" / "build"
        (build / "dev").mkdir(parents=True)
        self.suite = Suite(build, ports, folder)
        for tool in ("cmake", "brew", "xcrun"):
            self.suite.tool(tool, "#!/bin/sh\n")
        (build / "python/bin").mkdir(parents=True)
        (build / "python/bin/python").symlink_to(sys.executable)  # a Mac's
        self.clone = Clone(self.suite)
        self.results = folder / "results"
        self.results.mkdir()

    def add_results(self, name, *cases):
        (self.results / f"{name}.xml").write_text(f"<testsuite>{''.join(cases)}</testsuite>")

    def start(self, *tests):
        copy = f'#!/bin/sh\ncp -R "{self.results}" build/results\n'
        self.suite.tool("ctest", copy + "\n".join(tests) + "\n")
        return self.clone.script("test")


@pytest.fixture
def whole_run(folder, ports):
    made = WholeRun(folder, ports)
    yield made
    left = made.suite.close()
    assert not left, f"left running: {left}"


def test_a_suite_counts_with_its_own_tests(whole_run):
    whole_run.add_results("ctest", *(PASSED.format(name) for name in ("Unit.Test", "system", "bench")))
    whole_run.add_results("system", *(PASSED.format(name) for name in "abc"), SKIPPED.format("d"))
    run = whole_run.start()
    assert run.wait() == 0
    assert b"\nSkipped 1: only on Sundays\nTotal: 5 passed, 0 failed, 1 skipped in " in run.output


def test_a_failed_test_counts_once(whole_run):
    whole_run.add_results("ctest", FAILED.format("system"))
    whole_run.add_results("system", FAILED.format("a"), PASSED.format("b"))
    run = whole_run.start("exit 8")
    assert run.wait() == 1
    assert b"\nTotal: 1 passed, 1 failed, 0 skipped in " in run.output


def test_a_suite_that_fails_without_a_failed_test_is_a_failure(whole_run):
    whole_run.add_results("ctest", FAILED.format("system"))
    whole_run.add_results("system", PASSED.format("a"))
    run = whole_run.start("exit 8")
    assert run.wait() == 1
    assert b"\nTotal: 1 passed, 1 failed, 0 skipped in " in run.output


def test_failed_tests_fail_the_run_whatever_the_results_say(whole_run):
    whole_run.add_results("ctest", PASSED.format("Unit.Test"))
    run = whole_run.start("exit 8")
    assert run.wait() == 8


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
def test_tests_can_end_what_they_started_when_the_run_is_ended(whole_run, number):
    begun, ended = whole_run.clone.folder / "begun", whole_run.clone.folder / "ended"
    run = whole_run.start("trap 'kill $!; echo >ended; exit 1' INT", "sleep 600 &", "echo >begun", "wait")
    wait_until(begun.exists, "the tests")
    run.signal(number)
    assert run.wait() == 128 + (signal.SIGTERM if number == signal.SIGHUP else number)
    assert ended.exists()
    assert b"Total" not in run.output

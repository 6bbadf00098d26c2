"""scripts/run with the suite's own programs, whose folder is in the environment."""

import shutil

import pytest
from clone import Clone
from component_events import wait_for_components
from components import ALL_COMPONENTS, PROGRAMS, STOP_ORDER, client_arguments, hub_arguments
from console import READY
from suite import BUILD, Suite


class OwnPrograms:
    """A folder with four programs, and a clone without stand-ins."""

    def __init__(self, folder, ports):
        self.folder = folder / "the suite's own"
        self.folder.mkdir()
        for name in PROGRAMS:
            shutil.copy2(BUILD / name, self.folder)
        build = folder / "tree" / "build"
        build.mkdir(parents=True)
        self.suite = Suite(build, ports, folder)
        for name in ALL_COMPONENTS:
            self.suite.component(name).unlink()
        self.clone = Clone(self.suite)
        self.run_folder = build / "suite"

    def environment(self, folder=None):
        return {**self.suite.environment, "TANDREL_SUITE_DIR": str(folder or self.folder)}

    def start(self, *arguments, folder=None, **options):
        return self.clone.script(
            "run", *arguments, environment=self.environment(folder), **options
        )


@pytest.fixture
def own(folder, ports):
    made = OwnPrograms(folder, ports)
    yield made
    left = made.suite.close()
    assert not left, f"left running: {left}"


def record(own):
    """Makes the programs record. They look for their files in the folder of the links."""
    own.run_folder.mkdir()
    for name in PROGRAMS:
        (own.run_folder / f"{name}.behaviour").write_text("record=../events.jsonl\n")


def test_they_are_run_and_stopped_in_order(own):
    record(own)
    run = own.start(*own.suite.ports_options, terminal="all")
    run.wait_for(READY)
    wait_for_components(own.suite)
    run.interrupt()
    assert run.wait() == 0
    starts = {row["program"]: row["argv"] for row in own.suite.events("start")}
    clients = client_arguments(own.suite.udp)
    assert starts == {
        "td_hub": [f"{own.run_folder}/td_hub", *hub_arguments(own.suite.http, own.suite.udp)],
        "td_receiver": [f"{own.run_folder}/td_receiver", *clients],
        "td_sender": [f"{own.run_folder}/td_sender", *clients],
    }
    assert [row["program"] for row in own.suite.events("stop")] == STOP_ORDER
    assert own.clone.steps.read_text() == "bootstrap run\nbuild\n"


def test_they_have_separate_settings(own):
    settings = own.run_folder / "config" / "launcher.json"
    settings.parent.mkdir(parents=True)
    ports = f'"http_port": {own.suite.http}, "udp_port": {own.suite.udp}'
    settings.write_text(f'{{ {ports}, "open_browser": false }}')
    run = own.start(terminal="all")
    run.wait_for(READY)
    assert f":{own.suite.http}/".encode() in run.output
    run.interrupt()
    assert run.wait() == 0
    assert own.suite.calls("open") == []
    assert not own.suite.settings.exists()


def test_the_folder_may_be_relative_and_another_one_next_time(own):
    for name in ("one", "other"):
        (own.clone.folder / name).mkdir()
        for program in PROGRAMS:
            own.suite.script(own.clone.folder / name / program, f"#!/bin/sh\necho {name} $1\n")
        run = own.start("align", "1", folder=name, cwd=own.clone.folder)
        assert run.wait() == 0
        assert run.output == f"{name} 1\n".encode()


def test_missing_programs_are_named_before_anything_is_done(own):
    (own.folder / "td_align").unlink()
    (own.folder / "td_sender").chmod(0o644)
    run = own.start()
    assert run.wait() == 1
    where = f"no program in TANDREL_SUITE_DIR, {own.folder}: td_sender td_align\n"
    assert run.errors.endswith(where.encode())
    assert run.output == b""
    assert not own.clone.steps.exists()
    assert not own.run_folder.exists()


def test_without_a_display_there_is_no_picture_of_them(own):
    run = own.start("--menu-bar", terminal=None)
    assert run.wait() == 1
    assert run.errors.endswith(b"can be made with the stand-ins only\n")
    assert run.output == b""


def test_start_stop_checks_them(own):
    environment = {**own.environment(), "TMPDIR": str(own.clone.folder)}
    run = own.clone.script("start-stop", *own.suite.ports_options, environment=environment)
    assert run.wait() == 0
    assert b"Tandrel: stopped." in run.output

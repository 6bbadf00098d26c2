"""The units for systemd and the property list for launchd."""

import configparser
import plistlib
import subprocess

import pytest
from components import ALL_COMPONENTS

SUITE, COMPONENT = "tandrel.service", "tandrel-component@.service"


def read(path):
    parser = configparser.ConfigParser(interpolation=None, strict=True)
    parser.optionxform = str
    parser.read(path)
    return {section: dict(parser[section]) for section in parser.sections()}


@pytest.fixture
def units(tree):
    return tree.prefix / "share/systemd/user"


def verify(tree, unit):
    """The status and the warnings of systemd's check of a unit."""
    environment = {
        **tree.environment,
        "MANPATH": str(tree.prefix / "share/man"),
        "XDG_RUNTIME_DIR": str(tree.home),
    }
    command = ["systemd-analyze", "--user", "verify", unit]
    done = subprocess.run(command, env=environment, capture_output=True, text=True)
    return done.returncode, done.stderr.splitlines()


@pytest.mark.linux
@pytest.mark.parametrize("name, instance", [(SUITE, SUITE), (COMPONENT, "tandrel-component@hub.service")])
def test_systemd_accepts_the_units(tree, units, folder, name, instance):
    # systemd's check does not use the unit's ExecSearchPath, so the program is given by its path.
    text = (units / name).read_text()
    assert text.count("\nExecStart=tandrel ") == 1
    checked = tree.home / "units"
    checked.mkdir()
    path = checked / name
    program = folder.parent / "tandrel"  # without spaces
    program.symlink_to(tree.launcher)
    path.write_text(text.replace("ExecStart=tandrel ", f"ExecStart={program} "))
    assert verify(tree, checked / instance) == (0, [])
    path.write_text(text.replace("Restart=on-failure", "Restart=perhaps"))
    _, warnings = verify(tree, checked / instance)
    assert any("perhaps" in line for line in warnings)


@pytest.mark.linux
def test_the_program_is_searched_for_in_the_order_of_the_units(units):
    """Users' own units come before those of /usr/local and /usr."""
    for name in (SUITE, COMPONENT):
        service = read(units / name)["Service"]
        assert service["ExecSearchPath"] == "%h/.local/bin:/usr/local/bin:/usr/bin:/bin"


@pytest.mark.linux
def test_the_suite_has_no_display_and_is_stopped_by_the_launcher(units):
    service = read(units / SUITE)["Service"]
    assert service["ExecStart"] == "tandrel --no-browser"
    assert service["UnsetEnvironment"].split() == ["DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"]
    assert (service["KillMode"], service["TimeoutStopSec"]) == ("mixed", "20")
    assert service["Restart"] == "on-failure"


@pytest.mark.linux
def test_a_component_is_asked_to_end_itself(units):
    service = read(units / COMPONENT)["Service"]
    assert service["ExecStart"] == "tandrel %i $ARGUMENTS"
    assert service["KillMode"] == "control-group"
    assert service["Restart"] == "on-failure"


def test_the_property_list_runs_a_component(root):
    (path,) = (root / "packaging/launchd").iterdir()
    job = plistlib.loads(path.read_bytes())
    launcher, component, *arguments = job.pop("ProgramArguments")
    assert launcher == "/Applications/Tandrel.app/Contents/MacOS/launcher"
    assert component in ALL_COMPONENTS
    assert arguments == ["--hub", "127.0.0.1:4465"]
    assert path.name == f"{job['Label']}.plist"
    assert job == {
        "Label": f"local.tandrel.{component}",
        "RunAtLoad": True,
        "KeepAlive": {"SuccessfulExit": False},
        "ExitTimeOut": 20,
        "ProcessType": "Interactive",
    }

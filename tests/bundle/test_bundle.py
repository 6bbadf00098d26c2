"""What is in Tandrel.app, and its launcher started in it."""

import os
import plistlib
import re
import subprocess

import pytest
from console import READY
from run import Run
from suite import Ports

PROGRAMS = ("launcher", "td_hub", "td_receiver", "td_sender", "td_align")
DATA = ("Contents/Info.plist", "Contents/PkgInfo", "Contents/Resources/Tandrel.icns")
FILES = {*DATA, *(f"Contents/MacOS/{program}" for program in PROGRAMS)}
# Signing a bundle adds these.
SIGNATURE = {"Contents/_CodeSignature/CodeResources"}


def files_of(folder):
    """The paths of everything in a folder that is no folder itself."""
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}


def test_the_bundle_holds_the_programs_and_nothing_else(bundle):
    assert files_of(bundle) - SIGNATURE == FILES
    assert not [path for path in bundle.rglob("*") if path.is_symlink()]


def test_only_the_programs_are_executable(bundle):
    executable = {path for path in FILES if os.access(bundle / path, os.X_OK)}
    assert executable == {f"Contents/MacOS/{program}" for program in PROGRAMS}


def test_the_programs_are_those_of_the_build(bundle, build):
    for program in PROGRAMS:
        assert (bundle / "Contents/MacOS" / program).read_bytes() == (build / program).read_bytes()


@pytest.fixture
def plist(bundle):
    return plistlib.loads((bundle / "Contents/Info.plist").read_bytes())


def test_the_plist_says_what_the_application_is(bundle, plist, root):
    version, build_number = (root / "VERSION").read_text().strip().split("+")
    assert {key: value for key, value in plist.items() if "Usage" not in key} == {
        "CFBundleIdentifier": "local.tandrel.launcher",
        "CFBundleName": "Tandrel",
        "CFBundleDisplayName": "Tandrel",
        "CFBundleShortVersionString": version,
        "CFBundleVersion": build_number,
        "CFBundleExecutable": "launcher",
        "CFBundleIconFile": "Tandrel",
        "CFBundlePackageType": "APPL",
        "CFBundleSignature": "????",
        "CFBundleInfoDictionaryVersion": "6.0",
        "CFBundleDevelopmentRegion": "en",
        "LSMinimumSystemVersion": "10.13",
        "LSUIElement": True,
        "NSPrincipalClass": "NSApplication",
        "NSHighResolutionCapable": True,
    }
    assert (bundle / "Contents/PkgInfo").read_text() == "APPL????"


def test_the_plist_has_a_sentence_for_each_permission(plist):
    sentences = {key: value for key, value in plist.items() if "Usage" in key}
    assert set(sentences) == {
        "NSLocalNetworkUsageDescription",
        "NSMicrophoneUsageDescription",
        "NSAudioCaptureUsageDescription",
    }
    for sentence in sentences.values():
        assert re.fullmatch(r"Tandrel .{20,}\.", sentence)


def test_the_entitlements_are_what_recording_takes(root):
    entitlements = plistlib.loads((root / "packaging/macos/entitlements.plist").read_bytes())
    assert entitlements == {"com.apple.security.device.audio-input": True}


def test_the_version_is_the_same_everywhere(root, build):
    version = (root / "VERSION").read_text().strip()
    manual = (build / "launcher.1").read_text()
    assert manual.splitlines()[2] == f'.Os "Tandrel {version}"'
    assert f'"{version}"' in (build / "obj/launcher/version.h").read_text()


class Installed:
    """The copied bundle with a home of its own, as `Run` takes it."""

    def __init__(self, bundle, home):
        self.folder = home
        self.launcher = bundle / "Contents/MacOS/launcher"
        self.environment = {"HOME": str(home), "PATH": os.environ["PATH"]}


def test_a_run_keeps_its_settings_in_the_support_folder(installed, tmp_path):
    home = tmp_path / "home"
    support = home / "Library/Application Support/Tandrel"
    support.mkdir(parents=True)
    ports = Ports()
    run = None
    try:
        http = ports.free()
        settings = f'{{"http_port": {http}, "udp_port": {ports.free()}, "open_browser": false}}'
        (support / "launcher.json").write_text(settings)
        run = Run(Installed(installed, home), [], terminal="input")
        run.wait_for(READY)
        assert f":{http}/".encode() in run.output
        assert run.stop() == 0
        assert run.output.endswith(b"Tandrel: stopped.\n")
    finally:
        if run is not None:
            if run.process.poll() is None:
                run.stop()
            run.close()
        ports.close()
    # A file beside the programs would break the bundle's signature.
    assert files_of(installed) - SIGNATURE == FILES


def test_the_support_folder_is_made(installed, tmp_path):
    home = tmp_path / "home"
    (home / "Library").mkdir(parents=True)
    started = Installed(installed, home)
    done = subprocess.run(
        [started.launcher, "--unknown"], env=started.environment, capture_output=True
    )
    assert done.returncode == 1
    assert (home / "Library/Application Support/Tandrel").is_dir()
    assert not (installed / "Contents/MacOS/config").exists()

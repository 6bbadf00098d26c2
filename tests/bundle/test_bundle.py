"""What is in Tandrel.app: of this system's programs, or of those built for macOS."""

import os
import platform
import plistlib
import re
import sys

import pytest
from contents import FILES, PROGRAMS, SIGNATURE, files_of

# A Mac builds for its own processor, and there is none for ARM before 11.0.
ON_ARM_MAC = (sys.platform, platform.machine()) == ("darwin", "arm64")
OLDEST_MACOS = "11.0" if ON_ARM_MAC else "10.13"


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
        "LSMinimumSystemVersion": OLDEST_MACOS,
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

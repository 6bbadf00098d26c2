"""scripts/mac-app with tools that record how they are called in place of a Mac's."""

import os
import shutil
import subprocess

import contents
import pytest

# Each call is a line: the tool's name and its arguments between tabs. What the tools make or print
# is what the script goes on with; the call that starts with $FAILING fails.
TOOL = r"""#!/bin/sh
call=${0##*/}
for argument; do call="$call	$argument"; done
printf '%s\n' "$call" >> "$CALLS"
case $call in
"${FAILING:-none}"*) exit 3 ;;
uname*) echo "${SYSTEM:-Darwin}" ;;
cmake*--preset*-DTANDREL_SUITE_DIR*) echo "-- Tandrel.app gets programs" ;;
cmake*--build*)
  mkdir -p build/Tandrel.app/Contents/MacOS
  for name in launcher $(cat packaging/programs); do
    echo "$name" > "build/Tandrel.app/Contents/MacOS/$name"
  done ;;
lipo*) echo "x86_64 arm64" ;;
hdiutil*)
  find build/image | sort > "$IMAGE"
  readlink build/image/Applications >> "$IMAGE" ;;
esac
"""
TOOLS = "uname cmake brew xcode-select codesign lipo hdiutil xcrun".split()
PROGRAMS = "build/Tandrel.app/Contents/MacOS"
ENTITLEMENTS = ("--entitlements", "packaging/macos/entitlements.plist")
IDENTITY = "Developer ID Application: Somebody (ABCDE12345)"
HARDENED = ("--timestamp", "--options", "runtime")


class MacApp:
    """A private copy of what the script needs, and a PATH with the recording tools."""

    def __init__(self, root, folder):
        self.folder = folder / "tree"
        self.calls_file = folder / "calls"
        self.image_file = folder / "image"
        self.environment = {"CALLS": self.calls_file, "IMAGE": self.image_file}
        shutil.copytree(root / "scripts", self.folder / "scripts")
        shutil.copytree(root / "packaging", self.folder / "packaging")
        shutil.copy(root / "VERSION", self.folder)
        tools = folder / "bin"
        tools.mkdir()
        for name in TOOLS:
            (tools / name).write_text(TOOL)
            (tools / name).chmod(0o755)
        self.environment["PATH"] = f"{tools}:{os.environ['PATH']}"

    def run(self, **variables):
        return subprocess.run(
            [self.folder / "scripts/mac-app"],
            cwd=self.folder.parent,
            env={**self.environment, **variables},
            capture_output=True,
            text=True,
        )

    def calls(self, *tools):
        """The calls of these tools in their order, each a tuple of the name and the arguments."""
        lines = self.calls_file.read_text().splitlines()
        calls = [tuple(line.split("\t")) for line in lines]
        return [call for call in calls if call[0] in tools]


@pytest.fixture
def mac_app(root, tmp_path):
    return MacApp(root, tmp_path)


@pytest.fixture
def image(root):
    version = (root / "VERSION").read_text().strip()
    return f"build/Tandrel-{version}-x86_64-arm64.dmg"


def signatures(identity, hardened):
    """The calls of codesign that sign and verify the application."""
    sign = ("codesign", "--force", "--sign", identity, *hardened)
    named = [
        (*sign, "--identifier", f"local.tandrel.{name}", *options, f"{PROGRAMS}/{name}")
        for name, options in (
            ("td_hub", ()),
            ("td_receiver", ()),
            ("td_sender", ENTITLEMENTS),
            ("td_align", ENTITLEMENTS),
        )
    ]
    application = (*sign, *ENTITLEMENTS, "build/Tandrel.app")
    verify = ("codesign", "--verify", "--deep", "--strict", "build/Tandrel.app")
    return [*named, application, verify]


def hdiutil(image):
    source = ("-volname", "Tandrel", "-srcfolder", "build/image", "-format", "UDZO")
    return ("hdiutil", "create", "-quiet", "-ov", *source, image)


def test_by_default_the_signature_is_ad_hoc(mac_app, image):
    done = mac_app.run()
    assert done.returncode == 0, done.stderr
    assert done.stdout.splitlines() == [
        "-- Tandrel.app gets programs",
        f"Made build/Tandrel.app and {image}.",
    ]
    calls = mac_app.calls("codesign", "hdiutil", "xcrun")
    assert calls == [*signatures("-", ()), hdiutil(image)]


def test_the_release_is_built_before_anything_is_signed(mac_app):
    assert mac_app.run().returncode == 0
    calls = mac_app.calls("brew", "cmake", "codesign")
    names = [name for name, *_ in calls]
    assert names == sorted(names)  # what is missing is installed first
    assert mac_app.calls("cmake") == [
        ("cmake", "--preset", "release", "-DTANDREL_SUITE_DIR:PATH="),
        ("cmake", "--build", "--preset", "release", "--target", "app", "--", "--quiet"),
    ]


def test_the_suites_folder_is_handed_to_the_build(mac_app):
    (mac_app.folder.parent / "the suite").mkdir()
    assert mac_app.run(TANDREL_SUITE_DIR="the suite").returncode == 0
    folder = mac_app.folder.parent / "the suite"
    assert mac_app.calls("cmake")[0][-1] == f"-DTANDREL_SUITE_DIR:PATH={folder}"


def test_a_missing_suite_ends_the_script_before_the_build(mac_app):
    assert mac_app.run(TANDREL_SUITE_DIR="missing").returncode != 0
    assert mac_app.calls("brew", "cmake") == []


def test_an_identity_signs_with_the_hardened_runtime_and_a_timestamp(mac_app, image):
    assert mac_app.run(TANDREL_IDENTITY=IDENTITY).returncode == 0
    assert mac_app.calls("codesign", "hdiutil", "xcrun") == [
        *signatures(IDENTITY, HARDENED),
        hdiutil(image),
        ("codesign", "--force", "--sign", IDENTITY, "--timestamp", image),
    ]


def test_a_profile_has_the_signed_image_notarised(mac_app, image):
    done = mac_app.run(TANDREL_IDENTITY=IDENTITY, TANDREL_NOTARY_PROFILE="notary")
    assert done.returncode == 0
    assert mac_app.calls("codesign", "hdiutil", "xcrun")[-3:] == [
        ("codesign", "--force", "--sign", IDENTITY, "--timestamp", image),
        ("xcrun", "notarytool", "submit", image, "--keychain-profile", "notary", "--wait"),
        ("xcrun", "stapler", "staple", image),
    ]


def test_an_ad_hoc_signature_cannot_be_notarised(mac_app):
    done = mac_app.run(TANDREL_NOTARY_PROFILE="notary")
    assert done.returncode == 1
    assert "TANDREL_IDENTITY" in done.stderr
    assert mac_app.calls("brew", "cmake", "codesign", "xcrun") == []


def test_the_image_holds_the_application_and_a_link_to_the_folder_for_it(mac_app):
    assert mac_app.run().returncode == 0
    bundle = "build/image/Tandrel.app"
    assert mac_app.image_file.read_text().splitlines() == [
        "build/image",
        "build/image/Applications",
        bundle,
        f"{bundle}/Contents",
        f"{bundle}/Contents/MacOS",
        *(f"{bundle}/Contents/MacOS/{name}" for name in sorted(contents.PROGRAMS)),
        "/Applications",
    ]
    assert not (mac_app.folder / "build/image").exists()


@pytest.mark.parametrize(
    "failing",
    [
        "cmake\t--preset",
        "cmake\t--build",
        "codesign\t--force",
        "codesign\t--verify",
        "hdiutil",
        "xcrun\tnotarytool",
        "xcrun\tstapler",
    ],
)
def test_the_first_failure_ends_the_script(mac_app, failing):
    done = mac_app.run(
        FAILING=failing, TANDREL_IDENTITY=IDENTITY, TANDREL_NOTARY_PROFILE="notary"
    )
    assert done.returncode != 0
    assert "Made" not in done.stdout
    assert mac_app.calls(*TOOLS)[-1][: 1 + failing.count("\t")] == tuple(failing.split("\t"))


def test_on_another_system_the_script_says_what_it_takes(mac_app):
    done = mac_app.run(SYSTEM="Linux")
    assert done.returncode == 1
    assert done.stderr.endswith(
        "mac-app: making the application needs a Mac\n"
    )
    assert mac_app.calls(*TOOLS) == [("uname",)]

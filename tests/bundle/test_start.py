"""The launcher in Tandrel.app, started."""

import os
import subprocess

from console import READY
from contents import FILES, SIGNATURE, files_of
from run import Run
from suite import Ports


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

"""Makes the packages from the build folder, and unpacks them without installing."""

import os
import subprocess
from pathlib import Path

EPOCH = "1700000000"


def make_packages(build, folder):
    """Makes all packages in a folder; returns their paths by kind: "deb", "rpm" and "gz"."""
    environment = {**os.environ, "SOURCE_DATE_EPOCH": EPOCH}
    # Explicit kinds, because rpmbuild may have been installed after the build folder was configured.
    command = ["cpack", "-G", "DEB;RPM;TGZ", "--config", build / "CPackConfig.cmake", "-B", folder]
    done = subprocess.run(command, env=environment, cwd=folder, capture_output=True, text=True)
    assert done.returncode == 0, done.stdout + done.stderr
    made = {kind: sorted(folder.glob(f"*.{kind}")) for kind in ("deb", "rpm", "gz")}
    assert sorted(path for paths in made.values() for path in paths) == sorted(
        path for path in folder.iterdir() if path.is_file()
    )
    return made


def unpack(kind, packages, folder):
    """Unpacks the packages of a kind in a folder; returns the prefix in it."""
    for package in packages:
        if kind == "deb":
            subprocess.run(["dpkg-deb", "--extract", package, folder], check=True)
        elif kind == "rpm":
            archive = subprocess.run(
                ["rpm2archive", "-"], stdin=package.open("rb"), check=True, capture_output=True
            ).stdout
            subprocess.run(["tar", "-xz", "-C", folder], input=archive, check=True)
        else:
            subprocess.run(["tar", "-xzf", package, "-C", folder], check=True)
    if kind == "gz":
        (prefix,) = folder.glob("tandrel-*")
        return prefix
    return Path(folder, "usr")

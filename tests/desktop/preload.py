"""A library that changes what the launcher finds; preload.c says how."""

import subprocess
from pathlib import Path


def preloaded(folder, **changes):
    """The environment of a launcher with these changes; the library is built in the folder."""
    library = Path(folder, "preload.so")
    source = Path(__file__).with_name("preload.c")
    subprocess.run(["cc", "-shared", "-fPIC", "-o", library, source], check=True)
    return {"LD_PRELOAD": str(library), **changes}

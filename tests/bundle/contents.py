"""What Tandrel.app holds."""

import components

PROGRAMS = ("launcher", *components.PROGRAMS)
DATA = ("Contents/Info.plist", "Contents/PkgInfo", "Contents/Resources/Tandrel.icns")
FILES = {*DATA, *(f"Contents/MacOS/{program}" for program in PROGRAMS)}
# Signing a bundle adds these.
SIGNATURE = {"Contents/_CodeSignature/CodeResources"}


def files_of(folder):
    """The paths of everything in a folder that is no folder itself."""
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}

"""How large the programs are, and what the loader has to do for them."""

import re
import shutil
import subprocess

from place import BUILD, private_folder


def dynamic_symbols(path):
    """The number of symbols that a program imports."""
    text = subprocess.check_output(["readelf", "--wide", "--dyn-syms", path], text=True)
    return len(re.findall(r" UND \S", text))


def relative_relocations(path):
    text = subprocess.check_output(["readelf", "--wide", "--relocs", path], text=True)
    return text.count("_RELATIVE ")


def libraries(path):
    """The number of libraries that are loaded for a program, the loader among them."""
    lines = subprocess.check_output(["ldd", path], text=True).splitlines()
    return sum(".so" in line and "linux-vdso" not in line for line in lines)


def stripped_size(path, folder):
    copy = folder / "stripped"
    subprocess.run(["strip", "-o", copy, path], check=True)
    return copy.stat().st_size / 1024


def archive_size(folder):
    """The size of the .tar.gz with the launcher, its interface and the stand-ins."""
    command = ["cpack", "-G", "TGZ", "--config", BUILD / "CPackConfig.cmake", "-B", folder]
    subprocess.run(command, cwd=folder, check=True, stdout=subprocess.DEVNULL)
    (archive,) = folder.glob("*.tar.gz")
    return archive.stat().st_size / 1024


def measure():
    programs = {
        "launcher": BUILD / "launcher",
        "its interface, tdgui.so": BUILD / "tdgui.so",
        **{name: shutil.which(name) for name in ("tini", "dumb-init", "env")},
        "sh": shutil.which("sh"),
    }
    with private_folder() as folder:
        rows = {
            name: {
                "size": [stripped_size(path, folder)],
                "libraries": [libraries(path)],
                "symbols": [dynamic_symbols(path)],
                "relocations": [relative_relocations(path)],
            }
            for name, path in programs.items()
        }
        rows["the archive (.tar.gz), with the stand-ins"] = {"size": [archive_size(folder)]}
    return rows

"""Checks what a linked program asks of macOS.

usage: check_program.py PROGRAM LIBRARY... [--forks]

PROGRAM  a universal one
LIBRARY  the libraries that it must be linked with, and no others
--forks  check what is called between fork and exec, too
"""

import re
import subprocess
import sys
from pathlib import Path

from fork_calls import unsafe_calls
from macho import programs_in
from symbols import PROCESSORS, path_of, read_table

OLDEST_MACOS = {"x86_64": "10.13", "arm64": "11.0"}


def output_of(*command):
    # A disassembly shows the program's strings as they are.
    done = subprocess.run(
        command, check=True, stdout=subprocess.PIPE, text=True, errors="replace"
    )
    return done.stdout


def symbol_problems(file, processor):
    table = read_table()
    problems = []
    listed = output_of("llvm-nm", "-m", "-u", f"--arch={processor}", str(file))
    imports = re.findall(r"^ +\(undefined\).* external (\S+) \(from (\S+)\)$", listed, re.MULTILINE)
    if len(imports) != listed.count("(undefined)") or not imports:
        problems.append("the undefined symbols could not all be read")
    for symbol, library in imports:
        if symbol not in table.get(library, {}).get(processor, ()):
            problems.append(f"{symbol} of {library} is not in symbols.txt")
    return problems


def problems_of(file, program, libraries, forks):
    expected = OLDEST_MACOS[program.processor]
    if program.oldest_macos != expected:
        yield f"runs on macOS {program.oldest_macos} and later, expected {expected}"
    if sorted(program.libraries) != sorted(path_of(library) for library in libraries):
        yield f"is linked with {', '.join(program.libraries)}; expected {', '.join(libraries)}"
    yield from symbol_problems(file, program.processor)
    yield from program.signature_problems()
    if forks:
        options = ("--macho", "-d", "--no-show-raw-insn", f"--arch={program.processor}")
        yield from unsafe_calls(output_of("llvm-objdump", *options, str(file)))


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--forks"]
    file = Path(arguments[0])
    failed = False
    programs = programs_in(file.read_bytes())
    if sorted(program.processor for program in programs) != sorted(PROCESSORS):
        print(f"{file}: not for all of {', '.join(PROCESSORS)}", file=sys.stderr)
        failed = True
    for program in programs:
        for problem in problems_of(file, program, arguments[1:], "--forks" in sys.argv):
            print(f"{file.name} for {program.processor}: {problem}", file=sys.stderr)
            failed = True
    sys.exit(failed)


main()

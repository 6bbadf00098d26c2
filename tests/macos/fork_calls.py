"""What a program for macOS calls between fork and exec, read from its machine code.

Only async-signal-safe functions may be called there: another thread may have held any lock at the
moment of the fork.
"""

import re

SAFE = {"__exit", "_close", "_dup2", "_execve", "_open", "_setsid", "_sigaction", "_signal",
        "_sigprocmask"}
FORKING = "__ZN8platform15fork_to_executeEPFvPKvES1_b"
# The function that FORKING is given, by a pointer, to run in the new process.
CHILD = "__ZN12_GLOBAL__N_17executeEPKv"

INSTRUCTION = re.compile(r"\s*([0-9a-f]+):\s+(\S+)\s*(.*?)(?:\s+(?:##|;) (.*))?$")
CALLS = {"callq", "bl", "blr"}
POINTER = re.compile(r"\*%\w+|x\d+")
JUMPS = re.compile(r"j\w+|b|b\.\w+|br|cbn?z|tbn?z")


class Instruction:
    def __init__(self, match):
        address, self.name, operands, comment = match.groups()
        self.address = int(address, 16)
        self.target = operands.split(", ")[-1].strip()
        stub = re.match(r"symbol stub for: (\S+)", comment or "")
        if stub:
            self.target = stub.group(1)

    def jumps_within(self, addresses):
        return (
            JUMPS.fullmatch(self.name)
            and self.target.startswith("0x")
            and int(self.target, 16) in addresses
        )


def functions_of(disassembly):
    """{symbol: [Instruction]}"""
    functions = {}
    for line in disassembly.splitlines():
        label = re.fullmatch(r"(_\S+):", line)
        if label:
            instructions = functions[label.group(1)] = []
            continue
        match = INSTRUCTION.match(line)
        if match and functions:
            instructions.append(Instruction(match))
    return functions


def callees(instructions):
    """What the function calls or ends with a jump to; a register's name for an unknown function."""
    addresses = {instruction.address for instruction in instructions}
    return {
        instruction.target
        for instruction in instructions
        if instruction.name in CALLS
        or (JUMPS.fullmatch(instruction.name) and not instruction.jumps_within(addresses))
    }


def unsafe_calls(disassembly):
    """What is wrong, as lines of text."""
    functions = functions_of(disassembly)
    problems = []
    forks = [name for name, code in functions.items() if "_fork" in callees(code)]
    if forks != [FORKING]:
        return [f"fork is called in {forks}, expected in {FORKING} alone"]
    others = [callee for callee in callees(functions[FORKING]) if callee != "_fork"]
    if len(others) != 1 or not POINTER.fullmatch(others[0]):
        return [f"{FORKING} calls {others}, expected what it was given and nothing else"]
    seen = set()
    waiting = [CHILD]
    while waiting:
        name = waiting.pop()
        for callee in callees(functions[name]) - SAFE:
            if callee not in functions:
                problems.append(f"{name} calls {callee} between fork and exec")
            elif callee not in seen:
                seen.add(callee)
                waiting.append(callee)
    return problems

"""What is read from other tools' output, and what a start is reckoned from."""

import pass_through
import pytest
import scale
from phases import PROBE_INTERVAL, start_rows

ANNOTATED = """\
--------------------------------------------------------------------------------
Ir
--------------------------------------------------------------------------------
1,100 (100.0%)  PROGRAM TOTALS

--------------------------------------------------------------------------------
Ir             file:function
--------------------------------------------------------------------------------
  600 (54.55%)  ./elf/./elf/dl-lookup.c:do_lookup_x [/usr/lib/ld-linux-x86-64.so.2]
  250 (22.73%)  ./elf/../sysdeps/generic/dl-new-hash.h:_dl_lookup_symbol_x
1,050 ( 9.55%)  ./elf/./elf/dl-lookup.c:_dl_lookup_symbol_x [/usr/lib/ld-linux-x86-64.so.2]
"""

TRACE = """\
17 execve("/bin/sh", ["sh", "-c", "a vfork("], 0x55 /* 42 vars */) = 0 <0.000356>
17 vfork( <unfinished ...>
18 close_range(3, 2147483647, 0)     = 0 <0.004000>
18 execve("./td_hub", ["./td_hub", "--udp-port"], 0x7f /* 41 vars */ <unfinished ...>
17 <... vfork resumed>)              = 18 <0.015000>
18 <... execve resumed>)             = 0 <0.001000>
17 vfork()                           = 19 <0.000250>
"""


def test_a_functions_instructions_are_those_of_all_its_files():
    assert pass_through.functions_of(ANNOTATED) == [("_dl_lookup_symbol_x", 1300), ("do_lookup_x", 600)]


def test_a_system_calls_time_is_the_sum_of_its_calls():
    found = scale.milliseconds_in(TRACE, ("vfork", "close_range", "execve"))
    assert found == pytest.approx({"vfork": 15.25, "close_range": 4, "execve": 1.356})


def test_a_start_is_charged_with_what_waits_and_probes_leave():
    rows = start_rows({0: [(1, 16)], 50: [(2, 127), (3, 240)]}, answered=14, refused=11)
    assert rows["at once"] == {"probes": [1], "up": [16], "waits": [0], "tool": [14], "beyond": [2]}
    late = rows["after 50 ms"]
    assert late["waits"] == [PROBE_INTERVAL, 2 * PROBE_INTERVAL]
    assert (late["tool"], late["beyond"]) == ([25, 36], [2, 4])


def test_a_full_environment_is_close_below_the_limit(monkeypatch):
    monkeypatch.setattr(scale.os, "sysconf", lambda name: 1_000_000)
    environment = {"PATH": "x" * 300_000}
    variables = {**environment, **scale.full_environment(environment)}
    size = sum(len(name) + len(value) for name, value in variables.items())
    assert 1_000_000 - 2 * scale.VARIABLE < size < 1_000_000 - scale.RESERVE

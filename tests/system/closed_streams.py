"""Starts the launcher with closed standard streams."""

import itertools
import os
import shlex

import system

# Every set of descriptors among 0, 1 and 2.
COMBINATIONS = [closed for count in range(4) for closed in itertools.combinations(range(3), count)]


def program_that_closes(suite, closed):
    """A program that closes these descriptors and becomes the launcher.

    Standard input is an empty file unless it is closed.
    """
    _input(suite).touch()
    source = shlex.quote(str(_input(suite)))
    redirections = ["<&-" if 0 in closed else f"<{source}"]
    redirections += [f"{number}>&-" for number in closed if number != 0]
    launcher = shlex.quote(str(suite.launcher))
    return suite.script("start", f'#!/bin/sh\nexec {launcher} "$@" {" ".join(redirections)}\n')


def targets(suite, run, closed, instead):
    """What descriptors 0, 1 and 2 should be open on: `instead` for those that were closed."""
    own = system.descriptors(os.getpid())
    pipes = [own[pipe.fileno()] for pipe in (run.process.stdout, run.process.stderr)]
    opened = [str(_input(suite)), *pipes]
    return [instead if number in closed else opened[number] for number in range(3)]


def _input(suite):
    return suite.folder / "input"

"""Every way in which a run that is up may end; see steps.py."""

import os
from signal import SIGKILL

from run import CTRL_BACKSLASH, CTRL_C
from steps import ENDING, alive, in_menu

# s: at the launcher's pauses of 100, 400 and 500 ms, and at their sums.
EDGES = [0, 0.095, 0.1, 0.105, 0.39, 0.4, 0.41, 0.49, 0.5, 0.51, 0.895, 0.9, 0.91]


def end_by_signal(world, rng):
    number = rng.choice(ENDING)
    world.say("send", number.name, "to the launcher", "twice")
    world.model.end()
    for _ in range(2):
        world.signal(number)
    world.finish()


def end_by_key(world, rng):
    key = rng.choice([CTRL_C, CTRL_BACKSLASH])
    world.say("press", key)
    world.model.end()
    for _ in range(rng.randint(1, 2)):
        world.run.press(key)
    world.finish()


def end_by_closing_the_terminal(world, rng):
    world.say("close the terminal")
    world.hang_up()
    world.finish()


def end_while_suspended(world, rng):
    names = rng.sample(alive(world), rng.randint(0, len(alive(world))))
    world.say("suspend the launcher, end", names, "and send it a signal")

    def action():
        for name in names:
            world.kill(name)
        world.model.end()
        os.kill(world.pid, rng.choice(ENDING))

    world.suspended(action)
    world.finish()


def end_at_an_edge(world, rng):
    name, delay, number = rng.choice(alive(world)), rng.choice(EDGES), rng.choice(ENDING)
    world.say("end the", name, "and after", delay, "s send", number.name, "to the launcher")
    world.signal_at(name, delay, number)
    if in_menu(world):
        world.settle()
        end_from_the_menu(world, rng)


def end_by_kill(world, rng):
    world.say("kill the launcher")
    world.run.signal(SIGKILL)
    world.status = world.run.wait_for_process()
    world.model.status = -SIGKILL


def end_from_the_menu(world, rng):
    how = rng.choice(["quit", "leave", "exit"])
    world.say("menu:", how)
    world.model.end(5 if how == "exit" else 0)
    if how == "exit":
        world.run.ask(rng.choice(["exit", "exit_on_thread"]), 5)
        world.finish()
    else:
        world.status = getattr(world.run, how)()


def end(world, rng):
    ends = [end_by_kill] if world.mode != "shell" else []
    if alive(world):
        ends.append(end_at_an_edge)
    if in_menu(world):
        ends += [end_from_the_menu] * 4
        if not world.model.running and end_at_an_edge in ends:
            ends.remove(end_at_an_edge)
    else:
        ends += [end_by_signal] * 3 + [end_while_suspended] * 2 + [end_at_an_edge] * bool(alive(world)) * 2
    if world.mode in ("all", "shell"):
        ends += [end_by_key] * 3
    if world.mode == "all":
        ends += [end_by_closing_the_terminal] * 3
    rng.choice(ends)(world, rng)

"""Whole sequences: a start, steps, an end. They depend on nothing but their seed."""

import os
import random
import socket
import time
from signal import SIGINT, SIGTERM

import console
from components import COMPONENTS
from deadline import wait_until
from ends import end
from model import SAVED
from steps import ENDING, STEPS, in_menu
from suite import NEVER
from world import World

MODES = {"menu": 10, "input": 1, "output": 1, "all": 3, "shell": 4, "service": 2}  # with their weights


def start_options(world, rng):
    """Options, and what they and the saved preference mean."""
    model, options = world.model, []
    http, udp = model.ports
    texts = [
        (None, True),
        (f'{{"udp_port":{udp},"http_port": {http}x, "open_browser":: false}}', False),
        ('"open_browser"\n:\nfalse', True),
        ("no settings", True),
        ('"open_browser": "false"', True),
    ]
    text, model.preference = rng.choice(texts)
    if text is not None:
        world.say("settings:", text)
        world.suite.save_settings(text)
        model.files[SAVED] = text
        if str(http) in text and not in_menu(world) and rng.random() < 0.5:
            world.ports_options = []
    elif rng.random() < 0.2:
        world.say("settings: a folder in the file's place")
        world.suite.settings.mkdir(parents=True)
        model.config_is_other = True
    model.opens_browser = model.preference
    browser = rng.choice(["", "--browser", "--no-browser"])
    if browser or in_menu(world):
        model.opens_browser = browser == "--browser"
        options += [browser] if browser else []
    for name in COMPONENTS[1:]:
        if rng.random() < 0.15:
            model.components[name].wanted = False
            options.append(f"--no-{name}")
    if world.mode in ("menu", "input", "service") and rng.random() < 0.15:
        model.verbose = True
        options.append("--verbose")
    world.say("start with", *options)
    return options


def faults_at_start(world, rng):
    for name in COMPONENTS[1:]:
        if rng.random() < 0.12:
            state = rng.choice(["gone", "not executable"])
            world.say("the program of the", name, "is", state)
            world.replace(name, state)
    if rng.random() < 0.3:
        late = rng.randint(50, 900)
        words = rng.choice([f"answer-after={late}", "answer-404", "slow-answer=300"])
        world.say("the hub has the behaviour", words)
        world.behave("hub", words)
        world.hub_late_ms = late if "after" in words else 0


def fail_to_start(world, rng, fault):
    """What keeps the hub from coming up."""
    if fault in ("gone", "not executable", "no program"):
        world.replace("hub", fault)
    elif fault == "exit-at-once":
        world.behave("hub", fault)
    elif fault == "taken":
        world.take(world.model.ports[0], socket.SOCK_STREAM, listens=rng.random() < 0.3)
    elif fault == "orphans":
        world.leave_orphans()
    elif fault == "silent":
        world.behave("hub", f"answer-after={NEVER}")
    else:
        world.behave("hub", rng.choice(["never-answer", f"answer-after={NEVER}"]))


def failing_start(world, rng):
    """The hub does not come up, or a signal comes first."""
    faults = ["gone", "not executable", "no program", "exit-at-once", "taken", "orphans", "silent"]
    fault = rng.choice([*faults, "signal", "signal"])
    world.say("start a run whose hub has a fault:", fault)
    options = [option for option in start_options(world, rng) if option != "--verbose"]
    world.model.opens_browser = world.model.verbose = False
    fail_to_start(world, rng, fault)
    world.model.start(answers=fault not in ("silent", "signal"))
    delay, number = rng.random() * 0.6, rng.choice(ENDING)
    world.launch(*options)
    if fault == "signal":
        wait_until(world.own, "the hub")
        world.say("after", round(delay, 2), "s send", number.name, "to the launcher")
        time.sleep(delay)  # not a wait: the step is about this moment
        os.kill(world.pid, number)
    world.finish()


def early_end(world, rng):
    """A signal at any moment of a start. The launcher's status says what it should have done before."""
    delay, number = rng.random() * 0.3, rng.choice([SIGINT, SIGTERM])
    options = [*start_options(world, rng), "--no-browser"]
    world.model.opens_browser = False
    world.say("after", round(delay, 2), "s send", number.name, "to the launcher")
    world.launch(*options)
    time.sleep(delay)  # not a wait: the step is about this moment
    os.kill(world.pid, number)
    world.finish()
    if world.status == -number:  # it had no handlers yet, and had started nothing
        world.model.status = world.status
        return
    world.model.start(answers=world.status == 0)
    if world.status == 0:
        world.model.end()
    for c in world.model.components.values():
        world.forgive(c)


def usual_run(world, rng):
    options = start_options(world, rng)
    faults_at_start(world, rng)
    if world.mode == "shell":
        world.suspensions = [rng.random() * 0.03 for _ in range(16)]
        world.say("press Ctrl-Z during the start, after some of", world.suspensions, "s, and resume the launcher")
    world.model.start()
    world.launch(*options)
    world.settle()
    for _ in range(rng.randint(3, 10)):
        possible = [(function, weight) for function, weight, when in STEPS if when(world)]
        functions, weights = zip(*possible)
        rng.choices(functions, weights)[0](world, rng)
        world.model.supervise()
        world.settle()
        if world.model.status is not None:  # the hub has exited too often
            world.finish()
            return
    end(world, rng)


def pass_through(suite, rng):
    """One component by its name: its arguments, and the launcher's status. Returns what is expected and so."""
    name = rng.choice([*COMPONENTS, "align"])
    arguments = rng.sample(["--help", "", "a b", "--hub", "--verbose", "-h"], rng.randint(0, 3))
    fault, number = rng.choice(["none", "status", "signal", "gone"]), rng.choice([1, 3, 255])
    words = {"status": f"exit-at-once status={number}", "signal": "exit-at-once signal=9"}
    suite.set_behaviour(name, words.get(fault, "exit-at-once"))
    suite.record(name)
    if fault == "gone":
        suite.component(name).unlink()
    run = suite.start(name, *arguments, terminal=rng.choice([None, "input", "output"]))
    status = {"none": 0, "status": number, "signal": 1, "gone": 1}[fault]
    message = console.component_missing(name, suite.component(name)) if fault == "gone" else ""
    starts = [] if fault == "gone" else [[str(suite.component(name)), *arguments]]
    expected = (status, "", message, starts)
    status = run.wait()
    starts = [row["argv"] for row in suite.events("start")]
    return name, expected, (status, run.output.decode(), run.errors.decode(), starts)


def run_sequence(suite, seed):
    """Runs the sequence of that seed; fails with the rule that broke, and the steps so far."""
    rng = random.Random(seed)
    if rng.random() < 0.07:
        name, expected, got = pass_through(suite, rng)
        rule = f"the {name} run by its name: status, output, errors, arguments"
        assert expected == got, f"Broken: {rule}\nexpected: {expected!r}\n but it is: {got!r}"
        return
    mode = rng.choices(list(MODES), MODES.values())[0]
    kind = rng.choices([usual_run, failing_start, early_end], [84, 11, 5])[0]
    if kind is not usual_run and mode in ("menu", "shell"):
        mode = "service"  # there is neither a menu nor a way to know when it has ended
    world = World(suite, mode)
    try:
        kind(world, rng)
        world.check_end()
    except Exception as error:
        if "Broken: " in str(error):
            raise
        raise AssertionError(world.report(str(error) or repr(error))) from error
    finally:
        world.give_back()
    world.kill_left()

"""What may happen to a run: a random sequence of steps that depends on nothing but its seed.

Each step does something to the run and to its model. Steps that wait for seconds are rare.
"""

import os
import random
import resource
import shutil
import signal
import socket
import time
from signal import SIGHUP, SIGINT, SIGKILL, SIGQUIT, SIGTERM

import console
from components import COMPONENTS
from deadline import wait_until
from model import SAVED
from run import CTRL_BACKSLASH, CTRL_C
from suite import NEVER
from world import PASS, World

ENDING = [SIGINT, SIGTERM, SIGHUP, SIGQUIT]
# s: at the launcher's pauses of 100, 400 and 500 ms, and at their sums.
EDGES = [0, 0.095, 0.1, 0.105, 0.39, 0.4, 0.41, 0.49, 0.5, 0.51, 0.895, 0.9, 0.91]

MODES = ["menu", "input", "output", "all", "shell", "service"]
STEPS = []  # each with its weight and when it may be taken


def step(weight, when=lambda world: True):
    def add(function):
        STEPS.append((function, weight, when))
        return function

    return add


def alive(world):
    return [c.name for c in world.model.components.values() if c.alive and not c.frozen]


def in_menu(world):
    return world.mode == "menu"


def sound(world):
    """Whether a start of each component would succeed."""
    components = world.model.components.values()
    return not any(c.dies_at_once or c.file != "good" for c in components)


# --- The components


@step(8, alive)
def a_component_is_killed(world, rng):
    name = rng.choice(alive(world))
    number = rng.choice([SIGKILL, SIGTERM, SIGINT, SIGHUP])
    world.say("end the", name, "by", number.name)
    world.kill(name, number)


@step(1, lambda world: alive(world) and sound(world))
def a_component_exits_until_it_is_left_stopped(world, rng):
    name = rng.choice(alive(world))
    world.say("the", name, "exits whenever it is started")
    world.behave(name, f"exit-at-once status={rng.randrange(3)}")
    world.kill(name)
    world.model.supervise()
    world.settle()
    if world.model.status is None:
        world.behave(name, "")


@step(2, lambda world: alive(world) and sound(world))
def a_component_exits_some_times(world, rng):
    name = rng.choice(alive(world))
    for _ in range(rng.randint(2, 4)):
        world.say("end the", name)
        world.kill(name)
        world.model.supervise()
        world.settle()
        if name not in alive(world):
            return


@step(3)
def a_program_changes(world, rng):
    name = rng.choice(COMPONENTS)
    state = rng.choice(["good", "good", "gone", "not executable"])
    world.say("the program of the", name, "is", state)
    world.replace(name, state)


@step(1, sound)
def a_program_is_none(world, rng):
    name = rng.choice(COMPONENTS[1:])
    world.say("the program of the", name, "is no program, and then is good again")
    world.replace(name, "no program")
    if name in alive(world):
        world.kill(name)
        world.model.supervise()
        world.settle()
    world.replace(name, "good")


@step(2)
def a_behaviour_changes(world, rng):
    name = rng.choice(COMPONENTS)
    words = ["", "ignore-sigterm"]
    if name == "hub":
        words += [f"answer-after={rng.randint(100, 900)}", "answer-404", f"slow-answer={rng.randint(50, 500)}"]
    words = rng.choice(words)
    world.say(f'the {name} has the behaviour "{words}" from its next start on')
    world.behave(name, words)


@step(2, alive)
def a_component_is_suspended_for_a_moment(world, rng):
    name = rng.choice(alive(world))
    world.say("suspend the", name, "and resume it")
    world.freeze(name)
    if rng.random() < 0.3:
        time.sleep(PASS)
    world.thaw(name)


@step(0.5, alive)
def a_component_stays_suspended(world, rng):
    name = rng.choice(alive(world))
    world.say("suspend the", name)
    world.freeze(name)


@step(1, lambda world: any(c.frozen for c in world.model.components.values()))
def a_suspended_component_is_killed(world, rng):
    name = rng.choice([c.name for c in world.model.components.values() if c.frozen])
    world.say("kill the suspended", name)
    world.kill(name)


# --- The launcher


@step(3)
def time_goes_by(world, rng):
    """What must not happen, such as the restart of a stopped component, has the time to."""
    world.say("wait")
    time.sleep(PASS)


@step(4, lambda world: len(alive(world)) > 1 and sound(world) and world.model.running)
def components_end_while_the_launcher_is_suspended(world, rng):
    names = rng.sample(alive(world), rng.randint(0, len(alive(world))))
    world.say("suspend the launcher, end", names, "and resume it")
    world.suspended(lambda: [world.kill(name) for name in names])


@step(1, lambda world: "hub" in alive(world) and sound(world))
def a_second_copy_is_started(world, rng):
    world.say("start a second copy on the same ports")
    world.start_second_copy(*world.model.components["hub"].arguments[1::2])


# --- The menu


@step(6, in_menu)
def a_component_is_controlled(world, rng):
    model = world.model
    operations = {
        "start": model.control_start, "stop": model.control_stop, "restart": model.control_restart
    }
    word, name = rng.choice(list(operations)), rng.choice([*COMPONENTS, "Hub"])
    world.say("menu:", word, "the", name)
    world.operate(lambda: operations[word](name), lambda: world.run.ask(word, name))


def change_ports(world, http, udp):
    world.say("menu: change the ports to", http, udp)
    world.operate(lambda: world.model.set_ports(http, udp), lambda: world.run.set_ports(http, udp))


@step(3, in_menu)
def change_the_ports(world, rng):
    ports = [world.suite.ports.free(), world.suite.ports.free()]
    if rng.random() < 0.2:
        ports = world.model.ports
    change_ports(world, *ports)


@step(2, in_menu)
def change_the_ports_to_impossible_ones(world, rng):
    http, udp = world.model.ports
    choices = [(0, udp), (http, 65536), (-1, udp), (80, udp), (http, 1023), (udp, udp), (80, 80), (0, 0)]
    change_ports(world, *rng.choice(choices))


@step(1.5, lambda world: in_menu(world) and sound(world) and not world.model.verbose)
def change_the_ports_to_taken_ones(world, rng):
    http, udp = world.suite.ports.free(), world.suite.ports.free()
    kind, port = rng.choice([(socket.SOCK_STREAM, http), (socket.SOCK_DGRAM, udp)])
    listens = kind == socket.SOCK_STREAM and rng.random() < 0.2
    world.say("another program", "listens on" if listens else "has", port)
    world.take(port, kind, listens)
    change_ports(world, http, udp)
    world.settle()
    world.give_back()


@step(3, in_menu)
def change_the_preference(world, rng):
    on = rng.choice([True, False])
    world.say("menu: set the preference to", on)
    world.model.set_preference(on)
    world.run.ask("set_pref", int(on))


@step(1, in_menu)
def change_the_preference_on_a_full_disk(world, rng):
    on = rng.choice([True, False])
    world.say("menu: set the preference to", on, "on a full disk")
    world.limit_files(0)
    world.model.set_preference(on)
    world.run.ask("set_pref", int(on))
    world.limit_files(resource.RLIM_INFINITY)


@step(1, in_menu)
def the_settings_folder_goes(world, rng):
    world.say("remove the settings folder")
    folder = world.suite.settings.parent
    if folder.is_dir():
        shutil.rmtree(folder)
        world.model.files[SAVED] = None
        world.model.config_is_other = False


@step(0.5, in_menu)
def a_file_is_where_the_settings_folder_was(world, rng):
    the_settings_folder_goes(world, rng)
    world.say("put a file in its place")
    world.suite.settings.parent.touch()
    world.model.config_is_file = True


@step(0.5, lambda world: in_menu(world) and not world.model.config_is_file)
def the_settings_file_is_a_fifo(world, rng):
    world.say("put a FIFO in the settings file's place")
    world.suite.settings.unlink(missing_ok=True)
    world.suite.settings.parent.mkdir(exist_ok=True)
    os.mkfifo(world.suite.settings)
    world.model.files[SAVED] = None
    world.model.config_is_other = True


@step(0.7, lambda world: in_menu(world) and world.model.running)
def a_signal_ends_only_the_supervision(world, rng):
    number = rng.choice(ENDING)
    world.say("send", number.name, "to the launcher")
    world.end_supervision(number, world.run.threads())


# --- Every way to end


def end_by_signal(world, rng):
    number = rng.choice(ENDING)
    world.say("send", number.name, "to the launcher", "twice")
    world.model.end()
    for _ in range(2):
        os.kill(world.pid, number)
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


# --- Whole sequences


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


def faults_of_clients(world, rng):
    for name in COMPONENTS[1:]:
        if rng.random() < 0.12:
            state = rng.choice(["gone", "not executable"])
            world.say("the program of the", name, "is", state)
            world.replace(name, state)
    if rng.random() < 0.3:
        words = rng.choice([f"answer-after={rng.randint(50, 900)}", "answer-404", "slow-answer=300"])
        world.say("the hub has the behaviour", words)
        world.behave("hub", words)


def failing_start(world, rng):
    """The hub does not come up, or a signal comes first."""
    fault = rng.choice(["gone", "not executable", "no program", "exit-at-once", "taken", "signal", "signal"])
    world.say("start a run whose hub has a fault:", fault)
    options = start_options(world, rng)
    world.model.opens_browser = False
    if fault in ("gone", "not executable", "no program"):
        world.replace("hub", fault)
    elif fault == "taken":
        world.model.verbose = False
        options = [option for option in options if option != "--verbose"]
        world.take(world.model.ports[0], socket.SOCK_STREAM, listens=False)
    elif fault == "exit-at-once":
        world.behave("hub", fault)
    else:
        world.behave("hub", rng.choice(["never-answer", f"answer-after={NEVER}"]))
    world.model.start(interrupted=fault == "signal")
    delay, number = rng.random() * 0.6, rng.choice(ENDING)
    world.launch(*options)
    if fault == "signal":
        wait_until(world.own, "the hub")
        world.say("after", round(delay, 2), "s send", number.name, "to the launcher")
        time.sleep(delay)
        os.kill(world.pid, number)
    world.finish()


def usual_run(world, rng):
    options = start_options(world, rng)
    faults_of_clients(world, rng)
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
        assert expected == got, f"Broken: the {name} run by its name: status, output, errors, arguments"
        return
    mode = rng.choices(MODES, [10, 1, 1, 3, 3, 2])[0]
    fails = rng.random() < 0.12
    if fails and mode in ("menu", "shell"):
        mode = "service"  # there is neither a menu nor a way to know when it has ended
    world = World(suite, mode)
    try:
        (failing_start if fails else usual_run)(world, rng)
        world.check_end()
    except Exception as error:
        if "Broken: " in str(error):
            raise
        raise AssertionError(world.report(str(error) or repr(error))) from error
    finally:
        world.give_back()
    world.kill_left()

"""What may happen to a run that is up.

Each step does something to the run and to its model, and draws what from `rng`; it may depend on the model, but
not on the time. Steps that wait for seconds are rare.
"""

import os
import resource
import shutil
import socket
import time
from signal import SIGHUP, SIGINT, SIGKILL, SIGQUIT, SIGTERM

from components import COMPONENTS
from model import SAVED

PASS = 1.0  # s in which the supervisor would have noticed an exit and started the component again

ENDING = [SIGINT, SIGTERM, SIGHUP, SIGQUIT]
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


def sound(world, *names):
    """Whether a start of each component, or of those named, would succeed."""
    components = [world.model.components[name] for name in names or COMPONENTS]
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
    if in_menu(world):
        world.settle()
        get_it_back(world, rng, name)


def get_it_back(world, rng, name):
    """A component that was left stopped is started from the menu, and may then exit again."""
    word = rng.choice(["start", "restart", "ports"])
    if word == "ports":
        change_the_ports(world, rng)
    else:
        control(world, word, name)
    world.settle()
    if name in alive(world):
        world.say("end the", name)
        world.kill(name)


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
    control(world, rng.choice(["start", "stop", "restart"]), rng.choice([*COMPONENTS, "Hub"]))


def control(world, word, name):
    world.say("menu:", word, "the", name)
    operation = getattr(world.model, f"control_{word}")
    world.operate(lambda: operation(name), lambda: world.run.ask(word, name))


@step(2, lambda world: in_menu(world) and sound(world, "hub"))
def the_hub_is_stopped_and_comes_back_unwatched(world, rng):
    control(world, "stop", "hub")
    change_the_ports(world, rng)
    world.settle()
    control(world, rng.choice(["start", "start", "restart"]), "hub")
    world.settle()
    world.say("end the hub, and wait")
    world.kill("hub")
    time.sleep(PASS)


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


@step(0.5, lambda world: in_menu(world) and not (world.model.config_is_file or world.model.config_is_other))
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

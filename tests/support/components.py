"""The components: their names, their order, and the arguments that the launcher gives them."""

COMPONENTS = ["hub", "receiver", "sender"]  # of an all-in-one run, in start order
ALL_COMPONENTS = [*COMPONENTS, "align"]
PROGRAMS = [f"td_{name}" for name in ALL_COMPONENTS]
STOP_ORDER = ["td_sender", "td_receiver", "td_hub"]


def hub_arguments(http, udp):
    return ["--udp-port", str(udp), "--http-port", str(http)]


def client_arguments(udp):
    return ["--hub", f"127.0.0.1:{udp}"]

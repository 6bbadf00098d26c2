"""The dashboard's address on machines with different network interfaces.

The unit tests decide which address is right (tests/unit/lan_address_test.cpp); these tests use interfaces of
the kernel.
"""

import os
import shutil
import subprocess

import console
import pytest
from console import READY

SYSTEM_PATH = f"{os.environ['PATH']}:/usr/sbin:/sbin"

# Arguments: the kind of the interfaces, each interface as "name state address...", "run", the command.
IN_NEW_NETWORK = """
set -e
ip link set lo up
kind=$1
shift
while [ "$1" != run ]; do
  set -- $1 -- "$@"
  name=$1 state=$2
  shift 2
  [ $name = lo ] || ip link add $name type $kind
  while [ "$1" != -- ]; do
    ip address add $1 dev $name
    shift
  done
  ip link set $name $state
  shift 2
done
shift
exec "$@"
"""


@pytest.fixture(scope="session")
def new_network():
    """The start of a command line that runs a command in a network with given interfaces."""
    for unshare in (["unshare", "-n"], ["unshare", "-rn"]):
        for kind in ("dummy", "bridge"):
            command = [*unshare, "sh", "-c", IN_NEW_NETWORK, "sh", kind]
            try:
                done = subprocess.run(
                    [*command, "en0 up 192.0.2.1/24", "run", "true"],
                    env={**os.environ, "PATH": SYSTEM_PATH},
                    stderr=subprocess.DEVNULL,
                    check=False,
                )
            except FileNotFoundError:
                pytest.skip("no unshare here")
            if done.returncode == 0:
                return command
    pytest.skip("no permission, or no ip, to make a private network")


@pytest.mark.parametrize(
    "interfaces, address",
    [
        ([], "127.0.0.1"),
        (["en5 up 100.64.0.7/10", "en0 up 192.168.1.20/24", "en1 up 10.0.0.5/8"], "192.168.1.20"),
        (["en0 down 192.168.1.20/24", "en1 up 203.0.113.9/24"], "203.0.113.9"),
        (["en0 up 203.0.113.9/24 192.168.7.7/24 192.168.7.8/24"], "192.168.7.7"),
        (["lo up 192.168.7.7/32", "en0 up 10.0.0.5/8"], "192.168.7.7"),
        (["en0 up fd00::1/64"], "127.0.0.1"),
    ],
)
def test_the_address_is_chosen_from_the_interfaces(suite, new_network, interfaces, address):
    environment = {**suite.environment, "PATH": f"{suite.bin}:{SYSTEM_PATH}"}
    launcher = [str(suite.launcher), *suite.ports_options, "--no-receiver", "--no-sender"]
    run = suite.start(
        *new_network[1:],
        *(*interfaces, "run", *launcher),
        program=shutil.which(new_network[0]),
        environment=environment,
    )
    run.wait_for(READY)
    assert run.stop() == 0
    url = f"http://{address}:{suite.http}/"
    shown = console.announcement(url, running="hub", no_sender=True)
    assert run.output == console.TITLE + shown + console.STOPPED
    assert run.errors == b""
    assert suite.calls("open") == [[url.encode()]]


def test_the_address_of_this_machine(suite):
    run = suite.start_up("--no-browser")
    assert run.stop() == 0
    assert f"\x1b[1;36mhttp://{console.lan_address()}:{suite.http}/\x1b[0m".encode() in run.output

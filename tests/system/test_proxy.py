"""Proxies from the environment and from curl's settings: none is used for the probes."""

import console
import probe_tools
import pytest
from component_events import wait_for_components
from components import COMPONENTS
from console import READY
from deadline import wait_until
from other_servers import answering_server
from suite import NEVER

# Variables that a shell sets by itself.
SHELL_VARIABLES = {"PWD", "OLDPWD", "SHLVL", "_"}


def proxy_variables(port):
    """Sets of variables that name a proxy for http addresses, some with exceptions."""
    proxy = f"http://127.0.0.1:{port}"
    return [
        {"http_proxy": proxy},
        {"ALL_PROXY": proxy},
        {"all_proxy": proxy, "NO_PROXY": "other.test"},
        {"http_proxy": proxy, "https_proxy": proxy, "ALL_PROXY": proxy, "no_proxy": "other.test"},
    ]


def environment_with(suite, variables):
    """The suite's environment with only these proxy variables."""
    kept = {k: v for k, v in suite.environment.items() if not k.lower().endswith("_proxy")}
    return {**kept, **variables}


def without_shell_variables(environment):
    return {name: value for name, value in environment.items() if name not in SHELL_VARIABLES}


def start_up_with(suite, variables):
    suite.record()
    run = suite.start_up(environment=environment_with(suite, variables))
    wait_for_components(suite)
    return run


@pytest.mark.parametrize("index", range(4))
def test_the_hub_is_found_although_the_proxy_does_not_answer(suite, index):
    run = start_up_with(suite, proxy_variables(suite.ports.free())[index])
    assert run.stop() == 0
    assert run.errors == b""


@pytest.mark.parametrize("index", range(4))
def test_a_proxys_answers_do_not_count(suite, index):
    suite.set_behaviour("hub", f"answer-after={NEVER} record=events.jsonl")
    probe_tools.record_statuses(suite)
    proxy = suite.ports.free()
    with answering_server(proxy, status=502) as asked:
        variables = proxy_variables(proxy)[index]
        run = suite.start(*suite.ports_options, environment=environment_with(suite, variables))
        probe_tools.wait_for_statuses(suite, "7", 5, lambda: READY.encode() in run.output)
        assert run.output == console.TITLE
        suite.kill("hub")
        assert run.wait() == 1
    assert asked == []
    assert set(probe_tools.statuses(suite)) == {"7"}  # the connection was refused
    assert run.output == console.TITLE
    assert run.errors == console.hub_silent(suite.http).encode() + b"\n"


def test_a_proxy_in_curls_settings_is_not_used(suite):
    proxy = suite.ports.free()
    (suite.home / ".curlrc").write_text(f"proxy = http://127.0.0.1:{proxy}\n")
    with answering_server(proxy, status=502) as asked:
        run = start_up_with(suite, {})
        assert run.stop() == 0
    assert asked == []
    assert run.errors == b""


@pytest.mark.parametrize("index", range(4))
def test_components_and_browser_get_the_proxy_variables_unchanged(
    suite, environment_printer, index
):
    browser = f'#!/bin/sh\n{environment_printer} > "$0.new"\nmv "$0.new" "$0.environ"\n'
    suite.tool("open", browser)
    variables = proxy_variables(suite.ports.free())[index]
    run = start_up_with(suite, variables)
    expected = environment_with(suite, variables)
    for name in COMPONENTS:
        assert suite.process(name).environ() == expected
    wait_until((suite.bin / "open.environ").exists, "the browser tool")
    fields = (suite.bin / "open.environ").read_text().split("\0")[1:-1]
    browsers = dict(field.split("=", 1) for field in fields)
    assert without_shell_variables(browsers) == without_shell_variables(expected)
    assert run.stop() == 0

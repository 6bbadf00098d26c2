"""What screen readers are told of all that the launcher shows, and what they can do with it."""

from deadline import wait_until
from dialogs import Dialog, PortsDialog
from test_components import ALL_RUNNING
from test_ports import saved_ports

MENU = """
menu
  menu item: Tandrel 1.4.4+412 (disabled)
  menu item: {address} (disabled)
  separator
  menu item: Open Dashboard
  menu item: Copy Dashboard Address
  separator
  menu item: Hub   stopped
    menu
      menu item: Start
      menu item: Stop (disabled)
      menu item: Restart (disabled)
  menu item: Receiver   running
    menu
      menu item: Start (disabled)
      menu item: Stop
      menu item: Restart
  menu item: Sender   running
    menu
      menu item: Start (disabled)
      menu item: Stop
      menu item: Restart
  separator
  menu item: All Components
    menu
      menu item: Start All
      menu item: Stop All
      menu item: Restart All
  separator
  separator
  menu item: Settings…
  menu item: Open Dashboard at Launch (checked)
  separator
  separator
  menu item: Quit Tandrel
"""
SETTINGS = """
dialog: Tandrel Settings
  label: Tandrel Settings
  label: Changing a port restarts the hub and reconnects the sender and receiver. Routing is kept.
  label: Dashboard port
  field: Dashboard port
  label: Control port
  field: Control port
  button: Apply (default)
  button: Cancel
"""
WARNING = """
dialog: Could not change the ports
  label: Could not change the ports
  label: Ports below 1024 need administrator privileges; pick higher ones.
  button: OK (default)
"""
TAB_ORDER = [
    *[("field", "Dashboard port"), ("field", "Control port")],
    *[("button", "Apply"), ("button", "Cancel")],
]


def outline(part, depth=0):
    """Role, name and unusual states of a part and all in it; pictures and mere boxes excepted."""
    role, lines = part.role, ""
    if role:
        states = part.states
        notes = [state for state in ("checked", "default") if state in states]
        notes += ["disabled"] if role == "menu item" and "enabled" not in states else []
        name = f": {part.name}" if part.name else ""
        lines = "  " * depth + role + name + "".join(f" ({note})" for note in notes) + "\n"
    return lines + "".join(outline(child, depth + bool(role)) for child in part.children)


def test_everything_shown_has_its_role_and_name(running):
    address = running.dashboard_address()
    (icon,) = running.accessibility.windows()
    assert outline(icon) == "button: Tandrel\n"
    running.menu_bar.choose("Hub", "Stop")
    wait_until(lambda: not running.suite.processes("hub"), "the hub's end")
    running.menu_bar.open()
    (menu,) = running.accessibility.menus()
    assert outline(menu) == MENU.lstrip().format(address=address)
    running.menu_bar.dismiss()
    dialog = PortsDialog(running)
    assert outline(dialog.shown) == SETTINGS.lstrip()
    dialog.apply(80, running.suite.udp)
    warning = Dialog(running, "Could not change the ports")
    assert outline(warning.shown) == WARNING.lstrip()
    warning.answer("Return")


def test_the_focus_is_told_as_it_moves_through_the_dialog(running):
    told = running.accessibility.focused
    dialog = PortsDialog(running)
    wait_until(lambda: told()[-1:] == [("dialog", "Tandrel Settings")], "the dialog's focus")
    for key, parts in (("Tab", [*TAB_ORDER, TAB_ORDER[0]]), ("shift+Tab", TAB_ORDER[::-1])):
        for part in parts:
            running.screen.press(key)
            wait_until(lambda wanted=part: told()[-1] == wanted, f"the focus in {part}")
    dialog.answer("Escape")
    dialog = PortsDialog(running)
    running.screen.press("Tab")
    running.screen.type("80")
    dialog.answer("Return")
    warning = Dialog(running, "Could not change the ports")
    wait_until(lambda: told()[-1] == ("dialog", "Could not change the ports"), "its focus")
    warning.answer("Return")


def test_the_focus_is_told_as_it_moves_through_the_menu(running):
    told = running.accessibility.focused
    running.menu_bar.open()
    for key, name in (
        ("Down", "Open Dashboard"),
        ("Down", "Copy Dashboard Address"),
        ("Down", "Hub   running"),
        ("Right", "Stop"),
        ("Down", "Restart"),
    ):
        running.screen.press(key)
        item = ("menu item", name)
        wait_until(lambda wanted=item: told()[-1:] == [wanted], f"the focus in {name}")
    running.screen.press("Escape", "Escape")
    running.menu_bar.wait_until_closed()


def test_a_screen_reader_can_do_what_the_mouse_can(running):
    http, udp = running.suite.ports.free(), running.suite.ports.free()
    (icon,) = running.accessibility.windows()
    icon.act()
    running.menu_bar.opened().row("Settings").act()
    dialog = Dialog(running, "Tandrel Settings")
    for field, port in zip(dialog.shown.find("field"), (http, udp)):
        field.replace_text(str(port))
    dialog.shown.one("button", "Apply").act()
    dialog.wait_until_closed()
    wait_until(lambda: saved_ports(running) == (http, udp), "the settings file")
    assert running.menu_bar.states() == ALL_RUNNING

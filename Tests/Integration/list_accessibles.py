"""Lists what an application shows to assistive programs, one object a line: role, name, description.

usage: list_accessibles.py APPLICATION [ROLE NAME ACTION]
With a role, a name and an action, does that action of the first such object instead.
"""

import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402


def below(accessible):
    for index in range(accessible.get_child_count()):
        child = accessible.get_child_at_index(index)
        if child is not None and child.get_state_set().contains(Atspi.StateType.VISIBLE):
            yield child
            yield from below(child)


def application(name):
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        if desktop.get_child_at_index(index).get_name() == name:
            return desktop.get_child_at_index(index)
    sys.exit("no such application: " + name)


def act(accessible, name):
    for index in range(Atspi.Action.get_n_actions(accessible)):
        if Atspi.Action.get_action_name(accessible, index) == name:
            return Atspi.Action.do_action(accessible, index)
    sys.exit("no such action: " + name)


def main():
    shown = below(application(sys.argv[1]))
    if len(sys.argv) == 2:
        for each in shown:
            print(each.get_role_name(), each.get_name(), each.get_description(), sep=" | ")
        return
    role, name, action = sys.argv[2:]
    act(next(each for each in shown if (each.get_role_name(), each.get_name()) == (role, name)), action)


main()

"""Lists what an application shows to assistive programs, one object a line: role, name, description.

usage: list_accessibles.py APPLICATION NAME
Then it presses the button of that name, if there is one.
"""

import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402


def children(accessible):
    return [accessible.get_child_at_index(index) for index in range(accessible.get_child_count())]


def below(accessible):
    for child in children(accessible):
        if child is not None and child.get_state_set().contains(Atspi.StateType.VISIBLE):
            yield child
            yield from below(child)


for application in children(Atspi.get_desktop(0)):
    for each in below(application) if application.get_name() == sys.argv[1] else ():
        role = each.get_role_name().removeprefix("push ")  # which older AT-SPI has before it
        print(role, each.get_name(), each.get_description(), sep=" | ")
        if (role, each.get_name()) == ("button", sys.argv[2]):
            sys.exit(not Atspi.Action.do_action(each, 0))

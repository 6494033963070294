#!/usr/bin/python3
# Drives the agent's first start as a screen reader does, through the accessibility bus: the tile
# named after the browser is pressed, then the access request's "Allow". Prints what it did and saw,
# one line each; exits 1 when something could not be found in time.
import sys
import time

import pyatspi


def walk(root):
    """root and everything under it, depth first."""
    stack = [root]
    while stack:
        obj = stack.pop()
        try:
            children = [obj[i] for i in reversed(range(obj.childCount))]
        except Exception:  # an object that went away while walked
            continue
        yield obj
        stack.extend(children)


def find(root, wanted, deadline):
    """The first object under root for which wanted(obj) holds, waiting until deadline."""
    while time.monotonic() < deadline:
        for obj in walk(root):
            try:
                if wanted(obj):
                    return obj
            except Exception:
                continue
        time.sleep(0.2)
    return None


def press(obj):
    actions = obj.queryAction()
    for i in range(actions.nActions):
        if actions.getName(i) in ("Press", "press", "click"):
            actions.doAction(i)
            return True
    return False


def showing(obj):
    return obj.getState().contains(pyatspi.STATE_SHOWING)


deadline = time.monotonic() + 30
desktop = pyatspi.Registry.getDesktop(0)
app = find(desktop, lambda o: o.getRole() == pyatspi.ROLE_APPLICATION and o.name.lower() == "corvella",
           deadline)
if app is None:
    print("no application named corvella on the accessibility bus")
    sys.exit(1)
tile = find(app, lambda o: o.getRole() == pyatspi.ROLE_PUSH_BUTTON and o.name.startswith("Chromium,")
            and showing(o), deadline)
if tile is None:
    print("no tile named after Chromium")
    sys.exit(1)
print("tile: " + tile.name)
press(tile)
allow = find(app, lambda o: o.getRole() == pyatspi.ROLE_PUSH_BUTTON and o.name == "Allow" and showing(o),
             deadline)
if allow is None:
    print("no request with Allow")
    sys.exit(1)
dialog = allow
while dialog.getRole() not in (pyatspi.ROLE_DIALOG, pyatspi.ROLE_FRAME, pyatspi.ROLE_WINDOW):
    dialog = dialog.parent
print("request: " + dialog.name)
print("request text: " + " | ".join(o.name for o in walk(dialog) if o.getRole() == pyatspi.ROLE_LABEL))
press(allow)
# The window stops saying it has no access once the grant is stored.
granted = find(app, lambda o: o.getRole() == pyatspi.ROLE_LABEL and o.name.startswith("Corvella is ")
               and showing(o), deadline)
print("window after: " + (granted.name if granted else "no access"))
protected = find(app, lambda o: o.getRole() == pyatspi.ROLE_PUSH_BUTTON and o.name == "Chromium, protected"
                 and showing(o), deadline)
print("tile after: " + (protected.name if protected else "not protected"))
sys.exit(0 if protected and granted else 1)

"""Drops files on an X window the way a file manager does: an XDND drag
source, written against libX11 through ctypes so that it needs nothing but
Python's standard library and the X library every X client has.

The drag offers one type, text/uri-list, and goes Enter, Position, (Status),
Drop, (Finished), answering the target's requests for the selection while
it waits. The target is the topmost XDND-aware window under the given root
point, as the protocol finds it. Wine turns such a drop on a window that
accepts files into WM_DROPFILES with an HDROP that it builds in the
window's own process.

    python3 xdnd_drop.py X Y FILE...

Exit status 0 when the target accepted and finished the drop, 1 otherwise.
"""

import ctypes
import ctypes.util
import os
import select
import sys
import time
import urllib.parse

ClientMessage = 33
SelectionRequest = 30
SelectionNotify = 31
PropModeReplace = 0
CurrentTime = 0
XA_ATOM = 4
AnyPropertyType = 0
XDND_VERSION = 5

c_window = ctypes.c_ulong
c_atom = ctypes.c_ulong


class ClientMessageData(ctypes.Union):
    _fields_ = [("b", ctypes.c_char * 20), ("s", ctypes.c_short * 10), ("l", ctypes.c_long * 5)]


class XClientMessageEvent(ctypes.Structure):
    _fields_ = [
        ("type", ctypes.c_int),
        ("serial", ctypes.c_ulong),
        ("send_event", ctypes.c_int),
        ("display", ctypes.c_void_p),
        ("window", c_window),
        ("message_type", c_atom),
        ("format", ctypes.c_int),
        ("data", ClientMessageData),
    ]


class XSelectionRequestEvent(ctypes.Structure):
    _fields_ = [
        ("type", ctypes.c_int),
        ("serial", ctypes.c_ulong),
        ("send_event", ctypes.c_int),
        ("display", ctypes.c_void_p),
        ("owner", c_window),
        ("requestor", c_window),
        ("selection", c_atom),
        ("target", c_atom),
        ("property", c_atom),
        ("time", ctypes.c_ulong),
    ]


class XSelectionEvent(ctypes.Structure):
    _fields_ = [
        ("type", ctypes.c_int),
        ("serial", ctypes.c_ulong),
        ("send_event", ctypes.c_int),
        ("display", ctypes.c_void_p),
        ("requestor", c_window),
        ("selection", c_atom),
        ("target", c_atom),
        ("property", c_atom),
        ("time", ctypes.c_ulong),
    ]


class XEvent(ctypes.Union):
    _fields_ = [
        ("type", ctypes.c_int),
        ("xclient", XClientMessageEvent),
        ("xselectionrequest", XSelectionRequestEvent),
        ("xselection", XSelectionEvent),
        ("pad", ctypes.c_long * 24),
    ]


def load_xlib():
    name = ctypes.util.find_library("X11") or "libX11.so.6"
    x = ctypes.CDLL(name)
    x.XOpenDisplay.restype = ctypes.c_void_p
    x.XOpenDisplay.argtypes = [ctypes.c_char_p]
    x.XDefaultRootWindow.restype = c_window
    x.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
    x.XInternAtom.restype = c_atom
    x.XInternAtom.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
    x.XCreateSimpleWindow.restype = c_window
    x.XCreateSimpleWindow.argtypes = [ctypes.c_void_p, c_window, ctypes.c_int, ctypes.c_int, ctypes.c_uint,
                                      ctypes.c_uint, ctypes.c_uint, ctypes.c_ulong, ctypes.c_ulong]
    x.XSetSelectionOwner.argtypes = [ctypes.c_void_p, c_atom, c_window, ctypes.c_ulong]
    x.XGetSelectionOwner.restype = c_window
    x.XGetSelectionOwner.argtypes = [ctypes.c_void_p, c_atom]
    x.XTranslateCoordinates.argtypes = [ctypes.c_void_p, c_window, c_window, ctypes.c_int, ctypes.c_int,
                                        ctypes.POINTER(ctypes.c_int), ctypes.POINTER(ctypes.c_int),
                                        ctypes.POINTER(c_window)]
    x.XGetWindowProperty.argtypes = [ctypes.c_void_p, c_window, c_atom, ctypes.c_long, ctypes.c_long, ctypes.c_int,
                                     c_atom, ctypes.POINTER(c_atom), ctypes.POINTER(ctypes.c_int),
                                     ctypes.POINTER(ctypes.c_ulong), ctypes.POINTER(ctypes.c_ulong),
                                     ctypes.POINTER(ctypes.c_void_p)]
    x.XChangeProperty.argtypes = [ctypes.c_void_p, c_window, c_atom, c_atom, ctypes.c_int, ctypes.c_int,
                                  ctypes.c_char_p, ctypes.c_int]
    x.XSendEvent.argtypes = [ctypes.c_void_p, c_window, ctypes.c_int, ctypes.c_long, ctypes.POINTER(XEvent)]
    x.XNextEvent.argtypes = [ctypes.c_void_p, ctypes.POINTER(XEvent)]
    x.XPending.argtypes = [ctypes.c_void_p]
    x.XFlush.argtypes = [ctypes.c_void_p]
    x.XFree.argtypes = [ctypes.c_void_p]
    x.XConnectionNumber.argtypes = [ctypes.c_void_p]
    x.XCloseDisplay.argtypes = [ctypes.c_void_p]
    return x


def uri_list(paths):
    lines = []
    for path in paths:
        absolute = os.path.abspath(path)
        lines.append("file://" + urllib.parse.quote(absolute, safe="/"))
    return ("\r\n".join(lines) + "\r\n").encode("ascii")


class DragSource:
    def __init__(self, x):
        self.x = x
        self.display = x.XOpenDisplay(None)
        if not self.display:
            raise RuntimeError("cannot open the X display")
        self.root = x.XDefaultRootWindow(self.display)
        self.window = x.XCreateSimpleWindow(self.display, self.root, 0, 0, 1, 1, 0, 0, 0)
        self.atoms = {}

    def atom(self, name):
        if name not in self.atoms:
            self.atoms[name] = self.x.XInternAtom(self.display, name.encode("ascii"), 0)
        return self.atoms[name]

    def aware_version(self, window):
        """The XdndAware version of a window, or None when it has none."""
        actual_type = c_atom()
        actual_format = ctypes.c_int()
        count = ctypes.c_ulong()
        after = ctypes.c_ulong()
        data = ctypes.c_void_p()
        status = self.x.XGetWindowProperty(self.display, window, self.atom("XdndAware"), 0, 1, 0, XA_ATOM,
                                           ctypes.byref(actual_type), ctypes.byref(actual_format),
                                           ctypes.byref(count), ctypes.byref(after), ctypes.byref(data))
        version = None
        if status == 0 and data.value and count.value >= 1 and actual_format.value == 32:
            version = ctypes.cast(data, ctypes.POINTER(ctypes.c_ulong))[0]
        if data.value:
            self.x.XFree(data)
        return version

    def find_target(self, root_x, root_y):
        """The topmost XDND-aware window under the root point, walking down
        from the root through the children that contain it."""
        window = self.root
        while True:
            child = c_window()
            dx = ctypes.c_int()
            dy = ctypes.c_int()
            self.x.XTranslateCoordinates(self.display, self.root, window, root_x, root_y, ctypes.byref(dx),
                                         ctypes.byref(dy), ctypes.byref(child))
            if not child.value:
                return None, None
            version = self.aware_version(child.value)
            if version is not None:
                return child.value, version
            window = child.value

    def send(self, target, message, values):
        event = XEvent()
        event.xclient.type = ClientMessage
        event.xclient.display = self.display
        event.xclient.window = target
        event.xclient.message_type = self.atom(message)
        event.xclient.format = 32
        for index, value in enumerate(values):
            event.xclient.data.l[index] = value
        self.x.XSendEvent(self.display, target, 0, 0, ctypes.byref(event))
        self.x.XFlush(self.display)

    def answer_request(self, request, payload):
        """Hands the file list to a window that asked for the selection."""
        reply = XEvent()
        reply.xselection.type = SelectionNotify
        reply.xselection.display = self.display
        reply.xselection.requestor = request.requestor
        reply.xselection.selection = request.selection
        reply.xselection.target = request.target
        reply.xselection.time = request.time
        reply.xselection.property = 0
        if request.target == self.atom("text/uri-list") and request.property:
            self.x.XChangeProperty(self.display, request.requestor, request.property, request.target, 8,
                                   PropModeReplace, payload, len(payload))
            reply.xselection.property = request.property
        elif request.target == self.atom("TARGETS") and request.property:
            targets = (c_atom * 2)(self.atom("TARGETS"), self.atom("text/uri-list"))
            self.x.XChangeProperty(self.display, request.requestor, request.property, XA_ATOM, 32,
                                   PropModeReplace, ctypes.cast(targets, ctypes.c_char_p), 2)
            reply.xselection.property = request.property
        self.x.XSendEvent(self.display, request.requestor, 0, 0, ctypes.byref(reply))
        self.x.XFlush(self.display)

    def wait_for(self, message, payload, timeout):
        """Serves selection requests until the client message arrives; gives
        its data, or None at the timeout."""
        deadline = time.monotonic() + timeout
        fd = self.x.XConnectionNumber(self.display)
        event = XEvent()
        while True:
            while self.x.XPending(self.display):
                self.x.XNextEvent(self.display, ctypes.byref(event))
                if event.type == SelectionRequest:
                    self.answer_request(event.xselectionrequest, payload)
                elif event.type == ClientMessage and event.xclient.message_type == self.atom(message):
                    return list(event.xclient.data.l)
            remaining = deadline - time.monotonic()
            if remaining <= 0:
                return None
            select.select([fd], [], [], min(remaining, 0.05))

    def drop(self, root_x, root_y, paths):
        payload = uri_list(paths)
        target, version = self.find_target(root_x, root_y)
        if target is None:
            print("xdnd_drop: no XDND-aware window at %d, %d" % (root_x, root_y), file=sys.stderr)
            return False
        version = min(version, XDND_VERSION)
        self.x.XSetSelectionOwner(self.display, self.atom("XdndSelection"), self.window, CurrentTime)
        if self.x.XGetSelectionOwner(self.display, self.atom("XdndSelection")) != self.window:
            print("xdnd_drop: could not own the drag selection", file=sys.stderr)
            return False
        uri_type = self.atom("text/uri-list")
        self.send(target, "XdndEnter", [self.window, version << 24, uri_type, 0, 0])
        self.send(target, "XdndPosition",
                  [self.window, 0, (root_x << 16) | (root_y & 0xFFFF), CurrentTime, self.atom("XdndActionCopy")])
        status = self.wait_for("XdndStatus", payload, 10)
        if status is None or not status[1] & 1:
            self.send(target, "XdndLeave", [self.window, 0, 0, 0, 0])
            print("xdnd_drop: window 0x%x %s the drop" % (target, "refused" if status else "did not answer"),
                  file=sys.stderr)
            return False
        self.send(target, "XdndDrop", [self.window, 0, CurrentTime, 0, 0])
        if self.wait_for("XdndFinished", payload, 10) is None:
            print("xdnd_drop: window 0x%x did not finish the drop" % target, file=sys.stderr)
            return False
        return True

    def close(self):
        self.x.XCloseDisplay(self.display)


def drop_files(root_x, root_y, paths):
    source = DragSource(load_xlib())
    try:
        return source.drop(root_x, root_y, paths)
    finally:
        source.close()


def main(argv):
    if len(argv) < 4:
        print("usage: xdnd_drop.py X Y FILE...", file=sys.stderr)
        return 2
    return 0 if drop_files(int(argv[1]), int(argv[2]), argv[3:]) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv))

"""Helpers for driving the real Sondara.exe under Wine as a user does: real
X input through xdotool, text read back through the X clipboard, pictures
through ImageMagick's import. Python's standard library only.

Expects a Wine session (scripts/wine-env.sh: DISPLAY and WINEPREFIX set),
which tests/e2e/run.sh provides.
"""

import json
import os
import re
import signal
import subprocess
import time

# What a field holds while a check runs.
RUNNING_TEXT = "処理中..."
# The X tools read and write window names in UTF-8 only in a UTF-8 locale.
X_ENV = dict(os.environ, LC_ALL="C.UTF-8")
# The program runs as on a Japanese system: the layout is written in the
# Japanese code page, and a file name with Japanese in it maps only when the
# locale really exists (scripts/wine-env.sh makes one when the system has
# none and names its folder).
PROGRAM_ENV = dict(os.environ, LC_ALL="ja_JP.UTF-8")
if os.environ.get("SONDARA_JAPANESE_LOCPATH"):
    PROGRAM_ENV["LOCPATH"] = os.environ["SONDARA_JAPANESE_LOCPATH"]


class Failure(Exception):
    """A scenario's expectation that did not hold."""


def wine_path(unix_path):
    """The path under which the program sees a file: drive Z: is the root."""
    return "Z:" + os.path.abspath(unix_path).replace("/", "\\")


def wait_for(what, condition, timeout, interval=0.1):
    """Polls condition until it gives something true and returns that;
    fails naming what was awaited at the timeout."""
    deadline = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() >= deadline:
            raise Failure("timed out after %.1fs waiting for %s" % (timeout, what))
        time.sleep(interval)


def run(command, timeout=30, env=None, check=True):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL,
                            timeout=timeout, env=env)
    if check and result.returncode != 0:
        raise Failure("%s failed (%d): %s" % (" ".join(command), result.returncode,
                                              result.stderr.decode("utf-8", "replace").strip()))
    return result


# Every Windows program runs through wine-start.sh, which makes a start
# that Wine gave up again and counts it.
WINE_START = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "scripts", "wine-start.sh")


def run_wine(command, timeout=30, env=None):
    """Runs a Windows program under Wine and waits for it."""
    result = run([WINE_START] + command, timeout=timeout, env=env, check=False)
    if result.returncode != 0:
        raise Failure("wine %s failed (%d): %s" % (" ".join(command), result.returncode,
                                                   result.stderr.decode("utf-8", "replace").strip()))
    return result


# ---------------------------------------------------------------------------
# The X display: windows, input, clipboard, pictures


class Desktop:
    # Two clicks on one spot within this time arrive as a double click.
    DOUBLE_CLICK_SECONDS = 0.6

    def __init__(self):
        self.last_click = (None, 0.0)
        self.clipboard_owner = None

    def xdotool(self, *args, check=True):
        return run(["xdotool"] + [str(a) for a in args], env=X_ENV, check=check).stdout.decode("utf-8", "replace")

    def windows(self, name=".*"):
        """Visible top-level windows whose name matches, as a set of ids."""
        out = self.xdotool("search", "--onlyvisible", "--name", name, check=False)
        return {int(line) for line in out.split()}

    def exists(self, window):
        """True while the window is on the screen."""
        return window in self.windows()

    def new_window(self, before, what, timeout=15):
        """The first visible top-level window with a name that was not among
        before. Tooltips and popup menus have no name."""
        return wait_for(what, lambda: min(self.windows(".+") - before, default=None), timeout)

    def wait_gone(self, window, what, timeout=10):
        wait_for(what, lambda: not self.exists(window), timeout)

    def geometry(self, window):
        out = self.xdotool("getwindowgeometry", "--shell", window)
        values = dict(line.split("=", 1) for line in out.split() if "=" in line)
        return int(values["X"]), int(values["Y"]), int(values["WIDTH"]), int(values["HEIGHT"])

    def click(self, x, y):
        x, y = int(round(x)), int(round(y))
        spot, when = self.last_click
        wait = self.DOUBLE_CLICK_SECONDS - (time.monotonic() - when)
        if spot == (x, y) and wait > 0:
            time.sleep(wait)
        self.xdotool("mousemove", x, y, "click", 1)
        self.last_click = ((x, y), time.monotonic())
        time.sleep(0.2)

    def move(self, x, y):
        self.xdotool("mousemove", int(round(x)), int(round(y)))

    def key(self, *keys):
        self.xdotool("key", "--delay", 40, *keys)
        time.sleep(0.2)

    def type(self, text):
        """Types text key by key. Only characters of the keyboard map reach
        Wine this way; Japanese goes in by paste."""
        if any(ord(c) > 0x7E for c in text):
            raise ValueError("xdotool can't type %r into Wine; paste it" % text)
        self.xdotool("type", "--delay", 15, text)
        time.sleep(0.2)

    def set_clipboard(self, text):
        """Makes xclip the owner of the X clipboard with text. It serves
        until another client, such as Wine on Ctrl+C, takes the selection."""
        self.release_clipboard()
        owner = subprocess.Popen(["xclip", "-quiet", "-selection", "clipboard", "-i"], stdin=subprocess.PIPE,
                                 stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=X_ENV)
        owner.stdin.write(text.encode("utf-8"))
        owner.stdin.close()
        self.clipboard_owner = owner
        # xclip owns the selection once it answers a request for it.
        wait_for("xclip to own the clipboard", lambda: self.clipboard() == text, 5)

    def release_clipboard(self):
        if self.clipboard_owner is not None:
            if self.clipboard_owner.poll() is None:
                self.clipboard_owner.terminate()
            self.clipboard_owner.wait()
            self.clipboard_owner = None

    def clipboard(self):
        """The X clipboard's text as UTF-8, or None when nobody offers one."""
        try:
            result = run(["xclip", "-o", "-selection", "clipboard"], timeout=5, env=X_ENV, check=False)
        except subprocess.TimeoutExpired:
            return None
        if result.returncode != 0:
            return None
        return result.stdout.decode("utf-8", "replace")

    def screenshot(self, path, window="root"):
        run(["import", "-window", str(window), path], timeout=30, env=X_ENV)

    def darkest(self, window, x, y, width, height):
        """The darkest grey of a rectangle of a window's picture, from 0
        (black) to 1 (white)."""
        picture = run(["import", "-window", str(window), "-crop", "%dx%d+%d+%d" % (width, height, x, y), "miff:-"],
                      timeout=30, env=X_ENV).stdout
        result = subprocess.run(["convert", "miff:-", "-colorspace", "Gray", "-format", "%[fx:minima]", "info:"],
                                input=picture, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=30, env=X_ENV)
        if result.returncode != 0:
            raise Failure("convert could not read the picture: %s" % result.stderr.decode("utf-8", "replace"))
        return float(result.stdout.decode("ascii"))


# ---------------------------------------------------------------------------
# The layout: where the named widgets lie in the client area


def _position(text, axis, extent, near):
    """One position text on one axis, in logical units: L/T from the near
    edge, R/B from the far one, C from the centre, W/H as a size behind the
    near edge already known (near); a trailing % takes the number as a
    share of the view."""
    if len(text) < 2:
        return 0.0
    prefix, number = text[0], text[1:]
    percent = number.endswith("%")
    if percent:
        number = number[:-1]
    match = re.match(r"[+-]?(\d+(\.\d*)?|\.\d+)", number)
    v = float(match.group(0)) if match else 0.0
    start, end = ("L", "R") if axis == "x" else ("T", "B")
    size = "W" if axis == "x" else "H"
    if prefix == start:
        return float(int(extent * v / 100)) if percent else v
    if prefix == end:
        return float(int(extent * (100 - v) / 100)) if percent else extent - v
    if prefix == "C":
        return float(int(extent * (v + 50) / 100)) if percent else extent * 0.5 + v
    if prefix == size:
        return float(int(near + extent * v / 100)) if percent else near + v
    return v


class Layout:
    """The named sections of a Main.jpn and their Pos texts."""

    def __init__(self, path):
        self.dpi = 0.0
        self.positions = {}
        section, values = None, {}
        with open(path, encoding="cp932") as file:
            lines = file.read().splitlines() + ["[]"]
        for line in lines:
            if line.startswith(";") or not line.strip():
                continue
            if line.startswith("["):
                self._take(section, values)
                section, values = line.strip()[1:-1], {}
            elif "=" in line:
                key, value = line.split("=", 1)
                values[key] = value
        if not self.positions:
            raise Failure("no named widget in %s" % path)

    def _take(self, section, values):
        if section == "Viewer":
            self.dpi = float(values.get("Dpi", "0") or 0)
        elif "Name" in values and "Pos" in values:
            self.positions[values["Name"]] = (values["Pos"].split(",") + [""] * 8)[:8]

    def rect(self, name, width, height):
        """The widget's rectangle (left, top, right, bottom) in logical units
        for a view of width x height logical units."""
        if name not in self.positions:
            raise Failure("the layout has no widget named %s" % name)
        lpos, tpos, rpos, bpos, lfloor, tfloor, rfloor, bfloor = self.positions[name]

        def edge(text, floor, axis, extent, near=0.0):
            value = _position(text, axis, extent, near)
            return max(value, _position(floor, axis, extent, near)) if floor else value

        left = 0.0 if lpos.startswith("W") or lfloor.startswith("W") else edge(lpos, lfloor, "x", width)
        top = 0.0 if tpos.startswith("H") or tfloor.startswith("H") else edge(tpos, tfloor, "y", height)
        return left, top, edge(rpos, rfloor, "x", width, left), edge(bpos, bfloor, "y", height, top)


# ---------------------------------------------------------------------------
# The program under test


class Program:
    """One run of Sondara.exe with its window, driven by X input."""

    # An enabled button's caption is near black, a disabled one's a light
    # grey (about 0.66).
    ENABLED_DARKNESS = 0.4

    def __init__(self, harness):
        self.h = harness
        self.desktop = harness.desktop
        self.before = self.desktop.windows("^Sondara$")
        self.window = None
        self.log = open(os.path.join(harness.out_dir, "program.log"), "ab")
        self.start()

    def start(self):
        # The program ends with 0 when it has no window and 2 when it is
        # closed, never with 1: that is, as 127, Wine giving up the start
        # (seen once under load, after a fraction of a second with nothing
        # said), and wine-start.sh starts it again.
        env = dict(PROGRAM_ENV, SONDARA_WINE_START_FAILURES="1")
        self.process = subprocess.Popen([WINE_START, self.h.program], cwd=self.h.build_dir, env=env,
                                        stdin=subprocess.DEVNULL, stdout=self.log, stderr=self.log)

    def wait_window(self):
        """Waits for the window and measures it: the client area comes from
        the system, the widgets' places from it and the layout."""

        def window():
            if self.process.poll() is not None:
                raise Failure("Sondara.exe ended with exit code %d before its window showed" %
                              self.process.returncode)
            new = self.desktop.windows("^Sondara$") - self.before
            return min(new) if new else None

        self.window = wait_for("the Sondara window", window, 30)
        # A moment for the first paint.
        time.sleep(0.3)
        info = self.h.probe_window(self.window)
        self.client = info["client"]
        dpi = info["dpi"]
        self.scale = 1.0 if self.h.layout.dpi <= 0 or dpi == self.h.layout.dpi else dpi / self.h.layout.dpi
        self.frame = self.desktop.geometry(self.window)

    # -- where things are

    def widget_rect(self, name):
        """The widget's rectangle in root coordinates."""
        cx, cy, cw, ch = self.client
        left, top, right, bottom = self.h.layout.rect(name, cw / self.scale, ch / self.scale)
        return (cx + left * self.scale, cy + top * self.scale, cx + right * self.scale, cy + bottom * self.scale)

    def widget_centre(self, name):
        left, top, right, bottom = self.widget_rect(name)
        return (left + right) / 2, (top + bottom) / 2

    def background_point(self):
        """A point of the client area outside every named widget."""
        cx, cy, cw, ch = self.client
        x, y = cx + 4, cy + ch - 4
        for name in self.h.layout.positions:
            left, top, right, bottom = self.widget_rect(name)
            if left <= x < right and top <= y < bottom:
                raise Failure("the bottom left corner of the window lies on %s" % name)
        return x, y

    def close_box(self):
        """The centre of the close box at the right end of the caption that
        Wine draws: a square as high as the caption, inside the frame."""
        x, y, width, _ = self.frame
        border = self.client[0] - x
        caption = self.client[1] - y - border
        return x + width - border - caption / 2, y + border + caption / 2

    def settle(self):
        """Waits until the program has handled all input sent so far, as a
        user waits to see the typed text before pressing Ctrl or Shift:
        the program reads those two from the keyboard's state of the moment,
        so a key still queued would take a Ctrl pressed after it as its own
        (a typed "a" would select all). Gives the probe's answer."""
        info = self.h.probe_window(self.window)
        if info.get("idle") != "yes":
            raise Failure("Sondara.exe did not catch up with its input within 10s")
        return info

    # -- what a user does

    def click(self, name):
        self.desktop.click(*self.widget_centre(name))

    def click_background(self):
        """Ends any editing, as a click beside the fields does."""
        self.desktop.click(*self.background_point())

    def type_into(self, name, text, end=None):
        """Clicks into a field, selects what it holds and types text over it."""
        self.click(name)
        self.settle()
        self.desktop.key("ctrl+a")
        self.desktop.type(text)
        if end:
            self.desktop.key(end)

    def paste_into(self, name, text, end=None):
        """Puts text on the X clipboard, clicks into a field, selects what it
        holds and pastes over it with Ctrl+V."""
        self.desktop.set_clipboard(text)
        self.click(name)
        self.settle()
        self.desktop.key("ctrl+a", "ctrl+v")
        if end:
            self.desktop.key(end)

    def enter_text(self, name, text, end=None):
        """Types text into a field, or pastes it where it holds characters
        that can't be typed."""
        if all(" " <= c <= "~" for c in text):
            self.type_into(name, text, end)
        else:
            self.paste_into(name, text, end)

    def copy_focused(self):
        """What Ctrl+A, Ctrl+C copies from the field that has the keyboard,
        or None when it copies nothing (an empty field copies nothing, and
        nothing is copied where no edit control has the keyboard)."""
        if self.settle().get("focus", "").lower() != "edit":
            return None
        sentinel = "sondara-e2e-nothing-copied-%d" % time.monotonic_ns()
        self.desktop.set_clipboard(sentinel)
        self.desktop.key("ctrl+a", "ctrl+c")

        def copied():
            text = self.desktop.clipboard()
            return text if text not in (None, sentinel) else None

        try:
            return wait_for("the copy", copied, 5)
        except Failure:
            return None

    def read(self, name):
        """A field's text, read as a person would: click into it, Ctrl+A,
        Ctrl+C, and the X clipboard. None when nothing could be copied."""
        self.click(name)
        return self.copy_focused()

    def looks_enabled(self, name):
        """True when a button's caption is drawn dark, as an enabled
        button's is; a disabled one draws it grey."""
        left, top, right, bottom = self.widget_rect(name)
        inset = 4 * self.scale
        x, y = self.frame[0], self.frame[1]
        darkest = self.desktop.darkest(self.window, left + inset - x, top + inset - y, right - left - 2 * inset,
                                       bottom - top - 2 * inset)
        return darkest < self.ENABLED_DARKNESS

    def start_check(self):
        """Presses start once the button shows that it can be pressed: the
        program enables it in an idle moment after the path came, and a
        program that lags behind the input has not had one yet."""
        wait_for("CheckStart to look enabled", lambda: self.looks_enabled("CheckStart"), 10, interval=0.2)
        self.click("CheckStart")

    def wait_message(self, what, accept, timeout=20):
        """The text of the Message field once accept(text) holds. Reading
        puts the caret in the field, which holds a new report back, so
        between reads a click beside the fields ends the editing."""

        def text():
            value = self.read("Message")
            if value is not None and accept(value):
                return value
            self.click_background()
            return None

        return wait_for(what, text, timeout, interval=0.3)

    def wait_report(self, timeout=20):
        """The report that the Message field shows once the check ended."""
        return self.wait_message("a report in Message", lambda text: text != RUNNING_TEXT, timeout)

    # -- the end

    def exit_code(self, timeout):
        try:
            return self.process.wait(timeout)
        except subprocess.TimeoutExpired:
            raise Failure("Sondara.exe still runs %.0fs later" % timeout) from None

    def running(self):
        return self.process.poll() is None

    def memory(self):
        """The program's memory as Linux counts it, in KiB: {"VmHWM": peak
        resident, "VmPeak": peak address space, ...}. The wine command
        becomes the program's own process, which Wine names after the
        program; a name other than that is a Wine that started the program
        in another process, and would give the wrong figures. That process
        is the child of wine-start.sh."""
        children = self.children()
        try:
            if len(children) != 1:
                raise OSError("wine-start.sh has %d processes under it" % len(children))
            pid = children[0]
            with open("/proc/%d/comm" % pid) as comm:
                name = comm.read().strip()
            with open("/proc/%d/status" % pid) as status:
                lines = status.read().splitlines()
        except OSError as error:
            raise Failure("no memory figures of Sondara.exe: %s" % error) from None
        if name != "Sondara.exe":
            raise Failure("process %d of the program is %r, not Sondara.exe" % (pid, name))
        return {key: int(value.split()[0]) for key, _, value in (line.partition(":") for line in lines)
                if value.strip().endswith(" kB")}

    def close(self):
        """Closes the window by its close box and gives the exit code."""
        self.desktop.click(*self.close_box())
        return self.exit_code(10)

    def end(self):
        """Whatever state the run is in: the close box, and if that does
        not end it, the process is killed."""
        if self.running():
            try:
                if self.window is not None and self.desktop.exists(self.window):
                    self.desktop.click(*self.close_box())
                self.process.wait(5)
            except (subprocess.TimeoutExpired, Failure, subprocess.SubprocessError):
                for pid in self.children():
                    try:
                        os.kill(pid, signal.SIGKILL)
                    except OSError:
                        pass
                self.process.kill()
                self.process.wait()
        self.log.close()

    def children(self):
        """The processes that wine-start.sh started for the program."""
        found = []
        for entry in os.listdir("/proc"):
            if not entry.isdigit():
                continue
            try:
                with open("/proc/%s/stat" % entry) as stat:
                    fields = stat.read().rsplit(")", 1)[1].split()
            except OSError:
                continue
            if int(fields[1]) == self.process.pid:
                found.append(int(entry))
        return found


# ---------------------------------------------------------------------------
# The run of several scenarios


class Harness:
    def __init__(self, build_dir, out_dir, probe=None):
        """build_dir holds Sondara.exe, Main.jpn and sondara-check.exe (a
        build, or a release unpacked); probe is window-probe.exe, by default
        from build_dir too."""
        self.build_dir = os.path.abspath(build_dir)
        self.out_dir = os.path.abspath(out_dir)
        self.files_dir = os.path.join(self.out_dir, "files")
        self.program = os.path.join(self.build_dir, "Sondara.exe")
        self.checker = os.path.join(self.build_dir, "sondara-check.exe")
        self.probe = os.path.abspath(probe) if probe else os.path.join(self.build_dir, "window-probe.exe")
        for needed in (self.program, self.probe, os.path.join(self.build_dir, "Main.jpn")):
            if not os.path.isfile(needed):
                raise Failure("%s is missing: build the windows preset first" % needed)
        self.layout = Layout(os.path.join(self.build_dir, "Main.jpn"))
        self.desktop = Desktop()
        self.scenario = "run"
        self.shots = 0
        self.programs = []

    def start(self):
        """Starts Sondara.exe and waits for its window; the scenario's end
        closes it should the scenario not have."""
        program = Program(self)
        self.programs.append(program)
        program.wait_window()
        return program

    def end_programs(self):
        while self.programs:
            self.programs.pop().end()

    def probe_at(self, x, y):
        """What window-probe tells of the top-level window at a root point."""
        out = run_wine([self.probe, str(int(x)), str(int(y))]).stdout.decode("utf-8", "replace")
        info = {"children": []}
        for line in out.splitlines():
            key, _, rest = line.partition(" ")
            if key == "client":
                info["client"] = tuple(int(v) for v in rest.split())
            elif key == "dpi":
                info["dpi"] = float(rest)
            elif key in ("class", "title", "focus", "idle"):
                info[key] = rest
            elif key == "child":
                kind, _, text = rest.partition(" ")
                info["children"].append((kind, text))
        if "client" not in info:
            raise Failure("window-probe found no window at %d, %d" % (x, y))
        return info

    def windows_of_class(self, name):
        """The visible top-level windows of a Windows class, a tooltip's or
        a popup menu's, as (left, top, right, bottom, text) each."""
        out = run_wine([self.probe, "--class", name]).stdout.decode("utf-8", "replace")
        found = []
        for line in out.splitlines():
            key, _, rest = line.partition(" ")
            if key == "window":
                fields = rest.split(" ", 4)
                found.append(tuple(int(v) for v in fields[:4]) + (fields[4] if len(fields) > 4 else "",))
        return found

    def catch_addresses(self):
        """Makes address-catcher.exe the handler of http addresses, so that
        each address the program asks the shell to open lands as a line in
        a file, as it was handed over. Gives the file's path, emptied."""
        catcher = os.path.join(self.build_dir, "address-catcher.exe")
        if not os.path.isfile(catcher):
            raise Failure("%s is missing: build the windows preset first" % catcher)
        caught = os.path.join(self.out_dir, "opened-addresses.txt")
        command = '"%s" "%s" "%%1"' % (wine_path(catcher), wine_path(caught))
        run_wine(["reg", "add", "HKLM\\Software\\Classes\\http\\shell\\open\\command", "/ve", "/t",
                  "REG_SZ", "/d", command, "/f"], timeout=60)
        open(caught, "wb").close()
        return caught

    def probe_window(self, window):
        x, y, width, height = self.desktop.geometry(window)
        return self.probe_at(x + width // 2, y + height // 2)

    def begin_scenario(self, name):
        self.scenario = name
        self.shots = 0
        for old in os.listdir(self.out_dir):
            if old.startswith(name + "-") and old.endswith(".png"):
                os.remove(os.path.join(self.out_dir, old))

    def shot(self, step, window="root"):
        """A picture of the step: build/e2e/<scenario>-<n>-<step>.png."""
        self.shots += 1
        path = os.path.join(self.out_dir, "%s-%02d-%s.png" % (self.scenario, self.shots, step))
        self.desktop.screenshot(path, window)
        return path

    def check_report(self, path, with_peak=False):
        """The report that sondara-check.exe gives for a path, from its
        JSON output; with_peak gives the peak resident memory of its Wine
        process in KiB beside it."""
        if not os.path.isfile(self.checker):
            raise Failure("%s is missing: build the windows preset first" % self.checker)
        timed = ["/usr/bin/time", "-f", "peak %M"] if with_peak else []
        result = run(timed + [WINE_START, self.checker, "--json", path], timeout=60, env=PROGRAM_ENV, check=False)
        if result.returncode not in (0, 1):
            raise Failure("sondara-check.exe --json ended with %d" % result.returncode)
        reports = json.loads(result.stdout.decode("ascii"))
        if len(reports) != 1:
            raise Failure("sondara-check.exe gave %d reports for one file" % len(reports))
        if with_peak:
            peak = re.findall(rb"^peak (\d+)$", result.stderr, re.MULTILINE)
            if not peak:
                raise Failure("no peak memory of sondara-check.exe: %r" % result.stderr[-200:])
            return reports[0]["report"], int(peak[-1])
        return reports[0]["report"]

    def file(self, name, content=b""):
        path = os.path.join(self.files_dir, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as out:
            out.write(content)
        return path

    def close(self):
        self.end_programs()
        self.desktop.release_clipboard()

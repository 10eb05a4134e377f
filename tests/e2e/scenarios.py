"""End-to-end scenarios of the real Sondara.exe under Wine, each driven as a
user drives the program: real X input (mouse, keyboard, a file dragged in
over XDND), with the results read back as a person could (the X clipboard,
the text of a message box, pictures of each step in build/e2e/).

    python3 scenarios.py --build BUILD_DIR --out OUT_DIR [SCENARIO...]

Runs every scenario, or the ones named, and prints one line per scenario.
Exit status 0 when all passed, 1 otherwise, 2 for bad usage. Run it through
tests/e2e/run.sh, which provides the Wine session.

The clipboard turns the report's line ends, CR LF, into LF: Wine hands text
to X without the CR. A report read from the Message field is therefore
compared with the checker's report with CR LF replaced by LF, after making
sure that the checker's report has CR LF and nothing else as line ends.
"""

import argparse
import os
import struct
import sys
import time
import traceback
import wave

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import RUNNING_TEXT, Failure, Harness, wait_for, wine_path  # noqa: E402
from xdnd_drop import drop_files  # noqa: E402

ALL_CLEAR = "チェック完了しました。\r\n"
NO_FILE = "ファイルがありません。\r\n"
NOT_RIFF = "RIFF形式ではありません。\r\n"
NOT_WAVE_BOX = "Wavファイルではありません。"
FILE_DIALOG_TITLE = "ファイルの選択"
RELEASE_NOTE_TIP = "このバージョンのリリースノートを開きます"
SEARCH_ADDRESS = "http://www.sondara.example/search.php?query="
RELEASE_NOTE_ADDRESS = "http://www.sondara.example/press_release.php?file_name=sondara_100"
TOOLTIP_CLASS = "tooltips_class32"
POPUP_MENU_CLASS = "#32768"
# The frame of a popup menu around its rows, in pixels.
MENU_BORDER = 3
# The most that one check of a file may add to the peak resident memory of
# the program's Wine process. Wine itself holds about 61 MiB of it before
# any check and passes 64 MiB with the first check of any file.
CHECK_GROWTH_LIMIT_KIB = 16 * 1024
# The most that the Wine process of sondara-check.exe may hold at its peak,
# Wine's own memory included.
CHECKER_PEAK_LIMIT_KIB = 64 * 1024

SCENARIOS = []


def scenario(function):
    SCENARIOS.append(function)
    return function


# ---------------------------------------------------------------------------
# Files and expectations


def as_copied(report):
    """A report as the X clipboard gives it: CR LF becomes LF."""
    if report.replace("\r\n", "").count("\r") or report.replace("\r\n", "").count("\n"):
        raise Failure("the report has a line end other than CR LF: %r" % report)
    return report.replace("\r\n", "\n")


def expect(what, actual, wanted):
    if actual != wanted:
        raise Failure("%s: wanted %r, got %r" % (what, wanted, actual))


def sound_file(h, name):
    """A sound PCM file: 16 bits, 44100 Hz, stereo, a tenth of a second."""
    path = os.path.join(h.files_dir, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with wave.open(path, "wb") as out:
        out.setnchannels(2)
        out.setsampwidth(2)
        out.setframerate(44100)
        out.writeframes(b"\x00\x01\x00\xff" * 4410)
    return path


def findings_file(h, name):
    """A RIFF file whose format fails every test and whose audio data is
    empty: floating point tag, 0 Hz, 32 bits, six channels, data size 0."""
    fmt = struct.pack("<HHIIHH", 3, 6, 0, 0, 0, 32)
    body = b"WAVE" + b"fmt " + struct.pack("<I", len(fmt)) + fmt + b"data" + struct.pack("<I", 0)
    return h.file(name, b"RIFF" + struct.pack("<I", len(body)) + body)


def endless_file(h, name):
    """A file that is not RIFF and far too large to be scanned during a
    test: a sparse 1 TiB of zeros. Cutting it short ends its check."""
    path = h.file(name)
    os.truncate(path, 1 << 40)
    return path


def many_chunks_file(h, name, count):
    """A sound file whose format and audio come behind count empty junk
    chunks: 8 bytes each on disk, an object each to a reader that keeps
    every chunk."""
    fmt = struct.pack("<HHIIHH", 1, 2, 44100, 44100 * 4, 4, 16)
    tail = b"fmt " + struct.pack("<I", len(fmt)) + fmt + b"data" + struct.pack("<I", 4) + bytes(4)
    path = h.file(name)
    with open(path, "wb") as out:
        out.write(b"RIFF" + struct.pack("<I", 4 + 8 * count + len(tail)) + b"WAVE")
        block = 100000
        for done in range(0, count, block):
            out.write((b"junk" + bytes(4)) * min(block, count - done))
        out.write(tail)
    return path


def check_and_read(h, program, path):
    """Types a path into WaveFilePath, presses start and gives the report
    that Message shows."""
    program.type_into("WaveFilePath", wine_path(path))
    h.shot("path-typed", program.window)
    program.start_check()
    report = program.wait_report()
    h.shot("report-selected", program.window)
    shot_report(h, program)
    return report


def shot_report(h, program):
    """A picture of the report as the field draws it once the caret has
    left it (while the caret is in it, the edit control shows it)."""
    program.click_background()
    h.desktop.move(*program.background_point())
    time.sleep(0.3)
    h.shot("report-drawn", program.window)


def close_normally(h, program):
    """The close box ends the program with exit code 2."""
    expect("exit code after the close box", program.close(), 2)


# ---------------------------------------------------------------------------
# Scenarios


@scenario
def typed_path_all_clear(h):
    """A typed path of a sound file, start: the all-clear line."""
    path = sound_file(h, "sound.wav")
    program = h.start()
    h.shot("opened", program.window)
    program.type_into("WaveFilePath", wine_path(path))
    h.shot("path-typed", program.window)
    expect("WaveFilePath after typing", program.read("WaveFilePath"), wine_path(path))
    program.start_check()
    expect("Message", program.wait_report(), as_copied(ALL_CLEAR))
    shot_report(h, program)
    close_normally(h, program)


@scenario
def findings_as_checker_reports(h):
    """A file with several findings: the report, line for line, is the one
    that sondara-check.exe --json gives for the same path."""
    path = findings_file(h, "findings.wav")
    wanted = h.check_report(wine_path(path))
    lines = wanted.split("\r\n")[:-1]
    if len(lines) < 4:
        raise Failure("the checker found only %d findings in %s: %r" % (len(lines), path, wanted))
    program = h.start()
    report = check_and_read(h, program, path)
    got = report.split("\n")
    for number, line in enumerate(lines, 1):
        expect("line %d of the report" % number, got[number - 1] if number <= len(got) else None, line)
    expect("the whole report", report, as_copied(wanted))
    close_normally(h, program)


@scenario
def missing_file(h):
    """A path that doesn't exist: the no-file line."""
    path = os.path.join(h.files_dir, "no-such-file.wav")
    if os.path.exists(path):
        os.remove(path)
    program = h.start()
    expect("Message", check_and_read(h, program, path), as_copied(NO_FILE))
    close_normally(h, program)


@scenario
def not_riff(h):
    """A file that is not RIFF, though named .wav: the not-RIFF line."""
    path = h.file("text-named.wav", b"This is a text file, not a sound.\r\n" * 8)
    program = h.start()
    expect("Message", check_and_read(h, program, path), as_copied(NOT_RIFF))
    close_normally(h, program)


@scenario
def japanese_path(h):
    """A path with Japanese in its folder and file name. xdotool can't type
    Japanese into Wine (the characters are dropped), so the path goes in as
    a user would bring it from elsewhere: on the X clipboard, pasted into
    the field with Ctrl+V."""
    path = sound_file(h, os.path.join("日本語の音", "テスト音声.wav"))
    program = h.start()
    program.paste_into("WaveFilePath", wine_path(path))
    h.shot("pasted", program.window)
    expect("WaveFilePath after the paste", program.read("WaveFilePath"), wine_path(path))
    program.start_check()
    expect("Message", program.wait_report(), as_copied(ALL_CLEAR))
    shot_report(h, program)
    close_normally(h, program)


@scenario
def file_dialog(h):
    """選択... opens the file dialog; a file name typed there and Enter put
    the path in WaveFilePath."""
    path = sound_file(h, "picked.wav")
    program = h.start()
    before = h.desktop.windows()
    program.click("SelectWaveFile")
    dialog = h.desktop.new_window(before, "the file dialog")

    def ready():
        # Typing begins once the dialog has put the keyboard in its name
        # field and handled what came before.
        info = h.probe_window(dialog)
        return info if info.get("focus", "").lower() == "edit" and info.get("idle") == "yes" else None

    info = wait_for("the file dialog to give its name field the keyboard", ready, 15)
    expect("title of the new window", info.get("title"), FILE_DIALOG_TITLE)
    h.shot("dialog-open")
    h.desktop.type(wine_path(path))
    h.shot("name-typed")
    h.desktop.key("Return")
    h.desktop.wait_gone(dialog, "the file dialog to close")
    h.shot("dialog-closed", program.window)
    expect("WaveFilePath after the dialog", program.read("WaveFilePath"), wine_path(path))
    close_normally(h, program)


def drop_on(h, program, path):
    """Drags a file from an X client onto the middle of the window, as a
    file manager does, with the pointer over the window."""
    x, y, width, height = program.client
    drop_x, drop_y = x + width // 2, y + height // 2
    h.desktop.move(drop_x, drop_y)
    if not drop_files(drop_x, drop_y, [path]):
        raise Failure("the window did not take the drop of %s" % path)
    time.sleep(0.5)


@scenario
def drop_wav(h):
    """A dropped .wav shows its path in WaveFilePath."""
    path = sound_file(h, "dropped.wav")
    program = h.start()
    drop_on(h, program, path)
    h.shot("dropped", program.window)
    expect("WaveFilePath after the drop", program.read("WaveFilePath"), wine_path(path))
    close_normally(h, program)


@scenario
def drop_txt_message_box(h):
    """A dropped .txt brings the message box "Wavファイルではありません。"
    with caption "Sondara"; OK closes it and the path stays as it was."""
    text = h.file("notes.txt", b"not a sound\r\n")
    program = h.start()
    program.type_into("WaveFilePath", "keep-me", end="Return")
    before = h.desktop.windows()
    drop_on(h, program, text)
    box = h.desktop.new_window(before, "the message box")
    time.sleep(0.3)
    h.shot("message-box")
    info = h.probe_window(box)
    expect("caption of the message box", info.get("title"), "Sondara")
    texts = [text for kind, text in info["children"] if kind.lower() == "static" and text]
    expect("text of the message box", texts, [NOT_WAVE_BOX])
    buttons = [text for kind, text in info["children"] if kind.lower() == "button"]
    expect("buttons of the message box", buttons, ["OK"])
    # As a user: a click on the box's caption, then Enter on its OK button.
    bx, by, bwidth, _ = h.desktop.geometry(box)
    h.desktop.click(bx + bwidth // 2, (by + info["client"][1]) / 2)
    h.desktop.key("Return")
    h.desktop.wait_gone(box, "the message box to close")
    h.shot("box-closed", program.window)
    if not program.running():
        raise Failure("the program ended with the message box")
    expect("WaveFilePath after the refused drop", program.read("WaveFilePath"), "keep-me")
    close_normally(h, program)


@scenario
def tab_between_fields(h):
    """Tab moves from WaveFilePath to Message and back."""
    program = h.start()
    program.type_into("WaveFilePath", "first")
    h.desktop.key("Tab")
    h.shot("tab-to-message", program.window)
    # Typed after the Tab, this lands in Message; had the Tab not moved,
    # it would stand behind "first".
    h.desktop.type("second")
    expect("the field after one Tab", program.copy_focused(), "second")
    h.desktop.key("Tab")
    h.shot("tab-to-path", program.window)
    expect("the field after two Tabs", program.copy_focused(), "first")
    close_normally(h, program)


def end_during_check(h, close):
    """Starts a check of a file too large to finish, ends the program with
    close(program) while the check runs, and sees the window go at once,
    the process stay until the check ends, and exit code 2."""
    path = endless_file(h, "endless.wav")
    try:
        program = h.start()
        program.type_into("WaveFilePath", wine_path(path))
        program.start_check()
        program.wait_message("Message to show that the check runs", lambda text: text == RUNNING_TEXT)
        program.click_background()
        h.shot("running", program.window)
        close(program)
        h.desktop.wait_gone(program.window, "the window to go", timeout=5)
        h.shot("window-gone")
        time.sleep(1)
        if not program.running():
            raise Failure("the program ended before its check did (exit code %d)" % program.process.returncode)
        # Cut short, the file ends its check, and the program its run.
        os.truncate(path, 0)
        expect("exit code", program.exit_code(30), 2)
    finally:
        os.truncate(path, 0)


@scenario
def esc_during_check(h):
    """Esc while a check runs: the window goes, exit code 2 once the check
    has ended."""

    def press_escape(program):
        h.desktop.key("Escape")

    end_during_check(h, press_escape)


@scenario
def close_box_during_check(h):
    """The close box while a check runs: as with Esc."""

    def click_close_box(program):
        h.desktop.click(*program.close_box())

    end_during_check(h, click_close_box)


def opened_addresses(caught):
    with open(caught, encoding="utf-8") as lines:
        return lines.read().splitlines()


def wait_opened(caught, count, what):
    """The addresses opened so far, once there are count of them."""
    return wait_for(what, lambda: len(opened_addresses(caught)) >= count and opened_addresses(caught), 20)


@scenario
def tooltip_on_hover(h):
    """The mouse over リリースノート brings up its tooltip below the button;
    moving off takes it down."""
    program = h.start()
    left, top, right, bottom = program.widget_rect("ReleaseNote")
    h.desktop.move(*program.widget_centre("ReleaseNote"))

    def tip():
        tips = [t for t in h.windows_of_class(TOOLTIP_CLASS) if t[4]]
        return tips[0] if tips else None

    tip_left, tip_top, _, _, text = wait_for("the tooltip", tip, 10)
    h.shot("tooltip")
    expect("the tooltip's text", text, RELEASE_NOTE_TIP)
    if abs(tip_left - int(left)) > 1 or not 0 <= tip_top - int(bottom) <= 10:
        raise Failure("the tooltip stands at %d, %d, not below the button's corner %d, %d" %
                      (tip_left, tip_top, left, bottom))
    h.desktop.move(*program.background_point())
    wait_for("the tooltip to go", lambda: not h.windows_of_class(TOOLTIP_CLASS), 10)
    h.shot("tooltip-gone")
    close_normally(h, program)


@scenario
def search_chosen_line(h):
    """After a check with findings, エラーを検索 offers a popup of the
    report's lines, one item each in report order: clicking item k opens the
    site's search for line k, with the line as it stands. Items are clicked
    where a popup of exactly that many rows has them, so a missing or extra
    item shifts some click onto the wrong line. Esc closes the popup and
    opens nothing."""
    caught = h.catch_addresses()
    path = findings_file(h, "search.wav")
    lines = h.check_report(wine_path(path)).split("\r\n")[:-1]
    program = h.start()
    check_and_read(h, program, path)

    def open_popup():
        program.click("SearchError")
        return wait_for("the popup menu", lambda: h.windows_of_class(POPUP_MENU_CLASS), 10)[0]

    for index, line in enumerate(lines):
        before = len(opened_addresses(caught))
        left, top, right, bottom, _ = open_popup()
        row = (bottom - top - 2 * MENU_BORDER) / len(lines)
        h.desktop.move((left + right) / 2, top + MENU_BORDER + (index + 0.5) * row)
        if index == 1:
            time.sleep(0.3)
            h.shot("popup-second-item")
        h.desktop.click((left + right) / 2, top + MENU_BORDER + (index + 0.5) * row)
        wait_for("the popup to close", lambda: not h.windows_of_class(POPUP_MENU_CLASS), 10)
        got = wait_opened(caught, before + 1, "the address of line %d" % (index + 1))[-1]
        expect("the address of line %d" % (index + 1), got, SEARCH_ADDRESS + line)

    # Esc, pressed again should the first be lost: Wine now and then drops
    # a key that comes while the menu takes the keyboard over.
    opened = len(opened_addresses(caught))
    open_popup()
    time.sleep(0.5)
    for attempt in range(3):
        h.desktop.key("Escape")
        try:
            wait_for("the popup to close", lambda: not h.windows_of_class(POPUP_MENU_CLASS), 3)
            break
        except Failure:
            if attempt == 2:
                raise
    time.sleep(2)
    expect("addresses opened after Esc", opened_addresses(caught)[opened:], [])
    close_normally(h, program)


@scenario
def release_note(h):
    """リリースノート opens the release note of the running version."""
    caught = h.catch_addresses()
    program = h.start()
    program.click("ReleaseNote")
    expect("the address opened", wait_opened(caught, 1, "the release note's address"), [RELEASE_NOTE_ADDRESS])
    close_normally(h, program)


@scenario
def many_chunks_bounded_memory(h):
    """A file of ten million empty chunks (80 MB): sondara-check.exe checks
    it within CHECKER_PEAK_LIMIT_KIB, Wine included; in the program the
    report is the checker's, no failure box comes up, and the check costs
    the program's Wine process at most CHECK_GROWTH_LIMIT_KIB of peak
    resident memory (Wine's window, fonts and libraries hold about 64 MiB
    of their own, half of it files mapped in). A
    reader that kept every chunk added 1.1 GiB here, which in the 32-bit
    program ends in the out-of-memory failure box.

    The growth counts from a check of a small file in the same process:
    Wine's edit control, clipboard and the worker's thread cost a few MiB
    of their own the first time, whatever the file. The figures (VmHWM and
    VmPeak after start-up, before and after the check) go to the log."""
    path = many_chunks_file(h, "many-chunks.wav", 10000000)
    try:
        wanted, checker_peak = h.check_report(wine_path(path), with_peak=True)
        expect("the checker's report", wanted, ALL_CLEAR)
        print("   sondara-check.exe: peak resident %d KiB" % checker_peak, flush=True)
        if checker_peak > CHECKER_PEAK_LIMIT_KIB:
            raise Failure("sondara-check.exe took %d KiB at its peak, over %d" % (checker_peak, CHECKER_PEAK_LIMIT_KIB))
        program = h.start()
        idle = program.memory()
        expect("Message after a small file", check_and_read(h, program, sound_file(h, "sound.wav")),
               as_copied(ALL_CLEAR))
        program.type_into("WaveFilePath", wine_path(path))
        before = program.memory()
        windows = h.desktop.windows(".+")
        program.start_check()
        started = time.monotonic()

        def ended(text):
            if h.desktop.windows(".+") - windows:
                raise Failure("a window came up during the check (see the picture)")
            return text != RUNNING_TEXT

        report = program.wait_message("a report in Message", ended, timeout=180)
        seconds = time.monotonic() - started
        after = program.memory()
        shot_report(h, program)
        expect("Message", report, as_copied(wanted))
        expect("windows that came up", h.desktop.windows(".+") - windows, set())
        for when, figures in (("after start-up", idle), ("before the check", before), ("after the check", after)):
            print("   %-16s VmHWM %6d KiB, VmPeak %8d KiB, resident now %6d KiB: %6d anonymous, %6d of files" %
                  (when, figures["VmHWM"], figures["VmPeak"], figures["VmRSS"], figures["RssAnon"], figures["RssFile"]),
                  flush=True)
        growth = after["VmHWM"] - before["VmHWM"]
        print("   the check grew VmHWM by %d KiB; its report read %.1fs after start" % (growth, seconds), flush=True)
        if growth > CHECK_GROWTH_LIMIT_KIB:
            raise Failure("the check grew Sondara.exe's peak resident memory by %d KiB, over %d" %
                          (growth, CHECK_GROWTH_LIMIT_KIB))
        close_normally(h, program)
    finally:
        os.remove(path)


# ---------------------------------------------------------------------------
# The run


def main(argv):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", required=True, help="the folder of Sondara.exe")
    parser.add_argument("--out", required=True, help="the folder for pictures, files and logs")
    parser.add_argument("--list", action="store_true", help="list the scenarios and stop")
    parser.add_argument("names", nargs="*", help="scenarios to run (all by default)")
    args = parser.parse_args(argv[1:])
    names = [s.__name__ for s in SCENARIOS]
    if args.list:
        print("\n".join(names))
        return 0
    unknown = [n for n in args.names if n not in names]
    if unknown:
        print("scenarios.py: no scenario %s (there are: %s)" % (", ".join(unknown), ", ".join(names)),
              file=sys.stderr)
        return 2
    chosen = [s for s in SCENARIOS if not args.names or s.__name__ in args.names]

    os.makedirs(args.out, exist_ok=True)
    try:
        h = Harness(args.build, args.out)
    except Failure as failure:
        print("scenarios.py: %s" % failure, file=sys.stderr)
        return 1
    results = []
    try:
        for function in chosen:
            name = function.__name__
            print("-- %s" % name, flush=True)
            start = time.monotonic()
            h.begin_scenario(name)
            outcome = "PASS"
            detail = ""
            try:
                function(h)
            except Failure as failure:
                outcome, detail = "FAIL", str(failure)
            except Exception:  # a fault of the harness is a failure too
                outcome, detail = "FAIL", traceback.format_exc().strip().splitlines()[-1]
                traceback.print_exc()
            if outcome != "PASS":
                # The screen as the failure left it.
                try:
                    h.shot("failed")
                except Exception as error:
                    print("   no picture of the failure: %s" % error, flush=True)
            h.end_programs()
            seconds = time.monotonic() - start
            if detail:
                print("   %s" % detail, flush=True)
            results.append((name, outcome, seconds, detail))
    finally:
        h.close()

    print()
    print("== end-to-end summary (pictures in %s)" % args.out)
    for name, outcome, seconds, detail in results:
        print("%-4s %-30s %5.1fs%s" % (outcome, name, seconds, "  " + detail if detail else ""))
    failed = sum(1 for r in results if r[1] != "PASS")
    print("%d scenarios: %d passed, %d failed" % (len(results), len(results) - failed, failed))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))

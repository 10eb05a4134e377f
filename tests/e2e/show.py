"""Shows the program at work, for run.sh on a virtual display: starts
Sondara.exe, enters a file's path into WaveFilePath as a user does, presses
start, waits for the report in Message, photographs the window and closes
it by its close box.

    python3 show.py --build BUILD_DIR [--probe window-probe.exe] --out OUT_DIR --screenshot PNG
                    [--as WINDOWS_PATH] FILE

--as types the path under which the program sees FILE in its own drive
(C:\\...) instead of the path through drive Z:, which names the folders of
the machine.

Prints the report as the window shows it. Exit status 0 when all of that
went as it should and the program ended with exit code 2, 1 otherwise.
"""

import argparse
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import Failure, Harness, wine_path  # noqa: E402


def main(argv):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", required=True)
    parser.add_argument("--probe")
    parser.add_argument("--out", required=True)
    parser.add_argument("--screenshot", required=True)
    parser.add_argument("--as", dest="typed")
    parser.add_argument("file")
    args = parser.parse_args(argv[1:])
    os.makedirs(args.out, exist_ok=True)
    try:
        h = Harness(args.build, args.out, args.probe)
    except Failure as failure:
        print("show.py: %s" % failure, file=sys.stderr)
        return 1
    try:
        program = h.start()
        program.enter_text("WaveFilePath", args.typed or wine_path(args.file))
        program.start_check()
        report = program.wait_report()
        # The report goes back into the field once the caret has left it.
        program.click_background()
        h.desktop.move(*program.background_point())
        h.desktop.screenshot(args.screenshot, program.window)
        print("The window's report for %s:" % args.file)
        print(report, end="" if report.endswith("\n") else "\n")
        status = program.close()
        print("Sondara closed by its close box, exit code %d (2 is a normal close)" % status)
        return 0 if status == 2 else 1
    except Failure as failure:
        print("show.py: %s" % failure, file=sys.stderr)
        return 1
    finally:
        h.close()


if __name__ == "__main__":
    sys.exit(main(sys.argv))

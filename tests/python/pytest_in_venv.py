"""Runs Debian's pytest, whose folder comes after the venv's own, on the
suite, with the interpreter of the venv that has the wheel installed.

    pytest_in_venv.py DEBIAN-FOLDER SUITE-FOLDER

A file rather than standard input: the worker processes of the Dask
recipe start by reading the main module's file.
"""

import sys


def main():
    debian, suite = sys.argv[1], sys.argv[2]
    sys.path.append(debian)
    import pytest

    # Debian's Dask warns of a deprecation in its event loop's library.
    quiet = ["-W", "ignore:make_current is deprecated:DeprecationWarning"]
    return pytest.main(["-q", "-p", "no:cacheprovider", *quiet, "--rootdir", suite, suite])


if __name__ == "__main__":
    sys.exit(main())

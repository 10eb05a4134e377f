"""The wheel of sondara: setuptools packs the extension built by CMake,
which scripts/build-wheel.sh has put into sondara/, and the version from
the file the build wrote beside it; the wheel is tagged for this Python
and platform, since the extension is compiled for them."""

from pathlib import Path

from setuptools import setup
from setuptools.dist import Distribution


class CompiledDistribution(Distribution):
    """A distribution that holds compiled code, though setuptools built none."""

    def has_ext_modules(self) -> bool:
        return True


setup(
    version=(Path(__file__).parent / "version.txt").read_text().strip(),
    distclass=CompiledDistribution,
)

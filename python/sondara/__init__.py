"""Sondara's check of WAV files, inside Python.

``check`` runs the check of ``sondara-check`` on a file or on a file's bytes
held in memory, at the speed of reading headers, and gives a ``Result``
whose ``to_dict()`` is the checker's ``--json`` object of that file;
``check_many`` checks many on threads of their own, in order; ``levels``
measures the audio as ``--levels`` (and ``--loudness``) does.

Paths are ``str`` or ``os.PathLike``; bytes are ``bytes``, ``bytearray``,
``memoryview`` or any other C-contiguous buffer, shown under ``name``.
A path that holds no file to check raises the ``OSError`` the system
would: ``FileNotFoundError``, ``IsADirectoryError``, ``PermissionError``;
an argument of another type raises ``TypeError``.
"""

from __future__ import annotations

import collections
import errno
import json
import os
import threading
from typing import Any, Deque, Iterable, Iterator, Optional, Tuple, Union

from . import _sondara
from ._results import Finding, FormatFacts, Levels, Result

__all__ = [
    "CheckIterator",
    "Finding",
    "FormatFacts",
    "Levels",
    "LevelsError",
    "Result",
    "Source",
    "check",
    "check_many",
    "levels",
    "loudness",
    "__version__",
]

#: The version of the package, which is that of sondara-check.
__version__: str = _sondara.__version__

#: A path, a file's bytes, or (for check_many) a pair of a name and bytes.
Source = Union[str, "os.PathLike[str]", "os.PathLike[bytes]", bytes, bytearray, memoryview]

#: The path shown for bytes given without a name.
DEFAULT_NAME = "<bytes>"

_DONE, _MISSING, _FOLDER, _UNREADABLE, _NOT_MEASURED, _FAILED = range(6)


class LevelsError(ValueError):
    """The audio of a file can't be measured (no data chunk, a format the
    meters don't read, a read that failed): ``reason`` is the checker's
    ``error`` for it, ``path`` the file's."""

    def __init__(self, reason: str, path: str) -> None:
        super().__init__(f"{path}: {reason}")
        self.reason = reason
        self.path = path


def _prepare(source: Any, name: Optional[str]) -> Tuple[bool, Any, str]:
    """(is a path, the path's bytes or a memoryview, the path shown)."""
    if isinstance(source, (str, os.PathLike)):
        if name is not None:
            raise TypeError("name= is for bytes; a path is shown as itself")
        path = os.fsencode(os.fspath(source))
        if b"\0" in path:
            raise ValueError("embedded null byte in the path")
        return True, path, os.fsdecode(path)
    if isinstance(source, (bytes, bytearray, memoryview)) or _is_buffer(source):
        view = memoryview(source)
        if not view.c_contiguous:
            raise TypeError("sondara reads bytes from a C-contiguous buffer only")
        shown = DEFAULT_NAME if name is None else name
        if not isinstance(shown, str):
            raise TypeError(f"name must be str, not {type(shown).__name__}")
        return False, view, shown
    raise TypeError(f"a path (str or os.PathLike) or bytes, not {type(source).__name__}")


def _is_buffer(source: Any) -> bool:
    try:
        memoryview(source)
    except TypeError:
        return False
    return True


def _error_for(state: int, text: bytes, path: str) -> Exception:
    """The exception of a source that gave no result."""
    if state == _MISSING:
        return FileNotFoundError(errno.ENOENT, os.strerror(errno.ENOENT), path)
    if state == _FOLDER:
        return IsADirectoryError(errno.EISDIR, os.strerror(errno.EISDIR), path)
    if state == _UNREADABLE:
        # The system's own reason, asked again.
        try:
            with open(path, "rb"):
                pass
        except OSError as error:
            return error
        return OSError(errno.EIO, "the file could not be opened for reading", path)
    if state == _NOT_MEASURED:
        return LevelsError(text.decode("utf-8", "replace"), path)
    reason = text.decode("utf-8", "replace")
    return MemoryError(f"{path}: {reason}") if reason == "out of memory" else RuntimeError(f"{path}: {reason}")


def _result_of(answer: Tuple[int, bytes], path: str) -> Result:
    state, text = answer
    if state != _DONE:
        raise _error_for(state, text, path)
    return Result.from_dict(json.loads(text)[0])


def check(source: Source, *, name: Optional[str] = None) -> Result:
    """Checks a WAV file, as ``sondara-check --json`` does.

    ``source`` is a path, or a file's bytes (``bytes``, ``bytearray``,
    ``memoryview`` or any C-contiguous buffer), shown as ``name``
    (``"<bytes>"`` when not given). The bytes give the result their file
    on disk gives. Runs without the GIL.

    Raises ``FileNotFoundError`` for a missing path, ``IsADirectoryError``
    for a folder, ``PermissionError`` or another ``OSError`` for a file
    that can't be opened, each with the path as ``filename``; ``TypeError``
    for a source of another type.
    """
    is_path, data, shown = _prepare(source, name)
    answer = _sondara.check_path(data) if is_path else _sondara.check_bytes(data, shown)
    return _result_of(answer, shown)


def levels(source: Source, loudness: bool = False, *, name: Optional[str] = None) -> Levels:
    """Measures the audio of a WAV file, as ``sondara-check --levels --json``
    (with ``--loudness`` when ``loudness`` is true) does: peak, RMS, DC
    offset, full-scale samples, silence, clipping runs, noise floor and
    stereo pairs of each channel, and the loudness and true peak when asked.

    ``source`` and ``name`` are those of ``check``, with its exceptions;
    audio that can't be measured raises ``LevelsError``. Runs without the GIL.
    """
    is_path, data, shown = _prepare(source, name)
    loud = bool(loudness)
    state, text = _sondara.levels_path(data, loud) if is_path else _sondara.levels_bytes(data, shown, loud)
    if state != _DONE:
        raise _error_for(state, text, shown)
    return Levels.from_dict(json.loads(text)[0])


def loudness(source: Source, *, name: Optional[str] = None) -> Levels:
    """The levels with the loudness and each channel's true peak, as
    ``sondara-check --levels --loudness --json`` gives them: the same as
    ``levels(source, loudness=True)``, whose ``loudness`` member then holds
    the integrated loudness, the loudness range and the maxima."""
    return levels(source, True, name=name)


class CheckIterator(Iterator[Union[Result, Exception]]):
    """The results of ``check_many``, in the order of its sources.

    A source that gives no result (a missing file, a folder, an item of
    another type) raises its exception from the ``next()`` that reaches it,
    or, with ``errors="return"``, gives the exception in place of a result;
    either way the iterator goes on with the next source.
    """

    def __init__(self, sources: Iterable[Any], jobs: int, errors: str) -> None:
        self._sources = iter(sources)
        self._window = 8 * jobs
        self._raise = errors == "raise"
        self._queue = _sondara.CheckQueue(jobs)
        # One entry a source taken and not yet given: (path shown, the bytes
        # it holds alive or None, or the exception it gave on the way in).
        self._pending: Deque[Tuple[str, Any, Optional[Exception]]] = collections.deque()
        self._exhausted = False
        self._lock = threading.Lock()

    def _fill(self) -> None:
        while not self._exhausted and len(self._pending) < self._window:
            try:
                item = next(self._sources)
            except StopIteration:
                self._exhausted = True
                return
            try:
                name = None
                if isinstance(item, tuple) and len(item) == 2 and isinstance(item[0], str):
                    name, item = item
                is_path, data, shown = _prepare(item, name)
            except TypeError as error:
                self._pending.append((repr(item)[:80], None, error))
                continue
            if is_path:
                self._queue.put_path(data)
                self._pending.append((shown, None, None))
            else:
                self._queue.put_bytes(data, shown)
                self._pending.append((shown, data, None))

    def __iter__(self) -> "CheckIterator":
        return self

    def __next__(self) -> Union[Result, Exception]:
        with self._lock:
            self._fill()
            if not self._pending:
                raise StopIteration
            shown, _held, error = self._pending.popleft()
            if error is None:
                state, text = self._queue.take()
                if state == _DONE:
                    return Result.from_dict(json.loads(text)[0])
                error = _error_for(state, text, shown)
        if self._raise:
            raise error
        return error


def check_many(sources: Iterable[Any], jobs: Optional[int] = None, *, errors: str = "raise") -> CheckIterator:
    """Checks many files and buffers on ``jobs`` threads (one a core when not
    given), without the GIL, and gives their results in the order of the
    sources, each as soon as it and those before it are done.

    ``sources`` may be any iterable, a generator too, of paths, bytes, or
    ``(name, bytes)`` pairs; it is read as the results are taken, and no
    more than ``8 * jobs`` results are held ahead of the caller, so a run of
    any length takes the same memory. A folder is not walked: it gives
    ``IsADirectoryError`` (walk it with ``os.walk`` or ``pathlib``).

    A source that gives no result raises its exception (as ``check`` would)
    from the ``next()`` that reaches it, and the iterator goes on with the
    next; with ``errors="return"`` the exception is given in place of the
    result instead.
    """
    if errors not in ("raise", "return"):
        raise ValueError('errors must be "raise" or "return"')
    count = (os.cpu_count() or 1) if jobs is None else jobs
    if not isinstance(count, int) or isinstance(count, bool) or count < 1:
        raise ValueError("jobs must be a whole number of 1 or more")
    return CheckIterator(sources, count, errors)

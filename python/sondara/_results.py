"""The typed results of sondara: what the checker's JSON says of a file."""

from __future__ import annotations

import copy
from dataclasses import dataclass, field, fields
from typing import Any, Dict, List, Optional


def _json_key(name: str) -> str:
    """The checker's JSON name of a field: sample_rate is sampleRate."""
    head, *rest = name.split("_")
    return head + "".join(word.title() for word in rest)


@dataclass(frozen=True)
class Finding:
    """One finding of a check, as an element of the JSON's ``findings``.

    ``severity`` is ``"error"`` (a line of the report) or ``"warning"`` (what
    the report leaves unsaid). ``message`` is English, ``text`` the Japanese
    line. The figures are ``None`` where the finding has none.
    """

    code: str
    severity: str
    message: str
    text: str
    value: Optional[int] = None
    offset: Optional[int] = None
    chunk: Optional[str] = None
    declared: Optional[int] = None
    actual: Optional[int] = None

    @classmethod
    def from_dict(cls, data: Dict[str, Any]) -> "Finding":
        """The finding of one JSON object of ``findings``."""
        return cls(**{name: data.get(name) for name in _FINDING_FIELDS})


@dataclass(frozen=True)
class FormatFacts:
    """What a file's header says of its audio, as the JSON's ``format``:
    read from the header alone, ``None`` where the header can't tell.

    ``container`` is ``"riff"``, ``"rf64"`` or ``None``; ``sub_format`` an
    extensible format's sub-format GUID; ``frames`` the whole frames both
    declared and present (``None`` for a compressed format).
    """

    container: Optional[str]
    format_tag: Optional[int]
    sub_format: Optional[str]
    sample_rate: Optional[int]
    channels: Optional[int]
    bits: Optional[int]
    block_align: Optional[int]
    frames: Optional[int]
    seconds: Optional[float]

    @classmethod
    def from_dict(cls, data: Dict[str, Any]) -> "FormatFacts":
        """The facts of the JSON's ``format`` object."""
        return cls(**{name: data[key] for name, key in _FORMAT_KEYS})

    def to_dict(self) -> Dict[str, Any]:
        """The JSON's ``format`` object, key for key."""
        return {key: getattr(self, name) for name, key in _FORMAT_KEYS}


# The fields and their JSON names, worked out once: a manifest of many files
# makes a Finding and a FormatFacts for each.
_FINDING_FIELDS = tuple(item.name for item in fields(Finding))
_FORMAT_KEYS = tuple((item.name, _json_key(item.name)) for item in fields(FormatFacts))


@dataclass(frozen=True)
class Result:
    """The check of one file or buffer, as ``sondara-check --json`` gives it.

    ``report`` is the Japanese report, lines ending in CR LF; ``has_error``
    is true when it has a finding; ``findings`` holds its lines and then the
    warnings; ``format`` the header's facts. ``to_dict()`` is the checker's
    JSON object of the file.
    """

    path: str
    report: str
    has_error: bool
    findings: List[Finding]
    format: FormatFacts
    _json: Dict[str, Any] = field(repr=False, compare=False)

    @classmethod
    def from_dict(cls, data: Dict[str, Any]) -> "Result":
        """The result of one file object of the checker's JSON."""
        return cls(
            path=data["path"],
            report=data["report"],
            has_error=data["hasError"],
            findings=[Finding.from_dict(item) for item in data["findings"]],
            format=FormatFacts.from_dict(data["format"]),
            _json=data,
        )

    @property
    def verdict(self) -> str:
        """``"error"`` when the report has a finding, else ``"warning"`` when
        a warning was found, else ``"ok"``."""
        if self.has_error:
            return "error"
        if any(finding.severity == "warning" for finding in self.findings):
            return "warning"
        return "ok"

    def to_dict(self) -> Dict[str, Any]:
        """The file's object of ``sondara-check --json``, key for key."""
        return copy.deepcopy(self._json)


@dataclass(frozen=True)
class Levels:
    """The levels of one file, as ``sondara-check --levels --json`` gives
    them (with ``--loudness`` when asked for).

    ``channels`` holds one dict a channel (peak, rms, dcOffset, fullScale,
    silence, clippingRuns, noiseFloor), ``pairs`` the stereo pairs,
    ``loudness`` the loudness and true peak (``None`` unless asked for),
    ``findings`` the warnings of the audio. ``to_dict()`` is the checker's
    object of the file.
    """

    path: str
    frames: int
    sample_rate: int
    bits: int
    seconds: float
    channels: List[Dict[str, Any]]
    pairs: List[Dict[str, Any]]
    loudness: Optional[Dict[str, Any]]
    findings: List[Finding]
    _json: Dict[str, Any] = field(repr=False, compare=False)

    @classmethod
    def from_dict(cls, data: Dict[str, Any]) -> "Levels":
        """The levels of one object of the checker's ``--levels`` JSON."""
        return cls(
            path=data["path"],
            frames=data["frames"],
            sample_rate=data["sampleRate"],
            bits=data["bits"],
            seconds=data["seconds"],
            channels=copy.deepcopy(data["channels"]),
            pairs=copy.deepcopy(data.get("pairs", [])),
            loudness=copy.deepcopy(data.get("loudness")),
            findings=[Finding.from_dict(item) for item in data.get("findings", [])],
            _json=data,
        )

    def to_dict(self) -> Dict[str, Any]:
        """The file's object of ``sondara-check --levels --json``."""
        return copy.deepcopy(self._json)

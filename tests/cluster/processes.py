"""Processes of this machine, by what /proc tells of them."""

from __future__ import annotations

import os
import signal
from pathlib import Path
from typing import Iterable, Iterator, Optional


def _read(process: int, name: str) -> bytes:
    try:
        return Path(f"/proc/{process}/{name}").read_bytes()
    except OSError:
        # It has ended, or is somebody else's.
        return b""


def processes() -> Iterator[int]:
    for name in os.listdir("/proc"):
        if name.isdigit():
            yield int(name)


def words_of(process: int) -> list[str]:
    """Its command line."""
    return [os.fsdecode(word) for word in _read(process, "cmdline").split(b"\0")[:-1]]


def variable_of(process: int, name: str) -> Optional[str]:
    """A variable that it was started with."""
    for line in _read(process, "environ").split(b"\0"):
        key, sign, value = line.partition(b"=")
        if sign and os.fsdecode(key) == name:
            return os.fsdecode(value)
    return None


def parent_of(process: int) -> int:
    # After the name of the program, which may have any signs in it: state, parent.
    fields = _read(process, "stat").rpartition(b")")[2].split()
    return int(fields[1]) if len(fields) > 1 else 0


def send(sign: int, targets: Iterable[int]) -> None:
    for process in targets:
        try:
            os.kill(process, sign)
        except ProcessLookupError:
            pass


def kill_with_variable(name: str, value: str) -> list[int]:
    """Kills what was started with that variable, but for this process; tells what that was."""
    found = [process for process in processes()
             if process != os.getpid() and variable_of(process, name) == value]
    send(signal.SIGKILL, found)
    return found

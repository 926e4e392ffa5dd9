"""How a command ends that cannot do what it was asked: an exit status and one line."""

from __future__ import annotations

DONE = 0
FAILED = 1  # Slurm or tarnmail refuses, or something cannot be written
USAGE = 2  # the command line, an input, or another export in the folder
BROKEN = 3  # a program is not installed


class Failure(Exception):
    """The line is printed after "tarnmail-slurm: "."""

    def __init__(self, status: int, line: str) -> None:
        super().__init__(line)
        self.status = status

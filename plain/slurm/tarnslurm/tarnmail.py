"""The program that does the work: it plans, tells what is missing, and is what the jobs run."""

from __future__ import annotations

import os
import shutil
import subprocess
from typing import Sequence

from .failure import BROKEN, FAILED, USAGE, Failure
from .numbers import numbers_of
from .programs import ask, last_line


def find_tarnmail(command: str) -> str:
    """The path that jobs are to use: of the variable TARNMAIL, else the one beside the command, else
    the one that the PATH finds. Failure (broken) where there is none."""
    named = os.environ.get("TARNMAIL")
    if named:
        found = shutil.which(named)
        if found is None:
            raise Failure(BROKEN, f"TARNMAIL={named}: there is no such program")
        return os.path.abspath(found)
    beside = os.path.join(os.path.dirname(os.path.abspath(command)), "tarnmail")
    found = beside if os.access(beside, os.X_OK) else shutil.which("tarnmail")
    if found is None:
        raise Failure(BROKEN, "tarnmail is not installed (package tarnpst)")
    return os.path.abspath(found)


class Tarnmail:
    """Each call is one process, whose reason is the reason of the Failure."""

    def __init__(self, path: str) -> None:
        self.path = path

    def plan(self, paths: Sequence[str], options: Sequence[str], output: str) -> None:
        """Writes a plan. What it says goes to standard error as it comes; an input that cannot be
        read is such a line, and is planned as one."""
        command = [self.path, "plan", *paths, *options, f"--output={output}"]
        try:
            status = subprocess.run(command, stdin=subprocess.DEVNULL, check=False).returncode
        except OSError as error:
            raise Failure(BROKEN, f"{self.path}: {error.strerror}") from error
        if status < 0 or not os.path.exists(output):
            raise Failure(status if status in (FAILED, USAGE, BROKEN) else FAILED,
                          "there is no plan, and nothing was submitted")

    def missing(self, plan: str, folder: str) -> list[int]:
        """Tasks that are not done. Failure (usage) where the folder is of another plan."""
        answer = ask([self.path, "missing", plan, folder])
        if answer.returncode != 0:
            line = last_line(answer.stderr).removeprefix("tarnmail: ")
            status = answer.returncode if answer.returncode in (USAGE, BROKEN) else FAILED
            raise Failure(status, line)
        return numbers_of(answer.stdout)

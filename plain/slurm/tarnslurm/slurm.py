"""Slurm by its own commands."""

from __future__ import annotations

import re
from dataclasses import dataclass
from typing import Iterable, Sequence

from .failure import FAILED, Failure
from .programs import ask, find_program

PACKAGE = "slurm-client, or what Slurm's commands are called on this system"
COMMANDS = ("sbatch", "squeue", "scontrol", "scancel")

# Reasons for which Slurm itself holds a job that it could not start or that was lost too often.
HELD_BY_SLURM = ("launch failed requeued held", "launch_failed_requeued_held", "JobHoldMaxRequeue")


@dataclass(frozen=True)
class QueuedJob:
    """A job, or one of an array, that Slurm has not ended."""

    job: str  # as scancel and scontrol take it: 12 or 12_3
    array: str  # 12: of all of its array
    number: int  # in the array; -1 without one
    state: str  # PENDING, RUNNING, COMPLETING...
    name: str
    reason: str

    @property
    def is_waiting(self) -> bool:
        return self.state in ("PENDING", "REQUEUE_HOLD", "SPECIAL_EXIT")

    @property
    def is_held(self) -> bool:
        return self.is_held_by_slurm or (self.is_waiting and self.reason.startswith("JobHeld"))

    @property
    def is_held_by_slurm(self) -> bool:
        return self.is_waiting and (self.state != "PENDING" or self.reason in HELD_BY_SLURM)


class Slurm:
    """Failure (broken) where one of the commands is not installed."""

    def __init__(self) -> None:
        self._paths = {name: find_program(name, PACKAGE) for name in COMMANDS}

    def largest_array(self) -> int:
        """The numbers of an array are below it."""
        found = re.search(r"^MaxArraySize\s*=\s*(\d+)", self._ask("scontrol", "show", "config"),
                          re.MULTILINE)
        if found is None:
            raise Failure(FAILED, "scontrol show config does not tell MaxArraySize")
        limit = int(found[1])
        if limit < 2:
            raise Failure(FAILED, "this Slurm takes no arrays: its MaxArraySize is "
                                  f"{limit}")
        return limit

    def submit(self, options: Sequence[str], script: str, arguments: Sequence[str] = ()) -> str:
        """The number of the job."""
        answer = self._ask("sbatch", "--parsable", *options, script, *arguments)
        # "12", or "12;cluster".
        job = answer.strip().splitlines()[-1].partition(";")[0] if answer.strip() else ""
        if not job.isdigit():
            raise Failure(FAILED, f"sbatch answers {answer.strip()!r}, which is no number of a job")
        return job

    def queue(self, names: Iterable[str]) -> list[QueuedJob]:
        """The jobs of these names that have not ended, of whomever."""
        text = self._ask("squeue", "--noheader", "--array", f"--name={','.join(names)}",
                         "--format=%F|%K|%T|%j|%r")
        return [_queued(line) for line in text.splitlines() if line.count("|") >= 4]

    def cancel(self, jobs: Sequence[str]) -> None:
        self._ask("scancel", *jobs)

    def release(self, jobs: Sequence[str]) -> None:
        self._ask("scontrol", "release", ",".join(jobs))

    def _ask(self, name: str, *arguments: str) -> str:
        answer = ask([self._paths[name], *arguments])
        if answer.returncode != 0:
            lines = [line.removeprefix(f"{name}: ").removeprefix("error: ")
                     for line in (answer.stderr or answer.stdout).strip().splitlines()]
            raise Failure(FAILED, f"{name}: {'; '.join(lines) or 'it does not say why'}")
        return answer.stdout


def _queued(line: str) -> QueuedJob:
    array, number, state, name, reason = line.split("|", 4)
    # Of a job without an array it is N/A.
    is_one = number.isdigit()
    return QueuedJob(f"{array}_{number}" if is_one else array, array,
                     int(number) if is_one else -1, state, name, reason.strip())

"""How far an export is, for people."""

from __future__ import annotations

import os
import re
from collections import Counter
from typing import Optional

from .failure import USAGE, Failure
from .numbers import list_of
from .slurm import QueuedJob, Slurm
from .submitting import queue_of
from .tarnmail import Tarnmail
from .workplace import State, Workplace

# The head of a task's line in a plan, which may be long.
_TASK = re.compile(rb'\{"type":"task","task":(\d+),"cost":(\d+),')

# Of so many tasks that are lost the log is told.
_TOLD = 3


def _word_for(job: QueuedJob) -> str:
    if job.is_held:
        return "held"
    return "queued" if job.is_waiting else "running"


def _costs(plan: str) -> dict[int, int]:
    costs: dict[int, int] = {}
    with open(plan, "rb") as file:
        for line in file:
            found = _TASK.match(line)
            if found:
                costs[int(found[1])] = int(found[2])
    return costs


def _last_words(log: Optional[str]) -> str:
    """The last line of a log, of whatever bytes."""
    if log is None:
        return "has no log: is the folder on a file system that all machines share?"
    with open(log, "rb") as file:
        file.seek(max(0, os.path.getsize(log) - 4096))
        lines = file.read().decode("utf-8", "replace").strip().splitlines()
    return f"{log}: {lines[-1] if lines else 'is empty'}"


class Status:
    def __init__(self, place: Workplace, tarnmail: Tarnmail, slurm: Slurm) -> None:
        self._place = place
        self._tarnmail = tarnmail
        self._slurm = slurm

    def lines(self) -> list[str]:
        """Failure (usage) where nothing was submitted."""
        state = self._place.load()
        if not state.plan:
            raise Failure(USAGE, f"{self._place.export}: nothing was submitted yet")
        queue = queue_of(self._slurm, self._place, state)
        missing = self._tarnmail.missing(self._place.plan, self._place.export)
        if self._place.is_merged():
            return [f"{self._place.export}: {state.tasks} tasks, put together"]
        lost = [task for task in missing if task not in queue.tasks]
        lines = [self._tasks(state, missing, queue.tasks, lost)]
        lines += self._lost(state, lost)
        lines.append(self._merge(queue.merges, lost))
        return lines

    def _tasks(self, state: State, missing: list[int], queued: dict[int, QueuedJob],
               lost: list[int]) -> str:
        words = Counter(_word_for(queued[task]) for task in missing if task in queued)
        counts = [f"{state.tasks - len(missing)} done"]
        counts += [f"{words[word]} {word}" for word in ("running", "queued", "held") if words[word]]
        if lost:
            counts.append(f"{len(lost)} neither done nor queued")
        costs = _costs(self._place.plan)
        whole = sum(costs.values())
        left = sum(costs.get(task, 0) for task in missing)
        share = 100 * (whole - left) // whole if whole else 100
        return f"{self._place.export}: {state.tasks} tasks: {', '.join(counts)}; {share}% of the work"

    def _lost(self, state: State, lost: list[int]) -> list[str]:
        if not lost:
            return []
        lines = [f"neither done nor queued: {list_of(lost)} (--resume submits them)"]
        for task in lost[:_TOLD]:
            lines.append(f"  task {task}: {_last_words(self._place.log_of_task(state, task))}")
        return lines

    def _merge(self, merges: list[QueuedJob], lost: list[int]) -> str:
        for job in merges:
            if job.is_held:
                return f"merge: job {job.job} is held (scontrol release {job.job})"
            return f"merge: job {job.job} {'waits for the tasks' if job.is_waiting else 'runs'}"
        if os.path.exists(self._place.merge_log):
            said = _last_words(self._place.merge_log)
            return f"merge: is not queued, and has said in {said}"
        return f"merge: is not queued (--resume submits it{' with the tasks' if lost else ''})"

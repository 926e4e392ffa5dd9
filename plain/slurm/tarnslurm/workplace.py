"""What belongs to the jobs of an export: the folder DIR.slurm beside it.

    plan         the plan
    task.sh      what the jobs of the arrays run
    merge.sh     what the last job runs
    state.json   what was submitted
    logs/N/K.log what task N+K has said, in all its attempts; N is what is added to the numbers of
                 its array
    logs/merge.log
    lock         held while something is submitted
"""

from __future__ import annotations

import contextlib
import fcntl
import hashlib
import json
import os
from dataclasses import asdict, dataclass, field
from typing import Iterator, Optional

from .failure import FAILED, USAGE, Failure


@dataclass
class State:
    """What was submitted, and how."""

    plan: str = ""  # its id
    tasks: int = 0
    offsets: list[int] = field(default_factory=list)  # of the arrays that were ever submitted
    sbatch: dict[str, str] = field(default_factory=dict)
    sbatch_more: list[str] = field(default_factory=list)
    merge: str = ""
    stage: Optional[str] = None
    at_once: Optional[int] = None
    retries: int = 5
    version: int = 1


class Workplace:
    """Names of its files, and what is in them. The export's folder is made absolute."""

    def __init__(self, folder: str) -> None:
        self.export = os.path.abspath(folder)
        self.folder = self.export + ".slurm"
        self.plan = os.path.join(self.folder, "plan")
        self.task_script = os.path.join(self.folder, "task.sh")
        self.merge_script = os.path.join(self.folder, "merge.sh")

    def log_folder(self, offset: int) -> str:
        return os.path.join(self.folder, "logs", str(offset))

    def log_of_task(self, state: State, task: int) -> Optional[str]:
        """The newest of those that it may have, where there is one."""
        logs = [os.path.join(self.log_folder(offset), f"{task - offset}.log")
                for offset in state.offsets if offset <= task]
        there = [(os.path.getmtime(log), log) for log in logs if os.path.exists(log)]
        return max(there)[1] if there else None

    @property
    def merge_log(self) -> str:
        return os.path.join(self.folder, "logs", "merge.log")

    # Names of jobs: by them they are found again, whoever has submitted them.
    def _name(self, state: State) -> str:
        digits = hashlib.sha256(os.fsencode(f"{state.plan} {self.export}")).hexdigest()
        return f"tarnmail-{digits[:10]}"

    def array_name(self, state: State, offset: int) -> str:
        return f"{self._name(state)}.{offset}"

    def merge_name(self, state: State) -> str:
        return f"{self._name(state)}.merge"

    def is_merged(self) -> bool:
        """The export is whole, and nothing is left of its tasks."""
        return (os.path.exists(os.path.join(self.export, "manifest.jsonl"))
                and not os.path.exists(os.path.join(self.export, "parts")))

    def load(self) -> State:
        """An empty one where nothing was submitted."""
        try:
            with open(os.path.join(self.folder, "state.json"), encoding="utf-8") as file:
                state = State(**json.load(file))
        except FileNotFoundError:
            return State()
        except (OSError, ValueError, TypeError) as error:
            raise Failure(USAGE, f"{self.folder}/state.json: {error}") from error
        if state.version != 1:
            raise Failure(USAGE, f"{self.folder}/state.json is of another version")
        return state

    def save(self, state: State) -> None:
        self.write("state.json", json.dumps(asdict(state), indent=1) + "\n")

    def write(self, name: str, text: str) -> None:
        """Whole or not at all."""
        path = os.path.join(self.folder, name)
        try:
            with open(path + ".new", "wb") as file:
                file.write(os.fsencode(text))
                file.flush()
                os.fsync(file.fileno())
            os.replace(path + ".new", path)
        except OSError as error:
            raise Failure(FAILED, f"{path}: {error.strerror}") from error

    def make(self) -> None:
        self._make_folder(self.folder)

    def remove_if_unused(self) -> None:
        """Where nothing is in it but the lock, which is held. An empty folder may stay, does no harm."""
        with contextlib.suppress(OSError):
            if os.listdir(self.folder) == ["lock"]:
                os.remove(os.path.join(self.folder, "lock"))
                os.rmdir(self.folder)

    def make_logs(self, offset: int) -> None:
        self._make_folder(self.log_folder(offset))

    def _make_folder(self, folder: str) -> None:
        try:
            os.makedirs(folder, exist_ok=True)
        except OSError as error:
            raise Failure(FAILED, f"{folder}: {error.strerror}") from error

    @contextlib.contextmanager
    def locked(self) -> Iterator[bool]:
        """One at a time. Failure where another one is at work. False on a file system without locks,
        where nobody knows."""
        path = os.path.join(self.folder, "lock")
        try:
            file = os.open(path, os.O_RDWR | os.O_CREAT, 0o644)
        except OSError as error:
            raise Failure(FAILED, f"{path}: {error.strerror}") from error
        is_alone = True
        try:
            try:
                fcntl.lockf(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
            except (BlockingIOError, PermissionError) as error:
                raise Failure(FAILED, f"{self.export}: another tarnmail-slurm is at work on it at "
                                      "this moment") from error
            except OSError:
                is_alone = False
            yield is_alone
        finally:
            os.close(file)


def read_plan_head(path: str) -> tuple[str, int]:
    """The id of a plan, and the number of its tasks."""
    try:
        with open(path, encoding="utf-8") as file:
            # It tells of every large input.
            head = json.loads(file.readline(1 << 28))
        if head["type"] != "plan":
            raise ValueError("is no plan")
        return str(head["plan"]), int(head["tasks"])
    except OSError as error:
        raise Failure(USAGE, f"{path}: {error.strerror}") from error
    except (ValueError, KeyError, TypeError) as error:
        raise Failure(USAGE, f"{path}: is no plan of tarnmail plan") from error

"""A cluster that runs one job after the other, when it is told to."""

from __future__ import annotations

import json
import os
import re
import signal
import subprocess
import time
from pathlib import Path
from typing import Any, Callable, Optional

Job = dict[str, Any]

# What a shell, Slurm or a format could take for something else.
ODD_NAME = "a b'c\"d $(touch x) %a;#\ne"


class FakeCluster:
    def __init__(self, folder: Path, limit: int = 1001) -> None:
        self.folder = folder
        self.bin = folder / "bin"
        self.bin.mkdir(parents=True)
        for name in ("sbatch", "squeue", "scontrol", "scancel"):
            (self.bin / name).symlink_to(Path(__file__).with_name("fake_slurm.py").resolve())
        (folder / "limit").write_text(str(limit))
        self.environment = {**os.environ, "FAKE_SLURM": str(folder),
                            "PATH": f"{self.bin}:{os.environ['PATH']}"}

    def jobs(self) -> list[Job]:
        path = self.folder / "jobs.json"
        return json.loads(path.read_text()) if path.exists() else []

    def change(self, change: Callable[[Job], None]) -> None:
        jobs = self.jobs()
        for job in jobs:
            change(job)
        (self.folder / "jobs.json").write_text(json.dumps(jobs))

    def calls(self, name: str) -> list[list[Any]]:
        """Arguments of each call of that command; the last one is its variables."""
        path = self.folder / "calls.jsonl"
        lines = path.read_text().splitlines() if path.exists() else []
        calls = [json.loads(line) for line in lines]
        return [call[1:] for call in calls if call[0] == name]

    def pending(self) -> list[Job]:
        return [job for job in self.jobs() if job["state"] == "PENDING"]

    def run_next(self, while_it_runs: Optional[Callable[[int], None]] = None) -> int:
        """The first pending job, to its end or until it is queued again; its exit status.
        `while_it_runs` gets the id of its process group."""
        job = self.pending()[0]
        log = re.sub("%[a%]", lambda sign: "%" if sign[0] == "%%" else str(job["task"]), job["log"])
        variables = {"SLURM_JOB_ID": str(job["array"])}
        if job["task"] is not None:
            variables |= {"SLURM_ARRAY_JOB_ID": str(job["array"]),
                          "SLURM_ARRAY_TASK_ID": str(job["task"])}
        if job["restarts"]:
            variables["SLURM_RESTART_COUNT"] = str(job["restarts"])
        script = self.folder / "script"
        script.write_bytes(os.fsencode(job["script"]))
        self._set(job, state="RUNNING")
        with open(log, "ab") as output:
            process = subprocess.Popen(["sh", str(script), *job["arguments"]],
                                       env={**self.environment, **variables}, cwd=job["folder"],
                                       stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                       start_new_session=True)
        if while_it_runs is not None:
            while_it_runs(process.pid)
        while process.poll() is None and self._now(job)["state"] != "REQUEUED":
            time.sleep(0.005)
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGTERM)
        status = process.wait()
        if self._now(job)["state"] == "REQUEUED":
            self._set(job, state="PENDING", restarts=job["restarts"] + 1)
        else:
            self._set(job, state="ENDED")
        return status

    def run_all(self) -> None:
        while self.pending():
            self.run_next()

    def _now(self, job: Job) -> Job:
        return next(one for one in self.jobs()
                    if (one["array"], one["task"]) == (job["array"], job["task"]))

    def _set(self, job: Job, **values: Any) -> None:
        def change(one: Job) -> None:
            if (one["array"], one["task"]) == (job["array"], job["task"]):
                one.update(values)
        self.change(change)

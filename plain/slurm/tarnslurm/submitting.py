"""Plans, and submits what is neither done nor queued: arrays of tasks, and the job that puts all
together after them."""

from __future__ import annotations

import os
import shlex
import shutil
from dataclasses import dataclass

from .arguments import Request
from .failure import USAGE, Failure
from .job_scripts import merge_script, task_script
from .numbers import arrays_of, list_of
from .programs import say
from .slurm import QueuedJob, Slurm
from .tarnmail import Tarnmail
from .workplace import State, Workplace, read_plan_head


@dataclass
class Queue:
    """Jobs of an export that Slurm has not ended."""

    tasks: dict[int, QueuedJob]  # by task
    merges: list[QueuedJob]


def queue_of(slurm: Slurm, place: Workplace, state: State) -> Queue:
    offsets = {place.array_name(state, offset): offset for offset in state.offsets}
    queue = Queue({}, [])
    for job in slurm.queue([*offsets, place.merge_name(state)]):
        if job.name in offsets:
            queue.tasks[offsets[job.name] + job.number] = job
        else:
            queue.merges.append(job)
    return queue


class Submission:
    """One submission: the first of an export, or a later one of what is missing."""

    def __init__(self, request: Request, place: Workplace, tarnmail: Tarnmail, slurm: Slurm) -> None:
        self._request = request
        self._place = place
        self._tarnmail = tarnmail
        self._slurm = slurm

    def run(self) -> None:
        place = self._place
        if self._request.resume and not os.path.exists(place.plan):
            raise Failure(USAGE, f"{place.export}: nothing was submitted yet")
        place.make()
        with place.locked() as is_alone:
            try:
                self._plan_and_submit()
            except BaseException:
                if is_alone:
                    place.remove_if_unused()
                raise

    def _plan_and_submit(self) -> None:
        place = self._place
        state = place.load()
        if not state.offsets and not self._request.resume:
            state = State()
        if state.offsets and not self._request.resume:
            raise Failure(USAGE, f"{place.export}: was submitted before; --resume goes on with "
                                 "it, --status tells how far it is")
        if self._request.paths or self._request.plan is not None:
            self._plan(state)
        self._take_options(state)
        self._submit(state)

    # The plan ------------------------------------------------------------------------------------

    def _plan(self, state: State) -> None:
        """Into its place; where tasks of another one were submitted, Failure (usage)."""
        place, request = self._place, self._request
        if not request.resume:
            self._check_free()
        # A plan reads all that is exported: does a Slurm answer that takes its tasks?
        self._slurm.largest_array()
        draft = place.plan + ".draft"
        if os.path.exists(draft):
            os.remove(draft)
        try:
            if request.plan is not None:
                shutil.copyfile(request.plan, draft)
            else:
                self._tarnmail.plan(request.paths, request.plan_options, draft)
            identity, _ = read_plan_head(draft)
            if state.offsets and identity != state.plan:
                raise Failure(USAGE, f"{place.export}: belongs to another plan: inputs have changed "
                                     "since it was submitted, or other options were given")
            os.replace(draft, place.plan)
        except OSError as error:
            raise Failure(USAGE, f"{error.filename}: {error.strerror}") from error
        finally:
            if os.path.exists(draft):
                os.remove(draft)

    def _check_free(self) -> None:
        """Something else than tasks must not be in the folder; whose tasks they are is asked
        later."""
        export = self._place.export
        try:
            names = os.listdir(export)
        except FileNotFoundError:
            return
        except OSError as error:
            raise Failure(USAGE, f"{export}: {error.strerror}") from error
        if names and "parts" not in names:
            raise Failure(USAGE, f"{export}: is not empty")

    def _take_options(self, state: State) -> None:
        """What was given before holds where nothing else is given now."""
        request = self._request
        state.plan, state.tasks = read_plan_head(self._place.plan)
        state.sbatch |= request.sbatch
        state.sbatch_more = request.sbatch_more or state.sbatch_more
        state.merge = state.merge if request.merge is None else request.merge
        state.stage = state.stage if request.stage is None else request.stage
        state.at_once = state.at_once if request.at_once is None else request.at_once
        state.retries = state.retries if request.retries is None else request.retries

    # The jobs ------------------------------------------------------------------------------------

    def _submit(self, state: State) -> None:
        # In this order: what ends in between is found done.
        queue = queue_of(self._slurm, self._place, state)
        missing = self._tarnmail.missing(self._place.plan, self._place.export)
        if self._place.is_merged():
            say(f"{self._place.export}: is put together")
            return
        self._release(queue)
        wanted = [task for task in missing if task not in queue.tasks]
        self._write_scripts(state)
        arrays: list[str] = []
        try:
            self._submit_tasks(state, wanted, arrays)
            self._submit_merge(state, queue, arrays)
        except Failure as failure:
            if not arrays:
                raise
            raise Failure(failure.status, f"{failure} (submitted before that: {' '.join(arrays)}; "
                                          "--resume submits the rest)") from failure
        self._tell(state, len(wanted), len(missing) - len(wanted), arrays)

    def _release(self, queue: Queue) -> None:
        held = [job.job for job in [*queue.tasks.values(), *queue.merges] if job.is_held_by_slurm]
        if held:
            self._slurm.release(held)
            say(f"released what Slurm held: {' '.join(held)}")

    def _write_scripts(self, state: State) -> None:
        place = self._place
        about = (self._tarnmail.path, place.plan, place.export, state.retries)
        place.write("task.sh", task_script(*about, state.stage))
        place.write("merge.sh", merge_script(*about))

    def _submit_tasks(self, state: State, tasks: list[int], jobs: list[str]) -> None:
        """Adds the numbers of the arrays to the jobs, also where the next one is refused."""
        self._place.save(state)
        if not tasks:
            return
        for offset, numbers in arrays_of(tasks, self._slurm.largest_array()).items():
            jobs.append(self._submit_array(state, offset, list_of(numbers)))

    def _submit_array(self, state: State, offset: int, numbers: str) -> str:
        # Kept first, so that the jobs are found again whatever happens next.
        is_new = offset not in state.offsets
        if is_new:
            state.offsets.append(offset)
        self._place.save(state)
        self._place.make_logs(offset)
        most = f"%{state.at_once}" if state.at_once is not None else ""
        try:
            return self._slurm.submit(
                [*self._options(state, os.path.join(self._place.log_folder(offset), "%a.log")),
                 f"--job-name={self._place.array_name(state, offset)}",
                 f"--array={numbers}{most}"],
                self._place.task_script, [str(offset)])
        except Failure:
            if is_new:
                state.offsets.remove(offset)
                self._place.save(state)
            raise

    def _submit_merge(self, state: State, queue: Queue, arrays: list[str]) -> None:
        """After all that is queued. One that waits for less is replaced; one that runs ends first."""
        waiting = [job.job for job in queue.merges if job.is_waiting]
        running = [job.job for job in queue.merges
                   if not job.is_waiting and job.state != "COMPLETING"]
        if not arrays and (waiting or running):
            return
        if waiting:
            self._slurm.cancel(waiting)
        before = {job.array: None for job in [*queue.tasks.values(), *queue.merges]
                  if job.job not in waiting}
        after = [*before, *arrays]
        options = self._options(state, os.path.join(self._place.folder, "logs", "merge.log"))
        if after:
            options.append(f"--dependency=afterany:{':'.join(after)}")
        self._place.make_logs(0)
        self._slurm.submit([*options, *shlex.split(state.merge),
                            f"--job-name={self._place.merge_name(state)}"],
                           self._place.merge_script)

    def _options(self, state: State, log: str) -> list[str]:
        """Those of every job. In the name of a log Slurm puts something for each "%", which "%%" is;
        the last piece is ours."""
        folder, name = os.path.split(log)
        given = [f"--{option}={value}" for option, value in state.sbatch.items()]
        return ["--requeue", "--open-mode=append", f"--chdir={self._place.folder}",
                f"--output={folder.replace('%', '%%')}/{name}", *given, *state.sbatch_more]

    def _tell(self, state: State, submitted: int, queued: int, arrays: list[str]) -> None:
        done = state.tasks - submitted - queued
        jobs = f" in {'job' if len(arrays) == 1 else 'jobs'} {' '.join(arrays)}" if arrays else ""
        say(f"{self._place.export}: {state.tasks} tasks: {submitted} submitted{jobs}, "
            f"{queued} queued or running, {done} done")

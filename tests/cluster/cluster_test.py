"""Exports by tarnmail-slurm on a real Slurm of this machine (loopback.py), with what may go wrong.
Each ends with the same tree as that of one machine, file by file.

cluster_test.py TARNMAIL TARNMAIL_SLURM MAKE_STORE [test...]
"""

from __future__ import annotations

import atexit
import filecmp
import json
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from loopback import Loopback, wait_until
from processes import parent_of, processes, send, variable_of, words_of

TARNMAIL, SLURM, MAKE_STORE = (str(Path(word).absolute()) for word in sys.argv[1:4])
CHOICES = ["--to", "text,mbox", "--dedupe"]
TASKS = 20
LARGEST_ARRAY = 16


def make_inputs(folder: Path) -> None:
    """A store, an mbox, and mails of which two are the same."""
    folder.mkdir()
    subprocess.run([MAKE_STORE, folder / "store.pst", "300", "6"], check=True)
    for number in range(12):
        text = (f"From: ann@example.com\nTo: bob@example.com\nSubject: Mail {number % 11}\n"
                f"Date: Wed, 1 May 2024 10:34:{number % 11:02} +0000\n\nText {number % 11}\n")
        (folder / f"{number:02}.eml").write_text(text)
        with open(folder / "box", "a", encoding="utf-8") as box:
            box.write(f"From ann@example.com Wed May  1 10:34:56 2024\n{text}\nIn the box.\n\n")


def differences(one: Path, other: Path) -> list[str]:
    def names(tree: Path) -> set[str]:
        return {str(path.relative_to(tree)) for path in tree.rglob("*")}
    both = names(one) & names(other)
    files = [name for name in both if not (one / name).is_dir()]
    _, different, unread = filecmp.cmpfiles(one, other, files, shallow=False)
    return sorted((names(one) ^ names(other)) | set(different) | set(unread))


class ClusterTest(unittest.TestCase):
    work: Path
    cluster: Loopback

    @classmethod
    def setUpClass(cls) -> None:
        cls.work = Path(tempfile.mkdtemp(prefix="cluster-"))
        cls.addClassCleanup(shutil.rmtree, cls.work)
        # For daemons of other users.
        cls.work.chmod(0o755)
        make_inputs(cls.work / "mails")
        subprocess.run([TARNMAIL, "export", cls.work / "mails", "-o", cls.work / "alone", *CHOICES],
                       check=True, capture_output=True)
        cls.cluster = Loopback(cls.work / "slurm", LARGEST_ARRAY)
        cls.cluster.environment["TARNMAIL"] = TARNMAIL
        cls.enterClassContext(cls.cluster)

    def setUp(self) -> None:
        self.mails = self.work / "mails"
        self.folder = Path(tempfile.mkdtemp(dir=self.work, prefix="case "))
        self.folder.chmod(0o755)
        self.out = self.folder / "it's 100%a"
        self.addCleanup(self.cluster.restore)
        self.addCleanup(self.tell_of_failure)

    def tell_of_failure(self) -> None:
        result = self._outcome.result  # type: ignore[attr-defined]
        if any(test is self for test, _ in [*result.failures, *result.errors]):
            for log in sorted(self.folder.rglob("*.log")):
                print(f"-- {log}\n{log.read_text(errors='replace')[-600:]}", file=sys.stderr)
            print((self.cluster.folder / "slurmctld.log").read_text()[-3000:], file=sys.stderr)
            # Last, because the end of what is said is what people see.
            for question in (["squeue", "-r"], ["sinfo", "-R"], ["sinfo", "-N"]):
                print(self.cluster.ask(*question).stdout, file=sys.stderr)

    # What a test does ----------------------------------------------------------------------------

    def ask(self, *arguments: object) -> subprocess.CompletedProcess[str]:
        return self.cluster.ask(SLURM, *map(str, arguments))

    def submit(self, *more: object, tasks: int = TASKS) -> None:
        done = self.ask(self.mails, "-o", self.out, "--target-cost", 1, "--max-tasks", tasks, *CHOICES,
                        *more)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn(f"{tasks} submitted", done.stderr)

    def resume(self, *more: object) -> str:
        done = self.ask("-o", self.out, "--resume", *more)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stderr

    def status(self) -> str:
        done = self.ask("-o", self.out, "--status")
        # A controller that is busy or away does not answer.
        return done.stdout if done.returncode == 0 else ""

    def missing(self) -> str:
        return self.cluster.ask(TARNMAIL, "missing", f"{self.out}.slurm/plan",
                                str(self.out)).stdout.strip()

    def wait_for(self, text: str) -> None:
        wait_until(text, lambda: text in self.status())

    def expect_whole(self) -> None:
        """Everything is put together, and as by one machine."""
        self.wait_for("put together")
        self.assertEqual(differences(self.out, self.work / "alone"), [])

    def expect_attempts(self, least: int) -> None:
        """So many lines of the logs tell of an attempt that was not the first."""
        logs = [log.read_text(errors="replace") for log in Path(f"{self.out}.slurm").rglob("*.log")]
        self.assertGreaterEqual(sum("attempt 2" in log for log in logs), least)

    def is_committed(self, task: int) -> bool:
        return (self.out / "parts" / str(task)).exists()

    def stopped_in_mid_task(self) -> tuple[int, int]:
        """A process that does a task, stopped after its part was begun and before it is committed,
        and the number of the task."""
        found: list[tuple[int, int]] = []

        def look() -> bool:
            for process in processes():
                words = words_of(process)
                if "run-task" not in words or str(self.out) not in words:
                    continue
                number = variable_of(process, "SLURM_ARRAY_TASK_ID")
                if number is None:
                    continue
                task = int(number) + int(words[words.index("--task-offset") + 1])
                send(signal.SIGSTOP, [process])
                drafts = list(self.out.glob(f"parts/.{task}.*/*"))
                if drafts and not self.is_committed(task) and parent_of(process) != 0:
                    found.append((process, task))
                    return True
                send(signal.SIGCONT, [process])
            return False
        wait_until("a task in its middle", look)
        return found[0]

    # Cases ---------------------------------------------------------------------------------------

    def test_export_in_several_arrays(self) -> None:
        self.submit("--stage", self.folder, "-t", "10", "--", "--nice=1")
        self.assertIn("merge: job", self.status())
        # Nothing of it is submitted twice.
        again = self.resume()
        self.assertIn(" 0 submitted,", again)
        self.expect_whole()
        self.assertEqual({path.name for path in Path(f"{self.out}.slurm/logs").iterdir()},
                         {"0", str(LARGEST_ARRAY), "merge.log"})
        log = [json.loads(line) for line in
               Path(f"{self.out}.attempts.jsonl").read_text().splitlines()]
        self.assertEqual(sum(row["type"] == "attempt" for row in log), TASKS)
        self.assertIn("is put together", self.resume())

    def test_partition_that_is_not_there(self) -> None:
        done = self.ask(self.mails, "-o", self.out, *CHOICES, "-p", "nowhere")
        self.assertEqual(done.returncode, 1)
        self.assertIn("invalid partition specified: nowhere", done.stderr)
        self.submit("-p", "mail")
        self.expect_whole()

    def test_node_and_its_steps_are_killed(self) -> None:
        self.submit(tasks=10)
        process, task = self.stopped_in_mid_task()
        node = variable_of(process, "SLURMD_NODENAME")
        assert node is not None
        self.lose(node)
        self.assertFalse(self.is_committed(task))
        # Slurm finds out by itself, and does the task on the other node.
        self.expect_whole()
        self.expect_attempts(1)

    def test_program_is_killed(self) -> None:
        self.submit(tasks=10)
        process, task = self.stopped_in_mid_task()
        send(signal.SIGKILL, [process])
        self.assertFalse(self.is_committed(task))
        self.expect_whole()
        self.expect_attempts(1)

    def test_task_done_eight_times_at_once(self) -> None:
        plan = self.folder / "plan"
        subprocess.run([TARNMAIL, "plan", self.mails, "-o", plan, "--target-cost", "1", "--max-tasks",
                        "6", *CHOICES], check=True, capture_output=True)
        script = self.folder / "job"
        script.write_text('#!/bin/sh\n"$1" run-task "$2" -o "$3" --task 0\n')
        done = self.cluster.ask(
            "sbatch", "--parsable", "--array=0-7", f"--output={self.folder}/%a.log", str(script),
            TARNMAIL, str(plan), str(self.out))
        self.assertEqual(done.returncode, 0, done.stderr)
        wait_until("eight jobs", self.cluster.is_empty)
        ends = self.cluster.ask("scontrol", "show", "job", done.stdout.strip()).stdout
        self.assertEqual(ends.count("JobState=COMPLETED"), 8, ends)
        self.assertEqual([path.name for path in (self.out / "parts").iterdir()], ["0"])
        done = self.ask("--plan", plan, "-o", self.out)
        self.assertIn("5 submitted", done.stderr)
        self.expect_whole()

    def test_controller_is_killed_and_started_again(self) -> None:
        self.submit()
        self.stopped_and_continued()
        self.cluster.end("slurmctld", signal.SIGKILL)
        done = self.ask("-o", self.out, "--resume")
        self.assertEqual((done.returncode, "ontact" in done.stderr), (1, True), done.stderr)
        self.cluster.start_controller()
        # The queue is on its disk, though not what came last: nodes may be drained, and jobs lost
        # or held.
        wait_until("nodes that work", self.has_nodes)
        wait_until("an export that goes on", self.is_settled)
        if "put together" not in self.status():
            self.resume()
        self.expect_whole()

    def test_controller_loses_its_disk(self) -> None:
        self.submit("--at-once", 1)
        wait_until("two tasks", lambda: sum(map(self.is_committed, range(TASKS))) >= 2)
        self.cluster.end("slurmctld", signal.SIGKILL)
        shutil.rmtree(self.cluster.folder / "state")
        (self.cluster.folder / "state").mkdir()
        self.cluster.start_controller()
        wait_until("nodes that work", self.has_nodes)
        wait_until("no task of before", lambda: not any(
            "run-task" in words_of(one) and str(self.out) in words_of(one) for one in processes()))
        missing = self.missing()
        self.assertNotIn(missing, ("", f"0-{TASKS - 1}"))
        self.assertIn("neither done nor queued: " + missing, self.status())
        before = self.jobs_started()
        self.resume("--at-once", 100)
        self.expect_whole()
        count = sum(int(last or first) - int(first) + 1 for first, _, last in
                    (piece.partition("-") for piece in missing.split(",")))
        self.assertEqual(self.jobs_started() - before, count + 1)

    def test_input_changes_after_planning(self) -> None:
        own = self.folder / "mails"
        shutil.copytree(self.mails, own)
        self.mails = own
        alone = self.folder / "alone"
        subprocess.run([TARNMAIL, "export", own, "-o", alone, *CHOICES], check=True,
                       capture_output=True)
        self.submit("--", "--hold", tasks=8)
        box = own / "box"
        right = box.read_bytes()
        box.write_bytes(right.replace(b"In the box", b"in the box"))
        self.release()
        self.wait_for("and has said")
        status = self.status()
        self.assertIn("has changed since it was planned", status)
        self.assertIn("these tasks are missing", status)
        done = self.ask(own, "-o", self.out, "--resume", "--target-cost", 1, "--max-tasks", 8, *CHOICES)
        self.assertEqual((done.returncode, "belongs to another plan" in done.stderr), (2, True))
        self.assertFalse((self.out / "manifest.jsonl").exists())
        # As it was: what is missing is done.
        box.write_bytes(right)
        self.resume("--", "--nice=0")
        self.wait_for("put together")
        self.assertEqual(differences(self.out, alone), [])

    def test_merge_is_cancelled(self) -> None:
        self.submit("--", "--hold", tasks=6)
        merge = next(word for word in self.status().splitlines()[-1].split() if word.isdigit())
        self.cluster.ask("scancel", merge)
        self.release()
        wait_until("all tasks", lambda: self.missing() == "" and self.cluster.is_empty())
        self.assertIn("merge: is not queued (--resume submits it)", self.status())
        self.resume("--", "--nice=0")
        self.expect_whole()

    def test_cancelled_task_is_not_queued_again(self) -> None:
        # Slurm continues what it ends. A short task would be done before it is ended.
        self.submit("--at-once", 1, tasks=2)
        process, task = self.stopped_in_mid_task()
        job = variable_of(process, "SLURM_ARRAY_JOB_ID")
        self.cluster.ask("scancel", f"{job}_{task}")
        self.wait_for("and has said")
        self.assertEqual(self.missing(), str(task))
        self.assertIn(f"neither done nor queued: {task} (", self.status())
        self.resume("--at-once", 8)
        self.expect_whole()

    def test_task_beyond_its_time(self) -> None:
        # Slurm counts in minutes, and looks twice in one. It continues what it ends.
        self.submit("-t", 1, tasks=2)
        _, task = self.stopped_in_mid_task()
        # The same time would not do for it again.
        self.wait_for("and has said")
        self.assertEqual(self.missing(), str(task))
        self.assertIn(f"neither done nor queued: {task} (", self.status())
        self.assertEqual(list(self.out.glob(f"parts/.{task}.*")), [])
        self.resume("-t", 10)
        self.expect_whole()

    def test_disk_is_full(self) -> None:
        disk = self.full_disk()
        self.submit("--retries", 20, tasks=6)
        self.wait_until_logs_tell(disk.reason)
        self.assertFalse((self.out / "manifest.jsonl").exists())
        disk.relieve()
        self.expect_whole()
        self.expect_attempts(1)

    # Their parts ---------------------------------------------------------------------------------

    def release(self) -> None:
        """All jobs that were submitted with --hold."""
        jobs = self.cluster.ask("squeue", "--noheader", "--format=%F").stdout.split()
        for job in sorted(set(jobs)):
            done = self.cluster.ask("scontrol", "release", job)
            self.assertEqual(done.returncode, 0, done.stderr)

    def lose(self, node: str) -> None:
        """The daemon of the node and all that it has started, at once: what is left for a moment
        would tell the controller of the end of the others."""
        jobs = [one for one in processes() if variable_of(one, "SLURMD_NODENAME") == node and
                variable_of(one, "SLURM_CONF") == self.cluster.environment["SLURM_CONF"]]
        steps = {parent_of(job) for job in jobs}
        lost = [one for one in steps if "slurmstepd" in "".join(words_of(one)[:1])] + jobs
        send(signal.SIGSTOP, lost)
        self.cluster.end(node, signal.SIGKILL)
        send(signal.SIGKILL, lost)

    def stopped_and_continued(self) -> None:
        process, _ = self.stopped_in_mid_task()
        send(signal.SIGCONT, [process])

    def has_nodes(self) -> bool:
        states = self.cluster.node_states()
        for node, state in states.items():
            if state.startswith(("down", "drain", "drng", "unk")):
                self.cluster.ask("scontrol", "update", f"nodename={node}", "state=resume")
        return bool(states) and all(state.startswith(("idle", "alloc", "mix", "comp"))
                                    for state in states.values())

    def is_settled(self) -> bool:
        """Done, or nothing of it goes on without a hand."""
        status = self.status()
        return status != "" and re.search(r"\d (running|queued)|merge: job \d+ (runs|waits)",
                                          status) is None

    def jobs_started(self) -> int:
        log = (self.cluster.folder / "slurmctld.log").read_text()
        return sum("sched: Allocate" in line or "_start_job: Started" in line
                   for line in log.splitlines())

    def wait_until_logs_tell(self, reason: str) -> None:
        logs = Path(f"{self.out}.slurm/logs/0")
        wait_until(reason, lambda: any(reason in log.read_text(errors="replace")
                                       for log in logs.glob("*.log")))

    def full_disk(self) -> FullDisk:
        disk = FullDisk(self.out, self.folder)
        self.addCleanup(disk.end)
        # Where somebody ends all of this, only those of the class are left to be done.
        self.addClassCleanup(disk.end)
        self.cluster.environment["TARNMAIL"] = disk.program
        self.addCleanup(self.cluster.environment.update, TARNMAIL=TARNMAIL)
        return disk


class FullDisk:
    """A small file system for the export, where that can be mounted. Elsewhere a program whose tasks
    may write no file of more than some kilobytes."""

    def __init__(self, export: Path, folder: Path) -> None:
        self._export = export
        self.program = TARNMAIL
        export.mkdir()
        self._is_mounted = subprocess.run(
            ["mount", "-t", "tmpfs", "-o", "size=200k", "none", export], check=False,
            capture_output=True).returncode == 0
        self._sign = folder / "full"
        if not self._is_mounted:
            self._sign.touch()
            program = folder / "limited"
            program.write_text(f'#!/bin/sh\n[ "$1" != run-task ] || [ ! -e "{self._sign}" ] || '
                               f'ulimit -f 8\nexec "{TARNMAIL}" "$@"\n')
            program.chmod(0o755)
            self.program = str(program)

    @property
    def reason(self) -> str:
        return "No space left on device" if self._is_mounted else "queued again"

    def relieve(self) -> None:
        if self._is_mounted:
            subprocess.run(["mount", "-o", "remount,size=500m", self._export], check=True)
        else:
            self._sign.unlink()

    def end(self) -> None:
        if self._is_mounted:
            self._is_mounted = False
            subprocess.run(["umount", self._export], check=True)


def stop(*_: object) -> None:
    raise KeyboardInterrupt


if __name__ == "__main__":
    # Nothing is left where somebody ends this: daemons have sessions of their own.
    signal.signal(signal.SIGTERM, stop)
    signal.signal(signal.SIGINT, stop)
    atexit.register(ClusterTest.doClassCleanups)
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])

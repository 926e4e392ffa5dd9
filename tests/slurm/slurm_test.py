"""tarnmail-slurm with the real tarnmail, on commands that only do as if they were Slurm's.

slurm_test.py TARNMAIL TARNMAIL_SLURM [test...]
"""

from __future__ import annotations

import filecmp

import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path
from typing import Optional

from fake_cluster import ODD_NAME, FakeCluster

TARNMAIL = Path(sys.argv[1]).resolve()
COMMAND = Path(sys.argv[2]).absolute()


class ClusterTest(unittest.TestCase):
    """A folder with mails, a cluster, and the command."""

    limit = 1001

    def setUp(self) -> None:
        self.folder = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        self.cluster = FakeCluster(self.folder / "cluster", self.limit)
        self.mails = self.folder / "mails"
        self.mails.mkdir()
        for number in range(6):
            (self.mails / f"{number}.eml").write_text(
                f"From: ann@example.com\nTo: bob@example.com\nSubject: Mail {number}\n"
                f"Date: Wed, 1 May 2024 10:34:5{number} +0000\n\nText {number}\n")
        # A program that ends as it is told to, or does its work.
        self.exits = self.folder / "exits"
        self.program = self.folder / "tarnmail"
        self.program.write_text(
            f'#!/bin/sh\n[ "$1" = plan ] || [ "$1" = missing ] || [ ! -e "{self.exits}" ] ||\n'
            f'  . "{self.exits}"\nexec "{TARNMAIL}" "$@"\n')
        self.program.chmod(0o755)
        self.cluster.environment["TARNMAIL"] = str(self.program)
        self.out = self.folder / "out"

    def run_command(self, *arguments: object,
                    **variables: str) -> subprocess.CompletedProcess[str]:
        return subprocess.run([str(COMMAND), *map(str, arguments)], check=False, text=True,
                              capture_output=True, stdin=subprocess.DEVNULL, cwd=self.folder,
                              env={**self.cluster.environment, **variables},
                              errors="surrogateescape")

    def expect(self, status: int, text: str, *arguments: object, **variables: str) -> None:
        done = self.run_command(*arguments, **variables)
        self.assertEqual((done.returncode, text if text in done.stdout + done.stderr else
                          done.stdout + done.stderr), (status, text))

    def submit(self, *more: object, out: Optional[Path] = None) -> None:
        self.expect(0, "6 submitted", self.mails, "-o", out or self.out, "--target-cost", 1,
                    "--to", "text", *more)

    def submitted(self) -> list[list[str]]:
        return [call[:-1] for call in self.cluster.calls("sbatch")]

    def status(self) -> str:
        done = self.run_command("-o", self.out, "--status")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout.replace(str(self.folder), "")

    def export_alone(self, forms: str = "text") -> Path:
        alone = self.folder / "alone"
        subprocess.run([TARNMAIL, "export", self.mails, "-o", alone, "--to", forms], check=True,
                       capture_output=True)
        return alone

    def expect_the_same_tree(self, one: Path, other: Path) -> None:
        def names(tree: Path) -> list[str]:
            return sorted(str(path.relative_to(tree)) for path in tree.rglob("*"))
        self.assertEqual(names(one), names(other))
        files = [name for name in names(one) if (one / name).is_file()]
        self.assertEqual(filecmp.cmpfiles(one, other, files, shallow=False), (files, [], []))


class SubmissionTest(ClusterTest):
    def test_whole_export_is_that_of_one_machine(self) -> None:
        self.submit()
        self.assertIn("0 done, 6 queued; 0% of the work\nmerge: job 2 waits", self.status())
        self.cluster.run_next()
        self.assertIn("1 done, 5 queued; 16% of the work", self.status())
        self.cluster.run_all()
        self.assertEqual(self.status(), "/out: 6 tasks, put together\n")
        self.expect_the_same_tree(self.out, self.export_alone())
        self.expect(0, "is put together", "-o", self.out, "--resume")
        self.assertEqual(len(self.submitted()), 2)

    def test_folder_of_an_odd_name(self) -> None:
        self.out = self.folder / ODD_NAME / "out"
        self.out.parent.mkdir()
        mails = self.out.parent / "mails"
        self.mails.rename(mails)
        self.mails = mails
        # As it is typed, from where one is.
        self.expect(0, "6 submitted", f"{ODD_NAME}/mails", "-o", f"{ODD_NAME}/out", "--to", "text",
                    "--target-cost", 1)
        self.cluster.run_all()
        self.assertTrue((Path(f"{self.out}.slurm") / "logs/0/5.log").exists())
        alone = self.folder / "alone"
        subprocess.run([TARNMAIL, "export", f"{ODD_NAME}/mails", "-o", alone, "--to", "text"],
                       cwd=self.folder, check=True, capture_output=True)
        self.expect_the_same_tree(self.out, alone)
        self.assertEqual([path.name for path in self.folder.rglob("x")], [])

    def test_name_that_is_no_text(self) -> None:
        out = os.fsencode(self.folder) + b"/\xff\xe4"
        done = subprocess.run([os.fsencode(COMMAND), os.fsencode(self.mails), b"-o", out],
                              env=self.cluster.environment, capture_output=True, check=False)
        self.assertEqual((done.returncode, b"1 submitted" in done.stderr), (0, True), done.stderr)
        self.cluster.run_all()
        self.assertTrue(os.path.exists(out + b"/manifest.jsonl"))

    def test_what_sbatch_is_told(self) -> None:
        self.submit("-p", "long", "--time=10", "--at-once", "2", "--merge-options",
                    "--time=1-0 --mem='8 G'", "--", "--exclusive", "--nice=3")
        tasks, merge = self.submitted()
        place = f"{self.out}.slurm"
        self.assertEqual(tasks[:-5], [
            "--parsable", "--requeue", "--open-mode=append", f"--chdir={place}",
            f"--output={place}/logs/0/%a.log", "--partition=long", "--time=10", "--exclusive"])
        self.assertEqual(tasks[-5], "--nice=3")
        self.assertRegex(tasks[-4], r"^--job-name=tarnmail-[0-9a-f]{10}\.0$")
        self.assertEqual(tasks[-3:], ["--array=0-5%2", f"{place}/task.sh", "0"])
        self.assertEqual(merge[4:-5], [f"--output={place}/logs/merge.log", "--partition=long",
                                       "--time=10", "--exclusive", "--nice=3"])
        self.assertEqual(merge[-5:-2], ["--dependency=afterany:1", "--time=1-0", "--mem=8 G"])
        self.assertRegex(merge[-2], r"^--job-name=tarnmail-[0-9a-f]{10}\.merge$")

    def test_options_of_before_hold_unless_given_again(self) -> None:
        self.submit("-p", "long", "--time=10", "--at-once=2", "--", "--exclusive")
        self.cluster.change(lambda job: job.update(state="ENDED"))
        self.expect(0, "6 submitted", "-o", self.out, "--resume", "--time=20")
        tasks = self.submitted()[2]
        for word in ("--partition=long", "--time=20", "--exclusive", "--array=0-5%2"):
            self.assertIn(word, tasks)
        self.assertNotIn("--time=10", tasks)

    def test_variables_of_another_job_are_not_handed_on(self) -> None:
        variables = {"SLURM_RESTART_COUNT": "9", "SLURM_CPUS_PER_TASK": "7",
                     "SBATCH_ARRAY_INX": "1-3", "SQUEUE_STATES": "FAILED",
                     "SLURM_CONF": "/c", "SBATCH_ACCOUNT": "a"}
        self.expect(0, "1 submitted", self.mails, "-o", self.out, **variables)
        for name in ("sbatch", "squeue", "scontrol"):
            for call in self.cluster.calls(name):
                self.assertEqual(call[-1], {"SLURM_CONF": "/c", "SBATCH_ACCOUNT": "a"})

    def test_program_beside_the_command_or_of_the_path(self) -> None:
        beside = self.folder / "bin"
        beside.mkdir()
        (beside / "tarnmail-slurm").symlink_to(COMMAND.resolve())
        (beside / "tarnmail").symlink_to(TARNMAIL)
        variables = {name: text for name, text in self.cluster.environment.items()
                     if name != "TARNMAIL"}
        for command, path, used in (
                (beside / "tarnmail-slurm", "", beside / "tarnmail"),
                (COMMAND.resolve(), f"{beside}:", beside / "tarnmail")):
            out = Path(f"{self.out}-{len(path)}")
            done = subprocess.run([command, self.mails, "-o", out], check=False,
                                  capture_output=True, text=True,
                                  env={**variables, "PATH": path + variables["PATH"]})
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertIn(f"\ntarnmail={used}\n", Path(f"{out}.slurm/task.sh").read_text())
        self.expect(3, "TARNMAIL=/none: there is no such program", self.mails, "-o", self.out,
                    TARNMAIL="/none")

    def test_plan_of_before(self) -> None:
        plan = self.folder / "plan"
        subprocess.run([TARNMAIL, "plan", self.mails, "-o", plan, "--target-cost", "1"], check=True,
                       capture_output=True)
        self.expect(0, "6 submitted", "--plan", plan, "-o", self.out)
        self.expect(2, "is no plan of tarnmail plan", "--plan", self.mails / "0.eml", "-o",
                    self.folder / "other")
        self.expect(2, "No such file", "--plan", "/none", "-o", self.folder / "third")

    def test_refused_submission_can_be_made_again(self) -> None:
        refuse = self.cluster.folder / "refuse"
        refuse.write_text("invalid partition specified: nowhere")
        self.expect(1, "sbatch: invalid partition specified: nowhere", self.mails, "-o",
                    self.out, "-p", "nowhere")
        refuse.unlink()
        self.expect(0, "1 submitted", self.mails, "-o", self.out)
        self.assertNotIn("--partition=nowhere", self.submitted()[-1])

    def test_export_of_no_message(self) -> None:
        self.expect(0, "tasks: ", self.mails, "-o", self.out, "--to", "text", "--from", "nobody")
        self.cluster.run_all()
        self.assertIn("put together", self.status())

    def test_inputs_that_cannot_be_planned(self) -> None:
        self.expect(2, "/none", "/none", "-o", self.out)
        self.assertEqual(self.submitted(), [])
        self.expect(2, "nothing was submitted yet", "-o", self.out, "--resume")
        self.expect(2, "nothing was submitted yet", "-o", self.out, "--status")
        self.assertFalse(Path(f"{self.out}.slurm").exists())

    def test_slurm_is_asked_before_all_is_read(self) -> None:
        (self.cluster.folder / "gone").touch()
        # It is none of the sources that would be found wrong.
        self.expect(1, "Unable to contact slurm controller", "/none", "-o", self.out)
        self.assertFalse(Path(f"{self.out}.slurm").exists())


class SmallArraysTest(ClusterTest):
    limit = 4

    def test_plan_with_more_tasks_than_an_array_may_have(self) -> None:
        self.submit()
        arrays = [next(word for word in call if word.startswith("--array"))
                  for call in self.submitted()[:-1]]
        self.assertEqual(arrays, ["--array=0-3", "--array=0-1"])
        self.assertIn("--dependency=afterany:1:2", self.submitted()[-1])
        self.cluster.run_all()
        self.expect_the_same_tree(self.out, self.export_alone())

    def test_missing_tasks_of_several_arrays(self) -> None:
        self.submit()
        for _ in range(3):
            self.cluster.run_next()
        self.cluster.change(lambda job: job.update(state="ENDED"))
        self.expect(0, "3 submitted in jobs 4 5, 0 queued or running, 3 done", "-o", self.out,
                    "--resume")
        # The limit may have become another one meanwhile.
        (self.cluster.folder / "limit").write_text("3")
        self.expect(0, "0 submitted, 3 queued or running, 3 done", "-o", self.out, "--resume")
        self.cluster.change(lambda job: job.update(state="ENDED"))
        self.expect(0, "3 submitted in job 7", "-o", self.out, "--resume")
        self.cluster.run_all()
        self.expect_the_same_tree(self.out, self.export_alone())


    def test_queue_that_takes_no_more(self) -> None:
        most = self.cluster.folder / "most"
        most.write_text("5")
        again = [self.mails, "-o", self.out, "--target-cost", 1, "--to", "text"]
        self.expect(1, "unable to accept job; Batch job submission failed: Resource temporarily "
                       "unavailable (submitted before that: 1; --resume submits the rest)", *again)
        self.expect(2, "--resume goes on", *again)
        for _ in range(4):
            self.cluster.run_next()
        self.expect(0, "2 submitted in job 2, 0 queued or running, 4 done", "-o", self.out,
                    "--resume")
        self.cluster.run_all()
        self.expect_the_same_tree(self.out, self.export_alone())


class ResumeTest(ClusterTest):
    def test_what_is_queued_or_runs_is_not_submitted(self) -> None:
        self.submit()
        self.cluster.run_next()
        calls = len(self.submitted())
        for _ in range(2):
            self.expect(0, "0 submitted, 5 queued or running, 1 done", "-o", self.out, "--resume")
        self.assertEqual(len(self.submitted()), calls)
        # One was cancelled: it comes again, and the merge waits for all.
        subprocess.run(["scancel", "1_3"], env=self.cluster.environment, check=True)
        self.expect(0, "1 submitted in job 3, 4 queued or running, 1 done", "-o", self.out,
                    "--resume")
        self.assertIn("--array=3", self.submitted()[-2])
        self.assertIn("--dependency=afterany:1:3", self.submitted()[-1])
        self.assertEqual([job["array"] for job in self.cluster.jobs()
                          if job["task"] is None and job["state"] == "PENDING"], [4])

    def test_cancelled_merge_is_submitted_again(self) -> None:
        self.submit()
        subprocess.run(["scancel", "2"], env=self.cluster.environment, check=True)
        self.assertIn("merge: is not queued (--resume submits it)", self.status())
        self.expect(0, "0 submitted, 6 queued or running, 0 done", "-o", self.out, "--resume")
        self.assertIn("merge: job 3 waits for the tasks", self.status())
        self.cluster.run_all()
        self.expect_the_same_tree(self.out, self.export_alone())

    def test_new_merge_comes_after_one_that_runs(self) -> None:
        self.submit()
        self.cluster.change(lambda job: job.update(
            state="ENDED" if job["task"] is not None else "RUNNING"))
        self.expect(0, "6 submitted in job 3", "-o", self.out, "--resume")
        self.assertIn("--dependency=afterany:2:3", self.submitted()[-1])
        self.assertEqual(self.cluster.calls("scancel"), [])

    def test_what_slurm_holds_is_released(self) -> None:
        self.submit()
        self.cluster.change(lambda job: job.update(
            reason={0: "launch failed requeued held", 1: "JobHeldUser"}.get(job["task"], "Priority")))
        self.assertIn("4 queued, 2 held", self.status())
        self.expect(0, "released what Slurm held: 1_0\n", "-o", self.out, "--resume")
        self.assertIn("5 queued, 1 held", self.status())
        self.cluster.change(lambda job: job.update(
            state="REQUEUE_HOLD" if job["task"] == 2 else job["state"]))
        self.assertIn("4 queued, 2 held", self.status())

    def test_changed_inputs_are_another_plan(self) -> None:
        self.submit()
        again = [self.mails, "-o", self.out, "--target-cost", 1, "--to", "text"]
        self.expect(2, "was submitted before; --resume goes on with it", *again)
        self.expect(0, "0 submitted, 6 queued or running", *again, "--resume")
        self.expect(2, "belongs to another plan", *again[:-1], "html", "--resume")
        (self.mails / "0.eml").write_text((self.mails / "1.eml").read_text())
        self.expect(2, "belongs to another plan", *again, "--resume")
        self.cluster.run_all()
        self.assertIn("neither done nor queued: ", self.status())
        self.assertIn("has changed", self.status())
        self.assertIn("these tasks are missing: ", self.status())
        self.assertFalse((self.out / "manifest.jsonl").exists())

    def test_folder_of_something_else(self) -> None:
        self.out.mkdir()
        (self.out / "letter.txt").write_text("")
        self.expect(2, "out: is not empty", self.mails, "-o", self.out)
        (self.out / "letter.txt").unlink()
        self.submit()
        self.cluster.run_next()
        shutil.rmtree(f"{self.out}.slurm")
        self.expect(2, "holds parts of another plan", self.mails, "-o", self.out)
        self.assertEqual(len(self.submitted()), 2)

    def test_lost_state_of_the_same_plan(self) -> None:
        self.submit()
        self.cluster.run_next()
        shutil.rmtree(f"{self.out}.slurm")
        self.expect(0, "5 submitted", self.mails, "-o", self.out, "--target-cost", 1, "--to", "text")

    def test_forms_add_up(self) -> None:
        self.expect(0, "6 submitted", self.mails, "-o", self.out, "--target-cost", 1, "--to", "text",
                    "--to", "json")
        self.cluster.run_all()
        self.expect_the_same_tree(self.out, self.export_alone("text,json"))

    def test_one_at_a_time(self) -> None:
        self.submit()
        holder = subprocess.Popen(
            [sys.executable, "-c", "import fcntl, sys\nfile = open(sys.argv[1], 'w')\n"
             "fcntl.lockf(file, fcntl.LOCK_EX)\nprint(flush=True)\nsys.stdin.read()",
             f"{self.out}.slurm/lock"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        assert holder.stdout and holder.stdin
        holder.stdout.readline()
        self.expect(1, "another tarnmail-slurm is at work", "-o", self.out, "--resume")
        holder.stdin.close()
        holder.wait()
        holder.stdout.close()
        self.expect(0, "0 submitted", "-o", self.out, "--resume")

    def test_damaged_state(self) -> None:
        self.submit()
        Path(f"{self.out}.slurm/state.json").write_text("{")
        self.expect(2, "state.json", "-o", self.out, "--resume")


class RetryTest(ClusterTest):
    def log(self) -> str:
        return Path(f"{self.out}.slurm/logs/0/0.log").read_text()

    def test_what_may_be_otherwise_is_tried_again_so_often(self) -> None:
        for number, words in enumerate(("exit 75", "kill -9 $$", "kill -11 $$")):
            with self.subTest(words):
                self.out = self.folder / f"out{number}"
                self.exits.write_text(words)
                self.submit("--retries", "2", out=self.out)
                name = self.cluster.jobs()[-7]["array"]
                for restarts in (1, 2):
                    self.cluster.run_next()
                    first = self.cluster.pending()[0]
                    self.assertEqual((first["array"], first["task"], first["restarts"]),
                                     (name, 0, restarts))
                self.assertNotEqual(self.cluster.run_next(), 0)
                self.assertEqual(self.cluster.pending()[0]["task"], 1)
                self.assertIn("given up after 2 retries", self.log())
                self.cluster.change(lambda job: job.update(state="ENDED"))

    def test_controller_that_is_busy_is_asked_again(self) -> None:
        self.exits.write_text("exit 75")
        self.submit()
        busy = self.cluster.folder / "busy"
        busy.touch()
        self.cluster.run_next()
        self.assertFalse(busy.exists())
        self.assertEqual(self.cluster.pending()[0]["restarts"], 1)
        self.assertIn("Unable to contact slurm controller", self.log())

    def test_controller_that_refuses_is_not(self) -> None:
        self.exits.write_text("exit 75")
        self.submit()
        (self.cluster.folder / "refuses").touch()
        self.assertEqual(self.cluster.run_next(), 75)
        self.assertEqual(self.cluster.pending()[0]["task"], 1)
        self.assertIn("Slurm does not queue it again, given up", self.log())

    def test_what_would_be_the_same_again_is_not(self) -> None:
        self.submit()
        for status in (1, 2, 3, 127):
            self.exits.write_text(f"exit {status}")
            self.assertEqual(self.cluster.run_next(), status)
        self.assertEqual(len(self.cluster.pending()), 3)
        self.exits.unlink()
        self.cluster.run_all()
        self.assertIn("these tasks are missing: 0-3", self.status())
        self.expect(0, "4 submitted", "-o", self.out, "--resume")
        self.cluster.run_all()
        self.expect_the_same_tree(self.out, self.export_alone())

    def test_task_that_was_asked_to_end_is_not(self) -> None:
        self.submit()
        ready = self.folder / "ready"
        self.exits.write_text(f'trap "exit 75" TERM; : >"{ready}"; while :; do sleep 0.01; done')

        def end(group: int) -> None:
            while not ready.exists():
                time.sleep(0.005)
            os.killpg(group, signal.SIGTERM)
        self.assertEqual(self.cluster.run_next(end), 75)
        self.assertEqual(self.cluster.pending()[0]["task"], 1)
        self.assertNotIn("queued again", self.log())

    def test_merge_is_tried_again_too(self) -> None:
        self.submit()
        for _ in range(6):
            self.cluster.run_next()
        self.exits.write_text("exit 75")
        self.cluster.run_next()
        self.assertEqual([job["restarts"] for job in self.cluster.pending()], [1])
        self.exits.unlink()
        self.cluster.run_all()
        self.expect_the_same_tree(self.out, self.export_alone())


class CommandLineTest(ClusterTest):
    def test_wrong_usage(self) -> None:
        out = ["-o", self.out]
        for text, arguments in (
                ("the following arguments are required: -o/--output", [self.mails]),
                ("PATH is missing", out),
                ("empty name", ["m", "-o", ""]),
                ("backslash", ["m", "-o", "a\\b"]),
                ("either paths or --plan", ["m", *out, "--plan", "p"]),
                ("--to belongs to the paths of a plan", [*out, "--resume", "--to", "text"]),
                ("--status takes no other", [*out, "--status", "--resume"]),
                ("--status takes no other", ["m", *out, "--status"]),
                ("unrecognized arguments: --nice=3", ["m", *out, "--nice=3"]),
                ("unrecognized arguments: --resum", ["m", *out, "--resum"]),
                ("--array=1-3 is said to sbatch", ["m", *out, "--", "--array=1-3"]),
                ("-a1-3 is said to sbatch", ["m", *out, "--", "-a1-3"]),
                ("--dependency=x is said", ["m", *out, "--merge-options", "--dependency=x"]),
                ("no number from 0 to 1000", ["m", *out, "--retries", "-1"]),
                ("no number from 1 to", ["m", *out, "--at-once", "0"])):
            with self.subTest(text):
                self.expect(2, text, *arguments)
        self.assertEqual(self.cluster.calls("sbatch"), [])
        self.assertFalse(self.out.exists())

    def test_options_may_be_anywhere(self) -> None:
        self.expect(0, "2 submitted", self.mails / "0.eml", "-o", self.out, "--to", "text",
                    self.mails / "1.eml", "--target-cost", 1)

    def test_machine_without_slurm(self) -> None:
        tools = self.folder / "tools"
        tools.mkdir()
        for name in ("python3", "env", "sh"):
            (tools / name).symlink_to(shutil.which(name) or "")
        for left in ("sbatch", "scancel"):
            for name in ("sbatch", "squeue", "scontrol", "scancel"):
                (tools / name).unlink(missing_ok=True)
                if name != left:
                    (tools / name).symlink_to(self.cluster.bin / name)
            self.expect(3, f"{left} is not installed", self.mails, "-o", self.out, PATH=str(tools))
        self.assertFalse(self.out.exists() or Path(f"{self.out}.slurm").exists())

    def test_help(self) -> None:
        self.expect(0, "usage: tarnmail-slurm PATH", "--help")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])

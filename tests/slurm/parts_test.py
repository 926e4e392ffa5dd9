"""Parts of tarnmail-slurm by themselves: lists of numbers, and the scripts that jobs run.

parts_test.py [test...]
"""

from __future__ import annotations

import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "plain/slurm"))

from fake_cluster import ODD_NAME  # noqa: E402
from tarnslurm.job_scripts import merge_script, quoted_stage, task_script  # noqa: E402
from tarnslurm.numbers import arrays_of, list_of, numbers_of  # noqa: E402


class NumbersTest(unittest.TestCase):
    def test_lists(self) -> None:
        for text, numbers in (("", []), ("3", [3]), ("3,7-9", [3, 7, 8, 9]), ("0-1,5", [0, 1, 5])):
            self.assertEqual(numbers_of(text + "\n"), numbers)
            self.assertEqual(list_of(reversed(numbers)), text)
        self.assertEqual(list_of([4, 4, 5]), "4-5")
        with self.assertRaises(ValueError):
            numbers_of("3,x")

    def test_arrays_have_numbers_below_the_limit(self) -> None:
        self.assertEqual(arrays_of([0, 7, 8, 17, 23, 24], 8),
                         {0: [0, 7], 8: [0], 16: [1, 7], 24: [0]})
        self.assertEqual(arrays_of([], 8), {})


class ScriptTest(unittest.TestCase):
    """The scripts, with a program that tells what it was given."""

    def setUp(self) -> None:
        self.folder = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        self.odd = self.folder / ODD_NAME
        self.odd.mkdir()
        self.program = self.odd / "tarnmail"
        self.program.write_text("#!/bin/sh\nprintf '%s\\0' \"$@\" >told\n")
        self.program.chmod(0o755)
        (self.odd / "plan").write_text("")

    def told(self, script: str, *arguments: str, **variables: str) -> list[str]:
        subprocess.run(["sh", "-c", script, "job", *arguments], cwd=self.folder, check=True,
                       env={**os.environ, **variables}, stdout=subprocess.DEVNULL)
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()),
                         sorted([ODD_NAME, "told"]))
        return (self.folder / "told").read_text().split("\0")[:-1]

    def test_paths_reach_the_program_as_they_are(self) -> None:
        plan, out = str(self.odd / "plan"), str(self.odd / "out")
        stage = str(self.odd / "stage")
        script = task_script(str(self.program), plan, out, 5, stage)
        self.assertEqual(self.told(script, "16"),
                         ["run-task", plan, "-o", out, "--task-offset", "16", "-j", "1",
                          "--stage", stage])
        script = merge_script(str(self.program), plan, out, 5)
        self.assertEqual(self.told(script), ["merge", plan, out, "-j", "1"])

    def test_processors_of_the_job_are_used(self) -> None:
        plan, out = str(self.odd / "plan"), str(self.odd / "out")
        script = merge_script(str(self.program), plan, out, 5)
        for given, used in (("4", "4"), ("64", "64"), ("128", "64")):
            self.assertEqual(self.told(script, SLURM_CPUS_PER_TASK=given)[-1], used)

    def test_stage_may_be_a_variable_of_the_machine(self) -> None:
        plan, out = str(self.odd / "plan"), str(self.odd / "out")
        for stage, used in (("$HERE", "/x y"), ("$HERE/$(b)", "/x y/$(b)"), ("$(ls)", "$(ls)"),
                            ("a$HERE", "a$HERE"), ("~/s", "~/s")):
            script = task_script(str(self.program), plan, out, 5, stage)
            self.assertEqual(self.told(script, "0", HERE="/x y")[-1], used)
        script = task_script(str(self.program), plan, out, 5, "$NOT_SET_HERE")
        (self.folder / "told").unlink()
        done = subprocess.run(["sh", "-c", script, "job", "0"], cwd=self.folder, check=False,
                              capture_output=True, text=True)
        self.assertEqual((done.returncode, "NOT_SET_HERE" in done.stderr), (2, True), done.stderr)
        self.assertFalse((self.folder / "told").exists())
        self.assertEqual(quoted_stage("$A/b c"), "\"${A:?}\"'/b c'")

    def test_machine_without_the_plan_says_so(self) -> None:
        script = task_script(str(self.program), str(self.odd / "none"), str(self.odd), 5, None)
        done = subprocess.run(["sh", "-c", script, "job", "0"], cwd=self.folder, check=False,
                              capture_output=True, text=True)
        self.assertEqual(done.returncode, 2)
        self.assertIn("file system that all machines share", done.stdout)


if __name__ == "__main__":
    unittest.main()

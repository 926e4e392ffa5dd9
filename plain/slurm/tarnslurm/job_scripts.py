"""What the jobs run: scripts for sh, in which every path is quoted."""

from __future__ import annotations

import re
import shlex
from typing import Optional

_HEAD = """\
#!/bin/sh
# Made by tarnmail-slurm: {what}
tarnmail={tarnmail}
plan={plan}
folder={folder}
retries={retries}

# A job that Slurm ends (scancel, its time, another job's place) is asked to by SIGTERM, which the
# program gets too.
asked=0
trap 'asked=1' TERM
jobs=${{SLURM_CPUS_PER_TASK:-1}}
[ "$jobs" -le 64 ] || jobs=64
echo "job {job}, attempt $((${{SLURM_RESTART_COUNT:-0}} + 1)) on ${{SLURMD_NODENAME:-?}}, $(date -u +%Y-%m-%dT%H:%M:%SZ)"
if [ ! -r "$plan" ]; then
  echo "this machine does not have the plan $plan: is that on a file system that all machines share?"
  exit 2
fi
"""

_TAIL = """
status=$?
# 75 may be otherwise the next time, and so may what a signal has ended.
if [ "$asked" -eq 0 ] && {{ [ "$status" -eq 75 ] || [ "$status" -ge 128 ]; }}; then
  if [ "${{SLURM_RESTART_COUNT:-0}}" -ge "$retries" ]; then
    echo "exit status $status, given up after $retries retries"
  else
    echo "exit status $status, queued again"
    # A controller that is busy or away may answer the next time: for about four minutes.
    pause=1
    while [ "$asked" -eq 0 ]; do
      if said=$(scontrol requeue "{job}" 2>&1); then
        # Slurm ends this job now.
        pause=300
      else
        echo "$said"
        case $said in
          *ontact*|*"imed out"*|*emporarily*|*ommunication*|*onnect*) again=$((pause <= 128)) ;;
          *) again=0 ;;
        esac
        if [ "$again" -eq 0 ]; then
          echo "Slurm does not queue it again, given up"
          break
        fi
      fi
      seconds=0
      while [ "$asked" -eq 0 ] && [ "$seconds" -lt "$pause" ]; do
        sleep 1
        seconds=$((seconds + 1))
      done
      [ "$pause" -lt 300 ] || break
      pause=$((pause * 2))
    done
  fi
fi
exit "$status"
"""

_ARRAY_JOB = "${SLURM_ARRAY_JOB_ID}_${SLURM_ARRAY_TASK_ID}"
_SINGLE_JOB = "$SLURM_JOB_ID"


def _script(what: str, command: str, job: str, tarnmail: str, plan: str, folder: str,
            retries: int) -> str:
    values = {"what": what, "job": job, "tarnmail": shlex.quote(tarnmail),
              "plan": shlex.quote(plan), "folder": shlex.quote(folder), "retries": retries}
    return _HEAD.format(**values) + command + _TAIL.format(**values)


def quoted_stage(stage: str) -> str:
    """A folder for sh; "$NAME" or "$NAME/below" is that variable on the machine that runs the task."""
    found = re.fullmatch(r"\$([A-Za-z_][A-Za-z0-9_]*)(/.*)?", stage, re.DOTALL)
    if found is None:
        return shlex.quote(stage)
    return f'"${{{found[1]}:?}}"' + (shlex.quote(found[2]) if found[2] else "")


def task_script(tarnmail: str, plan: str, folder: str, retries: int, stage: Optional[str]) -> str:
    """Its argument is added to the number in the array."""
    command = '"$tarnmail" run-task "$plan" -o "$folder" --task-offset "$1" -j "$jobs"'
    if stage is not None:
        command += f" --stage {quoted_stage(stage)}"
    return _script("one task of an export, by its number in the array and what $1 adds to that.",
                   command, _ARRAY_JOB, tarnmail, plan, folder, retries)


def merge_script(tarnmail: str, plan: str, folder: str, retries: int) -> str:
    return _script("puts the tasks of an export together.",
                   '"$tarnmail" merge "$plan" "$folder" -j "$jobs"', _SINGLE_JOB, tarnmail, plan,
                   folder, retries)

"""Other programs, asked without a shell."""

from __future__ import annotations

import os
import shutil
import subprocess
import sys
from typing import Sequence

from .failure import BROKEN, Failure


def find_program(name: str, package: str) -> str:
    """Its path; Failure (broken) with the package that it is in where it is not installed."""
    path = shutil.which(name)
    if path is None:
        raise Failure(BROKEN, f"{name} is not installed (package {package})")
    return path


# Variables that would change what Slurm's commands do or answer, and those of a job that this runs in,
# which the jobs that it submits would inherit.
_KEPT = ("SLURM_CONF", "SLURM_JWT")
_FORGOTTEN = ("SBATCH_ARRAY_INX", "SBATCH_WAIT", "SBATCH_CLUSTERS", "SBATCH_NO_REQUEUE")


def environment() -> dict[str, str]:
    return {name: value for name, value in os.environ.items()
            if name in _KEPT or (not name.startswith(("SLURM_", "SQUEUE_"))
                                 and name not in _FORGOTTEN)}


def ask(command: Sequence[str]) -> subprocess.CompletedProcess[str]:
    """Runs it to its end. Bytes that are no UTF-8 stay as they are, in both directions."""
    try:
        return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, check=False,
                              env=environment(),
                              encoding="utf-8", errors="surrogateescape")
    except OSError as error:
        raise Failure(BROKEN, f"{command[0]}: {error.strerror}") from error


def last_line(text: str) -> str:
    """What a program has said last, for a message."""
    lines = text.strip().splitlines()
    return lines[-1].strip() if lines else "it does not say why"


def say(line: str) -> None:
    """To standard error, at once; what a terminal would obey is shown escaped."""
    shown = "".join(sign if sign.isprintable() else repr(sign)[1:-1] for sign in line)
    print(f"tarnmail-slurm: {shown}", file=sys.stderr, flush=True)

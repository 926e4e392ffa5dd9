"""The command: what is asked for, done, and what came of it as an exit status."""

from __future__ import annotations

import os
import sys
from typing import Sequence

from .arguments import Request, parse
from .failure import DONE, FAILED, Failure
from .programs import say
from .slurm import Slurm
from .status import Status
from .submitting import Submission
from .tarnmail import Tarnmail, find_tarnmail
from .workplace import Workplace


def run(command: str, request: Request) -> None:
    place = Workplace(request.output)
    slurm = Slurm()
    tarnmail = Tarnmail(find_tarnmail(command))
    if request.status:
        for line in Status(place, tarnmail, slurm).lines():
            sys.stdout.write(line.encode("utf-8", "surrogateescape").decode("utf-8", "replace")
                             + "\n")
        sys.stdout.flush()
        return
    Submission(request, place, tarnmail, slurm).run()


def main(arguments: Sequence[str]) -> int:
    request = parse(arguments[1:])
    try:
        run(arguments[0], request)
        return DONE
    except Failure as failure:
        say(str(failure))
        return failure.status
    except BrokenPipeError:
        # Whoever reads has seen enough.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        return FAILED
    except KeyboardInterrupt:
        return 130

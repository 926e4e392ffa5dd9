"""The command line: what tarnmail plan takes, what sbatch takes, and what is our own."""

from __future__ import annotations

import argparse
import sys
from dataclasses import dataclass, field
from typing import Callable, NoReturn, Optional, Sequence

from .failure import USAGE


@dataclass(frozen=True)
class Option:
    """One without a metavar takes no value."""

    flags: tuple[str, ...]
    metavar: str
    help: str

    @property
    def name(self) -> str:
        return self.flags[-1]


def _options(*rows: tuple[str, str, str]) -> tuple[Option, ...]:
    return tuple(Option(tuple(flags.split()), metavar, text) for flags, metavar, text in rows)


# Those of tarnmail plan, without its output.
PLAN_OPTIONS = _options(
    ("--target-cost", "BYTES", "cost of a task; 1G unless said otherwise"),
    ("--max-tasks", "N", "at most so many tasks; 1000 unless said otherwise"),
    ("--calibrate", "MANIFEST", "costs from the times of an export before"),
    ("--to", "FORMS", "html (if nothing is said), text, eml, mbox, json, pdf"),
    ("--one-pdf", "", "one PDF a folder, with bookmarks; pdf if nothing else is said"),
    ("--no-attachments", "", "attachments are not written beside"),
    ("--no-catalogue", "", "neither catalogue.sqlite nor index.html are made"),
    ("--paper", "PAPER", "of pdf: a4 (default) or letter"),
    ("--no-sandbox", "", "of pdf: lay out even where helpers cannot be kept apart"),
    ("--dedupe", "", "of messages with the same content only the first is written"),
    ("--folder", "FOLDER", "only this folder and those below it"),
    ("--from", "TEXT", "only with this in the sender"),
    ("--recipient", "TEXT", "only with this in a recipient"),
    ("--subject", "TEXT", "only with this in the subject"),
    ("--since", "DATE", "only from this date on"),
    ("--until", "DATE", "only up to this date, which is included"),
    ("--has-attachment", "", "only with attachments"),
    ("--class", "CLASS", "only items whose class begins so"),
    ("--recover", "", "also what a store holds and no table names"),
    ("-j --jobs", "N", "processes that plan at the same time"),
    ("--seconds", "N", "time for one message"),
    ("--memory", "MB", "memory of each process"),
    ("--temp", "DIR", "directory for temporary files while it plans"),
)

# Those of sbatch that may have their value in the next word; all others go after "--".
SBATCH_OPTIONS = _options(
    ("-A --account", "NAME", "account that pays"),
    ("-p --partition", "NAME", "partition"),
    ("-q --qos", "NAME", "quality of service"),
    ("-t --time", "TIME", "longest time of a task"),
    ("-c --cpus-per-task", "N", "processors of a task, and so many processes read"),
    ("--mem", "SIZE", "memory of a task"),
    ("--tmp", "SIZE", "local scratch of a task"),
    ("-C --constraint", "LIST", "features that machines must have"),
    ("-w --nodelist", "NODES", "these machines"),
    ("-x --exclude", "NODES", "not these machines"),
    ("--reservation", "NAME", "reservation"),
    ("--gres", "LIST", "further resources"),
    ("--licenses", "LIST", "licenses"),
    ("--begin", "TIME", "not before"),
    ("--mail-type", "LIST", "when to send mail"),
    ("--mail-user", "ADDRESS", "whom to send mail"),
)

# What tarnmail-slurm says to sbatch itself, or cannot follow.
OWN_TO_US = ("--array", "-a", "--dependency", "-d", "--job-name", "-J", "--output", "-o", "--error",
             "-e", "--wait", "-W", "--wrap", "--parsable", "--requeue", "--no-requeue",
             "--clusters", "-M", "--open-mode", "--chdir", "-D", "--test-only", "--export-file")

_DESCRIPTION = """\
Exports mail archives by a Slurm cluster: plans the export, submits its tasks as arrays of jobs, and
a job that puts all together. DIR must be on a file system that all machines share; what belongs to
the jobs is in DIR.slurm. tarnmail(1) and docs/cluster.md tell more."""


@dataclass
class Request:
    """What the command line asks for."""

    output: str
    paths: list[str] = field(default_factory=list)
    plan: Optional[str] = None
    resume: bool = False
    status: bool = False
    plan_options: list[str] = field(default_factory=list)  # as tarnmail plan takes them
    sbatch: dict[str, str] = field(default_factory=dict)  # name without dashes, value
    sbatch_more: list[str] = field(default_factory=list)  # after "--", as they are
    merge: Optional[str] = None  # further options of the job that merges
    stage: Optional[str] = None
    at_once: Optional[int] = None
    retries: Optional[int] = None


class _Parser(argparse.ArgumentParser):
    """Says what is wrong in one line."""

    def error(self, message: str) -> NoReturn:
        print(f"{self.prog}: {message}", file=sys.stderr)
        sys.exit(USAGE)


def _number(least: int, most: int) -> Callable[[str], int]:
    def parse(text: str) -> int:
        if not text.isdigit() or not least <= int(text) <= most:
            raise argparse.ArgumentTypeError(f"{text!r} is no number from {least} to {most}")
        return int(text)
    return parse


def _add(group: argparse._ArgumentGroup, options: Sequence[Option], prefix: str) -> None:
    for option in options:
        target = prefix + option.name.lstrip("-")
        if option.metavar == "FORMS":
            # Several add up.
            group.add_argument(*option.flags, dest=target, metavar=option.metavar, help=option.help,
                               action="append")
        elif option.metavar:
            group.add_argument(*option.flags, dest=target, metavar=option.metavar, help=option.help)
        else:
            group.add_argument(*option.flags, dest=target, action="store_true", help=option.help)


def make_parser() -> argparse.ArgumentParser:
    parser = _Parser(
        prog="tarnmail-slurm", allow_abbrev=False, add_help=False, description=_DESCRIPTION,
        usage="tarnmail-slurm PATH... -o DIR [options] [-- options of sbatch]\n"
              "       tarnmail-slurm -o DIR --resume [options] [-- options of sbatch]\n"
              "       tarnmail-slurm -o DIR --status",
        formatter_class=lambda prog: argparse.RawDescriptionHelpFormatter(
            prog, max_help_position=32, width=100))
    parser.add_argument("paths", nargs="*", metavar="PATH",
                        help="stores, MSG files, mails, mboxes, Maildirs, or folders to search")
    own = parser.add_argument_group("options")
    own.add_argument("-h", "--help", action="help", help="print the options and exit")
    own.add_argument("-o", "--output", metavar="DIR", required=True, help="folder of the export")
    own.add_argument("--plan", metavar="PLAN", help="a plan that tarnmail plan has written, "
                     "instead of paths")
    own.add_argument("--resume", action="store_true",
                     help="submit what is neither done nor queued")
    own.add_argument("--status", action="store_true", help="tell how far the export is")
    own.add_argument("--at-once", metavar="N", type=_number(1, 1_000_000),
                     help="at most so many tasks of an array at the same time")
    own.add_argument("--retries", metavar="N", type=_number(0, 1000),
                     help="so often a task is queued again; 5 unless said otherwise")
    own.add_argument("--stage", metavar="DIR",
                     help="copy inputs there first; $NAME is a variable of the machine")
    own.add_argument("--merge-options", metavar="OPTIONS",
                     help="further options of sbatch for the job that puts all together, in one word")
    _add(parser.add_argument_group("options of the plan, as of tarnmail plan"), PLAN_OPTIONS, "plan:")
    _add(parser.add_argument_group("options of sbatch (others after --)"), SBATCH_OPTIONS, "sbatch:")
    return parser


def _plan_options(given: dict[str, object]) -> list[str]:
    options: list[str] = []
    for option in PLAN_OPTIONS:
        value = given["plan:" + option.name.lstrip("-")]
        if value is True:
            options.append(option.name)
        elif isinstance(value, str):
            options.append(f"{option.name}={value}")
        elif isinstance(value, list):
            options += [f"{option.name}={one}" for one in value]
    return options


def is_own_to_us(word: str) -> bool:
    """Whether the word is an option of sbatch that nobody else may give."""
    name = word.partition("=")[0]
    # Slurm takes -a1-3 as -a 1-3.
    return name in OWN_TO_US or (len(word) > 2 and word[1] != "-" and word[:2] in OWN_TO_US)


def _check(parser: argparse.ArgumentParser, request: Request) -> None:
    if not request.output:
        parser.error("empty name of the folder")
    # In the name of a log Slurm has a use of its own for it.
    if "\\" in request.output:
        parser.error("a folder with a backslash in its name is none for Slurm")
    if request.status:
        if request.resume or request.paths or request.plan or request.plan_options:
            parser.error("--status takes no other option than -o")
    elif request.paths and request.plan is not None:
        parser.error("either paths or --plan")
    elif request.plan_options and not request.paths:
        parser.error(f"{request.plan_options[0].partition('=')[0]} belongs to the paths of a plan")
    elif not request.paths and request.plan is None and not request.resume:
        parser.error("what is to be exported? PATH is missing")
    for word in [*request.sbatch_more, *(request.merge or "").split()]:
        if word.startswith("-") and is_own_to_us(word):
            parser.error(f"{word} is said to sbatch by tarnmail-slurm itself")


def parse(arguments: Sequence[str]) -> Request:
    """Ends the program with one line and status 2 for what is wrong."""
    words, more = list(arguments), []
    if "--" in words:
        more = words[words.index("--") + 1:]
        words = words[:words.index("--")]
    # Its value begins as an option does.
    if "--merge-options" in words[:-1]:
        at = words.index("--merge-options")
        words[at:at + 2] = [f"{words[at]}={words[at + 1]}"]
    parser = make_parser()
    given = vars(parser.parse_intermixed_args(words))
    request = Request(
        output=given["output"], paths=given["paths"], plan=given["plan"], resume=given["resume"],
        status=given["status"], plan_options=_plan_options(given), sbatch_more=more,
        merge=given["merge_options"], stage=given["stage"], at_once=given["at_once"],
        retries=given["retries"])
    for option in SBATCH_OPTIONS:
        value = given["sbatch:" + option.name.lstrip("-")]
        if value is not None:
            request.sbatch[option.name.lstrip("-")] = value
    _check(parser, request)
    return request

#!/usr/bin/python3
"""sbatch, squeue, scontrol and scancel, as far as an export needs them, on a file of jobs.

The folder is that of the variable FAKE_SLURM: jobs.json has the jobs, calls.jsonl all calls, and
"limit" the MaxArraySize, "most" the MaxJobCount where it is there. What is in the file "refuse" is the
reason for which sbatch refuses. scontrol has no answer where "gone" is, none once where "busy" is, and
refuses to queue a job again where "refuses" is. Jobs run when a test runs them (fake_cluster.py).
"""

import json
import os
import sys
from pathlib import Path

FOLDER = Path(os.environ["FAKE_SLURM"])


def load():
    path = FOLDER / "jobs.json"
    return json.loads(path.read_text()) if path.exists() else []


def save(jobs):
    draft = FOLDER / "jobs.json.new"
    draft.write_text(json.dumps(jobs))
    draft.replace(FOLDER / "jobs.json")


def fail(line):
    print(line, file=sys.stderr)
    sys.exit(1)


def value_of(arguments, name, otherwise=""):
    return next((word[len(name) + 1:] for word in arguments if word.startswith(name + "=")),
                otherwise)


def numbers_of(text):
    for piece in text.partition("%")[0].split(","):
        first, _, last = piece.partition("-")
        yield from range(int(first), int(last or first) + 1)


def sbatch(arguments):
    if (FOLDER / "refuse").exists():
        fail("sbatch: error: " + (FOLDER / "refuse").read_text())
    script = next(index for index, word in enumerate(arguments) if not word.startswith("-"))
    options, rest = arguments[:script], arguments[script:]
    jobs = load()
    number = 1 + max((job["array"] for job in jobs), default=0)
    array = value_of(options, "--array")
    limit = int((FOLDER / "limit").read_text())
    tasks = list(numbers_of(array)) if array else [None]
    most = FOLDER / "most"
    if most.exists() and (len(tasks) + sum(job["state"] != "ENDED" for job in jobs)
                          > int(most.read_text())):
        fail("sbatch: error: Slurm temporarily unable to accept job\n"
             "sbatch: error: Batch job submission failed: Resource temporarily unavailable")
    if array and max(tasks) >= limit:
        fail("sbatch: error: Batch job submission failed: Invalid job array specification")
    for task in tasks:
        jobs.append({
            "array": number, "task": task, "state": "PENDING", "reason": "Priority", "restarts": 0,
            "name": value_of(options, "--job-name"), "script": os.fsdecode(Path(rest[0]).read_bytes()),
            "arguments": rest[1:], "log": value_of(options, "--output"),
            "folder": value_of(options, "--chdir"), "after": value_of(options, "--dependency")})
    save(jobs)
    print(number)


def squeue(arguments):
    names = value_of(arguments, "--name").split(",")
    for job in load():
        if job["state"] != "ENDED" and job["name"] in names:
            task = "N/A" if job["task"] is None else job["task"]
            print(job["array"], task, job["state"], job["name"], job["reason"], sep="|")


def chosen(jobs, word):
    number, _, task = word.partition("_")
    return [job for job in jobs if job["array"] == int(number)
            and (not task or job["task"] == int(task))]


def scontrol(arguments):
    jobs = load()
    if (FOLDER / "gone").exists():
        fail("slurm_load_ctl_conf error: Unable to contact slurm controller (connect failure)")
    if arguments == ["show", "config"]:
        print(f"Configuration data\nMaxArraySize            = {(FOLDER / 'limit').read_text()}")
    elif arguments[0] == "release":
        for word in arguments[1].split(","):
            for job in chosen(jobs, word):
                job["reason"] = "Priority"
        save(jobs)
    elif arguments[0] == "requeue":
        busy = FOLDER / "busy"
        if busy.exists():
            busy.unlink()
            fail("slurm_update error: Unable to contact slurm controller (connect failure)")
        if (FOLDER / "refuses").exists():
            fail("Requeue of jobs is disabled for this cluster")
        for job in chosen(jobs, arguments[1]):
            job["state"] = "REQUEUED"
        save(jobs)
    else:
        fail(f"scontrol: error: {arguments}")


def scancel(arguments):
    jobs = load()
    for word in arguments:
        for job in chosen(jobs, word):
            job["state"] = "ENDED"
    save(jobs)


def main():
    name = Path(sys.argv[0]).name
    with open(FOLDER / "calls.jsonl", "a", encoding="utf-8") as calls:
        variables = {key: text for key, text in os.environ.items()
                     if key.startswith(("SLURM_", "SBATCH_", "SQUEUE_"))}
        print(json.dumps([name, *sys.argv[1:], variables]), file=calls)
    {"sbatch": sbatch, "squeue": squeue, "scontrol": scontrol, "scancel": scancel}[name](
        [word for word in sys.argv[1:] if word != "--parsable"])


main()

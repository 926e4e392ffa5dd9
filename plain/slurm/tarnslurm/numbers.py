"""Numbers of tasks, as Slurm takes those of an array: "3,7-9"."""

from __future__ import annotations

from typing import Iterable


def numbers_of(text: str) -> list[int]:
    """The numbers of "3,7-9"; ValueError for what is no such list."""
    numbers: list[int] = []
    for piece in text.strip().split(",") if text.strip() else []:
        first, dash, last = piece.partition("-")
        numbers.extend(range(int(first), (int(last) if dash else int(first)) + 1))
    return numbers


def list_of(numbers: Iterable[int]) -> str:
    """"3,7-9" of numbers in any order, each once."""
    runs: list[list[int]] = []
    for number in sorted(set(numbers)):
        if runs and number == runs[-1][1] + 1:
            runs[-1][1] = number
        else:
            runs.append([number, number])
    return ",".join(str(one) if one == other else f"{one}-{other}" for one, other in runs)


def arrays_of(tasks: Iterable[int], limit: int) -> dict[int, list[int]]:
    """Arrays whose numbers are all below the limit: what is to be added to the numbers of each, and
    its numbers."""
    arrays: dict[int, list[int]] = {}
    for task in sorted(set(tasks)):
        offset = task - task % limit
        arrays.setdefault(offset, []).append(task - offset)
    return arrays

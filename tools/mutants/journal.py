"""What a run has found out: a file of JSON lines that it goes on from, the list of mutants that are
judged equivalent, and the summary."""

import json
from collections import Counter
from pathlib import Path

KILLED, SURVIVED, EQUIVALENT, NO_MUTANT = 'killed', 'survived', 'equivalent', 'no mutant'


class Journal:
    """One line a mutant that was tried. The last line of a mutant counts."""

    def __init__(self, path, keep):
        self.path = Path(path)
        self.rows = {}
        if keep and self.path.exists():
            with open(self.path, encoding='utf-8') as file:
                for line in file:
                    # A run that was ended may have left half a line.
                    if line.endswith('\n'):
                        row = json.loads(line)
                        self.rows[row['name']] = row
        self.path.parent.mkdir(parents=True, exist_ok=True)
        self.file = open(self.path, 'w', encoding='utf-8')
        for row in self.rows.values():
            self._write(row)

    def _write(self, row):
        self.file.write(json.dumps(row, ensure_ascii=False) + '\n')
        self.file.flush()

    def add(self, mutant, verdict, by='', seconds=0.0):
        row = {'name': mutant.name, 'verdict': verdict, 'by': by, 'seconds': round(seconds, 1),
               'file': mutant.file, 'line': mutant.line, 'function': mutant.function,
               'kind': mutant.kind, 'before': mutant.before, 'after': mutant.after}
        self.rows[mutant.name] = row
        self._write(row)

    def drop(self, name):
        """Of a mutant whose code is no longer there."""
        self.rows[name]['verdict'] = NO_MUTANT
        self._write(self.rows[name])

    def close(self):
        self.file.close()

    def names_of(self, verdict):
        return [name for name, row in self.rows.items() if row['verdict'] == verdict]


def read_equivalents(path):
    """Blocks of four lines or more, with an empty line between them:

        FILE FUNCTION
        - the lines as they are
        + the lines of the mutant
        why nobody can see the difference
    """
    found = set()
    blocks = [b for b in Path(path).read_text(encoding='utf-8').split('\n\n') if b.strip()]
    for block in blocks:
        lines = [line for line in block.splitlines() if not line.startswith('#')]
        if not lines:
            continue
        head = lines[0].split(' ', 1)
        signs = [line[:1] for line in lines[1:3]]
        if len(lines) < 4 or len(head) != 2 or signs != ['-', '+']:
            raise SystemExit(f'{path}: not a block of file, "-", "+" and a reason:\n{block}')
        found.add((head[0], head[1], lines[1][1:].strip(), lines[2][1:].strip()))
    return found


def is_equivalent(row, equivalents):
    return (row['file'], row['function'] or '-', row['before'], row['after']) in equivalents


def summarize(rows, equivalents, folder_of):
    """The figures by kind and by folder, and the survivors."""
    counts = {'kind': {}, 'folder': {}, 'all': {'all': Counter()}}
    survivors = []
    for row in rows:
        verdict = row['verdict']
        if verdict == SURVIVED and is_equivalent(row, equivalents):
            verdict = EQUIVALENT
        if verdict == NO_MUTANT:
            continue
        if verdict == SURVIVED:
            survivors.append(row)
        counts['all']['all'][verdict] += 1
        for group, key in (('kind', row['kind']), ('folder', folder_of(row['file']))):
            counts[group].setdefault(key, Counter())[verdict] += 1
    lines = []
    for group in ('kind', 'folder', 'all'):
        title = '' if group == 'all' else group
        lines.append(f'{title:24}{"killed":>8}{"survived":>10}{"equivalent":>12}{"killed %":>10}')
        for key in sorted(counts[group]):
            count = counts[group][key]
            judged = count[KILLED] + count[SURVIVED]
            share = f'{100 * count[KILLED] / judged:.1f}' if judged else '-'
            lines.append(f'{key:24}{count[KILLED]:8}{count[SURVIVED]:10}{count[EQUIVALENT]:12}'
                         f'{share:>10}')
        lines.append('')
    for row in sorted(survivors, key=lambda r: (r['file'], r['line'])):
        lines += [f'{row["file"]}:{row["line"]} {row["function"]} ({row["kind"]})',
                  f'- {row["before"]}', f'+ {row["after"]}', '']
    tried = [row['seconds'] for row in rows if row['verdict'] in (KILLED, SURVIVED)]
    if tried:
        lines.append(f'{sum(tried) / len(tried):.1f} seconds a mutant and worker')
    return '\n'.join(lines)

"""Changes the sources in small ways, one at a time, and asks the tests whether they see it.

Run by scripts/mutants.sh, which installs what this needs and says how it is used.
"""

import argparse
import dataclasses
import fcntl
import hashlib
import json
import multiprocessing
import re
import shlex
import signal
import subprocess
import sys
import threading
import time
from pathlib import Path

import journal as notes
import places as finding
from tree import BUILD_SECONDS, QUICK, SLOW, BuildFailed, Tree

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
WORK = ROOT / 'build' / 'mutants'


def say(text):
    print(text, file=sys.stderr, flush=True)


def read_subsystems():
    """Folder -> (library, test binaries)."""
    table = {}
    for line in (HERE / 'subsystems.txt').read_text(encoding='utf-8').splitlines():
        if line and not line.startswith('#'):
            folder, targets = line.split(': ')
            library, *binaries = targets.split()
            table[folder] = (library, binaries)
    return table


# All places.

def clang_arguments(command, resource_folder):
    """What the parser has to be told of a line of compile_commands.json."""
    words = shlex.split(command['command'])
    keep = [w for w in words if re.match(r'-[ID]|-std=', w)]
    for option, value in zip(words, words[1:]):
        if option == '-isystem':
            keep += [option, value]
    return keep + ['-x', 'c++', '-resource-dir', resource_folder]


def parse_unit(job):
    source, arguments, sources, folder = job

    def wanted(name):
        # Sources include each other as "eml/..." below -I.../src, so that all names are absolute.
        return name[len(sources) + 1:] if name.startswith(f'{sources}/{folder}/') else None

    return finding.find_places(source, arguments, wanted)


def all_places(tree, folder, workers):
    """The places of a folder: file -> list of Place. They are kept until a source changes."""
    prefix = f'{tree.sources}/{folder}/'
    commands = {c['file']: c for c in tree.compile_commands() if c['file'].startswith(prefix)}
    digest = hashlib.sha256()
    read = [tree.sources / name for name in sorted({'src', 'Include', Path(folder).parts[0]})]
    files = [p for below in read for p in below.rglob('*') if p.is_file()]
    for path in sorted(files + [HERE / 'places.py']):
        digest.update(str(path).encode() + path.read_bytes())
    kept = WORK / f'places-{folder.replace("/", "-")}.json'
    if kept.exists():
        stored = json.loads(kept.read_text(encoding='utf-8'))
        if stored['digest'] == digest.hexdigest():
            return {f: [finding.Place(*p) for p in rows] for f, rows in stored['places'].items()}

    say(f'looking for places in {len(commands)} sources')
    resource_folder = subprocess.run(['clang', '-print-resource-dir'], check=True,
                                     capture_output=True, text=True).stdout.strip()
    jobs = [(file, clang_arguments(command, resource_folder), str(tree.sources), folder)
            for file, command in sorted(commands.items())]
    found = {}
    with multiprocessing.Pool(workers) as pool:
        for part in pool.imap_unordered(parse_unit, jobs, chunksize=4):
            for file, places in part.items():
                found.setdefault(file, {}).update(places)
    result = {file: [found[file][key] for key in sorted(found[file])] for file in sorted(found)}
    rows = {file: [dataclasses.astuple(p) for p in places] for file, places in result.items()}
    kept.write_text(json.dumps({'digest': digest.hexdigest(), 'places': rows}), encoding='utf-8')
    return result


def mutants_in_order(tree, folder, subsystems, seed, workers):
    found = []
    for file, places in all_places(tree, folder.rstrip('/'), workers).items():
        if any(file.startswith(name + '/') for name in subsystems):
            found += finding.mutants_of(file, tree.read(file), places, seed)
    return finding.in_random_order(found, seed)


# One mutant.

class Judge:
    """Tries mutants on trees, and keeps the count."""

    def __init__(self, subsystems, log, equivalents, count):
        self.subsystems = subsystems
        self.log = log
        self.equivalents = equivalents
        self.missing = count
        self.lock = threading.Lock()
        self.stopped = threading.Event()
        self.failure = None  # what ended a worker

    def folder_of(self, file):
        return max((f for f in self.subsystems if file.startswith(f + '/')), key=len)

    def choose(self, mutants, survivors):
        """Those that are to be tried, in their order: the survivors of the journal again, or what
        is not in it."""
        if not survivors:
            self.missing -= len(self.log.rows) - len(self.log.names_of(notes.NO_MUTANT))
            return [mutant for mutant in mutants if mutant.name not in self.log.rows]
        again = set(self.log.names_of(notes.SURVIVED))
        chosen = [mutant for mutant in mutants if mutant.name in again]
        self.missing = len(chosen)
        for name in sorted(again - {mutant.name for mutant in chosen}):
            say(f'no longer there: {name}')
            self.log.drop(name)
        return chosen

    def next(self, queue):
        with self.lock:
            if self.stopped.is_set() or self.missing <= 0 or not queue:
                return None
            self.missing -= 1
            return queue.pop(0)

    def note(self, mutant, verdict, by, seconds):
        with self.lock:
            self.log.add(mutant, verdict, by, seconds)
            if verdict == notes.NO_MUTANT:
                self.missing += 1
            else:
                place = f'{mutant.file}:{mutant.line}'
                say(f'{verdict:10} {seconds:6.1f} s  {place} {mutant.kind}  {by}')

    def work(self, tree, queue):
        try:
            self._work(tree, queue)
        except BaseException as error:
            self.failure = error
            self.stopped.set()

    def _work(self, tree, queue):
        while (mutant := self.next(queue)) is not None:
            started = time.monotonic()
            if notes.is_equivalent(vars(mutant), self.equivalents):
                verdict, by = notes.EQUIVALENT, ''
            else:
                verdict, by = self.judge(tree, mutant)
            if self.stopped.is_set():
                return
            self.note(mutant, verdict, by, time.monotonic() - started)

    def judge(self, tree, mutant):
        library, binaries = self.subsystems[self.folder_of(mutant.file)]
        original = tree.read(mutant.file)
        tree.write(mutant.file,
                   original[:mutant.start] + mutant.text.encode() + original[mutant.end:])
        try:
            for which, binary in [(w, b) for w in (QUICK, SLOW) for b in binaries]:
                try:
                    tree.build(library, binary, seconds=BUILD_SECONDS)
                except BuildFailed as failure:
                    if failure.of_source:
                        return notes.NO_MUTANT, ''
                    return notes.KILLED, f'{binary} does not build'
                outcome = tree.run(binary, which)
                if not outcome.passed:
                    return notes.KILLED, f'{binary}: {outcome.why}'
                if self.stopped.is_set():
                    break
            return notes.SURVIVED, ''
        finally:
            tree.write(mutant.file, original)


def make_trees(arguments):
    """The workers' copies of the sources."""
    kind = 'sanitized' if arguments.sanitizers else 'plain'
    trees = [Tree(ROOT, WORK / f'{kind}-{number}', WORK / 'ccache', arguments.temp,
                  arguments.sanitizers) for number in range(1, arguments.workers + 1)]
    for tree in trees:
        tree.copy_sources()
        tree.configure()
    return trees


def build_trees(trees, subsystems):
    """Builds what the subsystems need, and measures their tests."""
    binaries = sorted({binary for _, tests in subsystems for binary in tests})
    for tree in trees:
        say(f'building {tree.build_folder}')
        tree.build(*sorted({library for library, _ in subsystems}), *binaries, jobs=len(trees))
    say('measuring the tests')
    for binary in binaries:
        trees[0].measure(binary)
        costs = trees[0].costs[binary]
        parts = [f'{which} tests {cost.processor:.1f} s' for which, cost in costs.items()]
        say(f'{binary:20} {", ".join(parts)}')
    for tree in trees[1:]:
        tree.take_measures_of(trees[0])


def be_alone():
    """Two runs would change each other's trees. What this gives keeps others out until closed."""
    WORK.mkdir(parents=True, exist_ok=True)
    lock = open(WORK / 'lock', 'w', encoding='utf-8')
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except OSError as error:
        raise SystemExit(f'another run is at work in {WORK}') from error
    return lock


def run(arguments):
    lock = be_alone()
    equivalents = notes.read_equivalents(HERE / 'equivalent.txt')
    log = notes.Journal(arguments.journal,
                        keep=arguments.resume or arguments.survivors or arguments.summary)
    judge = Judge(read_subsystems(), log, equivalents, arguments.count)
    if not arguments.summary:
        say(f'seed {arguments.seed}')
        trees = make_trees(arguments)
        queue = mutants_in_order(trees[0], arguments.folder, judge.subsystems, arguments.seed,
                                 arguments.workers)
        say(f'{len(queue)} places')
        queue = judge.choose(queue, arguments.survivors)
        folders = {judge.folder_of(mutant.file) for mutant in queue}
        build_trees(trees, [judge.subsystems[folder] for folder in sorted(folders)])
        test_all(judge, trees, queue)
    log.close()
    lock.close()
    print(notes.summarize(log.rows.values(), equivalents, judge.folder_of))
    return 130 if judge.stopped.is_set() else 0


def test_all(judge, trees, queue):
    def stop(*_):
        say('stopping after the tests that are running')
        judge.stopped.set()

    signal.signal(signal.SIGINT, stop)
    signal.signal(signal.SIGTERM, stop)
    threads = [threading.Thread(target=judge.work, args=(tree, queue)) for tree in trees]
    for thread in threads:
        thread.start()
    for thread in threads:
        while thread.is_alive():
            thread.join(1)
    if judge.failure is not None:
        raise judge.failure


def finds_sample():
    """Whether the places of sample.cpp are those that sample.expected lists."""
    sample = HERE / 'sample.cpp'
    places = finding.find_places(str(sample), ['-std=c++20', '-x', 'c++'],
                                 lambda name: name if name == str(sample) else None)
    data = sample.read_bytes()
    lines = []
    for place in places.get(str(sample), {}).values():
        texts = ' or '.join(text or 'nothing' for text in place.texts)
        lines.append(f'{place.line} {place.kind} {data[place.start:place.end].decode()} -> {texts}')
    wanted = (HERE / 'sample.expected').read_text(encoding='utf-8').splitlines()
    for line in sorted(set(wanted) - set(lines)):
        say(f'not found: {line}')
    for line in sorted(set(lines) - set(wanted)):
        say(f'not expected: {line}')
    if sorted(lines) != sorted(wanted):
        return False
    say(f'the {len(lines)} places of the sample are found')
    return True


def knows_equivalents():
    """Whether the code of all mutants that are judged equivalent is still there."""
    known = True
    for file, function, before, _ in sorted(notes.read_equivalents(HERE / 'equivalent.txt')):
        path = ROOT / file
        if not path.is_file() or before not in finding.squeeze(path.read_bytes()):
            say(f'equivalent.txt: no longer in {file}, {function}: {before}')
            known = False
    return known


def main():
    parser = argparse.ArgumentParser(prog='scripts/mutants.sh')
    parser.add_argument('--seed', type=int, default=1)
    parser.add_argument('--count', type=int, default=300)
    parser.add_argument('--folder', default='src')
    parser.add_argument('--resume', action='store_true')
    parser.add_argument('--survivors', action='store_true')
    parser.add_argument('--sanitizers', action='store_true')
    parser.add_argument('--summary', action='store_true')
    parser.add_argument('--check', action='store_true')
    parser.add_argument('--workers', type=int, default=2)
    parser.add_argument('--journal', type=Path)
    parser.add_argument('--temp', default='/dev/shm' if Path('/dev/shm').is_dir() else '/tmp')
    arguments = parser.parse_args()
    if arguments.journal is None:
        folder = ('/' + arguments.folder).removeprefix('/src').rstrip('/').replace('/', '-')
        arguments.journal = WORK / f'seed-{arguments.seed}{folder}.jsonl'
    if not finds_sample() or not knows_equivalents():
        return 1
    return 0 if arguments.check else run(arguments)


if __name__ == '__main__':
    sys.exit(main())

"""A copy of the sources with a build tree of its own, where one mutant at a time is built and
tested."""

import json
import os
import re
import resource
import shutil
import signal
import subprocess
import time
from dataclasses import dataclass
from pathlib import Path
from xml.etree import ElementTree

BUILD_SECONDS = 300
# Most tests take milliseconds. The few that take longer are asked after all the others.
SLOW_SECONDS = 0.15
# What one test process may take: a mutant that asks for more is as good as dead.
MEMORY_LIMIT = 4 << 30
# The tests of large files write holes of four gigabytes.
FILE_LIMIT = 6 << 30
# Some tests ask for limits of their own, of ten seconds of the processor, which cannot be above these.
LEAST_PROCESSOR_SECONDS = 15

OPTIONS = [
    '-G', 'Ninja', '-DCMAKE_BUILD_TYPE=Debug',
    '-DCMAKE_C_FLAGS_DEBUG=-O1', '-DCMAKE_CXX_FLAGS_DEBUG=-O1',
    '-DCMAKE_C_COMPILER=clang', '-DCMAKE_CXX_COMPILER=clang++',
    '-DCMAKE_C_COMPILER_LAUNCHER=ccache', '-DCMAKE_CXX_COMPILER_LAUNCHER=ccache',
    # A mutant may well earn a warning.
    '-DCMAKE_C_FLAGS=-w', '-DCMAKE_CXX_FLAGS=-w',
    '-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld', '-DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=lld',
    # No mutant changes what a shared library offers.
    '-DCMAKE_LINK_DEPENDS_NO_SHARED=ON',
    '-DCMAKE_EXPORT_COMPILE_COMMANDS=ON', '-DTARN_TESTS_BY_BINARY=ON', '-DTARN_PAGES=AUTO',
]


QUICK, SLOW = 'quick', 'slow'


@dataclass
class Cost:
    processor: float
    clock: float


@dataclass
class Outcome:
    passed: bool
    why: str  # of a failure: the first test that failed, "timeout", or how the process ended
    cost: Cost


class BuildFailed(Exception):
    """`of_source`: a file of src/ or plain/ did not compile, so that there is no mutant."""

    def __init__(self, log):
        super().__init__(log)
        self.of_source = re.search(r'^FAILED: (\S*/)?(src|plain)/', log, re.MULTILINE) is not None


class Tree:
    def __init__(self, root, folder, cache, temp, sanitized=False):
        self.root = Path(root)
        self.sources = Path(folder) / 'sources'
        self.build_folder = Path(folder) / 'build'
        self.scratch = Path(temp) / f'mutants-{os.getpid()}-{Path(folder).name}'
        self.sanitized = sanitized
        self.passes = {}  # binary -> quick or slow -> options
        self.costs = {}   # binary -> quick or slow -> Cost
        self.environment = dict(
            os.environ, LC_ALL='C.UTF-8', CCACHE_DIR=str(cache), CCACHE_MAXSIZE='4G',
            # The trees of the workers share what they compile.
            CCACHE_BASEDIR=str(self.sources.parent), CCACHE_NOHASHDIR='1',
            CCACHE_SLOPPINESS='pch_defines,time_macros',
            ASAN_OPTIONS=f'hard_rss_limit_mb={MEMORY_LIMIT >> 20}')

    # Sources.

    def copy_sources(self):
        """Makes the copy what the checkout is, whatever an earlier run has left in it."""
        command = ['git', 'ls-files', '-z', '--cached', '--others', '--exclude-standard']
        listed = subprocess.run(command, cwd=self.root, check=True, capture_output=True).stdout
        names = {n for n in listed.decode().split('\0') if n and (self.root / n).is_file()}
        if self.sources.exists():
            for path in [p for p in self.sources.rglob('*') if p.is_file()]:
                if str(path.relative_to(self.sources)) not in names:
                    path.unlink()
        for name in sorted(names):
            source, copy = self.root / name, self.sources / name
            if copy.exists() and copy.read_bytes() == source.read_bytes():
                continue
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, copy)

    def write(self, file, data):
        (self.sources / file).write_bytes(data)

    def read(self, file):
        return (self.sources / file).read_bytes()

    # Building.

    def configure(self):
        if (self.build_folder / 'build.ninja').exists():
            return
        command = ['cmake', '-S', str(self.sources), '-B', str(self.build_folder), *OPTIONS,
                   f'-DTARN_SANITIZE={"ON" if self.sanitized else "OFF"}']
        done = subprocess.run(command, env=self.environment, capture_output=True, text=True)
        if done.returncode != 0:
            raise SystemExit(done.stdout + done.stderr)

    def compile_commands(self):
        with open(self.build_folder / 'compile_commands.json', encoding='utf-8') as file:
            return json.load(file)

    def build(self, *targets, jobs=1, seconds=None):
        command = ['ninja', '-C', str(self.build_folder), '-j', str(jobs), *targets]
        process = subprocess.Popen(command, env=self.environment, stdout=subprocess.PIPE,
                                   stderr=subprocess.STDOUT, text=True, start_new_session=True)
        try:
            log, _ = process.communicate(timeout=seconds)
        except subprocess.TimeoutExpired as error:
            _end_group(process)
            raise BuildFailed('FAILED: src/ is still being compiled') from error
        except BaseException:
            _end_group(process)
            raise
        if process.returncode != 0:
            raise BuildFailed(log)

    # Testing.

    def measure(self, binary):
        """Which tests are slow, and what all cost without a mutant. They have to pass."""
        everything = self._run(binary, [], None)
        if not everything.passed:
            raise SystemExit(f'{binary} fails without a mutant: {everything.why}')
        report = ElementTree.parse(self._report(binary)).getroot()
        slow = [f'{case.get("classname")}.{case.get("name")}' for case in report.iter('testcase')
                if float(case.get('time')) >= SLOW_SECONDS]
        passes = {QUICK: ['--gtest_filter=*' + ('-' + ':'.join(slow) if slow else '')]}
        self.costs[binary] = {QUICK: self._run(binary, passes[QUICK], everything.cost).cost}
        if slow:
            passes[SLOW] = ['--gtest_filter=' + ':'.join(slow)]
            self.costs[binary][SLOW] = everything.cost
        self.passes[binary] = passes

    def take_measures_of(self, other):
        self.passes, self.costs = other.passes, other.costs

    def run(self, binary, which):
        """The quick or the slow tests of a binary; a binary without any of them passes."""
        if which not in self.passes[binary]:
            return Outcome(True, '', Cost(0.0, 0.0))
        return self._run(binary, self.passes[binary][which], self.costs[binary][which])

    def _report(self, binary):
        return self.build_folder / 'tests' / f'{binary}.xml'

    def _run(self, binary, options, known):
        shutil.rmtree(self.scratch, ignore_errors=True)
        temp = self.scratch / 'temp'
        temp.mkdir(parents=True)
        log = self.scratch.with_suffix('.log')
        if known is None:
            options = options + [f'--gtest_output=xml:{self._report(binary)}']
        started = time.monotonic()
        with open(log, 'wb') as output:
            program = str(self.build_folder / 'tests' / binary)
            process = subprocess.Popen(
                [program, '--gtest_fail_fast', '--gtest_brief=1', *options],
                cwd=self.scratch, stdout=output, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                env=dict(self.environment, TMPDIR=str(temp)), start_new_session=True,
                preexec_fn=self._limits(known))
            try:
                status, used = self._wait(process, 6 * known.clock + 30 if known else 900)
            finally:
                _end_group(process)
        cost = Cost(used, time.monotonic() - started)
        why = '' if status == 0 else self._reason(log, status)
        shutil.rmtree(self.scratch, ignore_errors=True)
        log.unlink(missing_ok=True)
        return Outcome(status == 0, why, cost)

    def _limits(self, known):
        seconds = max(int(5 * known.processor + 3), LEAST_PROCESSOR_SECONDS) if known else 600
        # The sanitizers reserve address space by terabytes, and have a limit of their own.
        memory = resource.RLIM_INFINITY if self.sanitized else MEMORY_LIMIT

        def apply():
            resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))
            resource.setrlimit(resource.RLIMIT_AS, (memory, memory))
            resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_LIMIT, FILE_LIMIT))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

        return apply

    @staticmethod
    def _wait(process, seconds):
        """How the process ended (None: not in time), and its processor time."""
        end = time.monotonic() + seconds
        pause = 0.002
        while True:
            pid, status, usage = os.wait4(process.pid, os.WNOHANG)
            if pid != 0:
                process.returncode = os.waitstatus_to_exitcode(status)
                return process.returncode, usage.ru_utime + usage.ru_stime
            if time.monotonic() > end:
                return None, 0.0
            time.sleep(pause)
            pause = min(pause * 1.5, 0.05)

    @staticmethod
    def _reason(log, status):
        if status is None or status in (-signal.SIGXCPU, -signal.SIGKILL):
            return 'timeout'
        text = log.read_bytes().decode('utf-8', 'replace')
        failed = re.search(r'^\[  FAILED  \] ([^ ,]+)', text, re.MULTILINE)
        if failed:
            return failed.group(1)
        report = re.search(r'(AddressSanitizer: \S+|runtime error: .*)', text)
        if report:
            return report.group(1)
        return signal.Signals(-status).name if status < 0 else f'exit status {status}'


def _end_group(process):
    """Ends what a process has started, too."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    if process.returncode is None:
        process.wait()

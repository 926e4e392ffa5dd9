"""A Slurm of one controller and two nodes on this machine alone: private ports, folders and keys.

Everything that it starts is ended by its process id. Works as root without systemd and cgroups, and
as an ordinary user, whose own jobs are then the only ones.
"""

from __future__ import annotations

import os
import pwd
import secrets
import shutil
import signal
import socket
import subprocess
import time
from pathlib import Path
from typing import Callable

from processes import kill_with_variable

# A poll that is not answered by then has failed, however slow the machine is.
PATIENCE = 180.0

# More than any test has.
JOBS_OF_CONTROLLER = 1000

CONFIGURATION = """\
ClusterName=loopback
FirstJobId={first_job}
SlurmctldHost=localhost(127.0.0.1)
SlurmctldPort={controller_port}
SlurmUser={user}
SlurmdUser={user}
AuthType=auth/munge
AuthInfo=socket={folder}/munge/socket,cred_expire=5
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/%n
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/%n.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/%n.log
ProctrackType=proctrack/pgid
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SchedulerParameters=sched_interval=1,batch_sched_delay=1,bf_interval=1
MpiDefault=none
SwitchType=switch/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
ReturnToService=2
SlurmctldTimeout=5
SlurmdTimeout=5
SlurmdParameters=config_overrides
MessageTimeout=3
KillWait=2
MinJobAge=300
MaxArraySize={array_size}
NodeName=n1 NodeHostname=localhost NodeAddr=127.0.0.1 Port={first_port} CPUs=4
NodeName=n2 NodeHostname=localhost NodeAddr=127.0.0.1 Port={second_port} CPUs=4
PartitionName=mail Nodes=n1,n2 Default=YES MaxTime=INFINITE State=UP
"""


def free_ports(count: int) -> list[int]:
    """Ports that nobody listens at, all different."""
    sockets = [socket.socket() for _ in range(count)]
    try:
        for one in sockets:
            one.bind(("127.0.0.1", 0))
        return [one.getsockname()[1] for one in sockets]
    finally:
        for one in sockets:
            one.close()


def wait_until(what: str, is_so: Callable[[], bool], patience: float = PATIENCE) -> None:
    """Asks until it is so; AssertionError after the patience."""
    end = time.monotonic() + patience
    while not is_so():
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain: {what}")
        time.sleep(0.1)


class Loopback:
    """The cluster; a context manager, at whose end nothing of it runs any more."""

    def __init__(self, folder: Path, array_size: int = 1001) -> None:
        self.folder = folder
        self.user = pwd.getpwuid(os.getuid()).pw_name
        self._array_size = array_size
        self._ports = free_ports(3)
        self._controllers = 0
        folder.mkdir()
        (folder / "state").mkdir()
        self.environment = {**os.environ, "SLURM_CONF": str(folder / "slurm.conf")}
        self.running: dict[str, subprocess.Popen[bytes]] = {}

    def __enter__(self) -> Loopback:
        try:
            self.start_munge()
            self.start_controller()
            for node in ("n1", "n2"):
                self.start_node(node)
            wait_until("two idle nodes", self._revive)
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_: object) -> None:
        # Jobs first, while there is somebody to end them.
        if "slurmctld" in self.running:
            self.ask("scancel", f"--user={self.user}")
            try:
                wait_until("an empty queue", self.is_empty, 20)
            except AssertionError:
                pass
        for name in ("n1", "n2", "slurmctld", "munged"):
            self.end(name)
        # What jobs are left of nodes that were killed.
        kill_with_variable("SLURM_CONF", str(self.folder / "slurm.conf"))

    def start(self, name: str, command: list[str]) -> None:
        with open(self.folder / f"{name}.out", "ab") as output:
            self.running[name] = subprocess.Popen(
                command, env=self.environment, stdin=subprocess.DEVNULL, stdout=output,
                stderr=output, start_new_session=True)

    def start_munge(self) -> None:
        folder = self.folder / "munge"
        folder.mkdir(mode=0o755)
        key = folder / "key"
        key.write_bytes(secrets.token_bytes(128))
        key.chmod(0o600)
        command = ["munged", "--foreground", f"--socket={folder}/socket", f"--key-file={key}",
                   f"--pid-file={folder}/pid", f"--log-file={folder}/log",
                   f"--seed-file={folder}/seed"]
        if os.getuid() == 0:
            shutil.chown(folder, "munge", "munge")
            shutil.chown(key, "munge", "munge")
            command = ["setpriv", "--reuid=munge", "--regid=munge", "--clear-groups", *command]
        self.start("munged", command)
        wait_until("munged", lambda: (folder / "socket").exists())

    def start_controller(self) -> None:
        """Its jobs have other numbers than those of the controllers before it, which it may know
        nothing of: their steps tell of their end until somebody listens, some every 15 seconds, and
        a node that is given a number of such a step is drained ("Duplicate jobid")."""
        self._controllers += 1
        (self.folder / "slurm.conf").write_text(CONFIGURATION.format(
            folder=self.folder, user=self.user, array_size=self._array_size,
            first_job=JOBS_OF_CONTROLLER * (self._controllers - 1) + 1,
            controller_port=self._ports[0], first_port=self._ports[1], second_port=self._ports[2]))
        self.start("slurmctld", ["slurmctld", "-D"])
        wait_until("slurmctld", lambda: self.ask("scontrol", "ping").returncode == 0)

    def start_node(self, node: str) -> None:
        self.start(node, ["slurmd", "-D", "-N", node])

    def restore(self) -> None:
        """Both nodes as they were at the beginning, whatever was done to them, and no job."""
        for node in ("n1", "n2"):
            if node not in self.running:
                self.start_node(node)
        self.ask("scancel", f"--user={self.user}")
        wait_until("an empty queue", self.is_empty)
        wait_until("two idle nodes", self._revive)

    def _revive(self) -> bool:
        states = self.node_states()
        for node, state in states.items():
            if state.startswith(("down", "drain", "drng", "unk")):
                self.ask("scontrol", "update", f"nodename={node}", "state=resume")
        return states == {"n1": "idle", "n2": "idle"}

    def is_empty(self) -> bool:
        answer = self.ask("squeue", "--noheader")
        return answer.returncode == 0 and not answer.stdout.strip()

    def end(self, name: str, with_signal: int = signal.SIGTERM) -> None:
        process = self.running.pop(name, None)
        if process is None:
            return
        process.send_signal(with_signal)
        try:
            process.wait(20)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def ask(self, *command: str) -> subprocess.CompletedProcess[str]:
        return subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, check=False)

    def node_states(self) -> dict[str, str]:
        lines = self.ask("sinfo", "--Node", "--noheader", "--format=%N %t").stdout.splitlines()
        return dict(line.split() for line in lines)  # type: ignore[misc]

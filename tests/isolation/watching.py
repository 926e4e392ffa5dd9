"""Who watches what programs do, from outside: the system calls that they make, the machines that they
ask, and what they write to a terminal."""

import os
import pty
import re
import select
import shlex
import socket
import subprocess
import tempfile
import threading
import unicodedata


class Listener:
    """Listens for everybody on this machine, by both protocols; what comes is kept."""

    def __init__(self):
        self.said = []
        self.sockets = []
        for port in range(20000, 60000, 37):
            try:
                for family, host in ((socket.AF_INET, '127.0.0.1'), (socket.AF_INET6, '::1')):
                    for kind in (socket.SOCK_STREAM, socket.SOCK_DGRAM):
                        listener = socket.socket(family, kind)
                        self.sockets.append(listener)
                        listener.bind((host, port))
                        if kind == socket.SOCK_STREAM:
                            listener.listen(100)
                self.port = port
                break
            except OSError:
                self.close_all()
        self.wake, self.waker = os.pipe()
        self.thread = threading.Thread(target=self.listen)
        self.thread.start()

    def listen(self):
        while True:
            ready = select.select([*self.sockets, self.wake], [], [])[0]
            for one in ready:
                if one is self.wake:
                    continue
                if one.type == socket.SOCK_DGRAM:
                    self.said.append(one.recvfrom(4096)[0])
                    continue
                connection = one.accept()[0]
                connection.settimeout(0.1)
                said = b''
                try:
                    said = connection.recv(4096)
                    connection.sendall(b'HTTP/1.0 404 None\r\nContent-Length: 0\r\n\r\n')
                except OSError:
                    pass  # it has come, and that counts
                self.said.append(said)
                connection.close()
            if ready == [self.wake]:
                return

    def end(self):
        """All that was said, by those who came before now."""
        if self.thread.is_alive():
            os.write(self.waker, b'x')
            self.thread.join()
        return self.said

    def close_all(self):
        for one in self.sockets:
            one.close()
        self.sockets = []

    def close(self):
        self.end()
        self.close_all()
        os.close(self.wake)
        os.close(self.waker)


# Where programs, libraries and what they are set up by are read: the same for every mail.
SYSTEM = ('/usr/', '/lib/', '/lib64/', '/bin/', '/etc/ld.so', '/etc/fonts', '/etc/libreoffice', '/etc/localtime',
          '/etc/ssl/openssl.cnf', '/etc/locale.alias', '/etc/nsswitch.conf', '/etc/passwd', '/var/cache/fontconfig', '/dev/null', '/dev/urandom',
          '/dev/tty', '/sys/devices/system/cpu', '/sys/fs/cgroup', '/proc/sys/', '/proc/cpuinfo', '/proc/meminfo', '/proc/stat', '/proc/filesystems')


def is_of_a_process(path):
    """What libraries read of the process that they are in."""
    return re.match(r'/proc/(self|\d+)/(fd|maps|status|statm|stat|cmdline|exe|task|cgroup|mountinfo|mounts)\b', path)


# Calls that name a file, and how many they name.
NAMING_FILES = {**dict.fromkeys((
    'access', 'chdir', 'chmod', 'chown', 'chroot', 'creat', 'execve', 'execveat', 'faccessat', 'faccessat2', 'fchmodat', 'fchownat',
    'getxattr', 'inotify_add_watch', 'lchown', 'lgetxattr', 'listxattr', 'lstat', 'mkdir', 'mkdirat', 'mknod', 'mknodat', 'mount',
    'name_to_handle_at', 'newfstatat', 'open', 'openat', 'openat2', 'quotactl', 'readlink', 'readlinkat', 'removexattr', 'rmdir',
    'setxattr', 'stat', 'statfs', 'statx', 'swapon', 'truncate', 'umount2', 'unlink', 'unlinkat', 'utime', 'utimensat', 'utimes'), 1),
    **dict.fromkeys(('link', 'linkat', 'pivot_root', 'rename', 'renameat', 'renameat2', 'symlink', 'symlinkat'), 2)}
# Those of them that change nothing and open nothing.
LOOKING = {'access', 'faccessat', 'faccessat2', 'getxattr', 'lgetxattr', 'listxattr', 'lstat', 'newfstatat', 'readlink', 'readlinkat',
           'stat', 'statfs', 'statx'}


class Trace:
    """What a program and all that it starts asked the system for."""

    def __init__(self, text, folder):
        self.lines = text.splitlines()
        self.folder = folder

    def calls(self, name):
        # "123 open(...", or where another came between "123 <... open resumed>", which repeats no argument.
        return [line for line in self.lines if re.match(r'\d+ +%s\(' % name, line)]

    def network(self):
        """Calls that make a socket or reach for one, other than between the programs themselves."""
        found = []
        for line in self.calls('(?:socket|connect|sendto|sendmsg|sendmmsg|bind|socketpair|io_uring_setup)'):
            is_own = 'AF_UNIX' in line and ('socketpair' in line or ' socket(' in line)
            # Over the pair that a program and its helper have.
            is_message = re.match(r'\d+ +send(msg|to)\(', line) and 'AF_' not in line and 'htons' not in line
            # Who the user is, asked of this machine.
            is_user = 'sun_path="/var/run/nscd/socket"' in line
            if not is_own and not is_message and not is_user:
                found.append(line)
        return found

    def files(self):
        """(path, line) of every file that was opened, looked at, run, or changed by its name."""
        found = []
        for line in self.lines:
            call = re.match(r'\d+ +(\w+)\((.*)', line)
            if not call or call[1] not in NAMING_FILES:
                continue
            # A folder, open under a number, and a name in it; of some calls there are two.
            for folder, name in re.findall(r'(?:(?:AT_FDCWD|\d+)<([^>]*)>, )?"((?:[^"\\]|\\.)*)"', call[2])[:NAMING_FILES[call[1]]]:
                found.append((os.path.normpath(os.path.join(folder or self.folder, name)), line))
        return found

    def opened(self):
        return [(path, line) for path, line in self.files() if re.match(r'\d+ +(open|openat|openat2|creat)\(', line)
                and ' = -1 ' not in line]

    def programs(self):
        return [(path, line) for path, line in self.files() if re.match(r'\d+ +execve(at)?\(', line)]

    def memory(self):
        """Calls that look into another process or change one."""
        return self.calls('(?:ptrace|process_vm_readv|process_vm_writev|pidfd_getfd|kcmp|process_madvise)')


TRACED = ('%file,%network,ptrace,process_vm_readv,process_vm_writev,pidfd_getfd,kcmp,process_madvise,io_uring_setup')


def traced(command, folder, environment, status=(0,)):
    """Runs it under strace: what it wrote, and the trace."""
    with tempfile.NamedTemporaryFile('r', dir=os.path.dirname(folder), errors='replace') as trace:
        run = subprocess.run(['/usr/bin/strace', '-f', '-qq', '-y', '-s', '4096', '-e', 'signal=none', '-e', 'trace=' + TRACED,
                              '-o', trace.name, '--', *command], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=280)
        if run.returncode not in status:
            raise AssertionError(f'{shlex.join(command)}: {run.returncode}: {run.stderr.decode(errors="replace")}')
        return run.stdout + run.stderr, Trace(trace.read(), folder)


def on_terminal(command, folder, environment):
    """Runs it with a terminal for everything: what the terminal got, and how it ended."""
    ours, theirs = pty.openpty()
    process = subprocess.Popen(command, cwd=folder, env=dict(environment, TERM='xterm-256color'), stdin=theirs, stdout=theirs,
                               stderr=theirs, start_new_session=True)
    os.close(theirs)
    got = b''
    while True:
        try:
            piece = os.read(ours, 65536)
        except OSError:
            break
        if not piece:
            break
        got += piece
    os.close(ours)
    return got, process.wait(timeout=280)


# What the programs themselves write to a terminal: bold, and a line that is wiped. The terminal puts a return before
# each line end.
OWN = re.compile(rb'\x1b\[[01]m|\r\x1b\[K|\r(?=\n)')
TURNING = {*'\u061c\u200e\u200f\u2028\u2029\ufeff', *map(chr, range(0x202a, 0x202f)), *map(chr, range(0x2066, 0x206a))}


def harm(text, allowed='\n\t'):
    """What in it is more than text: control characters, marks that turn the writing, bytes of no character."""
    shown = OWN.sub(b'', text).decode('utf-8', 'surrogateescape')
    return sorted({hex(ord(each)) for each in shown if each not in allowed and (
        each in TURNING or unicodedata.category(each) in ('Cc', 'Cs'))})

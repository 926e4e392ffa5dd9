#include "siblings/helper/Sandbox.h"

#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <utility>

namespace tarn::pages {
namespace {

constexpr int kAlways[] = {
    // Memory.
    SCMP_SYS(brk),
    SCMP_SYS(madvise),
    SCMP_SYS(membarrier),
    SCMP_SYS(mincore),
    SCMP_SYS(mlock),
    SCMP_SYS(mmap),
    SCMP_SYS(mprotect),
    SCMP_SYS(mremap),
    SCMP_SYS(msync),
    SCMP_SYS(munlock),
    SCMP_SYS(munmap),
    // Threads, and its own signals.
    SCMP_SYS(arch_prctl),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
    SCMP_SYS(futex),
    SCMP_SYS(get_robust_list),
    SCMP_SYS(getcpu),
    SCMP_SYS(gettid),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(rseq),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigpending),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(rt_sigsuspend),
    SCMP_SYS(rt_sigtimedwait),
    SCMP_SYS(sched_get_priority_max),
    SCMP_SYS(sched_get_priority_min),
    SCMP_SYS(sched_getaffinity),
    SCMP_SYS(sched_getparam),
    SCMP_SYS(sched_getscheduler),
    SCMP_SYS(sched_yield),
    SCMP_SYS(set_robust_list),
    SCMP_SYS(set_tid_address),
    SCMP_SYS(sigaltstack),
    // Who it is, and where.
    SCMP_SYS(getegid),
    SCMP_SYS(geteuid),
    SCMP_SYS(getgid),
    SCMP_SYS(getgroups),
    SCMP_SYS(getpgid),
    SCMP_SYS(getpgrp),
    SCMP_SYS(getpid),
    SCMP_SYS(getppid),
    SCMP_SYS(getrandom),
    SCMP_SYS(getrlimit),
    SCMP_SYS(getrusage),
    SCMP_SYS(getsid),
    SCMP_SYS(getuid),
    SCMP_SYS(sysinfo),
    SCMP_SYS(uname),
    // Time.
    SCMP_SYS(clock_getres),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(clock_nanosleep),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(nanosleep),
    SCMP_SYS(time),
    SCMP_SYS(times),
    // What is open. Of sockets there is one.
    SCMP_SYS(close),
    SCMP_SYS(close_range),
    SCMP_SYS(dup),
    SCMP_SYS(dup2),
    SCMP_SYS(dup3),
    SCMP_SYS(epoll_create1),
    SCMP_SYS(epoll_ctl),
    SCMP_SYS(epoll_pwait),
    SCMP_SYS(epoll_wait),
    SCMP_SYS(eventfd2),
    SCMP_SYS(fadvise64),
    SCMP_SYS(fstat),
    SCMP_SYS(fstatfs),
    SCMP_SYS(getdents64),
    SCMP_SYS(lseek),
    SCMP_SYS(pipe),
    SCMP_SYS(pipe2),
    SCMP_SYS(poll),
    SCMP_SYS(ppoll),
    SCMP_SYS(pread64),
    SCMP_SYS(preadv),
    SCMP_SYS(pselect6),
    SCMP_SYS(pwrite64),
    SCMP_SYS(read),
    SCMP_SYS(readahead),
    SCMP_SYS(readv),
    SCMP_SYS(recvfrom),
    SCMP_SYS(recvmsg),
    SCMP_SYS(select),
    SCMP_SYS(sendmsg),
    SCMP_SYS(write),
    SCMP_SYS(writev),
    // What files there are.
    SCMP_SYS(access),
    SCMP_SYS(chdir),
    SCMP_SYS(faccessat),
    SCMP_SYS(faccessat2),
    SCMP_SYS(getcwd),
    SCMP_SYS(lstat),
    SCMP_SYS(newfstatat),
    SCMP_SYS(readlink),
    SCMP_SYS(readlinkat),
    SCMP_SYS(stat),
    SCMP_SYS(statfs),
    SCMP_SYS(statx),
    SCMP_SYS(umask),
};

// None that changes a file by its name without opening it: the wall around files does not stop all
// of those.
constexpr int kForWriting[] = {
    SCMP_SYS(copy_file_range), SCMP_SYS(creat),     SCMP_SYS(fallocate),
    SCMP_SYS(fchmod),          SCMP_SYS(fdatasync), SCMP_SYS(flock),
    SCMP_SYS(fsync),           SCMP_SYS(ftruncate), SCMP_SYS(link),
    SCMP_SYS(linkat),          SCMP_SYS(mkdir),     SCMP_SYS(mkdirat),
    SCMP_SYS(pwritev),         SCMP_SYS(rename),    SCMP_SYS(renameat),
    SCMP_SYS(renameat2),       SCMP_SYS(rmdir),     SCMP_SYS(sendfile),
    SCMP_SYS(symlink),         SCMP_SYS(symlinkat), SCMP_SYS(unlink),
    SCMP_SYS(unlinkat),
};

// Those that can make a process known to others, as its owner for signals, are not among them.
constexpr int kFileCommands[] = {F_DUPFD,  F_DUPFD_CLOEXEC, F_GETFD,     F_SETFD,
                                 F_GETFL,  F_SETFL,         F_GETLK,     F_SETLK,
                                 F_SETLKW, F_OFD_GETLK,     F_OFD_SETLK, F_OFD_SETLKW};

class Filter {
 public:
  Filter() : context_(seccomp_init(SCMP_ACT_ERRNO(ENOSYS))) {}
  Filter(const Filter&) = delete;
  Filter& operator=(const Filter&) = delete;
  ~Filter() {
    if (context_ != nullptr) seccomp_release(context_);
  }

  // A call that this kind of machine does not have is passed over.
  void allow(int call) { allowIf(call, {}); }

  void allowIf(int call, std::initializer_list<scmp_arg_cmp> conditions) {
    if (context_ == nullptr || isBroken_) return;
    const int error =
        seccomp_rule_add_array(context_, SCMP_ACT_ALLOW, call,
                               static_cast<unsigned>(conditions.size()), conditions.begin());
    isBroken_ = error != 0 && error != -EDOM;
  }

  bool enforce() {
    return context_ != nullptr && !isBroken_ &&
           seccomp_attr_set(context_, SCMP_FLTATR_CTL_TSYNC, 1) == 0 && seccomp_load(context_) == 0;
  }

 private:
  scmp_filter_ctx context_;
  bool isBroken_ = false;
};

scmp_arg_cmp Is(unsigned argument, uint64_t value) { return {argument, SCMP_CMP_EQ, value, 0}; }

scmp_arg_cmp HasOf(unsigned argument, uint64_t mask, uint64_t value) {
  return {argument, SCMP_CMP_MASKED_EQ, mask, value};
}

void AllowReadingAlone(Filter& filter) {
  constexpr uint64_t kChanges = O_ACCMODE | O_CREAT | O_TRUNC;
  filter.allowIf(SCMP_SYS(open), {HasOf(1, kChanges, O_RDONLY)});
  filter.allowIf(SCMP_SYS(openat), {HasOf(2, kChanges, O_RDONLY)});
}

// What is opened to be read alone is not cut either: the wall around files may not see that.
void AllowOpening(Filter& filter) {
  constexpr uint64_t kCutting = O_ACCMODE | O_TRUNC;
  for (const auto& [call, flags] :
       {std::pair(SCMP_SYS(open), 1U), std::pair(SCMP_SYS(openat), 2U)}) {
    filter.allowIf(call, {HasOf(flags, kCutting, O_RDONLY)});
    filter.allowIf(call, {HasOf(flags, O_ACCMODE, O_WRONLY)});
    filter.allowIf(call, {HasOf(flags, O_ACCMODE, O_RDWR)});
  }
}

void AllowForItself(Filter& filter) {
  const auto self = static_cast<uint64_t>(getpid());
  filter.allowIf(SCMP_SYS(kill), {Is(0, self)});
  filter.allowIf(SCMP_SYS(tgkill), {Is(0, self)});
  // Threads; a process of its own is none.
  filter.allowIf(SCMP_SYS(clone), {HasOf(0, CLONE_THREAD, CLONE_THREAD)});
  // Its limits, to be read.
  filter.allowIf(SCMP_SYS(prlimit64), {Is(0, 0), Is(2, 0)});
  filter.allowIf(SCMP_SYS(prctl), {Is(0, PR_SET_NAME)});
  filter.allowIf(SCMP_SYS(prctl), {Is(0, PR_GET_NAME)});
  for (const uint64_t command : {uint64_t{TCGETS}, uint64_t{FIONREAD}, uint64_t{FIONBIO}}) {
    filter.allowIf(SCMP_SYS(ioctl), {Is(1, command)});
  }
  for (const int command : kFileCommands) {
    filter.allowIf(SCMP_SYS(fcntl), {Is(1, static_cast<uint64_t>(command))});
  }
}

void Limit(__rlimit_resource resource, uint64_t value) {
  const rlimit limit = {value, value};
  // More than the process may have is not given either way.
  (void)setrlimit(resource, &limit);
}

}  // namespace

bool WallOffSystemCalls(Files files) {
  Filter filter;
  for (const int call : kAlways) filter.allow(call);
  AllowForItself(filter);
  if (files == Files::WrittenToo) {
    for (const int call : kForWriting) filter.allow(call);
    AllowOpening(filter);
  } else {
    AllowReadingAlone(filter);
  }
  return filter.enforce();
}

void LimitMemory(uint64_t bytes) {
  // Writing beyond it fails then, rather than ending the process.
  (void)std::signal(SIGXFSZ, SIG_IGN);
  Limit(RLIMIT_CORE, 0);
  Limit(RLIMIT_FSIZE, bytes);
#ifndef TARN_PAGES_SANITIZED
  // Sanitizers take terabytes of addresses for themselves.
  Limit(RLIMIT_DATA, bytes + bytes / 4);
#endif
}

}  // namespace tarn::pages

#include "posix/Bait.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <tuple>
#include <utility>

#include "Pictures.h"

namespace tarn::test {

namespace {

// Listens on a port of the machine's choice; the socket and the port.
std::pair<int, int> Listen() {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  EXPECT_EQ(bind(listener, any, length), 0);
  EXPECT_EQ(listen(listener, 8), 0);
  EXPECT_EQ(getsockname(listener, any, &length), 0);
  return {listener, ntohs(address.sin_port)};
}

}  // namespace

Bait::Bait() : file_(directory_.write("bait.png", BytesOfHex(kPinkPng))) {
  watch_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  EXPECT_GE(inotify_add_watch(watch_, directory_.path().c_str(), IN_OPEN | IN_ACCESS), 0);
  std::tie(listener_, port_) = Listen();
}

Bait::~Bait() {
  close(watch_);
  close(listener_);
}

bool Bait::taken() {
  bool taken = false;
  std::array<char, 4096> events{};
  while (read(watch_, events.data(), events.size()) > 0) taken = true;
  for (int caller = accept(listener_, nullptr, nullptr); caller >= 0;
       caller = accept(listener_, nullptr, nullptr)) {
    close(caller);
    taken = true;
  }
  return taken;
}

}  // namespace tarn::test

#include "siblings/client/Channel.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include "siblings/client/Protocol.h"

namespace tarn::pages {
namespace {

// One control record, aligned as the system wants it.
template <class Payload>
union ControlRoom {
  cmsghdr header;
  char bytes[CMSG_SPACE(sizeof(Payload))];
};

// The payload of the control record of that type, if it came.
template <class Payload>
bool FindControl(msghdr& header, int type, Payload& payload) {
  const cmsghdr* const record = CMSG_FIRSTHDR(&header);
  if (record == nullptr || record->cmsg_level != SOL_SOCKET || record->cmsg_type != type ||
      record->cmsg_len != CMSG_LEN(sizeof payload)) {
    return false;
  }
  std::memcpy(&payload, CMSG_DATA(record), sizeof payload);
  return true;
}

}  // namespace

std::pair<Channel, Channel> Channel::pair() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  return {Channel(Descriptor(ends[0])), Channel(Descriptor(ends[1]))};
}

bool Channel::send(std::string_view message, int file) {
  iovec part = {const_cast<char*>(message.data()), message.size()};
  msghdr header = {};
  header.msg_iov = &part;
  header.msg_iovlen = 1;
  ControlRoom<int> control = {};
  if (file != kNoFile) {
    header.msg_control = control.bytes;
    header.msg_controllen = sizeof control.bytes;
    cmsghdr* const record = CMSG_FIRSTHDR(&header);
    record->cmsg_level = SOL_SOCKET;
    record->cmsg_type = SCM_RIGHTS;
    record->cmsg_len = CMSG_LEN(sizeof file);
    std::memcpy(CMSG_DATA(record), &file, sizeof file);
  }
  ssize_t sent = 0;
  do {
    sent = sendmsg(socket_.get(), &header, MSG_NOSIGNAL | MSG_DONTWAIT);
  } while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(message.size());
}

bool Channel::waitForMessage(std::chrono::milliseconds limit) const {
  pollfd entry = {socket_.get(), POLLIN, 0};
  return poll(&entry, 1, static_cast<int>(limit.count())) > 0;
}

bool Channel::isClosed() const {
  pollfd entry = {socket_.get(), 0, 0};
  return !socket_ || poll(&entry, 1, 0) != 0;
}

Heard Channel::receive(std::string& message, std::span<char> control, msghdr& header) {
  room_.resize(kMaxMessage);
  iovec part = {room_.data(), room_.size()};
  header = {};
  header.msg_iov = &part;
  header.msg_iovlen = 1;
  header.msg_control = control.empty() ? nullptr : control.data();
  header.msg_controllen = control.size();
  ssize_t got = 0;
  do {
    got = recvmsg(socket_.get(), &header, MSG_CMSG_CLOEXEC);
  } while (got < 0 && errno == EINTR);
  // A message of no bytes is none of ours.
  if (got <= 0) return Heard::End;
  message.assign(room_.data(), static_cast<size_t>(got));
  return (header.msg_flags & MSG_TRUNC) != 0 ? Heard::Nonsense : Heard::Message;
}

Heard Channel::receive(std::string& message) {
  msghdr header;
  return receive(message, {}, header);
}

Heard Channel::receive(std::string& message, Descriptor& file) {
  msghdr header;
  ControlRoom<int> control = {};
  const Heard heard = receive(message, control.bytes, header);
  int number = kNoFile;
  file = FindControl(header, SCM_RIGHTS, number) ? Descriptor(number) : Descriptor();
  return heard;
}

Heard Channel::receiveFrom(std::string& message, ProcessId& sender) {
  msghdr header;
  ControlRoom<ucred> control = {};
  const Heard heard = receive(message, control.bytes, header);
  ucred who = {};
  sender = FindControl(header, SCM_CREDENTIALS, who) ? who.pid : 0;
  return heard;
}

void Channel::askForSender(bool wanted) {
  const int value = wanted ? 1 : 0;
  (void)setsockopt(socket_.get(), SOL_SOCKET, SO_PASSCRED, &value, sizeof value);
}

}  // namespace tarn::pages

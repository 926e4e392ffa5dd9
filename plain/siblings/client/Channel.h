// Channel.h - one end of the socket between a program that wants pages and its helper: whole
// messages, each with at most one open file.
#ifndef TARN_SIBLINGS_CLIENT_CHANNEL_H
#define TARN_SIBLINGS_CLIENT_CHANNEL_H

#include <chrono>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Descriptor.h"
#include "ProcessHandle.h"

struct msghdr;

namespace tarn::pages {

enum class Heard {
  Message,
  End,      // the other end is closed
  Nonsense  // longer than any message
};

class Channel {
 public:
  Channel() = default;
  explicit Channel(Descriptor socket) : socket_(std::move(socket)) {}

  // Two ends, which no program started later inherits. Throws std::system_error.
  static std::pair<Channel, Channel> pair();

  int descriptor() const { return socket_.get(); }
  void close() { socket_.close(); }

  // The receiver gets a descriptor of its own for the file; kNoFile: there is none. False when the
  // other end is closed, or leaves so much unread that no more fits: a program that asks in turns
  // never fills the socket.
  bool send(std::string_view message, int file = kNoFile);

  // Waits until there is a message or the other end is closed; false when the time is over, and
  // perhaps before.
  bool waitForMessage(std::chrono::milliseconds limit) const;
  // Is the other end closed, whatever can still be received?
  bool isClosed() const;

  // Waits for a message. Files that come along are dropped.
  Heard receive(std::string& message);
  // The same with the file that came along, if one did.
  Heard receive(std::string& message, Descriptor& file);
  // The same, and who sent it, as a process of this end's namespace; 0 when that cannot be said.
  Heard receiveFrom(std::string& message, ProcessId& sender);
  // Before the first message of the other end: its sender is to be known.
  void askForSender(bool wanted);

 private:
  static constexpr int kNoFile = -1;

  Heard receive(std::string& message, std::span<char> control, msghdr& header);

  Descriptor socket_;
  std::vector<char> room_;  // for a message of any size, from the first on
};

}  // namespace tarn::pages

#endif

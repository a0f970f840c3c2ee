// strictsocket.h -- a TCPSocket played by a fuzz target: the peer's side, and aborts on misuse.
#pragma once

#include <algorithm>
#include <string>

#include "check.h"
#include "http/tcpsocket.h"

namespace trelvane::fuzz {

// The client may only write on an open connection and connect when none is
// under way; the target plays the peer with accept, send and peerClose.
class StrictSocket : public http::TCPSocket {
 public:
  int connections = 0;
  bool connecting = false;
  bool open = false;
  std::string unread;
  std::string written;  // every byte of every request
  int32_t code = 0;

  void Connect() override {
    FUZZ_CHECK(!connecting && !open, "Connect on a socket already in use");
    ++connections;
    connecting = true;
    unread.clear();
  }
  void Write(const std::string& bytes) override {
    FUZZ_CHECK(open, "Write on a socket that is not open");
    written += bytes;
  }
  std::string Lookahead() override { return unread; }
  std::string Read(std::size_t n) override {
    std::string out = unread.substr(0, std::min(n, unread.size()));
    unread.erase(0, out.size());
    return out;
  }
  std::string ReadAll() override {
    std::string out;
    out.swap(unread);
    return out;
  }
  void Close() override {
    connecting = false;
    open = false;
    unread.clear();
  }
  int32_t LastErrorCode() const override { return code; }

  // the peer's side
  void accept() {
    connecting = false;
    open = true;
    events_->Event_Connected();
  }
  void send(const std::string& bytes) {
    unread += bytes;
    events_->Event_DataAvailable();
  }
  void fail(int32_t errorCode) {
    code = errorCode;
    connecting = false;
    open = false;
    events_->Event_Error();
  }
};

}  // namespace trelvane::fuzz

// fake_socket.h -- a TCPSocket whose peer is played by a test or a fuzz target; a misuse by the client aborts.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "http/tcpsocket.h"

namespace trelvane::http::testing {

// The client may write only on an open connection; with strict, it may also
// connect only where no connection is under way (what an exchange keeps).
// The peer accepts, sends, closes or fails.
class FakeSocket : public TCPSocket {
 public:
  explicit FakeSocket(bool strict = false) : strict_(strict) {}
  std::vector<std::string> targets, requests;  // per connection: "address:port", every byte written on it
  bool connecting = false, open = false;
  std::string unread;
  int32_t code = 0;

  void Connect() override {
    check(!strict_ || (!connecting && !open), "Connect on a socket already in use");
    targets.push_back(Address + ":" + std::to_string(Port));
    requests.emplace_back();
    connecting = true, open = false;
    unread.clear();
  }
  void Write(const std::string& bytes) override {
    check(open, "Write on a socket that is not open");
    requests.back() += bytes;
  }
  std::string Lookahead() override { return unread; }
  std::string Read(std::size_t n) override {
    std::string out = unread.substr(0, n);
    unread.erase(0, out.size());
    return out;
  }
  std::string ReadAll() override { return Read(unread.size()); }
  void Close() override { connecting = open = false, unread.clear(); }
  int32_t LastErrorCode() const override { return code; }

  // the peer's side
  void accept() {
    check(connecting, "accept without a Connect");
    connecting = false, open = true;
    events_->Event_Connected();
  }
  void send(const std::string& bytes) {
    check(open, "send on a closed connection");
    unread += bytes;
    events_->Event_DataAvailable();
  }
  void fail(int32_t errorCode) {
    code = errorCode, connecting = open = false;
    events_->Event_Error();
  }

 private:
  static void check(bool rule, const char* broken) {
    if (rule) return;
    std::fprintf(stderr, "broken rule: %s\n", broken);
    std::abort();
  }
  bool strict_;
};

}  // namespace trelvane::http::testing

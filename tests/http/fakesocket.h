// fakesocket.h -- a scripted TCPSocket for the unit tests: the test plays the peer.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "http/tcpsocket.h"

namespace trelvane::http::testing {

class FakeSocket : public TCPSocket {
 public:
  struct Connection {
    std::string address;
    int32_t port = 0;
    std::string request;  // every byte written on it
  };

  std::vector<Connection> connections;
  bool connecting = false;  // Connect called, not yet accepted or failed
  bool open = false;        // accepted, not yet closed or failed
  int closes = 0;
  std::string unread;
  int32_t code = 0;

  void Connect() override {
    connections.push_back({Address, Port, {}});
    connecting = true;
    open = false;
    unread.clear();
  }
  void Write(const std::string& bytes) override {
    if (!open) ADD_FAILURE() << "write on a socket that is not open";
    connections.back().request += bytes;
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
    ++closes;
    connecting = false;
    open = false;
    unread.clear();
  }
  int32_t LastErrorCode() const override { return code; }

  // the peer's side
  void accept() {
    ASSERT_TRUE(connecting) << "accept without a Connect";
    connecting = false;
    open = true;
    events_->Event_Connected();
  }
  void send(const std::string& bytes) {
    ASSERT_TRUE(open) << "send on a closed connection";
    unread += bytes;
    events_->Event_DataAvailable();
  }
  void fail(int32_t errorCode) {
    code = errorCode;
    connecting = false;
    open = false;
    events_->Event_Error();
  }
  void peerClose() { fail(kLostConnection); }

  const std::string& request(std::size_t i = 0) const { return connections.at(i).request; }
};

}  // namespace trelvane::http::testing

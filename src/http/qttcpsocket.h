// qttcpsocket.h -- QtTCPSocket: TCPSocket on QTcpSocket and the main event loop, with its guards.
#pragma once

#include <QAbstractSocket>
#include <QObject>
#include <QTimer>

#include <cstdint>
#include <string>

#include "http/tcpsocket.h"

class QTcpSocket;

namespace trelvane::http {

// Each Connect opens a fresh QTcpSocket; Close lets go of it without an
// event, so a handler may close and reconnect from inside any event. The
// received bytes are kept here, so that Lookahead and Read work on one
// buffer.
//
// Guards of our own, both reported as an error event: a connection that is
// silent for longer than the idle limit (kTimedOutError), and one that holds
// more unread bytes than the pending limit once its events are handled
// (kHeaderTooLargeError). Only a header that has not yet ended stays unread,
// so the second guard ends a header that never ends.
//
// It must not be destroyed from inside one of its own events, while the
// QTcpSocket under it is still emitting: an owner that goes away with the
// exchange defers its deletion to the event loop.
class QtTCPSocket : public TCPSocket {
 public:
  static constexpr int kDefaultIdleLimitMs = 60000;
  static constexpr std::size_t kDefaultPendingLimit = 256 * 1024;

  QtTCPSocket();
  ~QtTCPSocket() override;
  QtTCPSocket(const QtTCPSocket&) = delete;
  QtTCPSocket& operator=(const QtTCPSocket&) = delete;

  void setIdleLimitMs(int ms) { idleLimitMs_ = ms; }
  void setPendingLimit(std::size_t bytes) { pendingLimit_ = bytes; }

  void Connect() override;
  void Write(const std::string& bytes) override;
  std::string Lookahead() override;
  std::string Read(std::size_t n) override;
  std::string ReadAll() override;
  void Close() override;
  int32_t LastErrorCode() const override { return lastError_; }

 private:
  void release();
  bool drain(QTcpSocket* s, bool atClose);
  void onError(QTcpSocket* s, QAbstractSocket::SocketError e, uint64_t gen);
  void fail(int32_t code);

  QObject context_;  // owns the signal connections of this object
  QTimer idle_;
  QTcpSocket* socket_ = nullptr;
  uint64_t generation_ = 0;  // bumped whenever a connection is let go
  bool inConnect_ = false;
  std::string buffer_;
  int32_t lastError_ = 0;
  int idleLimitMs_ = kDefaultIdleLimitMs;
  std::size_t pendingLimit_ = kDefaultPendingLimit;
};

}  // namespace trelvane::http

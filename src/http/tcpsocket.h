// tcpsocket.h -- TCPSocket: the socket members the HTTP client uses, and their error codes.
#pragma once

#include <cstdint>
#include <string>

namespace trelvane::http {

// Error codes of LastErrorCode. 102 is also the peer's normal close.
enum TCPErrorCode : int32_t {
  kOpenDriverError = 100,      // any other failure of the socket
  kLostConnection = 102,       // the peer closed, or refused the connection
  kNameResolutionError = 103,  // the host name did not resolve
  kAddressInUseError = 105,
  kInvalidStateError = 106,    // Connect or Write on a socket in the wrong state
  kInvalidPortError = 107,     // a port outside 1 to 65535
  kTimedOutError = 110,        // the connection was silent too long
  kHeaderTooLargeError = 111,  // more unread bytes than any header needs
};

// Receives the socket's three events. They arrive on the socket's thread,
// never from inside Connect, Write, Read or Close.
class TCPSocketEvents {
 public:
  virtual ~TCPSocketEvents() = default;
  virtual void Event_Connected() = 0;
  // New bytes are waiting; bytes not read stay for the next event.
  virtual void Event_DataAvailable() = 0;
  // Failed lookup or connection, lost connection, or the peer's close.
  virtual void Event_Error() = 0;
};

class TCPSocket {
 public:
  std::string Address;  // host to connect to
  int32_t Port = 0;

  virtual ~TCPSocket() = default;
  void SetEvents(TCPSocketEvents* events) { events_ = events; }

  // Starts lookup and connection without blocking; the outcome arrives as
  // Event_Connected or Event_Error.
  virtual void Connect() = 0;
  // Queues the whole text; the bytes go out unchanged.
  virtual void Write(const std::string& bytes) = 0;
  // All received bytes, none consumed.
  virtual std::string Lookahead() = 0;
  // Consumes and returns up to n bytes.
  virtual std::string Read(std::size_t n) = 0;
  // Consumes and returns all received bytes.
  virtual std::string ReadAll() = 0;
  // Ends the connection, drops unread bytes; needs no peer, raises no event.
  virtual void Close() = 0;
  virtual int32_t LastErrorCode() const = 0;

 protected:
  TCPSocketEvents* events_ = nullptr;
};

}  // namespace trelvane::http

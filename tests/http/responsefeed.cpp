// responsefeed.cpp -- plays arbitrary bytes as a server's stream into BasicHTTP (fuzzing and its corpus replay).
#include "responsefeed.h"

#include <string>

#include "fakesocket.h"
#include "http/basichttp.h"

namespace trelvane::http::testing {

FeedOutcome feedResponse(const uint8_t* data, std::size_t size) {
  FeedOutcome out;
  if (size == 0) return out;
  const std::size_t piece = static_cast<std::size_t>(data[0]) + 1;
  const bool grab = (data[0] & 1) != 0;
  std::string stream(reinterpret_cast<const char*>(data + 1), size - 1);

  auto* socket = new FakeSocket;
  BasicHTTP http{std::unique_ptr<TCPSocket>(socket)};
  int hops = 0;
  bool asked = false;
  http.HandleRedirection = [&hops](const std::string&) { return ++hops > 4; };
  http.NeedAuthorization = [&asked](std::string& user, std::string& password) {
    user = "user";
    password = "secret";
    return !std::exchange(asked, true);
  };
  http.PageReceived = [&out](const std::string&, const std::string&, bool) { ++out.deliveries; };
  http.FileReceived = [&out](const std::string&, const std::shared_ptr<FolderItem>&, bool) { ++out.deliveries; };

  if (grab) http.Grab("http://www.example.com/f", nullptr);
  else http.Get("http://www.example.com/f");

  std::size_t at = 0;
  while (socket->connecting || socket->open) {
    if (socket->connecting) socket->accept();
    if (at >= stream.size()) {
      socket->peerClose();
      continue;
    }
    socket->send(stream.substr(at, piece));
    at += piece;
  }
  out.connections = static_cast<int>(socket->connections.size());
  out.buffered = http.Buffer.size();
  return out;
}

}  // namespace trelvane::http::testing

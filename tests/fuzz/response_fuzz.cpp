// response_fuzz.cpp -- libFuzzer target: a server's stream, any bytes, into BasicHTTP in pieces of one size.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "check.h"
#include "http/basichttp.h"
#include "http/fake_socket.h"

using trelvane::http::BasicHTTP;
using trelvane::http::testing::FakeSocket;

// The first byte chooses the piece size (its value + 1) and, by its lowest
// bit, Get or Grab into no file; the rest is the peer's stream, handed over
// piece by piece and continued on every new connection the client opens,
// and the peer closes at the end. Redirects are followed four times, and
// credentials are given once.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t piece = static_cast<std::size_t>(data[0]) + 1;
  const std::string stream(reinterpret_cast<const char*>(data + 1), size - 1);
  auto* socket = new FakeSocket;
  BasicHTTP http{std::unique_ptr<trelvane::http::TCPSocket>(socket)};
  int hops = 0, deliveries = 0;
  bool asked = false;
  http.HandleRedirection = [&hops](const std::string&) { return ++hops > 4; };
  http.NeedAuthorization = [&asked](std::string& user, std::string& password) {
    user = "user", password = "secret";
    return !std::exchange(asked, true);
  };
  http.PageReceived = [&deliveries](const std::string&, const std::string&, bool) { ++deliveries; };
  http.FileReceived = [&deliveries](const std::string&, const std::shared_ptr<trelvane::http::FolderItem>&, bool) {
    ++deliveries;
  };
  if (data[0] & 1) http.Grab("http://www.example.com/f", nullptr);
  else http.Get("http://www.example.com/f");
  for (std::size_t at = 0; socket->connecting || socket->open;) {
    if (socket->connecting) socket->accept();
    if (at >= stream.size()) {
      socket->fail(trelvane::http::kLostConnection);
      continue;
    }
    socket->send(stream.substr(at, piece));
    at += piece;
  }
  const int connections = static_cast<int>(socket->targets.size());
  FUZZ_CHECK(connections >= 1 && deliveries <= connections, "at most one delivery per connection");
  FUZZ_CHECK(http.Buffer.size() <= stream.size(), "nothing is buffered that did not come");
  return 0;
}

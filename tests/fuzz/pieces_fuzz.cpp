// pieces_fuzz.cpp -- libFuzzer target: a server's stream cut into pieces of the fuzzer's choosing, into BasicHTTP.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "check.h"
#include "http/basichttp.h"
#include "http/fake_socket.h"

using trelvane::http::testing::FakeSocket;
using trelvane::http::BasicHTTP;

namespace {

// Redirects followed before the owner brakes, and connections that can
// follow from them and from one retry with credentials.
constexpr int kRedirects = 3;
constexpr int kMostConnections = 2 * (kRedirects + 2);

}  // namespace

// Byte 0 picks the operation (Get, GetHeaders, Grab into no file, a posted
// form). Then come pieces, each a length byte and that many bytes of the
// peer's stream: a length of 0 closes the connection, and the next piece
// goes to the client's next connection. The peer closes when the input ends.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  auto* socket = new FakeSocket(true);
  BasicHTTP http{std::unique_ptr<trelvane::http::TCPSocket>(socket)};
  int hops = 0, deliveries = 0;
  bool asked = false;
  std::size_t longestPage = 0;
  http.HandleRedirection = [&hops](const std::string&) { return ++hops > kRedirects; };
  http.NeedAuthorization = [&asked](std::string& user, std::string& password) {
    user = "user";
    password = "secret";
    return !std::exchange(asked, true);
  };
  http.PageReceived = [&](const std::string&, const std::string& content, bool) {
    ++deliveries;
    longestPage = std::max(longestPage, content.size());
  };
  http.FileReceived = [&deliveries](const std::string&, const std::shared_ptr<trelvane::http::FolderItem>&, bool) {
    ++deliveries;
  };

  switch (data[0] % 4) {
    case 0: http.Get("http://www.example.com/f"); break;
    case 1: http.GetHeaders("http://www.example.com/f"); break;
    case 2: http.Grab("http://www.example.com/f", nullptr); break;
    default:
      http.SetForm({"", "q", "n"}, {"", "a b", "1"}, true);
      http.Get("http://www.example.com/form");
      break;
  }

  std::size_t at = 1, sent = 0;
  while (socket->connecting || socket->open) {
    FUZZ_CHECK(static_cast<int>(socket->targets.size()) <= kMostConnections, "redirects and retries are bounded");
    if (socket->connecting) {
      socket->accept();
      continue;
    }
    if (at >= size) {
      socket->fail(trelvane::http::kLostConnection);
      continue;
    }
    const std::size_t n = std::min<std::size_t>(data[at], size - at - 1);
    ++at;
    if (n == 0) {
      socket->fail(trelvane::http::kLostConnection);
      continue;
    }
    socket->send(std::string(reinterpret_cast<const char*>(data + at), n));
    at += n;
    sent += n;
  }

  FUZZ_CHECK(deliveries <= static_cast<int>(socket->targets.size()), "at most one delivery per connection");
  FUZZ_CHECK(longestPage <= sent, "no page is longer than what came");
  FUZZ_CHECK(http.Buffer.size() <= sent, "nothing is buffered that did not come");
  return 0;
}

// url_fuzz.cpp -- libFuzzer target: ParseURL, URLEncode and FormEncode on any text.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "check.h"
#include "http/basichttp.h"
#include "http/httptext.h"
#include "http/fake_socket.h"

using trelvane::http::testing::FakeSocket;
using trelvane::http::BasicHTTP;
using trelvane::http::InStr;

namespace {

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Every "%" with two hexadecimal digits behind it decoded, anything else kept.
std::string percentDecoded(std::string_view s) {
  std::string out;
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '%' && i + 2 < s.size() && hexValue(s[i + 1]) >= 0 && hexValue(s[i + 2]) >= 0) {
      out += static_cast<char>(hexValue(s[i + 1]) * 16 + hexValue(s[i + 2]));
      i += 2;
    } else {
      out += s[i];
    }
  }
  return out;
}

// The bytes an encoded text may hold: the safe set in either case, digits,
// "%", and the reserved set where it is kept.
bool encodedOnly(std::string_view s, bool keepreserved) {
  static const std::string_view safe = "abcdefghijklmnopqrstuvwxyz0123456789$-_.+!*(),%";
  for (char c : s) {
    if (InStr(safe, std::string_view(&c, 1)) > 0) continue;
    if (keepreserved && InStr(";/?:@=&", std::string_view(&c, 1)) > 0) continue;
    return false;
  }
  return true;
}

}  // namespace

// The first byte picks the encoder's two options and whether a proxy is set;
// the rest is the text.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const bool keepescapes = data[0] & 1, keepreserved = data[0] & 2, proxy = data[0] & 4;
  const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);

  auto* socket = new FakeSocket(true);
  BasicHTTP http{std::unique_ptr<trelvane::http::TCPSocket>(socket)};
  int badURL = 0, cancelled = 0;
  http.OperationError = [&badURL](const std::string& m, bool) { badURL += m == "Bad URL!"; };
  http.Cancelled = [&cancelled] { ++cancelled; };

  // URLEncode: only safe bytes and escapes come out, and they decode to the text
  const std::string enc = http.URLEncode(text, keepescapes, keepreserved);
  FUZZ_CHECK(encodedOnly(enc, keepreserved), "URLEncode leaves only safe bytes");
  if (!keepescapes) FUZZ_CHECK(percentDecoded(enc) == text, "URLEncode decodes to its text");
  else FUZZ_CHECK(percentDecoded(enc) == percentDecoded(text), "kept escapes decode alike");

  // FormEncode: no blank, no line end, nothing reserved
  const std::string form = http.FormEncode(text);
  FUZZ_CHECK(encodedOnly(form, false), "FormEncode leaves only safe bytes");

  // ParseURL
  if (proxy) http.SetProxy("proxy.example.com", 3128, "", "");
  const bool ok = http.ParseURL(text);
  FUZZ_CHECK(static_cast<int>(socket->targets.size()) == 0, "ParseURL never connects");
  if (ok) {
    FUZZ_CHECK(badURL == 0 && cancelled == 0, "a good URL raises no event");
    FUZZ_CHECK(InStr(http.ServerAddress, ".") > 0 && http.ServerPort > 0, "a good URL has a host and a port");
    FUZZ_CHECK(!http.ServerPath.empty() && http.ServerPath[0] == '/', "the server path begins with /");
    FUZZ_CHECK(encodedOnly(http.ServerPath, true), "the server path is encoded");
    if (proxy) FUZZ_CHECK(socket->Address == "proxy.example.com" && socket->Port == 3128, "a proxy is the target");
    else FUZZ_CHECK(socket->Address == http.ServerAddress && socket->Port == http.ServerPort, "the server is the target");
  } else {
    FUZZ_CHECK(badURL == 1 && cancelled == 1, "a bad URL is told once, then cancelled");
  }
  return 0;
}

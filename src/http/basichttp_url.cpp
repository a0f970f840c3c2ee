// basichttp_url.cpp -- BasicHTTP: ParseURL, the encoders, forms, client name and proxy.
#include "http/basichttp.h"

#include "http/httpmodule.h"
#include "http/httptext.h"
#include "platform/numtext.h"

namespace trelvane::http {

bool BasicHTTP::ParseURL(const std::string& url) {
  // scheme and credentials
  std::string work = Trim(url);
  User.clear();
  Pass.clear();
  if (startsWithNoCase(work, "http://")) work = Mid(work, 8);
  // Not an else: "http://ftp://host" loses both, and an ftp:// URL is
  // fetched over HTTP from the same host.
  if (startsWithNoCase(work, "ftp://")) work = Mid(work, 7);
  if (InStr(work, "@") > 0) {
    // Only "user:password@" is taken apart; a bare "user@" stays in the host.
    std::string before = GetBefore(work, "@");
    if (InStr(before, ":") > 0) {
      User = GetBefore(before, ":");
      Pass = GetAfter(before, ":");
      work = GetAfter(work, "@");
    }
  }

  // host, port and path
  std::string host = NthField(work, "/", 1);
  if (InStr(host, ":") > 0) {
    ServerAddress = GetBefore(host, ":");
    ServerPort = toInt(Val(GetAfter(host, ":")));
  } else {
    ServerAddress = host;
    ServerPort = 80;
  }
  ServerPath = URLEncode("/" + GetAfter(work, "/"), true, true);

  if (InStr(ServerAddress, ".") == 0 || ServerPort <= 0) {
    fireOperationError("Bad URL!", true);
    fireCancelled();
    return false;
  }
  OriginalURL = Trim(url);

  // default cookie scope
  if (startsWithNoCase(ServerAddress, "www.")) CookieDomain = Replace(ServerAddress, "www", "");
  else if (IsIP(ServerAddress)) CookieDomain = ServerAddress;
  else CookieDomain = "." + ServerAddress;

  CookiePath = ServerPath;
  if (Right(CookiePath, 1) == "/") CookiePath.pop_back();
  std::string last = NthField(CookiePath, "/", CountFields(CookiePath, "/"));
  if (InStr(last, ".") > 0) CookiePath = Left(CookiePath, Len(CookiePath) - Len(last));

  // target: the server, or the proxy with the whole URL as it was given
  if (ProxyAddress.empty()) {
    socket_->Address = ServerAddress;
    socket_->Port = ServerPort;
    Path = ServerPath;
  } else {
    socket_->Address = ProxyAddress;
    socket_->Port = ProxyPort;
    Path = url;
    if (!startsWithNoCase(Path, "http://") && !startsWithNoCase(Path, "ftp://")) Path = "http://" + Path;
  }
  return true;
}

std::string BasicHTTP::URLEncode(std::string_view text, bool keepescapes, bool keepreserved) const {
  static const std::string safe = "abcdefghijklmnopqrstuvwxyz0123456789$-_.+!*(),";
  static const std::string hexdigits = "0123456789ABCDEF";
  static const std::string reserved = ";/?:@=&";
  auto encode = [](char c) {
    std::string h = Hex(static_cast<uint32_t>(Asc(c)));
    return "%" + (h.size() == 1 ? "0" + h : h);
  };
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::string_view c = text.substr(i, 1);
    if (InStr(safe, c) > 0) {
      out += c;
    } else if (c == "%" && keepescapes) {
      // A "%" too near the end to carry two digits is encoded.
      bool escape = i + 2 < text.size() && InStr(hexdigits, text.substr(i + 1, 1)) > 0 &&
                    InStr(hexdigits, text.substr(i + 2, 1)) > 0;
      out += escape ? std::string(c) : encode(c[0]);
    } else if (keepreserved && InStr(reserved, c) > 0) {
      out += c;
    } else {
      out += encode(c[0]);
    }
  }
  return out;
}

std::string BasicHTTP::FormEncode(std::string_view text) {
  if (CRLF.empty()) Init();
  std::string t = ReplaceAll(text, "+", "%2B");
  t = ReplaceAll(t, " ", "+");
  // The LF step also hits the LF the CR step has just made, so that a lone
  // CR ends as CR CR LF; a text holding one CRLF keeps all its line ends.
  if (InStr(t, CRLF) == 0) {
    if (InStr(t, CR) > 0) t = ReplaceAll(t, CR, CRLF);
    if (InStr(t, LF) > 0) t = ReplaceAll(t, LF, CRLF);
  }
  return URLEncode(t, true, false);
}

std::string BasicHTTP::Base64(std::string_view text) const {
  static const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  // The bits of the text, filled with zero bits to a multiple of 6, one
  // letter per 6 bits, never any "=" padding.
  std::string out;
  uint32_t bits = 0;
  int held = 0;
  for (char c : text) {
    bits = (bits << 8) | static_cast<unsigned char>(c);
    held += 8;
    while (held >= 6) {
      held -= 6;
      out += alphabet[(bits >> held) & 63];
    }
  }
  if (held > 0) out += alphabet[(bits << (6 - held)) & 63];
  return out;
}

void BasicHTTP::SetForm(const std::vector<std::string>& names, const std::vector<std::string>& values,
                        bool sendafter) {
  FormContentType = "application/x-www-form-urlencoded";
  SendFormAfter = sendafter;
  if (sendafter) Command = "POST";
  // FormData is not emptied first, and the "&" goes by index, not by what
  // was written: a skipped first pair leaves a leading "&". A name without
  // a value (values shorter than names) counts as an empty pair.
  for (std::size_t i = 1; i < names.size(); ++i) {
    const std::string& name = names[i];
    const std::string value = i < values.size() ? values[i] : std::string();
    if (name.empty() || value.empty()) continue;
    if (i != 1) FormData += "&";
    FormData += FormEncode(name) + "=" + FormEncode(value);
  }
}

void BasicHTTP::SetFormDirectly(const std::string& contenttype, const std::string& data, bool sendafter) {
  FormContentType = contenttype;
  FormData = data;
  SendFormAfter = sendafter;
}

void BasicHTTP::ClearForm() {
  FormData.clear();
  Command.clear();
}

void BasicHTTP::SetClient(std::string_view name, double version) {
  Client = ReplaceAll(ReplaceAll(name, " ", ""), "/", "") + "/" + Format(version, "0.0");
}

void BasicHTTP::SetProxy(const std::string& address, int32_t port, const std::string& user,
                         const std::string& password) {
  ProxyAddress = address;
  ProxyPort = port;
  ProxyUser = user;
  ProxyPass = password;
}

void BasicHTTP::ClearProxy() {
  ProxyAddress.clear();
  ProxyPort = 0;
  ProxyUser.clear();
  ProxyPass.clear();
}

}  // namespace trelvane::http

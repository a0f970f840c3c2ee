// eventlog.h -- records every event of a BasicHTTP as one line of text, in order.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "http/basichttp.h"
#include "platform/numtext.h"

namespace trelvane::http::testing {

// Lines: "Progress <text>", "Cancelled", "Data <received>/<total>/<length>",
// "Page <type>|<content>|<viaGrab>", "File <type>|<viaGrab>",
// "Headers <status>|<informational>|<headersonly>", "Redirection <target>",
// "OperationError <message>|<flag>", "ProtocolError <status>",
// "TCPError <code>", "Updated <partial>", "NeedAuthorization",
// "SockConnected", "Cookie <name>=<value>|<domain>|<path>|<expired>",
// "AddCookies <address>|<path>", "BadRedirection <target>".
class EventLog {
 public:
  std::vector<std::string> lines;
  bool redirectAnswer = false;                                  // HandleRedirection's result
  std::optional<std::pair<std::string, std::string>> credentials;  // NeedAuthorization fills these
  std::optional<HTTPCookieList> cookies;                        // AddCookies' result
  std::vector<HTTPCookie> received;
  std::vector<std::string> pages;

  explicit EventLog(BasicHTTP& h) {
    auto b = [](bool v) { return std::string(v ? "true" : "false"); };
    auto n = [](double v) { return Str(v); };
    h.Cancelled = [this] { add("Cancelled"); };
    h.DataProgress = [this, n](double r, double t, double l) { add("Data " + n(r) + "/" + n(t) + "/" + n(l)); };
    h.FileReceived = [this, b](const std::string& type, const std::shared_ptr<FolderItem>&, bool g) {
      add("File " + type + "|" + b(g));
    };
    h.GotHeaders = [this, b](int32_t s, const HTTPHeaders&, bool i, bool ho) {
      add("Headers " + std::to_string(s) + "|" + b(i) + "|" + b(ho));
    };
    h.HandleRedirection = [this](const std::string& t) {
      add("Redirection " + t);
      return redirectAnswer;
    };
    h.OperationError = [this, b](const std::string& m, bool f) { add("OperationError " + m + "|" + b(f)); };
    h.PageReceived = [this, b](const std::string& type, const std::string& content, bool g) {
      pages.push_back(content);
      add("Page " + type + "|" + content + "|" + b(g));
    };
    h.ProgressChange = [this](const std::string& m) { add("Progress " + m); };
    h.ProtocolError = [this](int32_t s, const HTTPHeaders&) { add("ProtocolError " + std::to_string(s)); };
    h.TCPError = [this](int32_t c) { add("TCPError " + std::to_string(c)); };
    h.FileUpdated = [this, b](const std::shared_ptr<FolderItem>&, bool p) { add("Updated " + b(p)); };
    h.NeedAuthorization = [this](std::string& user, std::string& password) {
      add("NeedAuthorization");
      if (!credentials) return false;
      user = credentials->first;
      password = credentials->second;
      return true;
    };
    h.SockConnected = [this] { add("SockConnected"); };
    h.CookieReceived = [this, b](const HTTPCookie& c, bool expired) {
      received.push_back(c);
      add("Cookie " + c.Name + "=" + c.Value + "|" + c.Domain + "|" + c.Path + "|" + b(expired));
    };
    h.AddCookies = [this](const std::string& address, const std::string& path) {
      add("AddCookies " + address + "|" + path);
      return cookies;
    };
    h.BadRedirection = [this](const std::string& t) { add("BadRedirection " + t); };
  }

  void add(std::string line) { lines.push_back(std::move(line)); }
  void clear() {
    lines.clear();
    pages.clear();
    received.clear();
  }
  // The lines that start with one of the prefixes.
  std::vector<std::string> only(std::initializer_list<std::string> prefixes) const {
    std::vector<std::string> out;
    for (const std::string& l : lines)
      for (const std::string& p : prefixes)
        if (l.rfind(p, 0) == 0) {
          out.push_back(l);
          break;
        }
    return out;
  }
  bool has(const std::string& line) const {
    for (const std::string& l : lines)
      if (l == line) return true;
    return false;
  }
};

using Lines = std::vector<std::string>;

}  // namespace trelvane::http::testing

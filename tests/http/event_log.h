// event_log.h -- every event of a BasicHTTP as one line of text, and the answers its owner gives.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "http/basichttp.h"
#include "platform/numtext.h"

namespace trelvane::http::testing {

struct EventLog {
  std::vector<std::string> lines, pages;
  std::optional<std::pair<std::string, std::string>> credentials;  // NeedAuthorization's answer
  int brake = -1, hops = 0;  // HandleRedirection answers true after `brake` redirects (never below 0)
  std::optional<HTTPCookieList> cookies;  // AddCookies' list

  void attach(BasicHTTP& h) {
    const auto b = [](bool v) { return std::string(v ? "true" : "false"); };
    const auto log = [this](const std::string& line) { lines.push_back(line); };
    h.Cancelled = [=] { log("Cancelled"); };
    h.DataProgress = [=](double r, double t, double l) { log("Data " + Str(r) + "/" + Str(t) + "/" + Str(l)); };
    h.FileReceived = [=](const std::string& t, const std::shared_ptr<FolderItem>&, bool g) { log("File " + t + "|" + b(g)); };
    h.GotHeaders = [=](int32_t s, const HTTPHeaders&, bool i, bool o) { log("Headers " + std::to_string(s) + "|" + b(i) + "|" + b(o)); };
    h.HandleRedirection = [=, this](const std::string& t) { return log("Redirection " + t), brake >= 0 && ++hops > brake; };
    h.OperationError = [=](const std::string& m, bool f) { log("OperationError " + m + "|" + b(f)); };
    h.PageReceived = [=, this](const std::string& t, const std::string& c, bool g) { pages.push_back(c), log("Page " + t + "|" + c + "|" + b(g)); };
    h.ProgressChange = [=](const std::string& m) { log("Progress " + m); };
    h.ProtocolError = [=](int32_t s, const HTTPHeaders&) { log("ProtocolError " + std::to_string(s)); };
    h.TCPError = [=](int32_t c) { log("TCPError " + std::to_string(c)); };
    h.FileUpdated = [=](const std::shared_ptr<FolderItem>&, bool p) { log("Updated " + b(p)); };
    h.NeedAuthorization = [=, this](std::string& user, std::string& password) {
      log("NeedAuthorization");
      if (credentials) user = credentials->first, password = credentials->second;
      return credentials.has_value();
    };
    h.SockConnected = [=] { log("SockConnected"); };
    h.CookieReceived = [=](const HTTPCookie& c, bool x) { log("Cookie " + c.Name + "=" + c.Value + "|" + c.Domain + "|" + c.Path + "|" + b(x)); };
    h.AddCookies = [=, this](const std::string& a, const std::string& p) { return log("AddCookies " + a + "|" + p), cookies; };
    h.BadRedirection = [=](const std::string& t) { log("BadRedirection " + t); };
  }
  // The lines that start with one of the prefixes.
  std::vector<std::string> only(const std::vector<std::string>& prefixes) const {
    std::vector<std::string> out;
    for (const std::string& l : lines)
      if (std::any_of(prefixes.begin(), prefixes.end(), [&](const std::string& p) { return l.rfind(p, 0) == 0; }))
        out.push_back(l);
    return out;
  }
};

}  // namespace trelvane::http::testing

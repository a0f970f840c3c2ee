// client_test.cpp -- BasicHTTP on a scripted socket: every event, the request bytes and the client's state at
// each step; the text helpers, headers and cookies it leans on.
#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <iterator>

#include "event_log.h"
#include "fake_socket.h"
#include "http/basichttp.h"
#include "http/httpmodule.h"
#include "http/httptext.h"
#include "support/desk.h"

namespace trelvane::testing {
namespace {

using namespace http;
using http::testing::FakeSocket;

std::vector<std::string> split(const std::string& v, char sep = '|') {
  std::vector<std::string> out;
  for (std::size_t at = 0, end; at <= v.size(); at = end + 1)
    out.push_back(v.substr(at, (end = std::min(v.find(sep, at), v.size())) - at));
  return out;
}

// The text helpers, one call a step: "FUNCTION ARG|ARG|..."; a cookie parsed
// (PARSE) or a cookie list are the step's own.
std::string call(const std::string& fn, const std::vector<std::string>& a, BasicHTTP& h, HTTPHeaders& list,
                 HTTPCookieList& jar) {
  const auto n = [&](std::size_t k) { return std::stoi(a.at(k)); };
  const auto b = [](bool v) { return std::string(v ? "true" : "false"); };
  const auto cookie = [](const HTTPCookie& c) {  // an expiry within seconds of now as "now"
    const Date* x = c.Expires ? &*c.Expires : nullptr;
    std::string e = x ? " expires " + std::to_string(x->Year()) + "-" + std::to_string(x->Month()) + "-" +
                            std::to_string(x->Day()) + " " + std::to_string(x->Hour()) + ":" + std::to_string(x->Minute()) +
                            ":" + std::to_string(x->Second()) + " = " + Str(x->TotalSeconds())
                      : "";
    if (x && std::abs(x->TotalSeconds() - Date().TotalSeconds()) < 5) e = " expires now";
    return c.Name + "=" + c.Value + " domain " + c.Domain + " path " + c.Path + " secure " + std::to_string(c.Secure) + e +
           (c.Expired() ? " expired" : "");
  };
  if (fn == "InStr") return std::to_string(InStr(a.at(0), a.at(1)));
  if (fn == "CountFields") return std::to_string(CountFields(a.at(0), a.at(1)));
  if (fn == "NthField") return NthField(a.at(0), a.at(1), n(2));
  if (fn == "Mid") return a.size() > 2 ? Mid(a[0], n(1), n(2)) : Mid(a.at(0), n(1));
  if (fn == "Left") return Left(a.at(0), n(1));
  if (fn == "Right") return Right(a.at(0), n(1));
  if (fn == "Trim") return Trim(a.at(0)) + "|" + LTrim(a[0]) + "|" + RTrim(a[0]);
  if (fn == "Replace") return Replace(a.at(0), a.at(1), a.at(2)) + "|" + ReplaceAll(a[0], a[1], a[2]);
  if (fn == "Hex") return Hex(static_cast<uint32_t>(std::stoul(a.at(0))));
  if (fn == "GetAfter") return GetAfter(a.at(0), a.at(1)) + "|" + GetBefore(a[0], a[1]);
  if (fn == "Unquote") return Unquote(a.at(0));
  if (fn == "IsIP") return b(IsIP(a.at(0)));
  if (fn == "URLEncode") return h.URLEncode(a.at(0), n(1), n(2));
  if (fn == "FormEncode") return h.FormEncode(a.at(0));
  if (fn == "Base64") return h.Base64(a.at(0));
  if (fn == "ParseChunked") return h.ParseChunked(a.at(0));
  if (fn == "ParseURL") return b(h.ParseURL(a.at(0)));
  if (fn == "Add") return list.Add(a.at(0), a.at(1)), "";
  if (fn == "Get") return list.Get(a.at(0));
  if (fn == "Remove") return list.Remove(a.at(0)), "";
  if (fn == "Parse") return list.Parse(a.at(0), a.at(1)), "";
  if (fn == "Combine") {  // with itself, or with a list of one entry NAME|VALUE
    HTTPHeaders other;
    if (a.size() > 1) other.Add(a[0], a[1]);
    return list.Combine(a.size() > 1 ? other : list), "";
  }
  if (fn == "Clear") return list.Clear(), "";
  HTTPCookie c;
  if (fn == "Cookie") return b(c.Parse(a.at(0), a.at(1), a.at(2), a.at(3))) + " " + cookie(c);
  if (fn == "SetDate") return c.SetDate(a.at(0), n(1)), cookie(c);
  if (fn == "CleanPath") return c.CleanPath(a.at(0));
  if (fn == "Compare") {  // TEXT1|TEXT2|DOMAIN of the second
    HTTPCookie other;
    c.Parse(a.at(0), ".example.com", "/docs/", "/docs/page.html");
    other.Parse(a.at(1), ".example.com", "/docs/", "/docs/page.html");
    if (a.size() > 2) other.Domain = a[2];
    return b(c.Compare(other));
  }
  if (fn == "Match") return c.Name = "a", c.Domain = a.at(0), c.Path = "/a", b(c.Match(a.at(1), a.at(2)));
  if (fn == "Jar") return c.Parse(a.at(0), ".example.com", "/docs/", "/docs/page.html"), jar.Add(c), jar.Text();
  if (fn == "Matching") return jar.Matching(a.at(0), a.at(1)).Text();
  return "no function " + fn;
}

TEST(HTTPCookie, MaxAgeCountsFromNow) {
  HTTPCookie c;
  c.SetDate("3600", true);
  ASSERT_TRUE(c.Expires.has_value());
  const double now = static_cast<double>(std::time(nullptr));
  EXPECT_TRUE(c.Expires->TotalSeconds() >= now + 3599 && c.Expires->TotalSeconds() <= now + 3601);
  EXPECT_FALSE(c.Expired());
  for (const char* past : {"-5", "0"}) EXPECT_TRUE((c.SetDate(past, true), c.Expired())) << past;
  c.Expires.reset();
  EXPECT_FALSE(c.Expired());
}

class Client : public ::testing::TestWithParam<cases::Case> {};

TEST_P(Client, GivesItsTranscript) {
  Desk d;
  auto* socket = new FakeSocket;
  std::optional<BasicHTTP> h(std::in_place, std::unique_ptr<TCPSocket>(socket));
  HTTPHeaders list;
  HTTPCookieList jar;
  http::testing::EventLog log;
  const auto b = [](bool v) { return std::string(v ? "true" : "false"); };
  log.attach(*h);
  const auto file = [&](const std::string& name) { return name == "-" ? nullptr : std::make_shared<FolderItem>(d.path(name)); };
  std::map<std::string, std::function<void(const std::string&)>> act = {
      {"get", [&](const std::string& v) { h->Get(v); }},
      {"headers", [&](const std::string& v) { h->GetHeaders(v); }},
      {"download", [&](const std::string& v) { h->Download(split(v, ' ')[0], file(split(v, ' ')[1])); }},
      {"grab", [&](const std::string& v) { h->Grab(split(v, ' ')[0], file(split(v, ' ')[1])); }},
      {"resume", [&](const std::string& v) { h->Resume(split(v, ' ')[0], file(split(v, ' ')[1])); }},
      {"accept", [&](const std::string&) { socket->accept(); }},
      {"send", [&](const std::string& v) { socket->send(v); }},
      {"close", [&](const std::string&) { socket->fail(kLostConnection); }},
      {"fail", [&](const std::string& v) { socket->fail(std::stoi(v)); }},
      {"unread", [&](const std::string& v) { socket->unread = v; }},
      {"event", [&](const std::string&) { h->Event_DataAvailable(); }},
      {"stop", [&](const std::string&) { h->Stop(); }},
      {"init", [&](const std::string&) { h->Init(); }},
      {"command", [&](const std::string& v) { h->Command = v; }},
      {"buffersize", [&](const std::string& v) { h->BufferSize = std::stod(v); }},
      {"form", [&](const std::string& v) {  // NAMES|VALUES|SENDAFTER, index 0 left out
         std::vector<std::string> names{""}, values{""};
         for (std::string n : split(split(v)[0], ',')) names.push_back(n);
         for (std::string x : split(split(v)[1], ',')) values.push_back(x);
         h->SetForm(split(v)[0].empty() ? std::vector<std::string>{"ignored"} : names, values, split(v)[2] == "1");
       }},
      {"formdirect", [&](const std::string& v) { h->SetFormDirectly(split(v)[0], split(v)[1], split(v)[2] == "1"); }},
      {"clearform", [&](const std::string&) { h->ClearForm(); }},
      {"proxy", [&](const std::string& v) { h->SetProxy(split(v)[0], std::stoi(split(v)[1]), split(v)[2], split(v)[3]); }},
      {"clearproxy", [&](const std::string&) { h->ClearProxy(); }},
      {"client", [&](const std::string& v) { h->SetClient(split(v)[0], std::stod(split(v)[1])); }},
      {"extra", [&](const std::string& v) { h->Extras->Add(split(v)[0], split(v)[1]); }},
      {"destination", [&](const std::string& v) { h->File = file(v); }},
      // a file of SIZE bytes that takes no disk space
      {"sparse", [&](const std::string& v) { std::ofstream(d.path(split(v, ' ')[0])), std::filesystem::resize_file(d.path(split(v, ' ')[0]), std::stoull(split(v, ' ')[1])); }},
      {"state", [&](const std::string& v) {  // Buffer, Size, Type and every flag set, as a transfer leaves them
         h->Buffer = "old", h->Size = 9, h->Type = "text/html", h->Mode = 2, h->ResumeSize = 5, h->BufferSize = 10;
         h->HeaderReceived = h->Connected = h->IsChunked = h->ViaGrab = h->RememberSettings = v == "1";
       }},
      {"credentials", [&](const std::string& v) { log.credentials = std::pair(split(v)[0], split(v)[1]); }},
      {"brake", [&](const std::string& v) { log.brake = std::stoi(v); }},
      {"cookies", [&](const std::string& v) {
         log.cookies = HTTPCookieList();
         for (const std::string& c : v.empty() ? std::vector<std::string>{} : split(v, ';')) {
           HTTPCookie k;
           k.Parse(c, ".example.com", "/", "/");
           log.cookies->Add(k);
         }
       }},
      // a new client whose owner set no handler
      {"nohandlers", [&](const std::string&) { h.emplace(std::unique_ptr<TCPSocket>(socket = new FakeSocket)); }},
  };
  std::map<std::string, Step> steps;
  for (const auto& [name, f] : act)
    steps[name] = [&, f](Desk&, const std::string& v, std::ostream& out) {
      f(v);
      for (const std::string& e : log.lines) out << "  ! " << cases::escaped(e, true) << "\n";
      log.lines.clear();
    };
  steps["call"] = [&](Desk&, const std::string& v, std::ostream& out) {
    const std::string fn = v.substr(0, v.find(' '));
    show(out, call(fn, split(v.substr(std::min(v.size(), fn.size() + 1))), *h, list, jar));
    for (const std::string& e : log.lines) out << "  ! " << cases::escaped(e, true) << "\n";
    log.lines.clear();
  };
  steps["request"] = [&](Desk&, const std::string& v, std::ostream& out) {
    for (const std::string& line : split(socket->requests.at(std::stoul(v)), '\n')) show(out, line);
  };
  steps["cat"] = [&](Desk&, const std::string& v, std::ostream& out) {
    std::ifstream in(d.path(v), std::ios::binary);
    show(out, in ? std::string(std::istreambuf_iterator<char>(in), {}) + " (" + std::to_string(std::filesystem::file_size(d.path(v))) + " bytes)" : "(no file)");
  };
  steps["size"] = [&](Desk&, const std::string& v, std::ostream& out) { show(out, std::to_string(std::filesystem::file_size(d.path(v)))); };
  steps["tz"] = [&](Desk&, const std::string& v, std::ostream&) { setenv("TZ", v.c_str(), 1), tzset(); };
  d.more = [&](std::vector<std::pair<std::string, std::string>>& f) {
    const auto add = [&](const char* name, const std::string& v) { f.emplace_back(name, v); };
    add("Buffer", h->Buffer), add("BufferSize", Str(h->BufferSize)), add("Client", h->Client);
    add("Command", h->Command), add("Connected", b(h->Connected)), add("CRLF", h->CRLF);
    add("EndLine", h->EndLine), add("Extras", h->Extras ? h->Extras->Data() : "none");
    add("File", h->File ? h->File->NativePath().string() : "none"), add("FormData", h->FormData);
    add("HeaderReceived", b(h->HeaderReceived)), add("IsChunked", b(h->IsChunked)), add("Mode", std::to_string(h->Mode));
    add("OriginalURL", h->OriginalURL), add("Pass", h->Pass), add("Path", h->Path);
    add("Proxy", h->ProxyAddress + ":" + std::to_string(h->ProxyPort) + " " + h->ProxyUser + " " + h->ProxyPass);
    add("Server", h->ServerAddress + ":" + std::to_string(h->ServerPort) + " " + h->ServerPath);
    add("Size", Str(h->Size)), add("Type", h->Type), add("User", h->User), add("ViaGrab", b(h->ViaGrab));
    add("RememberSettings", b(h->RememberSettings)), add("ResumeSize", Str(h->ResumeSize));
    add("Cookie scope", h->CookieDomain + " " + h->CookiePath), add("FormContentType", h->FormContentType);
    add("SendFormAfter", b(h->SendFormAfter)), add("headers", list.Data()), add("jar", jar.Text());
    add("socket", std::string(socket->connecting ? "connecting " : "") + (socket->open ? "open " : "") + socket->Address +
                      ":" + std::to_string(socket->Port) + " connections " + std::to_string(socket->targets.size()));
    add("targets", socket->targets.empty() ? "" : socket->targets.back()), add("unread", socket->unread);
  };
  const char* tz = std::getenv("TZ");
  const std::string oldTz = tz ? tz : "";
  cases::expectTranscript(GetParam(), runDesk(GetParam(), steps, &d), false);
  if (tz) setenv("TZ", oldTz.c_str(), 1);
  else unsetenv("TZ");
  tzset();
}

INSTANTIATE_TEST_SUITE_P(, Client, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/http/client.cases")),
                         cases::caseName);

}  // namespace
}  // namespace trelvane::testing

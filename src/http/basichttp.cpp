// basichttp.cpp -- BasicHTTP: Init, the starting operations, the request bytes, Cancel and Stop.
#include "http/basichttp.h"

#include "http/httptext.h"
#include "platform/numtext.h"

namespace trelvane::http {

BasicHTTP::BasicHTTP(std::unique_ptr<TCPSocket> socket) : socket_(std::move(socket)) {
  socket_->SetEvents(this);
}

BasicHTTP::~BasicHTTP() {
  socket_->SetEvents(nullptr);
  socket_->Close();
}

// Handlers are called through a copy, so that one may replace itself.
void BasicHTTP::fireCancelled() {
  if (auto f = Cancelled) f();
}

void BasicHTTP::fireOperationError(const std::string& message, bool flag) {
  if (auto f = OperationError) f(message, flag);
}

void BasicHTTP::fireProgress(const std::string& message) {
  if (auto f = ProgressChange) f(message);
}

void BasicHTTP::startConnect() {
  fireProgress("Looking Up Host...");
  socket_->Connect();
}

void BasicHTTP::Init() {
  CR = "\r";
  LF = "\n";
  CRLF = CR + LF;

  if (Command.empty()) Command = "GET";
  else if (FormData.empty() && equalsNoCase(Command, "POST")) Command = "GET";

  EndLine.clear();
  Buffer.clear();
  Type.clear();
  Size = 0;

  // Extras is never cleared: the owner's headers, and a Range left by
  // Resume, go out with every later request.
  if (!RememberSettings) {
    Mode = 0;
    ResumeSize = 0;
    File = nullptr;
    if (!Extras) Extras = std::make_shared<HTTPHeaders>();
  }

  if (BufferSize == 0) BufferSize = 32768;
  if (Client.empty()) Client = "BasicHTTP/1.0";

  RememberSettings = false;
  HeaderReceived = false;
  Connected = false;
  IsChunked = false;
  ViaGrab = false;
}

void BasicHTTP::Get(const std::string& url) {
  if (!ParseURL(url)) return;
  Init();
  Mode = 0;
  startConnect();
}

void BasicHTTP::GetHeaders(const std::string& url) {
  if (!ParseURL(url)) return;
  Init();
  Command = "HEAD";
  Mode = 0;
  startConnect();
}

void BasicHTTP::Event_Connected() {
  Connected = true;
  fireProgress("Waiting For Reply...");
  SendRequest();
  if (auto f = SockConnected) f();
}

void BasicHTTP::SendRequest() {
  // A form for the query moves into Path for good: a redirect or a retry,
  // which builds Path anew, loses it.
  if (!FormData.empty() && !SendFormAfter) {
    Path = Path + "?" + FormData;
    FormData.clear();
  }

  std::string r = Command + " " + Path + " HTTP/1.1" + CRLF;
  auto header = [&r, this](std::string_view name, std::string_view value) {
    r += name;
    r += ": ";
    r += value;
    r += CRLF;
  };
  header("User-Agent", Client);
  header("Host", ServerAddress);  // never with the port
  header("Connection", "close");
  if (auto f = AddCookies) {
    std::optional<HTTPCookieList> cookies = f(ServerAddress, ServerPath);
    if (cookies && cookies->Count() > 0) header("Cookie", cookies->Text());
  }
  if (!FormData.empty()) {
    header("Content-Type", FormContentType);
    header("Content-Length", Format(static_cast<double>(FormData.size()), "#"));
  }
  if (!User.empty() && !Pass.empty()) header("Authorization", "Basic " + Base64(User + ":" + Pass));
  if (!ProxyUser.empty() && !ProxyPass.empty())
    header("Proxy-Authorization", "Basic " + Base64(ProxyUser + ":" + ProxyPass));
  if (Extras) r += Extras->Data();
  r += CRLF;
  r += FormData;
  socket_->Write(r);
}

void BasicHTTP::Cancel() {
  socket_->ReadAll();
  socket_->Close();
  ServerAddress.clear();
  ServerPath.clear();
  ServerPort = 0;
  Connected = false;
}

void BasicHTTP::Stop() {
  if (Mode == 1 && HeaderReceived && !Buffer.empty()) WriteToFile(true);
  Cancel();
  fireProgress("Download Cancelled");
}

}  // namespace trelvane::http

// basichttp_response.cpp -- BasicHTTP: header end, ParseHeader, redirects, credentials, chunks, errors.
#include "http/basichttp.h"

#include "http/httpmodule.h"
#include "http/httptext.h"
#include "platform/numtext.h"

namespace trelvane::http {

void BasicHTTP::Event_DataAvailable() {
  if (!Connected) return;  // the bytes stay with the socket
  if (HeaderReceived) {
    AddToFile(socket_->ReadAll());
    return;
  }

  // The first test that hits decides, not the earliest position: a header
  // ending in a mixture of line ends is read by the first line end listed.
  std::string waiting = socket_->Lookahead();
  for (const std::string& eol : {CRLF, CR, LF}) {
    if (InStr(waiting, eol + eol) > 0) {
      EndLine = eol;
      break;
    }
  }
  if (EndLine.empty()) return;

  std::string header = socket_->Read(static_cast<std::size_t>(InStr(waiting, EndLine + EndLine) - 1));
  socket_->Read(2 * EndLine.size());
  HeaderReceived = true;
  fireProgress("Receiving Data...");
  ParseHeader(header);
}

void BasicHTTP::ParseHeader(const std::string& header) {
  // status line and header lines
  int32_t status = toInt(Val(NthField(NthField(header, EndLine, 1), " ", 2)));
  HTTPHeaders headers;
  headers.Parse(GetAfter(header, EndLine), EndLine);

  // status test: 100 to 399, and 401
  if (!((status >= 100 && status <= 399) || status == 401)) {
    Cancel();
    if (auto f = ProtocolError) f(status, headers);
    fireCancelled();
    return;
  }

  // header walk. A WWW-Authenticate that restarts the exchange does not end
  // the walk: later lines, and every step below, act on the new exchange.
  std::string target;
  for (int32_t i = 1; i <= headers.UBound(); ++i) {
    const std::string& name = headers.Field[i];
    const std::string& raw = headers.Value[i];
    std::string value = Trim(Unquote(Trim(NthField(raw, ";", 1))));
    if (equalsNoCase(name, "Content-Type")) {
      Type = value;
    } else if (equalsNoCase(name, "Content-Length")) {
      Size = Val(value);
      if (ResumeSize > 0) Size = Size + ResumeSize;
    } else if (equalsNoCase(name, "Content-Range")) {
      if (Size == 0) Size = Val(NthField(value, "/", 2));
    } else if (equalsNoCase(name, "Location")) {
      if (status == 201 || (status >= 300 && status <= 399)) target = value;
    } else if (equalsNoCase(name, "Transfer-Encoding")) {
      IsChunked = equalsNoCase(value, "chunked");
    } else if (equalsNoCase(name, "Set-Cookie")) {
      HTTPCookie cookie;
      if (cookie.Parse(raw, CookieDomain, CookiePath, ServerPath)) {
        if (auto f = CookieReceived) f(cookie, cookie.Expired());
      }
    } else if (equalsNoCase(name, "WWW-Authenticate")) {
      std::string user, password;
      auto f = NeedAuthorization;
      if (f && f(user, password)) {
        Cancel();
        Authorize(user, password);
      }
    } else if (equalsNoCase(name, "Proxy-Authenticate")) {
      // recognised; nothing is done
    }
  }

  bool informational = status < 200;
  bool headersonly = (equalsNoCase(Command, "HEAD") || equalsNoCase(Command, "OPTIONS")) && status >= 200;
  if (auto f = GotHeaders) f(status, headers, informational, headersonly);

  // After a 1xx, HeaderReceived stays true: what follows, the final header
  // included, is taken as body. Kept on purpose.
  if (status < 200) return;

  if (equalsNoCase(Command, "HEAD") || equalsNoCase(Command, "OPTIONS")) {
    Command.clear();
    Cancel();
    return;
  }

  // A 2xx ends the form; a redirect keeps it, to send it again.
  if (status < 300) {
    FormData.clear();
    Command.clear();
  }

  // redirect: a refused scheme is reported and then still followed
  if (!target.empty()) {
    if (InStr(target, "://") > 0 && !equalsNoCase(Left(target, 7), "http://")) {
      Cancel();
      if (auto f = BadRedirection) f(target);
      fireCancelled();
    }
    auto f = HandleRedirection;
    if (!(f && f(target))) {
      Redirect(target);
      return;
    }
  }

  if (ResumeSize > 0 && status != 206 && headers.Get("Content-Range").empty()) {
    Cancel();
    fireOperationError("Server Doesn't Support Resuming", true);
    fireCancelled();
    return;
  }

  // Grab's decision: text, or no type at all, is a page
  if (Mode == 2) {
    if (equalsNoCase(NthField(Type, "/", 1), "text") || Type.empty()) {
      File = nullptr;
      Mode = 0;
    } else {
      Mode = 1;
    }
    ViaGrab = true;
  }

  if (!socket_->Lookahead().empty()) AddToFile(socket_->ReadAll());
}

void BasicHTTP::Redirect(const std::string& url) {
  // A bad target leaves the old connection open, its header read.
  if (!ParseURL(url)) return;
  socket_->Close();
  RememberSettings = true;
  Init();
  startConnect();
}

void BasicHTTP::Authorize(const std::string& user, const std::string& password) {
  if (Connected) Cancel();
  if (!ParseURL(OriginalURL)) return;
  RememberSettings = true;
  Init();
  User = user;
  Pass = password;
  startConnect();
}

std::string BasicHTTP::ParseChunked(std::string_view body) const {
  // Chunk lines end in CR LF whatever the header used; trailers are ignored.
  // A size line without a CR LF behind it reads as empty and ends the page.
  std::string out;
  std::size_t cursor = 0;  // 0-based here
  for (;;) {
    std::size_t end = cursor <= body.size() ? body.find("\r\n", cursor) : std::string_view::npos;
    std::string line = end == std::string_view::npos ? std::string() : std::string(body.substr(cursor, end - cursor));
    cursor += line.size() + 2;
    if (InStr(line, ";") > 0) line = RTrim(NthField(line, ";", 1));
    int32_t size = toInt(Val("&h" + line));
    if (size <= 0) return out;
    if (cursor < body.size()) out += body.substr(cursor, static_cast<std::size_t>(size));
    cursor += static_cast<std::size_t>(size) + 2;
  }
}

void BasicHTTP::Event_Error() {
  Connected = false;
  int32_t code = socket_->LastErrorCode();
  // the normal end of a body of unknown length
  if (HeaderReceived && Size == 0 && code == kLostConnection) {
    if (Mode == 1 && !Buffer.empty()) WriteToFile(true);
    FinishFile();
    return;
  }
  // a failure: what has come stays in the file for a later Resume
  if (Mode == 1 && HeaderReceived && !Buffer.empty()) WriteToFile(true);
  if (auto f = TCPError) f(code);
  fireCancelled();
}

}  // namespace trelvane::http

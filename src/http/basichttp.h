// basichttp.h -- BasicHTTP: an HTTP/1.1 client with cookies, forms, proxy, redirects and downloads.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "http/folderitem.h"
#include "http/httpcookie.h"
#include "http/httpheaders.h"
#include "http/tcpsocket.h"

namespace trelvane::http {

// One exchange at a time over the socket it owns: parse a URL, connect,
// write one request (always "Connection: close"), read the header, follow
// redirects, retry with credentials, and deliver the body as a page in
// memory or as a file. Everything runs on the socket's thread, and the
// owner's handlers run synchronously inside the class's operations; a
// handler may start a new exchange. There is no redirect counter and no
// time-out here: the socket under it ends silent or oversized connections,
// and an owner brakes redirects through HandleRedirection.
class BasicHTTP : public TCPSocketEvents {
 public:
  explicit BasicHTTP(std::unique_ptr<TCPSocket> socket);
  ~BasicHTTP() override;
  BasicHTTP(const BasicHTTP&) = delete;
  BasicHTTP& operator=(const BasicHTTP&) = delete;

  TCPSocket& Socket() { return *socket_; }

  // properties
  std::string Buffer;          // body bytes not yet delivered or written
  double BufferSize = 0;       // flush size of a download; 0 becomes 32768 in Init
  std::string Client;          // User-Agent; empty becomes "BasicHTTP/1.0" in Init
  std::string Command;         // request method
  bool Connected = false;
  std::string CR;              // set by Init
  std::string CRLF;            // set by Init; empty: Init has never run
  std::string EndLine;         // line end of the received header
  std::shared_ptr<HTTPHeaders> Extras;  // the owner's request headers
  std::shared_ptr<FolderItem> File;     // destination of a download
  std::string FormData;
  bool HeaderReceived = false;
  bool IsChunked = false;
  std::string LF;              // set by Init
  int32_t Mode = 0;            // 0 page, 1 file, 2 decided by the response
  std::string OriginalURL;
  std::string Pass;
  std::string Path;            // request target of the request line
  std::string ProxyAddress;
  std::string ProxyPass;
  int32_t ProxyPort = 0;
  std::string ProxyUser;
  std::string ServerAddress;
  std::string ServerPath;
  int32_t ServerPort = 0;
  double Size = 0;             // expected total size; 0 unknown
  std::string Type;            // media type of the response, parameters cut off
  std::string User;
  bool ViaGrab = false;
  bool RememberSettings = false;  // the next Init keeps Mode, ResumeSize, File
  double ResumeSize = 0;
  std::string CookiePath;
  std::string CookieDomain;
  std::string FormContentType;
  bool SendFormAfter = false;

  // events; an event without a handler is skipped (false, or no list)
  std::function<void()> Cancelled;
  std::function<void(double received, double total, double length)> DataProgress;
  std::function<void(const std::string& type, const std::shared_ptr<FolderItem>& file, bool viaGrab)> FileReceived;
  std::function<void(int32_t status, const HTTPHeaders& headers, bool informational, bool headersonly)> GotHeaders;
  std::function<bool(const std::string& target)> HandleRedirection;
  std::function<void(const std::string& message, bool flag)> OperationError;
  std::function<void(const std::string& type, const std::string& content, bool viaGrab)> PageReceived;
  std::function<void(const std::string& message)> ProgressChange;
  std::function<void(int32_t status, const HTTPHeaders& headers)> ProtocolError;
  std::function<void(int32_t code)> TCPError;
  std::function<void(const std::shared_ptr<FolderItem>& file, bool partial)> FileUpdated;
  std::function<bool(std::string& user, std::string& password)> NeedAuthorization;
  std::function<void()> SockConnected;
  std::function<void(const HTTPCookie& cookie, bool expired)> CookieReceived;
  std::function<std::optional<HTTPCookieList>(const std::string& serverAddress, const std::string& serverPath)>
      AddCookies;
  std::function<void(const std::string& target)> BadRedirection;

  // socket events
  void Event_Error() override;
  void Event_DataAvailable() override;
  void Event_Connected() override;

  // exchange
  void SendRequest();
  void Init();
  void Get(const std::string& url);
  void GetHeaders(const std::string& url);
  void Cancel();
  void Stop();

  // URLs, forms and encodings
  bool ParseURL(const std::string& url);
  std::string URLEncode(std::string_view text, bool keepescapes, bool keepreserved) const;
  std::string FormEncode(std::string_view text);
  std::string Base64(std::string_view text) const;
  // names and values are read from index 1; index 0 is never read.
  void SetForm(const std::vector<std::string>& names, const std::vector<std::string>& values, bool sendafter);
  void SetFormDirectly(const std::string& contenttype, const std::string& data, bool sendafter);
  void ClearForm();
  void SetClient(std::string_view name, double version);
  void SetProxy(const std::string& address, int32_t port, const std::string& user, const std::string& password);
  void ClearProxy();

  // response
  void ParseHeader(const std::string& header);
  void Redirect(const std::string& url);
  void Authorize(const std::string& user, const std::string& password);
  std::string ParseChunked(std::string_view body) const;

  // file transfer
  void Download(const std::string& url, std::shared_ptr<FolderItem> file);
  void Grab(const std::string& url, std::shared_ptr<FolderItem> file);
  void Resume(const std::string& url, std::shared_ptr<FolderItem> file);
  void AddToFile(const std::string& data);
  void WriteToFile(bool partial);
  void FinishFile();
  double FileSize() const;

 private:
  void startConnect();
  void fireCancelled();
  void fireOperationError(const std::string& message, bool flag);
  void fireProgress(const std::string& message);

  std::unique_ptr<TCPSocket> socket_;
};

}  // namespace trelvane::http

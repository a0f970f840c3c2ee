// client.h -- a BasicHTTP on a scripted socket with its event log, for the unit tests.
#pragma once

#include <memory>
#include <string>

#include "eventlog.h"
#include "fakesocket.h"
#include "http/basichttp.h"

namespace trelvane::http::testing {

struct Client {
  FakeSocket* socket;
  BasicHTTP http;
  EventLog log;
  Client() : socket(new FakeSocket), http(std::unique_ptr<TCPSocket>(socket)), log(http) {}
  // Get up to the written request, with the log emptied.
  void get(const std::string& url) {
    http.Get(url);
    socket->accept();
    log.clear();
  }
};

}  // namespace trelvane::http::testing

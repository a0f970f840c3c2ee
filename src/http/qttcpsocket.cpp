// qttcpsocket.cpp -- QtTCPSocket: TCPSocket on QTcpSocket and the main event loop, with its guards.
#include "http/qttcpsocket.h"

#include <QTcpSocket>

#include <algorithm>

namespace trelvane::http {
namespace {

int32_t codeOf(QAbstractSocket::SocketError e) {
  switch (e) {
    case QAbstractSocket::RemoteHostClosedError:
    case QAbstractSocket::ConnectionRefusedError: return kLostConnection;
    case QAbstractSocket::HostNotFoundError: return kNameResolutionError;
    case QAbstractSocket::AddressInUseError: return kAddressInUseError;
    case QAbstractSocket::SocketTimeoutError: return kTimedOutError;
    default: return kOpenDriverError;
  }
}

}  // namespace

QtTCPSocket::QtTCPSocket() {
  idle_.setSingleShot(true);
  QObject::connect(&idle_, &QTimer::timeout, &context_, [this] { fail(kTimedOutError); });
}

QtTCPSocket::~QtTCPSocket() { release(); }

// Lets go of the present connection, if any: no event of it arrives any more.
void QtTCPSocket::release() {
  ++generation_;
  idle_.stop();
  if (socket_ == nullptr) return;
  QTcpSocket* s = socket_;
  socket_ = nullptr;
  QObject::disconnect(s, nullptr, &context_, nullptr);
  s->abort();
  s->deleteLater();  // it may be inside one of its own signals
}

void QtTCPSocket::Connect() {
  release();
  buffer_.clear();
  lastError_ = 0;
  uint64_t gen = generation_;
  if (Port <= 0 || Port > 65535) {
    QTimer::singleShot(0, &context_, [this, gen] {
      if (gen == generation_) fail(kInvalidPortError);
    });
    return;
  }

  auto* s = new QTcpSocket(&context_);
  socket_ = s;
  QObject::connect(s, &QTcpSocket::connected, &context_, [this, gen] {
    if (gen != generation_) return;
    idle_.start(idleLimitMs_);
    if (events_) events_->Event_Connected();
  });
  QObject::connect(s, &QTcpSocket::readyRead, &context_, [this, s, gen] {
    if (gen == generation_) drain(s, false);
  });
  QObject::connect(s, &QTcpSocket::errorOccurred, &context_, [this, s, gen](QAbstractSocket::SocketError e) {
    if (gen == generation_) onError(s, e, gen);
  });
  // A close that came without an error signal is the peer's close as well.
  QObject::connect(s, &QTcpSocket::disconnected, &context_, [this, s, gen] {
    if (gen == generation_) onError(s, QAbstractSocket::RemoteHostClosedError, gen);
  });

  idle_.start(idleLimitMs_);
  inConnect_ = true;
  s->connectToHost(QString::fromLatin1(Address.data(), static_cast<qsizetype>(Address.size())),
                   static_cast<quint16>(Port));
  inConnect_ = false;
}

// Takes in what the QTcpSocket holds and tells the owner when there is
// something new, or, with atClose, anything left unread; false when the
// owner closed or reconnected meanwhile.
bool QtTCPSocket::drain(QTcpSocket* s, bool atClose) {
  QByteArray bytes = s->readAll();
  if (bytes.isEmpty() && !(atClose && !buffer_.empty())) return true;
  buffer_.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
  idle_.start(idleLimitMs_);
  uint64_t gen = generation_;
  if (events_) events_->Event_DataAvailable();
  if (gen != generation_) return false;
  if (buffer_.size() > pendingLimit_) {
    fail(kHeaderTooLargeError);
    return false;
  }
  return true;
}

void QtTCPSocket::onError(QTcpSocket* s, QAbstractSocket::SocketError e, uint64_t gen) {
  int32_t code = codeOf(e);
  if (inConnect_) {
    // Never an event from inside Connect: the report comes from the loop.
    QTimer::singleShot(0, &context_, [this, code, gen] {
      if (gen == generation_) fail(code);
    });
    return;
  }
  // Bytes still waiting at the close get one more event first: behind an
  // informational header, the rest of a response that came in the same
  // read is still unread.
  if (!drain(s, true)) return;
  fail(code);
}

void QtTCPSocket::fail(int32_t code) {
  lastError_ = code;
  release();  // unread bytes stay readable
  if (events_) events_->Event_Error();
}

void QtTCPSocket::Write(const std::string& bytes) {
  if (socket_ != nullptr) socket_->write(bytes.data(), static_cast<qint64>(bytes.size()));
}

std::string QtTCPSocket::Lookahead() { return buffer_; }

std::string QtTCPSocket::Read(std::size_t n) {
  n = std::min(n, buffer_.size());
  std::string out = buffer_.substr(0, n);
  buffer_.erase(0, n);
  return out;
}

std::string QtTCPSocket::ReadAll() {
  std::string out;
  out.swap(buffer_);
  return out;
}

void QtTCPSocket::Close() {
  release();
  buffer_.clear();
}

}  // namespace trelvane::http

// basichttp_transfer_test.cpp -- BasicHTTP: Download, Grab, Resume, flushes, write failures, the 2 GB total.
#include "http/basichttp.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

#include "eventlog.h"
#include "fakesocket.h"

using namespace trelvane::http;
using namespace trelvane::http::testing;
namespace fs = std::filesystem;

namespace {

class Transfer : public ::testing::Test {
 protected:
  FakeSocket* socket = new FakeSocket;
  BasicHTTP http{std::unique_ptr<TCPSocket>(socket)};
  EventLog log{http};
  fs::path dir;

  void SetUp() override {
    dir = fs::temp_directory_path() /
          ("trelvane-http-" + std::to_string(::getpid()) + "-" +
           ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(dir);
    fs::create_directories(dir);
  }
  void TearDown() override { fs::remove_all(dir); }

  std::shared_ptr<FolderItem> item(const std::string& name) { return std::make_shared<FolderItem>(dir / name); }
  void write(const std::string& name, const std::string& bytes) {
    std::ofstream(dir / name, std::ios::binary) << bytes;
  }
  std::string read(const std::string& name) {
    std::ifstream in(dir / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  void connected() {
    socket->accept();
    log.clear();
  }
};

}  // namespace

TEST_F(Transfer, DownloadWritesTheBytesUnchanged) {
  write("out.bin", "old content");
  http.Download("http://www.example.com/f.bin", item("out.bin"));
  EXPECT_FALSE(fs::exists(dir / "out.bin"));  // gone before any byte came
  connected();
  std::string body("a\r\nb\rc\n\0\xff", 9);
  socket->send("HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\nContent-Length: 9\r\n\r\n" + body);
  EXPECT_EQ(log.lines, (Lines{"Progress Receiving Data...", "Headers 200|false|false", "Data 9/9/9",
                              "Progress Download Complete!", "File application/octet-stream|false"}));
  EXPECT_EQ(read("out.bin"), body);
  EXPECT_FALSE(socket->open);
}

TEST_F(Transfer, DownloadDeletesTheOldFileEvenWhenTheConnectionFails) {
  write("out.bin", "old");
  http.Download("http://www.example.com/f.bin", item("out.bin"));
  socket->fail(kLostConnection);
  EXPECT_FALSE(fs::exists(dir / "out.bin"));
  EXPECT_EQ(log.only({"TCPError", "Cancelled"}), (Lines{"TCPError 102", "Cancelled"}));
}

TEST_F(Transfer, BufferSizeFlushesAtThePieceThatReachesIt) {
  http.BufferSize = 4;
  http.Download("http://www.example.com/f", item("f"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc");
  EXPECT_FALSE(fs::exists(dir / "f"));
  socket->send("defg");
  EXPECT_EQ(read("f"), "abcdefg");  // one flush, larger than BufferSize by a piece
  socket->send("hij");
  EXPECT_EQ(read("f"), "abcdefghij");
  EXPECT_EQ(log.only({"Data", "Updated", "File", "Progress Download"}),
            (Lines{"Data 3/10/3", "Data 7/10/4", "Updated false", "Data 10/10/3", "Progress Download Complete!",
                   "File |false"}));
}

TEST_F(Transfer, BodyOfExactlyBufferSizeFlushesOnThatPiece) {
  http.BufferSize = 5;
  http.Download("http://www.example.com/f", item("f"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n");
  socket->send("12345");
  EXPECT_EQ(log.only({"Updated", "File"}), (Lines{"File |false"}));

  http.Download("http://www.example.com/f", item("g"));
  http.BufferSize = 5;
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n12345");
  EXPECT_EQ(log.only({"Updated", "File"}), (Lines{"Updated false"}));
  EXPECT_EQ(read("g"), "12345");
}

TEST_F(Transfer, UnknownSizeEndsAtTheClose) {
  http.Download("http://www.example.com/f", item("f"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\n\r\nabc");
  socket->send("de");
  socket->peerClose();
  EXPECT_EQ(log.only({"Data", "Updated", "File", "Progress Download", "TCPError", "Cancelled"}),
            (Lines{"Data 3/0/3", "Data 5/0/2", "Updated true", "Progress Download Complete!", "File |false"}));
  EXPECT_EQ(read("f"), "abcde");
}

TEST_F(Transfer, AFileOutgrowingItsSizeWaitsForTheClose) {
  http.Download("http://www.example.com/f", item("f"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabcde");
  EXPECT_EQ(http.Size, 0);
  EXPECT_TRUE(socket->open);
  socket->peerClose();
  EXPECT_EQ(read("f"), "abcde");
  EXPECT_TRUE(log.has("File |false"));
}

TEST_F(Transfer, LostConnectionKeepsThePartialFile) {
  http.Download("http://www.example.com/f", item("f"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabcd");
  log.clear();
  socket->peerClose();
  EXPECT_EQ(log.lines, (Lines{"Updated true", "TCPError 102", "Cancelled"}));
  EXPECT_EQ(read("f"), "abcd");
}

TEST_F(Transfer, StopFlushesWhatHasCome) {
  http.Download("http://www.example.com/f", item("f"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabcd");
  log.clear();
  http.Stop();
  EXPECT_EQ(log.lines, (Lines{"Updated true", "Progress Download Cancelled"}));
  EXPECT_EQ(read("f"), "abcd");
  EXPECT_FALSE(socket->open);
}

TEST_F(Transfer, ChunkedDownloadKeepsItsFraming) {
  http.Download("http://www.example.com/f", item("f"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n");
  socket->peerClose();
  EXPECT_EQ(read("f"), "3\r\nabc\r\n0\r\n\r\n");
}

TEST_F(Transfer, UnwritableFileEndsTheTransfer) {
  http.Download("http://www.example.com/f", std::make_shared<FolderItem>(dir / "missing" / "f"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabc");
  EXPECT_EQ(log.only({"OperationError", "Cancelled", "File"}),
            (Lines{"OperationError Unable to write to file!|false", "Cancelled"}));
  EXPECT_EQ(http.Buffer, "abc");
  EXPECT_FALSE(socket->open);

  // no file at all takes the same road
  http.Download("http://www.example.com/f", nullptr);
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabc");
  EXPECT_EQ(log.only({"OperationError"}), (Lines{"OperationError Unable to write to file!|false"}));
}

TEST_F(Transfer, GrabOfTextIsAPageAndTheFileIsGone) {
  write("g", "old");
  http.Grab("http://www.example.com/readme", item("g"));
  EXPECT_FALSE(fs::exists(dir / "g"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Type: Text/Plain\r\nContent-Length: 2\r\n\r\nhi");
  EXPECT_EQ(log.only({"Page", "File"}), (Lines{"Page Text/Plain|hi|true"}));
  EXPECT_FALSE(fs::exists(dir / "g"));
  EXPECT_EQ(http.Mode, 0);
  EXPECT_FALSE(http.File);

  http.Grab("http://www.example.com/untyped", item("g"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nhi");
  EXPECT_EQ(log.only({"Page", "File"}), (Lines{"Page |hi|true"}));
}

TEST_F(Transfer, GrabOfOtherTypesIsAFile) {
  http.Grab("http://www.example.com/logo.png", item("logo.png"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length: 4\r\n\r\n\x89PNG");
  EXPECT_EQ(log.only({"Page", "File"}), (Lines{"File image/png|true"}));
  EXPECT_EQ(read("logo.png"), "\x89PNG");
}

TEST_F(Transfer, GrabDecidesOnTheFinalResponseOfARedirect) {
  http.Grab("http://www.example.com/a", item("z"));
  connected();
  socket->send("HTTP/1.1 302 Found\r\nContent-Type: text/html\r\nLocation: http://www.example.com/b.zip\r\n\r\n");
  EXPECT_EQ(http.Mode, 2);
  ASSERT_TRUE(http.File);
  EXPECT_FALSE(http.ViaGrab);
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Type: application/zip\r\nContent-Length: 2\r\n\r\nPK");
  EXPECT_EQ(log.only({"Page", "File"}), (Lines{"File application/zip|true"}));
  EXPECT_EQ(read("z"), "PK");
}

TEST_F(Transfer, ResumeContinuesAPartialFile) {
  write("r", "0123");
  http.Resume("http://www.example.com/r", item("r"));
  EXPECT_EQ(http.ResumeSize, 4);
  connected();
  EXPECT_NE(socket->request().find("\r\nRange: bytes=4-\r\n\r\n"), std::string::npos);
  socket->send("HTTP/1.1 206 Partial Content\r\nContent-Range: bytes 4-9/10\r\nContent-Length: 6\r\n\r\n4567");
  EXPECT_EQ(http.Size, 10);
  socket->send("89");
  EXPECT_EQ(read("r"), "0123456789");
  EXPECT_EQ(log.only({"Data", "File"}), (Lines{"Data 8/10/4", "Data 10/10/2", "File |false"}));

  // the Range stays for every later request
  http.Get("http://www.example.com/other");
  connected();
  EXPECT_NE(socket->request(1).find("\r\nRange: bytes=4-\r\n"), std::string::npos);
  // a new Resume replaces it, and does not add a second one
  write("s", "ab");
  http.Resume("http://www.example.com/s", item("s"));
  connected();
  const std::string& r = socket->request(2);
  EXPECT_NE(r.find("\r\nRange: bytes=2-\r\n"), std::string::npos);
  EXPECT_EQ(r.find("bytes=4-"), std::string::npos);
}

TEST_F(Transfer, ResumeTakesTheTotalFromContentRangeAlone) {
  write("r", "0123");
  http.Resume("http://www.example.com/r", item("r"));
  connected();
  socket->send("HTTP/1.1 206 Partial Content\r\nContent-Range: bytes 4-5/6\r\n\r\n45");
  EXPECT_EQ(http.Size, 6);
  EXPECT_EQ(read("r"), "012345");
  EXPECT_TRUE(log.has("File |false"));
}

TEST_F(Transfer, ResumeOfAnEmptyFileSendsNoRange) {
  write("e", "");
  http.Resume("http://www.example.com/e", item("e"));
  EXPECT_EQ(http.ResumeSize, 0);
  connected();
  EXPECT_EQ(socket->request().find("Range"), std::string::npos);
}

TEST_F(Transfer, ServerIgnoringTheRangeLeavesTheFile) {
  write("r", "0123");
  http.Resume("http://www.example.com/r", item("r"));
  connected();
  socket->send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n0123456789");
  EXPECT_EQ(log.lines, (Lines{"Progress Receiving Data...", "Headers 200|false|false",
                              "OperationError Server Doesn't Support Resuming|true", "Cancelled"}));
  EXPECT_EQ(read("r"), "0123");
  EXPECT_FALSE(socket->open);
}

// Above 2 GB the total sticks at the largest 32-bit value, so the end test
// of AddToFile never hits; the forced flush at the close finds the file
// complete, and the error events still follow.
TEST_F(Transfer, TotalIsTruncatedTo32BitsAbove2GB) {
  const std::uintmax_t big = 3000000000u;
  { std::ofstream(dir / "big", std::ios::binary); }
  fs::resize_file(dir / "big", big);  // sparse: no disk space taken
  http.Resume("http://www.example.com/big", item("big"));
  connected();
  EXPECT_NE(socket->request().find("\r\nRange: bytes=3000000000-\r\n"), std::string::npos);
  socket->send("HTTP/1.1 206 Partial Content\r\nContent-Length: 10\r\n\r\n0123456789");
  EXPECT_EQ(http.Size, 3000000010.0);
  EXPECT_EQ(log.only({"Data", "File"}), (Lines{"Data 2147483647/3000000010/10"}));
  log.clear();
  socket->peerClose();
  EXPECT_EQ(log.lines, (Lines{"Progress Download Complete!", "File |false", "TCPError 102", "Cancelled"}));
  EXPECT_EQ(fs::file_size(dir / "big"), big + 10);
}


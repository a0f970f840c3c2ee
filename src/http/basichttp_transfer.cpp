// basichttp_transfer.cpp -- BasicHTTP: Download, Grab, Resume and the delivery of pages and files.
#include "http/basichttp.h"

#include "http/httptext.h"
#include "platform/numtext.h"

namespace trelvane::http {

void BasicHTTP::Download(const std::string& url, std::shared_ptr<FolderItem> file) {
  if (!ParseURL(url)) return;
  Init();
  File = std::move(file);
  if (File && File->Exists()) File->Delete();
  Mode = 1;
  startConnect();
}

void BasicHTTP::Grab(const std::string& url, std::shared_ptr<FolderItem> file) {
  // The old file goes now, even if the response turns out to be a page.
  if (!ParseURL(url)) return;
  Init();
  File = std::move(file);
  if (File && File->Exists()) File->Delete();
  Mode = 2;
  startConnect();
}

void BasicHTTP::Resume(const std::string& url, std::shared_ptr<FolderItem> file) {
  if (!ParseURL(url)) return;
  Init();
  File = std::move(file);
  // The Range entry stays in Extras after the transfer, on purpose.
  if (File && File->Exists() && File->Length() > 0) {
    ResumeSize = static_cast<double>(File->Length());
    if (!Extras) Extras = std::make_shared<HTTPHeaders>();
    Extras->Remove("Range");
    Extras->Add("Range", "bytes=" + Format(ResumeSize, "#") + "-");
  }
  Mode = 1;
  startConnect();
}

double BasicHTTP::FileSize() const {
  double buffered = static_cast<double>(Buffer.size());
  return File ? static_cast<double>(File->Length()) + buffered : buffered;
}

void BasicHTTP::AddToFile(const std::string& data) {
  Buffer += data;
  double length = static_cast<double>(data.size());
  if (Mode == 0) {
    if (auto f = DataProgress) f(static_cast<double>(Buffer.size()), Size, length);
    if (Size > 0 && static_cast<double>(Buffer.size()) >= Size) FinishFile();
  } else if (Mode == 1) {
    // The total is truncated to 32 bits: progress and the end test are right
    // only below 2 gigabytes; above, the total sticks at 2147483647 and the
    // file ends by the length test of WriteToFile or by the server's close.
    int32_t total = toInt(FileSize());
    if (total > Size) Size = 0;
    if (auto f = DataProgress) f(total, Size, length);
    if (static_cast<double>(Buffer.size()) >= BufferSize) WriteToFile(false);
    else if (Size > 0 && total == Size) WriteToFile(false);
  }
  // Mode 2: the body waits in Buffer (only after an informational status).
}

void BasicHTTP::WriteToFile(bool partial) {
  bool complete = false;
  try {
    if (!File) throw std::ios_base::failure("no file");
    TextOutputStream out = File->AppendToTextFile();
    out.Write(Buffer);
    out.Close();
    Buffer.clear();
    complete = Size > 0 && static_cast<double>(File->Length()) == Size;
  } catch (const std::exception&) {
    Cancel();
    fireOperationError("Unable to write to file!", false);
    fireCancelled();
    return;
  }
  if (complete) FinishFile();
  else if (auto f = FileUpdated) f(File, partial);
}

void BasicHTTP::FinishFile() {
  fireProgress("Download Complete!");
  if (Connected) Cancel();
  // Buffer stays until the next Init.
  if (Mode == 0) {
    if (auto f = PageReceived) f(Type, IsChunked ? ParseChunked(Buffer) : Buffer, ViaGrab);
  } else {
    if (auto f = FileReceived) f(Type, File, ViaGrab);
  }
}

}  // namespace trelvane::http

// replace_file.h -- a finished file moved onto its target in one step.
#pragma once

#include <string>
#include <system_error>

namespace trelvane {

// Moves the file `from` onto `to`, as rename(2) does: `to` holds its old
// bytes or the new ones, never a part, and `from` is gone. Where `to` is a
// regular file already, the two are exchanged and the old one removed: a
// rename over a file makes ext4 (auto_da_alloc) write the new file's blocks
// out before it returns, some 2 ms for 4 MB of rows, which an exchange
// leaves to the kernel's own time. The file is not synced either way.
std::error_code replaceFile(const std::string& from, const std::string& to);

}  // namespace trelvane

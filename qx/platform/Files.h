#pragma once

#include <string>
#include <string_view>

namespace qx {

/// Makes `Content` the content of a file, wholly or not at all: it is written beside the file, synced to the
/// disk and renamed over it, so that whoever opens the file, at whatever moment and after whatever end of
/// this process, finds the former content or the new one. The file keeps its permissions, and its owner as
/// far as the process may give files away; a symbolic link is followed, a hard link to the former content
/// keeps that. What is no regular file (a pipe, a device) is written to as it stands. Raises
/// std::system_error, which names the file.
void ReplaceFile(const std::string& FileName, std::string_view Content);

} // namespace qx

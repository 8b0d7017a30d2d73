#pragma once
// File helpers of the suite's utility library. Narrow paths are UTF-8, the
// encoding the manifest's XML carries, so that any installation folder
// survives the trip to the wide Win32 calls.

#include <string>

namespace DE {

// True when something exists at `path` (a directory too, as the Win32
// attribute query answers).
bool FileExists(const std::string& path);

// The file's SHA-256 as 64 lower-case hex digits, the form sha256sum prints.
// The file is streamed, never held whole. False, with `out` empty, when it
// cannot be read to its end.
bool GetFileSha256Hex(const std::string& path, std::string& out);

}  // namespace DE

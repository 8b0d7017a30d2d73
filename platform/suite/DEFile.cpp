#include "platform/suite/DEFile.h"

#include "foundation/Hex.h"
#include "platform/Platform.h"
#include "platform/suite/DEString.h"
#include "platform/suite/Sha256.h"

namespace DE {
namespace {

// A zero inside the text would silently cut the path short at the Win32 call
// and name another file.
bool UsablePath(const std::string& path) {
    return !path.empty() && path.find('\0') == std::string::npos;
}

}  // namespace

bool FileExists(const std::string& path) {
    return UsablePath(path) && connectkit::platform::Current().files().Exists(UTF8ToUnicode(path));
}

bool GetFileSha256Hex(const std::string& path, std::string& out) {
    out.clear();
    if (!UsablePath(path)) {
        return false;
    }
    Sha256 hash;
    long read = connectkit::platform::Current().fileContents().Read(
        UTF8ToUnicode(path),
        [&hash](const uint8_t* data, size_t size) { return hash.Update(data, size); });
    Sha256::Digest digest{};
    if (read != 0 || !hash.Final(digest)) {
        return false;
    }
    out = connectkit::ToHex(digest.data(), digest.size());
    return true;
}

}  // namespace DE

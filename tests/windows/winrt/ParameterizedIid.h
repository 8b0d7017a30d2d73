#pragma once
// The Windows Runtime's IID of a generic instance, from its type signature:
// a name-based (SHA-1, version 5) UUID in the runtime's own namespace. The
// library declares these IIDs as constants; the tests recompute them here.

#include <windows.h>

#include <string>
#include <string_view>

namespace connectkit::test {

GUID IidFromSignature(std::string_view signature);

// "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx", lower case.
std::string IidText(const GUID& iid);

}  // namespace connectkit::test

#include "winrt/ParameterizedIid.h"

// clang-format off
#include <windows.h>
#include <bcrypt.h>
// clang-format on

#include <cstdio>
#include <stdexcept>
#include <vector>

namespace connectkit::test {
namespace {

constexpr unsigned char kRuntimeNamespace[16] = {0x11, 0xf4, 0x7a, 0xd5, 0x7b, 0x73, 0x42, 0xc0,
                                                 0xab, 0xae, 0x87, 0x8b, 0x1e, 0x16, 0xad, 0xee};

std::vector<unsigned char> Sha1(std::vector<unsigned char> data) {
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    std::vector<unsigned char> digest(20);
    bool done = BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA1_ALGORITHM, nullptr, 0) == 0 &&
                BCryptHash(algorithm, nullptr, 0, data.data(), static_cast<ULONG>(data.size()),
                           digest.data(), static_cast<ULONG>(digest.size())) == 0;
    if (algorithm) {
        BCryptCloseAlgorithmProvider(algorithm, 0);
    }
    if (!done) {
        throw std::runtime_error("SHA-1 failed");
    }
    return digest;
}

}  // namespace

GUID IidFromSignature(std::string_view signature) {
    std::vector<unsigned char> data(std::begin(kRuntimeNamespace), std::end(kRuntimeNamespace));
    data.insert(data.end(), signature.begin(), signature.end());
    auto h = Sha1(data);
    h[6] = static_cast<unsigned char>((h[6] & 0x0f) | 0x50);
    h[8] = static_cast<unsigned char>((h[8] & 0x3f) | 0x80);
    GUID iid;
    iid.Data1 = (static_cast<unsigned long>(h[0]) << 24) | (h[1] << 16) | (h[2] << 8) | h[3];
    iid.Data2 = static_cast<unsigned short>((h[4] << 8) | h[5]);
    iid.Data3 = static_cast<unsigned short>((h[6] << 8) | h[7]);
    for (int i = 0; i < 8; ++i) {
        iid.Data4[i] = h[8 + i];
    }
    return iid;
}

std::string IidText(const GUID& iid) {
    char text[40];
    std::snprintf(text, sizeof text, "%08lx-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                  static_cast<unsigned long>(iid.Data1), iid.Data2, iid.Data3, iid.Data4[0],
                  iid.Data4[1], iid.Data4[2], iid.Data4[3], iid.Data4[4], iid.Data4[5],
                  iid.Data4[6], iid.Data4[7]);
    return text;
}

}  // namespace connectkit::test

#include <windows.h>
// bcrypt.h needs the Windows types first.
#include <bcrypt.h>

#include <limits>

#include "platform/suite/Sha256.h"

namespace DE {

// The algorithm provider is opened once per process and never closed: the
// DLL may hash during the host's shutdown, after statics would be gone.
namespace {
BCRYPT_ALG_HANDLE Provider() {
    static BCRYPT_ALG_HANDLE provider = [] {
        BCRYPT_ALG_HANDLE opened = nullptr;
        if (!BCRYPT_SUCCESS(
                BCryptOpenAlgorithmProvider(&opened, BCRYPT_SHA256_ALGORITHM, nullptr, 0))) {
            opened = nullptr;
        }
        return opened;
    }();
    return provider;
}
}  // namespace

struct Sha256::State {
    BCRYPT_HASH_HANDLE hash = nullptr;
    bool ok = false;
};

Sha256::Sha256() : state_(std::make_unique<State>()) {
    BCRYPT_ALG_HANDLE provider = Provider();
    state_->ok = provider && BCRYPT_SUCCESS(BCryptCreateHash(provider, &state_->hash, nullptr, 0,
                                                             nullptr, 0, 0));
}

Sha256::~Sha256() {
    if (state_->hash) {
        BCryptDestroyHash(state_->hash);
    }
}

bool Sha256::Update(const uint8_t* data, size_t size) {
    // BCryptHashData takes a ULONG length.
    while (state_->ok && size > 0) {
        ULONG piece = static_cast<ULONG>(std::min<size_t>(size, std::numeric_limits<ULONG>::max()));
        state_->ok =
            BCRYPT_SUCCESS(BCryptHashData(state_->hash, const_cast<PUCHAR>(data), piece, 0));
        data += piece;
        size -= piece;
    }
    return state_->ok;
}

bool Sha256::Final(Digest& digest) {
    state_->ok =
        state_->ok && BCRYPT_SUCCESS(BCryptFinishHash(state_->hash, digest.data(),
                                                      static_cast<ULONG>(digest.size()), 0));
    return state_->ok;
}

}  // namespace DE

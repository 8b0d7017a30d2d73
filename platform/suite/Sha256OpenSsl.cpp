#include <openssl/evp.h>

#include "platform/suite/Sha256.h"

namespace DE {

struct Sha256::State {
    EVP_MD_CTX* context = nullptr;
    bool ok = false;
};

Sha256::Sha256() : state_(std::make_unique<State>()) {
    state_->context = EVP_MD_CTX_new();
    state_->ok = state_->context && EVP_DigestInit_ex(state_->context, EVP_sha256(), nullptr) == 1;
}

Sha256::~Sha256() {
    EVP_MD_CTX_free(state_->context);
}

bool Sha256::Update(const uint8_t* data, size_t size) {
    state_->ok = state_->ok && EVP_DigestUpdate(state_->context, data, size) == 1;
    return state_->ok;
}

bool Sha256::Final(Digest& digest) {
    unsigned int length = 0;
    state_->ok = state_->ok && EVP_DigestFinal_ex(state_->context, digest.data(), &length) == 1 &&
                 length == digest.size();
    return state_->ok;
}

}  // namespace DE

#pragma once
// SHA-256 fed in pieces: CNG (BCrypt) on Windows, OpenSSL's libcrypto
// elsewhere. Both are the platform's own tuned code; we only stream into them.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace DE {

class Sha256 {
public:
    using Digest = std::array<uint8_t, 32>;

    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    // False once the provider failed; later calls then do nothing.
    bool Update(const uint8_t* data, size_t size);
    bool Final(Digest& digest);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace DE

// DE::GetFileSha256Hex on a 256 MiB file against libcrypto's SHA-256 over
// the same bytes already in memory: what reading the file through the
// simulated PC's file port costs on top of the hash itself. The figure is
// the throughput ratio (in-memory time over file time); rounds alternate
// the two, and each takes long enough that a few rounds settle it.

#include <openssl/evp.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#include "Ratios.h"
#include "SimFigures.h"
#include "platform/suite/DEFile.h"

namespace connectkit::bench {
namespace {

constexpr size_t kFileBytes = 256u << 20;
constexpr int kRounds = 9;

double Seconds(const std::function<void()>& operation) {
    auto start = std::chrono::steady_clock::now();
    operation();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Measure() {
    auto folder = std::filesystem::temp_directory_path() / "connectkit-bench-sha256";
    std::filesystem::create_directories(folder);
    std::vector<uint8_t> bytes(kFileBytes);
    std::mt19937_64 random(7);
    for (size_t i = 0; i + 8 <= bytes.size(); i += 8) {
        uint64_t value = random();
        std::copy_n(reinterpret_cast<const uint8_t*>(&value), 8, bytes.begin() + i);
    }
    std::ofstream(folder / "data.bin", std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    auto& pc = Pc();
    pc.Reset();
    std::string error;
    if (!pc.fileContents().MapHostFolder(L"C:\\Bench\\", folder, error)) {
        return 0;
    }
    std::string hex;
    auto file = [&hex] { DE::GetFileSha256Hex("C:\\Bench\\data.bin", hex); };
    auto memory = [&bytes] {
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned int length = 0;
        EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha256(), nullptr);
    };
    file();
    std::vector<double> ratios;
    for (int round = 0; round < kRounds; ++round) {
        double inFile = 0;
        double inMemory = 0;
        if (round % 2 == 0) {
            inFile = Seconds(file);
            inMemory = Seconds(memory);
        } else {
            inMemory = Seconds(memory);
            inFile = Seconds(file);
        }
        ratios.push_back(inMemory / inFile);
    }
    pc.Reset();
    std::filesystem::remove_all(folder);
    std::nth_element(ratios.begin(), ratios.begin() + kRounds / 2, ratios.end());
    return hex.size() == 64 ? ratios[kRounds / 2] : 0;
}

const bool registered = [] {
    AddRatio({"sha256_vs_libcrypto", {}, {}, {}, ">=", 0.8, 1, Measure});
    return true;
}();

}  // namespace
}  // namespace connectkit::bench

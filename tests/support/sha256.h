// SHA-256 (FIPS 180-4), for tests that compare pictures with stored digests. Fed piece by piece; a
// copy can be finished at any point while the original goes on.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace vellim::test {

class Sha256 {
  public:
    void Add(const uint8_t* bytes, size_t count) {
        total_ += count;
        while (count > 0) {
            const size_t taken = count < block_.size() - filled_ ? count : block_.size() - filled_;
            std::memcpy(block_.data() + filled_, bytes, taken);
            filled_ += taken;
            bytes += taken;
            count -= taken;
            if (filled_ == block_.size()) TakeBlock();
        }
    }

    // The digest of what came so far, in hexadecimal.
    [[nodiscard]] std::string Digest() const {
        Sha256 end = *this;
        const uint64_t bits = total_ * 8;
        const std::array<uint8_t, 64> padding = {0x80};
        end.Add(padding.data(), 1 + (block_.size() + 55 - filled_) % block_.size());
        std::array<uint8_t, 8> length{};
        for (size_t i = 0; i < length.size(); i++) {
            length[i] = static_cast<uint8_t>(bits >> (56 - 8 * i));
        }
        end.Add(length.data(), length.size());
        std::string text;
        for (const uint32_t word : end.state_) {
            for (int shift = 28; shift >= 0; shift -= 4) {
                text += "0123456789abcdef"[(word >> shift) & 15];
            }
        }
        return text;
    }

  private:
    void TakeBlock() {
        std::array<uint32_t, 64> w{};
        for (size_t i = 0; i < 16; i++) {
            for (size_t j = 0; j < 4; j++)
                w[i] = w[i] << 8 | block_[4 * i + j];
        }
        for (size_t i = 16; i < w.size(); i++) {
            const uint32_t s0 =
                std::rotr(w[i - 15], 7) ^ std::rotr(w[i - 15], 18) ^ (w[i - 15] >> 3);
            const uint32_t s1 =
                std::rotr(w[i - 2], 17) ^ std::rotr(w[i - 2], 19) ^ (w[i - 2] >> 10);
            w[i] = w[i - 16] + s0 + w[i - 7] + s1;
        }
        auto [a, b, c, d, e, f, g, h] = state_;
        for (size_t i = 0; i < w.size(); i++) {
            const uint32_t s1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
            const uint32_t s0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
            const uint32_t t1 = h + s1 + ((e & f) ^ (~e & g)) + kRound[i] + w[i];
            const uint32_t t2 = s0 + ((a & b) ^ (a & c) ^ (b & c));
            h = g, g = f, f = e, e = d + t1;
            d = c, c = b, b = a, a = t1 + t2;
        }
        const std::array<uint32_t, 8> sum = {a, b, c, d, e, f, g, h};
        for (size_t i = 0; i < sum.size(); i++)
            state_[i] += sum[i];
        filled_ = 0;
    }

    static constexpr std::array<uint32_t, 64> kRound = {
        0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4,
        0xab1c5ed5, 0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe,
        0x9bdc06a7, 0xc19bf174, 0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f,
        0x4a7484aa, 0x5cb0a9dc, 0x76f988da, 0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7,
        0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967, 0x27b70a85, 0x2e1b2138, 0x4d2c6dfc,
        0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85, 0xa2bfe8a1, 0xa81a664b,
        0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070, 0x19a4c116,
        0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
        0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7,
        0xc67178f2};

    std::array<uint32_t, 8> state_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                      0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<uint8_t, 64> block_{};
    size_t filled_ = 0;
    uint64_t total_ = 0;
};

}  // namespace vellim::test

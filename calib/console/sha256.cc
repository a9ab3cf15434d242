#include "calib/console/sha256.h"

#include <algorithm>

namespace calib {

namespace {

constexpr size_t kBlock = 64;

// The first 32 bits of the fractions of the cube roots of the first 64 primes.
constexpr uint32_t kRound[] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

uint32_t Rotated(uint32_t word, int bits) { return word >> bits | word << (32 - bits); }

}  // namespace

void Sha256::AddBlock(const unsigned char* block) {
  uint32_t words[kBlock];
  for (size_t i = 0; i < 16; ++i) {
    words[i] = static_cast<uint32_t>(block[4 * i]) << 24 |
               static_cast<uint32_t>(block[4 * i + 1]) << 16 |
               static_cast<uint32_t>(block[4 * i + 2]) << 8 | block[4 * i + 3];
  }
  for (size_t i = 16; i < kBlock; ++i) {
    const uint32_t early = words[i - 15], late = words[i - 2];
    words[i] = words[i - 16] + words[i - 7] +
               (Rotated(early, 7) ^ Rotated(early, 18) ^ early >> 3) +
               (Rotated(late, 17) ^ Rotated(late, 19) ^ late >> 10);
  }
  auto [a, b, c, d, e, f, g, h] = state_;
  for (size_t i = 0; i < kBlock; ++i) {
    const uint32_t first = h + (Rotated(e, 6) ^ Rotated(e, 11) ^ Rotated(e, 25)) +
                           ((e & f) ^ (~e & g)) + kRound[i] + words[i];
    const uint32_t second =
        (Rotated(a, 2) ^ Rotated(a, 13) ^ Rotated(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
  const uint32_t added[] = {a, b, c, d, e, f, g, h};
  for (size_t i = 0; i < state_.size(); ++i) state_[i] += added[i];
}

void Sha256::Add(const std::string& bytes) {
  size_ += bytes.size();
  size_t done = 0;
  if (!rest_.empty()) {
    done = std::min(bytes.size(), kBlock - rest_.size());
    rest_.append(bytes, 0, done);
    if (rest_.size() < kBlock) return;
    AddBlock(reinterpret_cast<const unsigned char*>(rest_.data()));
    rest_.clear();
  }
  for (; bytes.size() - done >= kBlock; done += kBlock) {
    AddBlock(reinterpret_cast<const unsigned char*>(bytes.data() + done));
  }
  rest_.assign(bytes, done, std::string::npos);
}

std::string Sha256::Digest() {
  const uint64_t bits = 8 * size_;
  std::string padding(1, '\x80');
  padding.append((2 * kBlock - 9 - rest_.size()) % kBlock, '\0');
  for (int shift = 56; shift >= 0; shift -= 8) padding += static_cast<char>(bits >> shift & 0xff);
  Add(padding);
  std::string digits;
  for (const uint32_t word : state_) {
    for (int shift = 28; shift >= 0; shift -= 4) digits += "0123456789abcdef"[word >> shift & 0xf];
  }
  return digits;
}

}  // namespace calib

// The hash function SHA-256 (FIPS 180-4).
#ifndef CALIB_CONSOLE_SHA256_H_
#define CALIB_CONSOLE_SHA256_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace calib {

// Takes bytes in pieces, as they come.
class Sha256 {
 public:
  void Add(const std::string& bytes);
  // The hash of all that was added, in hexadecimal digits. Ends the use of the object.
  std::string Digest();

 private:
  void AddBlock(const unsigned char* block);

  std::array<uint32_t, 8> state_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                    0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::string rest_;  // less than a block
  uint64_t size_ = 0;
};

}  // namespace calib

#endif  // CALIB_CONSOLE_SHA256_H_

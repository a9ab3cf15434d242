// The side `memcpy`: to allocate room for an image and to copy it there, which is what parsing an
// image record cannot do without.
#include <cstring>
#include <memory>
#include <string>

#include "benchmarks/cells.h"
#include "benchmarks/payloads.h"

namespace zarvo {
namespace calibration {
namespace benchmarks {
namespace {

class MemcpyCell : public Cell {
 public:
  void Prepare(int) override { ImageOctets(); }
  void Run(int count) override {
    const std::string& octets = ImageOctets();
    for (int i = 0; i < count; ++i) {
      const std::unique_ptr<char[]> copy(new char[octets.size()]);
      std::memcpy(copy.get(), octets.data(), octets.size());
      asm volatile("" : : "r"(copy.get()) : "memory");
    }
  }
};

}  // namespace

void AddMemcpy(Catalogue* catalogue) {
  catalogue->cells.push_back(
      {"memcpy", "parse fresh", "I", 8, true, [] { return std::make_unique<MemcpyCell>(); }});
}

}  // namespace benchmarks
}  // namespace calibration
}  // namespace zarvo

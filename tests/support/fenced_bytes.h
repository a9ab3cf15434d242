// A copy of some bytes right in front of memory that must not be touched: who reads one byte too
// many ends the process, without any sanitizer.
#ifndef CALIBRATION_TESTS_SUPPORT_FENCED_BYTES_H_
#define CALIBRATION_TESTS_SUPPORT_FENCED_BYTES_H_

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

namespace zarvo {
namespace calibration {
namespace testing {

class FencedBytes {
 public:
  explicit FencedBytes(const std::string& bytes)
      : room_(bytes.size() <= Room::kUsual ? UsualRoom() : nullptr) {
    if (room_ == nullptr) room_ = owned_ = new Room(bytes.size());
    data_ = room_->fence - bytes.size();
    std::memcpy(data_, bytes.data(), bytes.size());
  }
  ~FencedBytes() { delete owned_; }
  FencedBytes(const FencedBytes&) = delete;
  FencedBytes& operator=(const FencedBytes&) = delete;

  const uint8_t* data() const { return reinterpret_cast<const uint8_t*>(data_); }

 private:
  struct Room {
    static constexpr size_t kUsual = 1 << 16;

    explicit Room(size_t size) {
      const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
      const size_t front = (size + page - 1) / page * page;
      all = front + page;
      begin = static_cast<char*>(
          mmap(nullptr, all, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
      fence = begin + front;
      if (begin == MAP_FAILED || mprotect(fence, page, PROT_NONE) != 0) {
        std::cerr << "fenced_bytes: no memory for " << size << " bytes and a fence\n";
        std::abort();
      }
    }
    ~Room() { munmap(begin, all); }

    size_t all;
    char* begin;
    char* fence;
  };

  // Made once for a thread, since most bytes are few. One copy at a time.
  static Room* UsualRoom() {
    thread_local Room room(Room::kUsual);
    return &room;
  }

  Room* room_;
  Room* owned_ = nullptr;
  char* data_;
};

}  // namespace testing
}  // namespace calibration
}  // namespace zarvo

#endif  // CALIBRATION_TESTS_SUPPORT_FENCED_BYTES_H_

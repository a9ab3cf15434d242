// Batches of input that several threads work on, while what comes of them keeps the order of the
// input.
//
// Each thread fills a batch, works on it and finishes it, and then fills another: the processor
// that has read the bytes is the one that goes through them, while they are in its cache. One
// thread at a time fills, and one finishes; in between, each waits until it is its batch's turn.
// Memory is that of one batch for each thread.
#ifndef CALIB_CONSOLE_IN_ORDER_H_
#define CALIB_CONSOLE_IN_ORDER_H_

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace calib {

template <typename Batch>
struct BatchSteps {
  // Replaces the batch by the next one of the input, and says whether more may come. Called by one
  // thread at a time.
  std::function<bool(Batch*)> fill;
  // Called by several threads at once, each with a batch of its own.
  std::function<void(Batch*)> work;
  // Called by one thread at a time, in the order in which the batches were filled.
  std::function<void(Batch*)> finish;
};

template <typename Batch>
class BatchLine {
 public:
  BatchLine(int threads, BatchSteps<Batch> steps)
      : steps_(std::move(steps)),
        batches_(static_cast<size_t>(std::max(1, threads))),
        turns_(batches_.size()) {}

  void Run() {
    std::vector<std::thread> others;
    others.reserve(batches_.size() - 1);
    Go(&batches_[0], &others);
    for (std::thread& other : others) other.join();
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  // `others` are started behind the first batch that is not the last; null if they were.
  void Go(Batch* batch, std::vector<std::thread>* others) {
    size_t number = 0;
    std::exception_ptr thrown;
    while (Fill(batch, &number, &thrown)) {
      if (others != nullptr && more_) Start(others);
      others = nullptr;
      Try(steps_.work, batch, &thrown);
      if (!WaitForTurn(number)) return;
      Try(steps_.finish, batch, &thrown);
      EndTurn(thrown);
    }
  }

  // False if there is nothing to fill it with.
  bool Fill(Batch* batch, size_t* number, std::exception_ptr* thrown) {
    const std::lock_guard<std::mutex> lock(filling_);
    if (!more_) return false;
    *number = filled_++;
    bool more = false;
    Try([&](Batch* filled) { more = steps_.fill(filled); }, batch, thrown);
    if (!more) more_ = false;
    return true;
  }

  // Where a thread cannot be had, there are fewer.
  void Start(std::vector<std::thread>* others) {
    try {
      for (size_t i = 1; i < batches_.size(); ++i) {
        others->emplace_back([this, i] { Go(&batches_[i], nullptr); });
      }
    } catch (const std::system_error&) {
    }
  }

  // Does nothing behind a step that threw.
  template <typename Step>
  static void Try(const Step& step, Batch* batch, std::exception_ptr* thrown) {
    if (*thrown) return;
    try {
      step(batch);
    } catch (...) {
      *thrown = std::current_exception();
    }
  }

  // False if it does not come, as an earlier batch could not be finished.
  bool WaitForTurn(size_t number) {
    std::unique_lock<std::mutex> lock(finishing_);
    turns_[number % turns_.size()].wait(lock, [&] { return finished_ == number || failure_; });
    return !failure_;
  }

  void EndTurn(const std::exception_ptr& thrown) {
    const std::lock_guard<std::mutex> lock(finishing_);
    if (thrown) {
      failure_ = thrown;
      more_ = false;
      for (std::condition_variable& turn : turns_) turn.notify_all();
    } else {
      turns_[++finished_ % turns_.size()].notify_one();
    }
  }

  const BatchSteps<Batch> steps_;
  std::vector<Batch> batches_;  // one for each thread
  std::atomic<bool> more_{true};
  std::mutex filling_;
  size_t filled_ = 0;  // how many batches
  std::mutex finishing_;
  size_t finished_ = 0;
  std::exception_ptr failure_;
  // Those who wait have batches that follow each other, no more than there are threads, so that no
  // two wait for the same.
  std::vector<std::condition_variable> turns_;
};

// Goes through the input with up to so many threads, of which the caller is one; of a single batch
// it is the only one. What a step throws is thrown here when all threads have ended: the batches
// ahead of it are finished, those behind it are not.
template <typename Batch>
void InOrder(int threads, BatchSteps<Batch> steps) {
  BatchLine<Batch>(threads, std::move(steps)).Run();
}

}  // namespace calib

#endif  // CALIB_CONSOLE_IN_ORDER_H_

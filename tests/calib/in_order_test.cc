// Batches that several threads work on: what comes of them, in which order, and what is left of it
// when a step throws.
#include "calib/console/in_order.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#ifdef __has_feature
#if __has_feature(thread_sanitizer)
#define CALIB_THREADS_ARE_THE_SANITIZERS  // which bears nothing in place of pthread_create
#endif
#endif

#ifndef CALIB_THREADS_ARE_THE_SANITIZERS
namespace {

std::atomic<int> threads_asked{0};
std::atomic<int> threads_to_have{1000};

}  // namespace

// In place of the system's, which it calls as long as there are threads to have.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*routine)(void*), void* argument) {
  ++threads_asked;
  if (--threads_to_have < 0) return EAGAIN;
  static const auto system =
      reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return system(thread, attributes, routine, argument);
}
#endif

namespace calib {
namespace {

struct Numbers {
  int number = -1;
  int square = -1;
};

struct Thrower {
  const char* step;
  int at;
};

// What came of numbers from 0, and by which threads.
struct Outcome {
  std::vector<int> finished;
  std::string thrown;
  std::set<std::thread::id> workers;
  int filled = 0;
};

void ThrowAt(const Thrower& thrower, const std::string& step, int number) {
  if (step == thrower.step && number == thrower.at) {
    throw std::runtime_error(step + " " + std::to_string(number));
  }
}

// Every third one takes longer than those behind it.
void Dawdle(int number) {
  if (number % 3 == 0) std::this_thread::sleep_for(std::chrono::microseconds(300));
}

Outcome Square(int threads, int count, const Thrower& thrower = {"", 0}) {
  Outcome outcome;
  std::atomic<int> filling{0}, finishing{0};
  std::mutex mutex;
  BatchSteps<Numbers> steps;
  steps.fill = [&](Numbers* batch) {
    EXPECT_EQ(++filling, 1);
    batch->number = outcome.filled;
    std::this_thread::sleep_for(std::chrono::microseconds(20));
    ThrowAt(thrower, "fill", batch->number);
    outcome.filled = batch->number + 1;
    --filling;
    return outcome.filled < count;
  };
  steps.work = [&](Numbers* batch) {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      outcome.workers.insert(std::this_thread::get_id());
    }
    Dawdle(batch->number);
    ThrowAt(thrower, "work", batch->number);
    batch->square = batch->number * batch->number;
  };
  steps.finish = [&](Numbers* batch) {
    EXPECT_EQ(++finishing, 1);
    ThrowAt(thrower, "finish", batch->number);
    EXPECT_EQ(batch->square, batch->number * batch->number);
    outcome.finished.push_back(batch->number);
    --finishing;
  };
  try {
    InOrder<Numbers>(threads, steps);
  } catch (const std::runtime_error& error) {
    outcome.thrown = error.what();
  }
  return outcome;
}

std::vector<int> UpTo(int count) {
  std::vector<int> numbers;
  for (int i = 0; i < count; ++i) numbers.push_back(i);
  return numbers;
}

constexpr int kThreads[] = {0, 1, 2, 8};

TEST(InOrder, FinishesInTheOrderOfFilling) {
  for (const int threads : kThreads) {
    for (const int count : {1, 2, 3, 100}) {
      const Outcome outcome = Square(threads, count);
      EXPECT_EQ(outcome.finished, UpTo(count)) << threads << " threads";
      EXPECT_LE(outcome.workers.size(), static_cast<size_t>(std::max(1, threads)));
      EXPECT_EQ(outcome.thrown, "");
    }
  }
}

TEST(InOrder, IsTheCallersOwnWorkForASingleBatchOrThread) {
  const std::set<std::thread::id> caller = {std::this_thread::get_id()};
  EXPECT_EQ(Square(8, 1).workers, caller);
  EXPECT_EQ(Square(1, 100).workers, caller);
}

#ifndef CALIB_THREADS_ARE_THE_SANITIZERS
TEST(InOrder, StartsNoThreadForASingleBatchOrThread) {
  threads_asked = 0;
  Square(8, 1);
  Square(8, 1, {"fill", 0});
  Square(1, 100);
  EXPECT_EQ(threads_asked, 0);
  Square(8, 2);
  EXPECT_EQ(threads_asked, 7);
}

TEST(InOrder, GoesOnWithFewerThreadsThanItAskedFor) {
  for (const int to_have : {0, 1, 3}) {
    threads_to_have = to_have;
    const Outcome outcome = Square(8, 100);
    threads_to_have = 1000;
    EXPECT_EQ(outcome.finished, UpTo(100)) << to_have;
    EXPECT_EQ(outcome.thrown, "");
    EXPECT_LE(outcome.workers.size(), static_cast<size_t>(to_have) + 1);
  }
}
#endif

// Two batches are under way at once: each waits for the other.
TEST(InOrder, WorksOnSeveralAtOnce) {
  std::atomic<int> begun{0};
  int filled = 0;
  BatchSteps<Numbers> steps;
  steps.fill = [&](Numbers*) { return ++filled < 2; };
  steps.work = [&](Numbers*) {
    ++begun;
    while (begun < 2) std::this_thread::yield();
  };
  steps.finish = [](Numbers*) {};
  InOrder<Numbers>(2, steps);
  EXPECT_EQ(begun, 2);
}

TEST(InOrder, ThrowsWhatAStepThrewBehindTheBatchesAheadOfIt) {
  for (const int threads : kThreads) {
    for (const char* step : {"fill", "work", "finish"}) {
      for (const int at : {0, 1, 2, 7, 19}) {
        const Outcome outcome = Square(threads, 20, {step, at});
        EXPECT_EQ(outcome.thrown, step + (" " + std::to_string(at))) << threads << " threads";
        EXPECT_EQ(outcome.finished, UpTo(at)) << threads << " threads, " << outcome.thrown;
        EXPECT_LE(outcome.filled, at + 1 + std::max(1, threads));
      }
    }
  }
}

// The earlier one is thrown, though it comes later.
TEST(InOrder, ThrowsTheFirstOfTheInput) {
  std::atomic<bool> later{false};
  int filled = 0;
  BatchSteps<Numbers> steps;
  steps.fill = [&](Numbers* batch) {
    batch->number = filled++;
    return filled < 2;
  };
  steps.work = [&](Numbers* batch) {
    if (batch->number == 1) later = true;
    while (!later) std::this_thread::yield();
    throw std::runtime_error(std::to_string(batch->number));
  };
  steps.finish = [](Numbers*) { ADD_FAILURE(); };
  try {
    InOrder<Numbers>(2, steps);
    ADD_FAILURE();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "0");
  }
}

}  // namespace
}  // namespace calib

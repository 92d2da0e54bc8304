// Spin locks of the pool: atomic exchanges on flag words. The pool cannot use a
// mutex, because a mutex may allocate and the pool is the allocator.
#pragma once
#include <atomic>
#include <thread>

namespace poolmem {

// Spins a while on a plain load before yielding, so that a holder that was
// preempted on a machine with few cores gets the processor back soon.
template <class Word> void spinAcquire(std::atomic<Word>& flag) {
    for (;;) {
        if (flag.exchange(1, std::memory_order_acquire) == 0) return;
        for (int spins = 0; flag.load(std::memory_order_relaxed) != 0; ++spins) {
            if (spins >= 64) {
                std::this_thread::yield();
                spins = 0;
            }
        }
    }
}

// Gives up after `maxSpins` failed attempts; the caller passes the object over.
template <class Word> bool spinTryAcquire(std::atomic<Word>& flag, int maxSpins) {
    for (int spins = 0; spins < maxSpins; ++spins) {
        if (flag.exchange(1, std::memory_order_acquire) == 0) return true;
    }
    return false;
}

template <class Word> void spinRelease(std::atomic<Word>& flag) {
    flag.store(0, std::memory_order_release);
}

// Holds a lock for one scope.
template <class Word> class SpinGuard {
  public:
    explicit SpinGuard(std::atomic<Word>& flag) : flag_(flag) { spinAcquire(flag_); }
    ~SpinGuard() { spinRelease(flag_); }
    SpinGuard(const SpinGuard&) = delete;
    SpinGuard& operator=(const SpinGuard&) = delete;

  private:
    std::atomic<Word>& flag_;
};

} // namespace poolmem

// Works on several of many items at once, and hands over the results in the items' order.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "host/file_result.h"

namespace atdp::host {

// To be used by the thread that made it. Results wait until their turn comes; when too many wait,
// work pauses, so that memory stays bounded however many items there are.
class WorkQueue {
 public:
    // What is done for an item, on any thread, with several items at the same time.
    using Work = std::function<FileResult(std::size_t item)>;

    // Starts on items 0 to `items` - 1, with up to `jobs` threads (at least 1). Throws
    // std::system_error when not a single thread can be had.
    WorkQueue(std::size_t items, std::uint32_t jobs, Work work);

    // Waits for the items in hand, and leaves the others.
    ~WorkQueue();

    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    // The result of the next item, in order; nothing when it is not there within `patience`. Must
    // not be called after the last result. An exception that left the work ends the queue, and is
    // thrown here.
    std::optional<FileResult> next(std::chrono::milliseconds patience);

    // Does so at once, and answers the results that have not been taken, in order. Nothing is to be
    // taken after it.
    std::vector<FileResult> stop();

 private:
    void workOn();
    void endThreads();
    bool hasRoom() const { return started_ - taken_ < waiting_.size(); }
    std::optional<FileResult>& place(std::size_t item) { return waiting_[item % waiting_.size()]; }

    const std::size_t items_;
    const Work work_;
    std::mutex mutex_;
    std::condition_variable resultCame_;
    std::condition_variable roomCame_;
    std::vector<std::optional<FileResult>> waiting_;
    std::size_t started_ = 0;  // items, in their order
    std::size_t taken_ = 0;
    bool stopped_ = false;
    std::exception_ptr exception_;
    std::vector<std::jthread> threads_;
};

}  // namespace atdp::host

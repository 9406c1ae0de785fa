#include "host/work_queue.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace atdp::host {
namespace {

// How far the work may run ahead of an item that takes long.
constexpr std::size_t kWaitingResults = 256;

}  // namespace

WorkQueue::WorkQueue(std::size_t items, std::uint32_t jobs, Work work)
    : items_(items), work_(std::move(work)), waiting_(kWaitingResults) {
    const std::size_t threads = std::min<std::size_t>(jobs, items);
    threads_.reserve(threads);
    try {
        while (threads_.size() < threads) threads_.emplace_back([this] { workOn(); });
    } catch (const std::system_error&) {
        if (threads_.empty()) throw;  // fewer do as well
    } catch (...) {
        endThreads();
        throw;
    }
}

WorkQueue::~WorkQueue() {
    endThreads();
}

void WorkQueue::endThreads() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    roomCame_.notify_all();
    threads_.clear();
}

std::vector<FileResult> WorkQueue::stop() {
    endThreads();
    std::vector<FileResult> results;
    for (; taken_ < started_; ++taken_) {
        if (place(taken_)) results.push_back(*std::exchange(place(taken_), std::nullopt));
    }
    return results;
}

void WorkQueue::workOn() {
    std::unique_lock lock(mutex_);
    while (true) {
        roomCame_.wait(lock, [this] { return stopped_ || started_ == items_ || hasRoom(); });
        if (stopped_ || started_ == items_) return;
        const std::size_t item = started_++;
        lock.unlock();
        std::optional<FileResult> result;
        std::exception_ptr exception;
        try {
            result = work_(item);
        } catch (...) {
            exception = std::current_exception();
        }
        lock.lock();
        if (exception) {
            if (!exception_) exception_ = exception;
            stopped_ = true;
        }
        place(item) = std::move(result);
        resultCame_.notify_one();
    }
}

std::optional<FileResult> WorkQueue::next(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    std::optional<FileResult>& result = place(taken_);
    resultCame_.wait_for(lock, patience, [&] { return result || exception_; });
    if (!result) {
        if (exception_) std::rethrow_exception(exception_);
        return std::nullopt;
    }
    ++taken_;
    roomCame_.notify_one();
    return std::exchange(result, std::nullopt);
}

}  // namespace atdp::host

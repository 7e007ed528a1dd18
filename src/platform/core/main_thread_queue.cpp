#include "platform/core/main_thread_queue.hpp"

#include <stdexcept>

namespace qorcore {

namespace {

// Touch the queue while the library loads so that the loading thread becomes the main thread.
[[maybe_unused]] const bool boundAtLoad = (MainThreadQueue::Get(), true);

} // namespace

MainThreadQueue& MainThreadQueue::Get() {
    static MainThreadQueue queue;
    return queue;
}

MainThreadQueue::MainThreadQueue() : mainThread_(std::this_thread::get_id()) {}

void MainThreadQueue::BindToCurrentThread() {
    std::lock_guard lock(mutex_);
    mainThread_ = std::this_thread::get_id();
}

bool MainThreadQueue::IsMainThread() const {
    std::lock_guard lock(mutex_);
    return mainThread_ == std::this_thread::get_id();
}

void MainThreadQueue::Post(Task task) {
    if (!task)
        throw std::invalid_argument("MainThreadQueue::Post: empty task");
    Task wakeUp;
    {
        std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
        wakeUp = wakeUp_;
    }
    if (wakeUp)
        wakeUp();
}

std::size_t MainThreadQueue::RunPending() {
    std::size_t budget;
    {
        std::lock_guard lock(mutex_);
        if (mainThread_ != std::this_thread::get_id())
            throw std::logic_error("MainThreadQueue::RunPending: not on the main thread");
        budget = tasks_.size();
    }
    std::size_t ran = 0;
    for (; ran < budget; ++ran) {
        Task task;
        {
            std::lock_guard lock(mutex_);
            if (tasks_.empty())
                break;
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        task();
    }
    return ran;
}

std::size_t MainThreadQueue::GetPendingCount() const {
    std::lock_guard lock(mutex_);
    return tasks_.size();
}

void MainThreadQueue::SetWakeUpFunction(Task wakeUp) {
    std::lock_guard lock(mutex_);
    wakeUp_ = std::move(wakeUp);
}

} // namespace qorcore

#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace qorcore {

/// The queue of work that other threads hand to the main thread. Any thread may `Post`; only the
/// main thread runs the tasks, when its backend pumps the queue (`RunPending`). A backend that
/// sleeps in an event loop installs a wake-up function so that a post from another thread gets
/// the loop going again.
class MainThreadQueue {
public:
    using Task = std::function<void()>;

    static MainThreadQueue& Get();

    /// Makes the calling thread the main thread. By default it is the thread that loaded the
    /// library.
    void BindToCurrentThread();
    bool IsMainThread() const;

    /// Queues a task; safe from any thread. An empty task is refused with std::invalid_argument.
    void Post(Task task);

    /// Runs the tasks queued before the call, in order, and returns how many ran. Tasks posted
    /// while it runs wait for the next call, so a task that posts itself cannot starve the loop.
    /// If a task throws, the exception passes out and the tasks after it stay queued. Called off
    /// the main thread it throws std::logic_error.
    std::size_t RunPending();

    std::size_t GetPendingCount() const;

    /// Called on the posting thread after every post; empty to remove.
    void SetWakeUpFunction(Task wakeUp);

private:
    MainThreadQueue();

    mutable std::mutex mutex_;
    std::deque<Task> tasks_;
    Task wakeUp_;
    std::thread::id mainThread_;
};

inline bool IsMainThread() {
    return MainThreadQueue::Get().IsMainThread();
}
inline void PostToMainThread(MainThreadQueue::Task task) {
    MainThreadQueue::Get().Post(std::move(task));
}

} // namespace qorcore

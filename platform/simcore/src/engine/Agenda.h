#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace simcore::engine {

using Lock = std::unique_lock<std::mutex>;

// Something that is due at times: a cyclic job, a source, a schedule table, the end of a frame.
class Task {
public:
    Task() = default;
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    virtual ~Task() = default;

    // Called with the engine's lock held, at or after the time it was scheduled for. It may give
    // the lock back while it calls out or reads a file, and must hold it again when it returns.
    virtual void run(int64_t now, Lock& lock) = 0;

private:
    friend class Agenda;
    std::pair<int64_t, uint64_t> m_key{0,
                                       0};  // due time, order of scheduling; second 0: not queued
};

// What is due when. Tasks due at the same time run in the order in which they were scheduled, so a
// run with the manual clock always gives the same result. Guarded by the engine's lock.
class Agenda {
public:
    // Puts a task at a time; a task that waits already is moved. True when it is now the first.
    bool schedule(const std::shared_ptr<Task>& task, int64_t due);
    void cancel(Task& task);
    [[nodiscard]] static bool waits(const Task& task) { return task.m_key.second != 0; }

    [[nodiscard]] std::optional<int64_t> nextDue() const;
    // Takes the first task that is due by `now`; null when there is none.
    [[nodiscard]] std::shared_ptr<Task> takeDue(int64_t now);
    void clear();

private:
    std::map<std::pair<int64_t, uint64_t>, std::shared_ptr<Task>> m_waiting;
    uint64_t m_order = 0;
};

}  // namespace simcore::engine

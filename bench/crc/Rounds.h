#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

// Contestants run in turn (A B C A B C ...), so that a slow moment of the machine meets all of
// them; each line shows minimum, median and maximum of a call over the rounds.
namespace bench {

template <class Value>
inline void keep(const Value& value) {
#if defined(__GNUC__)
    asm volatile("" : : "r,m"(value) : "memory");
#else
    static volatile const void* sink;
    sink = &value;
#endif
}

inline bool isQuick(int argc, char** argv) {
    return argc > 1 && std::strcmp(argv[1], "--quick") == 0;
}

class Rounds {
public:
    // `calls` calls a round, `rounds` rounds.
    Rounds(size_t calls, size_t rounds) : m_calls(calls), m_rounds(rounds) {}

    // The body runs the given number of calls. The first contestant is what the others' ratios
    // refer to.
    void add(std::string name, std::function<void(size_t)> body) {
        m_entries.push_back({std::move(name), std::move(body), {}});
    }

    void run(const char* title) {
        for (size_t round = 0; round < m_rounds; ++round) {
            for (Entry& entry : m_entries) entry.nanoseconds.push_back(timed(entry));
        }
        std::printf("%s\n  %-34s %9s %9s %9s  %s\n", title, "ns a call", "min", "median", "max",
                    "of first");
        double first = 0;
        for (Entry& entry : m_entries) {
            auto& times = entry.nanoseconds;
            std::sort(times.begin(), times.end());
            const double median = times[times.size() / 2];
            if (first == 0) first = median;
            std::printf("  %-34s %9.2f %9.2f %9.2f  %.2f\n", entry.name.c_str(), times.front(),
                        median, times.back(), median / first);
        }
    }

    // The slowest median among the contestants whose name begins so, in ns a call, after run().
    [[nodiscard]] double slowest(const std::string& prefix) const {
        double most = 0;
        for (const Entry& entry : m_entries) {
            if (!entry.name.starts_with(prefix)) continue;
            most = std::max(most, entry.nanoseconds[entry.nanoseconds.size() / 2]);
        }
        return most;
    }

private:
    struct Entry {
        std::string name;
        std::function<void(size_t)> body;
        std::vector<double> nanoseconds;
    };

    double timed(Entry& entry) const {
        using Clock = std::chrono::steady_clock;
        const auto begin = Clock::now();
        entry.body(m_calls);
        const std::chrono::duration<double, std::nano> spent = Clock::now() - begin;
        return spent.count() / static_cast<double>(m_calls);
    }

    size_t m_calls;
    size_t m_rounds;
    std::vector<Entry> m_entries;
};

}  // namespace bench

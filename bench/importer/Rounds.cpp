#include "Rounds.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace quill::bench {

std::vector<double> compare(const std::string& title, const std::vector<Side>& sides, int rounds) {
    fmt::print("{}\n", title);
    std::vector<std::vector<double>> rates(sides.size());
    for (int round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < sides.size(); ++i) {
            const auto start = std::chrono::steady_clock::now();
            const double count = sides[i].run();
            const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
            rates[i].push_back(count / took.count());
        }
    }
    std::vector<double> medians;
    for (size_t i = 0; i < sides.size(); ++i) {
        auto& list = rates[i];
        std::sort(list.begin(), list.end());
        medians.push_back(list[list.size() / 2]);
        fmt::print("  {:<34} {:>10.0f} {:>10.0f} {:>10.0f} k/s  (min, median, max of {})\n",
                   sides[i].name, list.front() / 1e3, medians.back() / 1e3, list.back() / 1e3,
                   rounds);
    }
    return medians;
}

void printRatio(const std::string& what, double rate, double reference, double target) {
    fmt::print("  {:<50} {:.2f}  (target {:.2f})\n", what, reference > 0 ? rate / reference : 0,
               target);
}

}  // namespace quill::bench

#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quill::bench {

// One side of a comparison: does its work once and answers how many things it handled.
struct Side {
    std::string name;
    std::function<double()> run;
};

// Runs the sides in turn (A B A B ...) and prints rates as minimum, median and maximum. Returns the
// median rates.
std::vector<double> compare(const std::string& title, const std::vector<Side>& sides, int rounds);

// Prints "a / b = x" with the target that it should reach.
void printRatio(const std::string& what, double rate, double reference, double target);

}  // namespace quill::bench

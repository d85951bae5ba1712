#pragma once

#include <cstdio>
#include <limits>

// One line of the table at the end of a run: medians of the sides that ran in turn. bench/run_all
// collects these lines, bench/table.py prints them.
namespace bench {

inline constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

struct TableRow {
    const char* what = "";
    const char* unit = "";
    double ours = kNone;
    double floor = kNone;  // the least that any implementation must do
    double peer = kNone;
    const char* peerName = "";
    const char* wanted = "";  // the goal, in words
};

inline void printRow(const TableRow& row) {
    std::printf("@|%s|%s|%.6g|%.6g|%.6g|%s|%s\n", row.what, row.unit, row.ours, row.floor, row.peer,
                row.peerName, row.wanted);
}

}  // namespace bench

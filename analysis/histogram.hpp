// The statistics of one figure over a series of runs and its histogram,
// computed apart from any drawing so that they can be checked as numbers.
#pragma once

#include <iosfwd>
#include <span>
#include <vector>

namespace viewer {

constexpr int kBinTable = 3200;  // what the bin tables hold

// Mean and population rms (divided by the number of values, not one less).
struct RunStatistics {
    float X_MEAN = 0;
    float X_RMS = 0;
};
RunStatistics run_statistics(std::span<const float> values);

// "number of runs: ", "average value:  ", "rms value:      " after a blank line.
void print_run_statistics(std::ostream& out, int runs, const RunStatistics& st);

// The bin of X: I the bin (1-based; 0 below the range, NBIN + 1 at or above
// its top) and J 1 inside the range, 0 outside. The lower edge belongs to a
// bin, the upper edge does not; a value that rounding lets fall through
// every interval is put into bin 1. Warns on `out` when NBIN does not match
// the range and the width.
struct BinOf {
    int I = 0;
    int J = 0;
};
BinOf bin(float X, float XMAX, float XMIN, float DELTAX, int NBIN, std::ostream& out);

struct Histogram {
    int NBIN = 1;                      // bins used: 1 when all values are equal
    float XMIN = 0, XMAX = 0;          // range of the bins
    float DELTAX = 0;                  // bin width
    std::vector<float> ARRAYX;         // counts per bin, NBIN of them
    std::vector<float> X_AXIS;         // bin centres
    float AXIS_MIN = 0, AXIS_MAX = 0;  // abscissa of the frame
    float YMAX = 1;                    // top of the count axis
};

// Bins `values` into N_BINS bins (1 .. kBinTable) over their own range,
// raised a little at the top so that the largest value falls into the last
// bin. Equal values make one narrow bin on an axis 21 bins wide; no values
// make an empty frame around zero.
Histogram histogram(std::span<const float> values, int N_BINS, std::ostream& out);

}  // namespace viewer

// The blocks of a phase-scan table counted into scans: records in, one
// curve a scan out. The table carries no block header, so a scan ends on
// the record with phase 360, or when the records taken reach a multiple of
// 360.
//
//   ScanTable t = count_scans(rows, ScanOrdinate::energy, {});
//   // t.J scans, t.NP points each; scan j's point k at t.at(j, k)
#pragma once

#include <span>
#include <vector>

namespace viewer {

// One record of the phase-scan table.
struct PScanRow {
    float PHASE = 0;     // deg
    float E_MEAN = 0;    // MeV, kinetic
    float COMPRESS = 0;  // bunch length over initial bunch length
    float BET_RAT = 0;   // initial velocity over velocity
};

// What a scan curve shows of each record.
enum class ScanOrdinate {
    energy,            // E_MEAN, MeV
    slope,             // dE/dphase from the record taken before, MeV/deg
    compression,       // COMPRESS
    time_compression,  // COMPRESS * BET_RAT
};

// The phase window of a zoom, bounds included.
struct PhaseZoom {
    bool on = false;
    float lower = 0, upper = 0;  // deg
};

// The scans taken (at most NSCAN), curves of NPHASE points, curve after curve.
struct ScanTable {
    int NSCAN = 0, NPHASE = 0;
    std::vector<float> DAT;   // ordinate of point k of scan j at (j-1)*NPHASE + k-1; 0 where none was taken
    std::vector<float> DATZ;  // its phase, deg
    std::vector<float> Z;     // phase by point number, the later scans over the earlier, deg
    int J = 0;                // scans
    int NP = 0;               // points drawn per curve: the length of the last scan
    float ZMAX = -1e10f, ZMIN = 1e10f;  // phase range, deg
    float EMAX = -1e10f, EMIN = 1e10f;  // ordinate range

    const float* row(int j) const { return DAT.data() + static_cast<std::ptrdiff_t>(j - 1) * NPHASE; }
    const float* phases(int j) const { return DATZ.data() + static_cast<std::ptrdiff_t>(j - 1) * NPHASE; }
    float at(int j, int k) const { return row(j)[k - 1]; }
};

// Counts the scans of records fed one at a time, in file order.
class ScanCounter {
public:
    ScanCounter(int NSCAN, int NPHASE, ScanOrdinate what, PhaseZoom zoom);
    // Takes one record; false once no further record may be read: the
    // records taken have reached NSCAN * NPHASE, or the next one would fall
    // outside the table (more scans than NSCAN under a zoom, or a scan
    // longer than NPHASE).
    bool take(const PScanRow& r);
    // Ends the reading: a last scan that closed with nothing after it does
    // not count again, and NP is the length of the last scan.
    ScanTable finish() &&;

private:
    void close_block();
    ScanTable t_;
    ScanOrdinate what_;
    PhaseZoom zoom_;
    int I_ = 1, K_ = 0, K_OLD_ = 0;
    float E0_ = 0, PHI0_ = 0;  // the record taken before, for the slope
};

// The whole count over `rows`, stopping where the counter stops.
ScanTable count_scans(std::span<const PScanRow> rows, ScanOrdinate what, PhaseZoom zoom, int NSCAN = 500,
                      int NPHASE = 360);

}  // namespace viewer

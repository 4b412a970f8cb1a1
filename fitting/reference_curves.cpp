// Reference curves. A file holds one record a point, " x y" or " x y1 y2",
// in the plot's units, written with enough digits to read back the same
// 32-bit values; it is read in free form, so any such text file will do.
#include "fitting/reference_curves.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <ostream>
#include <string>

#include "core/fortran_format.hpp"
#include "core/run_files.hpp"
#include "core/statistics.hpp"

namespace viewer {
namespace {

// The name field holds 80 characters and ends at its first blank.
std::string file_name(const std::string& REFNAME) {
    return std::string(up_to_blank(std::string_view(REFNAME).substr(0, 79)));
}

void write_record(std::ostream& f, std::initializer_list<float> values) {
    for (float v : values) f << ' ' << fmt_float_exact(v);
    f << '\n';
}

// Records of a text file: its lines that hold anything but blanks.
int count_records(TableFile& f) {
    int count = 0;
    std::string_view line;
    while (f.next_line(line))
        if (line.find_first_not_of(" \t\r") != std::string_view::npos) ++count;
    f.rewind();
    return count;
}

void end_store(Session& s) {
    RefCurveState& ref = s.ref;
    std::ostream& out = s.con.out;
    s.fit_variables.N_FIT = 0;
    s.fit_variables.Y2_FIT = {};
    ref.store_file->close();
    const bool written = !ref.store_file->fail();
    ref.store_file.reset();
    if (!written) {
        out << "     Cannot write reference file: " << file_name(ref.store_name) << '\n';
        return;
    }
    print_rule(out);
    out << "     Data saved to reference file: " << trim_right(pad(ref.store_name, 20)) << '\n';
}

void refuse_read(Session& s, const std::string& message) {
    s.con.out << "     Cannot read reference file: " << message << '\n';
    s.fit_variables.release();
}

}  // namespace

void store(Session& s, const FitCall& c) {
    RefCurveState& ref = s.ref;
    FitVariables& fv = s.fit_variables;
    if (c.CURVE == 1) {
        s.con.prompt("     Enter file name: ");
        ref.store_name = s.con.read_item().substr(0, 80);
        const std::string name = file_name(ref.store_name);
        ref.store_file.reset();
        if (!name.empty())
            ref.store_file = std::make_unique<std::ofstream>(s.path(name), std::ios::out | std::ios::trunc);
        if (!ref.store_file || !ref.store_file->is_open()) {
            s.con.out << "     Cannot write reference file: " << name << '\n';
            ref.store_file.reset();
            fv.N_FIT = 0;
            return;
        }
    }
    if (c.N_CURVES == 1) {
        for (int j = 0; j < c.NP; ++j) write_record(*ref.store_file, {c.X[j], c.Y[j]});
        end_store(s);
        return;
    }
    if (c.CURVE == 1) {
        // Curve 1 waits in Y2_FIT until curve 2 comes with it.
        fv.Y2_FIT.assign(c.Y, c.Y + c.NP);
        fv.N_FIT = 0;
        return;
    }
    if (!ref.store_file) {  // refused, and reported, in the call of curve 1
        fv.Y2_FIT = {};
        fv.N_FIT = 0;
        return;
    }
    const int n = std::min(c.NP, static_cast<int>(fv.Y2_FIT.size()));
    for (int j = 0; j < n; ++j)
        write_record(*ref.store_file, {c.X[j], fv.Y2_FIT[static_cast<std::size_t>(j)], c.Y[j]});
    end_store(s);
}

void get_ref(Session& s, int CURVE, int N_CURVES) {
    if (CURVE != 1) return;  // the call of curve 1 read both curves
    std::ostream& out = s.con.out;
    FitVariables& fv = s.fit_variables;
    fv.N_FIT = 0;

    std::string name;
    for (;;) {
        if (!s.logo.TO_FILE) {
            print_rule(out);
            s.con.prompt("     Enter reference file name: ");
            s.ref.get_name = s.con.read_item().substr(0, 80);
        }
        name = file_name(s.ref.get_name);
        std::error_code ec;
        if (!name.empty() && std::filesystem::exists(s.path(name), ec)) break;
        out << " File doesn't exist\n";
        // A hardcopy has no prompt to name another file.
        if (s.logo.TO_FILE) {
            out << "     Reference curve left out of the hardcopy: " << name << '\n';
            return;
        }
    }

    std::error_code ec;
    TableFile f;
    if (!std::filesystem::is_regular_file(s.path(name), ec) || !f.open(s.path(name))) {
        refuse_read(s, name);
        return;
    }
    const int count = count_records(f);
    // One element more than the records, as the reading allows one attempt
    // past the last of them.
    const auto size = static_cast<std::size_t>(count) + 1;
    fv.X_FIT.assign(size, 0.0f);
    fv.Y1_FIT.assign(size, 0.0f);
    if (N_CURVES == 2) fv.Y2_FIT.assign(size, 0.0f);

    PlotState& st = s.ref.stats;
    std::size_t j = 0;
    try {
        float x = 0, y1 = 0, y2 = 0;
        // A record of more numbers than taken is read up to its end; a
        // two-curve plot takes three numbers, across line ends if need be.
        while (j < size && (N_CURVES == 1 ? read_free(f, {&x, &y1}) : read_free(f, {&x, &y1, &y2}))) {
            fv.X_FIT[j] = x;
            fv.Y1_FIT[j] = y1;
            const int I = static_cast<int>(j) + 1;
            mami(st, 1, I, x, y1);
            if (N_CURVES == 2) {
                fv.Y2_FIT[j] = y2;
                mami(st, 2, I, x, y2);
            }
            ++j;
        }
    } catch (const RecordError& e) {
        refuse_read(s, name + ", line " + std::to_string(e.line) + ", column " + std::to_string(e.column));
        return;
    }
    f.close();
    const int P = static_cast<int>(j);
    out_mami(out, st, P, N_CURVES, fv.Y1_FIT.data(), N_CURVES == 2 ? fv.Y2_FIT.data() : nullptr);
    // Only what was read is drawn: a file of another shape may give fewer
    // points than it has records.
    fv.N_FIT = P;
    if (P == 0) fv.release();
}

}  // namespace viewer

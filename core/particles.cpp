// Particle files: the strict line reader, the species, the counts and the
// weighted moments of the bunch.
#include "core/particles.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>

#include "core/number_parsing.hpp"

namespace viewer {

namespace {

constexpr double kElectron = 0.51099895000e6;  // eV
constexpr double kProton = 938.27208816e6;     // eV

std::string at_line(const std::string& file, long line) {
    return file + ", line " + std::to_string(line) + ": ";
}

// A number as short as it reads back: "7", "7.5".
std::string shown(double v) {
    char b[32];
    return std::string(b, std::to_chars(b, b + sizeof b, v).ptr);
}

// v as an int when a whole number within 10^6 of zero; bounded first, as no double past int converts.
inline bool whole(double v, int& out) {
    if (!(std::abs(v) <= 1e6)) return false;
    out = static_cast<int>(v);
    return out == v;
}

// Eight ASCII digits at p as their value, or -1 when one is no digit.
inline long long eight_digits(const char* p) {
    std::uint64_t v;
    std::memcpy(&v, p, 8);
    if ((v & 0xF0F0F0F0F0F0F0F0ULL) != 0x3030303030303030ULL ||
        ((v + 0x0606060606060606ULL) & 0xF0F0F0F0F0F0F0F0ULL) != 0x3030303030303030ULL)
        return -1;
    v = ((v & 0x0F0F0F0F0F0F0F0FULL) * 2561) >> 8;
    v = ((v & 0x00FF00FF00FF00FFULL) * 6553601) >> 16;
    return static_cast<long long>(((v & 0x0000FFFF0000FFFFULL) * 42949672960001ULL) >> 32);
}

// [-]d.dddd...[Ee][+-]dd with up to 15 decimals, the forms the tracker
// writes: m * 10^k with both factors exact, so one rounding, as from_chars.
// Sixteen digits can pass 2^53, where m itself would round first.
inline bool fast_decimal(const char* b, const char* e, double& out) {
    const bool neg = *b == '-';
    const char* p = b + (neg || *b == '+');
    if (e - p < 6 || !number::is_digit(p[0]) || p[1] != '.') return false;
    std::uint64_t m = static_cast<unsigned>(p[0] - '0');
    const char* q = p + 2;
    int decimals = 0;
    if (e - q >= 8) {
        const long long v = eight_digits(q);
        if (v >= 0) {
            m = m * 100000000 + static_cast<std::uint64_t>(v);
            q += 8;
            decimals = 8;
        }
    }
    while (q < e && number::is_digit(*q) && decimals < 15) {
        m = m * 10 + static_cast<unsigned>(*q++ - '0');
        ++decimals;
    }
    if (e - q != 4 || (q[0] != 'E' && q[0] != 'e') || (q[1] != '+' && q[1] != '-') ||
        !number::is_digit(q[2]) || !number::is_digit(q[3]))
        return false;
    const int x = (q[2] - '0') * 10 + (q[3] - '0');
    const int k = (q[1] == '-' ? -x : x) - decimals;
    if (k < -22 || k > 22 || m > number::Exact<double>::max_mantissa) return false;
    const double v = static_cast<double>(m);
    out = number::with_sign(
        k >= 0 ? v * number::Exact<double>::pow10[k] : v / number::Exact<double>::pow10[-k], neg);
    return true;
}

// A whole number of up to nine digits (species, flag), exact as a double;
// "-0" is left to the general path, which keeps its sign.
inline bool small_integer(const char* b, const char* e, double& out) {
    int i = 0;
    const auto [end, ec] = std::from_chars(b, e, i);
    if (ec != std::errc() || end != e || e - b > 10 || (i == 0 && *b == '-')) return false;
    out = i;
    return true;
}

// Blank, tab, comma or the CR of a CRLF line end, without a branch.
inline bool is_separator(char c) {
    constexpr std::uint64_t kSeparators = 1ULL << ' ' | 1ULL << '\t' | 1ULL << ',' | 1ULL << '\r';
    const auto u = static_cast<unsigned char>(c);
    return (u < 64) & static_cast<unsigned>(kSeparators >> (u & 63));
}

// A field of 20 columns as the tracker writes it, "  d.ddddddddddddE+dd" or
// " -d.ddddddddddddE-dd", checked and converted by position, eight bytes at a
// time. The value is the one fast_decimal gives its text.
inline bool field20(const char* f, double& out) {
    std::uint64_t a, b;  // bytes 0..7: blank, blank or minus, digit, point, digits; 8..15: digits
    std::uint32_t c;     // bytes 16..19: exponent letter, its sign, two digits
    std::memcpy(&a, f, 8);
    std::memcpy(&b, f + 8, 8);
    std::memcpy(&c, f + 16, 4);
    const unsigned b1 = static_cast<unsigned>(a >> 8) & 0xFF, sign = (c >> 8) & 0xFF;
    const bool ok = ((a & 0x00000000FF0000FFULL) == 0x000000002E000020ULL) &
                    ((a & 0xF0F0F0F000F00000ULL) == 0x3030303000300000ULL) &
                    ((((a & 0x0F0F0F0F000F0000ULL) + 0x0606060600060000ULL) & 0xF0F0F0F000F00000ULL) == 0) &
                    ((b & 0xF0F0F0F0F0F0F0F0ULL) == 0x3030303030303030ULL) &
                    ((((b & 0x0F0F0F0F0F0F0F0FULL) + 0x0606060606060606ULL) & 0xF0F0F0F0F0F0F0F0ULL) == 0) &
                    ((c & 0xF0F00000U) == 0x30300000U) &
                    ((((c & 0x0F0F0000U) + 0x06060000U) & 0xF0F00000U) == 0) & ((b1 == ' ') | (b1 == '-')) &
                    ((c & 0xDF) == 'E') & ((sign == '+') | (sign == '-'));
    if (!ok) return false;
    std::uint32_t x = static_cast<std::uint32_t>(a >> 32) & 0x0F0F0F0FU;  // four decimals
    x = (x * 10 + (x >> 8)) & 0x00FF00FFU;
    x = (x * 100 + (x >> 16)) & 0xFFFFU;
    b = ((b & 0x0F0F0F0F0F0F0F0FULL) * 2561) >> 8;  // eight more
    b = ((b & 0x00FF00FF00FF00FFULL) * 6553601) >> 16;
    b = ((b & 0x0000FFFF0000FFFFULL) * 42949672960001ULL) >> 32;
    const std::uint64_t m = ((a >> 16) & 0x0F) * 1000000000000ULL + x * 100000000ULL + b;
    const int xneg = sign == '-';
    const int k = ((static_cast<int>(((c >> 16) & 0x0F) * 10 + ((c >> 24) & 0x0F)) ^ -xneg) + xneg) - 12;
    if (k < -22 || k > 22) return false;
    const auto at = static_cast<std::size_t>(k + 22);
    const double up = static_cast<double>(static_cast<std::int64_t>(m)) * number::ExactScale<double>::up[at];
    out = number::with_sign(up / number::ExactScale<double>::down[at], b1 == '-');
    return true;
}

// A number filling a field of 12 columns (4 decimals) or 20 (12 decimals),
// as the tracker writes them, and ended by a separator or the end of the
// line: its end, or null. The exponent letter in column 9 tells the widths
// apart. Read where it stands, the field needs no search for its end.
inline const char* column_field(const char* p, const char* e, double& out) {
    const std::ptrdiff_t left = e - p;
    if (left >= 12 && ((p[8] | 0x20) == 'e' || (p[8] | 0x20) == 'd')) {
        double num, den;
        if (!number::e12_4_factors(p, num, den) || (left > 12 && !is_separator(p[12]))) return nullptr;
        out = num / den;
        return p + 12;
    }
    if (left < 20 || !field20(p, out) || (left > 20 && !is_separator(p[20]))) return nullptr;
    return p + 20;
}

}  // namespace

double rest_energy_ev(int species) {
    switch (species) {
        case 1:
        case 2:
            return kElectron;
        case 3:
            return kProton;
        case 4:
            return kProton + 2 * kElectron;
        default:
            return 0;
    }
}

double Particle::kinetic_ev() const {
    const double m = rest();
    const double p2 = px * px + py * py + pz * pz;
    // sqrt(p² + m²) - m without the cancellation at low momentum
    return p2 / (std::sqrt(p2 + m * m) + m);
}

void parse_particle_line(std::string_view line, std::array<double, 10>& v, const std::string& file,
                         long line_no) {
    const char* p = line.data();
    const char* e = p + line.size();
    std::size_t n = 0;
    for (;;) {
        double d = 0;
        if (const char* end = n < v.size() ? column_field(p, e, d) : nullptr) {
            v[n++] = d;
            p = end;
            continue;
        }
        while (p < e && is_separator(*p)) ++p;
        if (p == e) break;
        if (n == v.size())
            throw ParticleError(at_line(file, line_no) + "more than 10 numbers where a particle has 10");
        const char* b = p;
        while (p < e && !is_separator(*p)) ++p;
        if (!small_integer(b, p, d) && !fast_decimal(b, p, d) && !number::parse_number(b, p, 0, d))
            throw ParticleError(file + ", line " + std::to_string(line_no) + ", column " +
                                std::to_string(b - line.data() + 1) + ": cannot read a number from \"" +
                                std::string(b, p) + "\"");
        if (!std::isfinite(d))
            throw ParticleError(at_line(file, line_no) + "the number \"" + std::string(b, p) +
                                "\" is not finite");
        v[n++] = d;
    }
    if (n != v.size())
        throw ParticleError(at_line(file, line_no) + std::to_string(n) + " numbers where a particle has 10");
}

ParticleReader::ParticleReader(const std::string& path) {
    if (!f_.open(path)) throw ParticleError(path + ": cannot be opened as a particle file");
    Particle p;
    if (!next(p)) {
        if (cut_short_) throw ParticleError(path + ": its only line is cut short");
        throw ParticleError(path + ": the file is empty");
    }
    rewind();
}

Particle ParticleReader::from(const std::array<double, 10>& v, bool reference, long line_no) const {
    Particle p;
    p.x = v[0];
    p.y = v[1];
    p.z = reference ? v[2] : ref_.z + v[2];
    p.px = v[3];
    p.py = v[4];
    p.pz = reference ? v[5] : ref_.pz + v[5];
    p.clock = reference ? v[6] : ref_.clock + v[6];
    p.charge = v[7];
    if (!whole(v[8], p.species) || rest_energy_ev(p.species) == 0)
        throw ParticleError(at_line(f_.name(), line_no) + "unknown species index " + shown(v[8]) +
                            " (1 electron, 2 positron, 3 proton, 4 hydrogen ion)");
    if (!whole(v[9], p.flag))
        throw ParticleError(at_line(f_.name(), line_no) + "the status flag " + shown(v[9]) +
                            " is no whole number");
    return p;
}

bool ParticleReader::next(Particle& p) {
    std::string_view line;
    for (;;) {
        if (!f_.next_line(line)) return false;
        if (line.find_first_not_of(" \t\r") != std::string_view::npos) break;
    }
    std::array<double, 10> v{};
    try {
        parse_particle_line(line, v, f_.name(), f_.line_number());
    } catch (const ParticleError&) {
        // The tracker writes the file in one go: only the very last line,
        // without its line end, may be one still being written.
        if (f_.line_ended()) throw;
        std::string_view rest;
        if (f_.next_line(rest)) throw;
        cut_short_ = true;
        return false;
    }
    const bool reference = first_;
    p = from(v, reference, f_.line_number());
    if (reference) {
        ref_ = p;
        ref_line_ = f_.line_number();
    }
    first_ = false;
    return true;
}

void ParticleReader::rewind() {
    f_.rewind();
    first_ = true;
}

void ParticleCounts::add(const Particle& p) {
    ++total;
    if (p.active()) {
        ++active;
        probes += p.probe();
        charge += p.charge;
    } else if (p.not_emitted()) {
        ++not_emitted;
    } else {
        ++lost;
    }
}

BunchMoments::BunchMoments(const Particle& reference) : ref_(reference), ref_e_(reference.kinetic_ev()) {}

void BunchMoments::add(const Particle& p) {
    add(p, p.active() ? p.kinetic_ev() : 0);
}

void BunchMoments::add(const Particle& p, double e_kin) {
    counts_.add(p);
    if (!p.active()) return;
    const double w = p.charge;
    const double d[N] = {p.x - ref_.x,   p.y - ref_.y,   p.z - ref_.z,   p.px - ref_.px,
                         p.py - ref_.py, p.pz - ref_.pz, e_kin - ref_e_, p.clock - ref_.clock};
    w_ += w;
    for (int k = 0; k < N; ++k) s_[k] += w * d[k];
    q_[0] += w * d[X] * d[X];
    q_[1] += w * d[PX] * d[PX];
    q_[2] += w * d[X] * d[PX];
    q_[3] += w * d[Y] * d[Y];
    q_[4] += w * d[PY] * d[PY];
    q_[5] += w * d[Y] * d[PY];
    q_[6] += w * d[Z] * d[Z];
    q_[7] += w * d[E] * d[E];
    q_[8] += w * d[Z] * d[E];
    q_[9] += w * d[T] * d[T];
}

void BunchMoments::merge(const BunchMoments& o) {
    counts_.total += o.counts_.total;
    counts_.active += o.counts_.active;
    counts_.probes += o.counts_.probes;
    counts_.not_emitted += o.counts_.not_emitted;
    counts_.lost += o.counts_.lost;
    counts_.charge += o.counts_.charge;
    w_ += o.w_;
    for (int k = 0; k < N; ++k) s_[k] += o.s_[k];
    for (std::size_t k = 0; k < q_.size(); ++k) q_[k] += o.q_[k];
}

namespace {

// Central second moment from shifted sums; never below zero.
double central(double q, double a, double b, double w) {
    return q / w - (a / w) * (b / w);
}
double root(double v) {
    return v > 0 ? std::sqrt(v) : 0;
}

PlaneStats plane(double w, double ref, double sx, double refp, double sp, double xx, double pp, double xp,
                 double pz, double mc) {
    PlaneStats s;
    const double rms = root(xx), prms = root(pp);
    s.avg = (ref + sx / w) * 1e3;
    s.avg_xp = (refp + sp / w) / pz * 1e3;
    s.rms = rms * 1e3;
    s.xp_rms = prms / pz * 1e3;
    s.emit_n = root(xx * pp - xp * xp) / mc * 1e6;
    s.cov_xxp = xp / pz * 1e6;
    s.corr = rms > 0 ? xp / pz / rms * 1e3 : 0;
    const double xpxp = pp / (pz * pz), xxp = xp / pz;
    const double eps = root(xx * xpxp - xxp * xxp);  // m rad
    s.emit_geo = eps * 1e6;
    if (eps > 0) {
        s.beta = xx / eps;
        s.alpha = -xxp / eps;
        s.gamma = xpxp / eps;
    }
    return s;
}

}  // namespace

BunchStats BunchMoments::stats() const {
    BunchStats s;
    s.counts = counts_;
    s.z_ref = ref_.z;
    if (counts_.active == 0 || w_ == 0) return s;
    const double w = w_;
    auto c = [&](int k, int a, int b) { return central(q_[static_cast<std::size_t>(k)], s_[a], s_[b], w); };
    const double pz = ref_.pz + s_[PZ] / w;
    const double mc = ref_.rest();
    s.x = plane(w, ref_.x, s_[X], ref_.px, s_[PX], c(0, X, X), c(1, PX, PX), c(2, X, PX), pz, mc);
    s.y = plane(w, ref_.y, s_[Y], ref_.py, s_[PY], c(3, Y, Y), c(4, PY, PY), c(5, Y, PY), pz, mc);
    s.z_avg = ref_.z + s_[Z] / w;
    s.clock_avg = ref_.clock + s_[T] / w;
    const double zz = c(6, Z, Z), ee = c(7, E, E), ze = c(8, Z, E);
    s.e_kin = (ref_e_ + s_[E] / w) * 1e-6;
    s.z_rms = root(zz) * 1e3;
    s.t_rms = root(c(9, T, T)) * 1e3;
    s.de_rms = root(ee) * 1e-3;
    s.emit_z = root(zz * ee - ze * ze);  // m eV = mm keV
    s.corr_z = zz > 0 ? ze / root(zz) * 1e-3 : 0;
    s.pz_avg = pz * 1e-6;
    s.beta_avg = pz / std::sqrt(pz * pz + mc * mc);
    return s;
}

std::vector<ParticleFileName> particle_files(const std::string& dir, const std::string& project,
                                             const std::string& run_digits) {
    namespace fs = std::filesystem;
    std::vector<ParticleFileName> out;
    std::error_code ec;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        if (!it->is_regular_file(ec)) continue;
        const std::string n = it->path().filename().string();
        if (n.size() > 4 && n.ends_with(".ini")) {
            out.push_back({n, -1});
            continue;
        }
        // PROJECT.NNNN.RUN
        const std::string head = project + ".";
        const std::string tail = "." + run_digits;
        if (n.size() != head.size() + 4 + tail.size() || !n.starts_with(head) || !n.ends_with(tail)) continue;
        const std::string digits = n.substr(head.size(), 4);
        if (!std::all_of(digits.begin(), digits.end(), number::is_digit)) continue;
        out.push_back({n, std::stoi(digits)});
    }
    std::sort(out.begin(), out.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return out;
}

}  // namespace viewer

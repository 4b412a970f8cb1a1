// Particle files over any bytes: the input as a file of a run, its
// statistics, and each of its lines through the line parser. A refusal
// (ParticleError) is the reader's answer; anything else escaping, a crash or
// a hang is a finding. Read in parts, a file reads as in one stream.
// Wherever a line reads as ten numbers, it holds ten numbers, and each that
// the library reads whole has the library's value, bit for bit.
#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "core/particles.hpp"
#include "fuzz/fuzz_support.hpp"

namespace {

bool separator(char c) {
    return c == ' ' || c == '\t' || c == ',' || c == '\r';
}

// The line's numbers against from_chars, for a line the parser took.
void check_values(std::string_view line, const std::array<double, 10>& v) {
    std::size_t n = 0;
    for (std::size_t at = 0; at < line.size();) {
        if (separator(line[at])) {
            ++at;
            continue;
        }
        std::size_t end = at;
        while (end < line.size() && !separator(line[end])) ++end;
        if (n == v.size()) std::abort();  // an eleventh number taken
        double slow = 0;
        const char* b = line.data() + at;
        const char* e = line.data() + end;
        const auto r = std::from_chars(b, e, slow);
        // The library has no leading plus, and reads a D exponent or a
        // bare exponent sign only in part: such numbers are not compared.
        if (*b != '+' && r.ptr == e && r.ec == std::errc{} && std::memcmp(&slow, &v[n], sizeof slow) != 0)
            std::abort();
        ++n;
        at = end;
    }
    if (n != v.size()) std::abort();
}

// The file read as one stream and in three parts: the same particles in
// the same order, the same end, or the same refusal.
void check_parts(const std::string& path) {
    using namespace viewer;
    auto add = [](std::string& to, const Particle& p) {
        to.append(reinterpret_cast<const char*>(&p.x), sizeof p.x);
        to.append(reinterpret_cast<const char*>(&p.pz), sizeof p.pz);
        to += std::to_string(p.flag) + ";";
    };
    auto read = [&](int parts) {
        std::string got;
        try {
            ParticleReader f(path);
            if (parts == 0) {
                for (Particle p; f.next(p);) add(got, p);
            } else {
                std::array<std::string, 3> of;  // a part each: the parts run on threads of their own
                f.read_in_parts(parts, [&](int k, ParticleBatch b) {
                    for (const Particle& p : b) add(of[static_cast<std::size_t>(k)], p);
                });
                for (const std::string& o : of) got += o;
            }
            got += f.cut_short() ? "cut" : "whole";
        } catch (const ParticleError& e) {
            got = e.what();
        }
        return got;
    };
    if (read(0) != read(3)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace viewer;
    const std::string path = fuzz::write_file("fuzz.0001.001", data, size);
    try {
        const ParticleCounts c = summarise_particles(path).stats.counts;
        if (c.active <= 0 || c.probes > c.active || c.total != c.active + c.not_emitted + c.lost)
            std::abort();
    } catch (const ParticleError&) {
    }
    check_parts(path);

    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::string name = "fuzz.0001.001";
    std::array<double, 10> v{};
    long line_no = 0;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = text.find('\n', at);
        if (end == std::string_view::npos) end = text.size();
        const std::string_view line = text.substr(at, end - at);
        try {
            parse_particle_line(line, v, name, ++line_no);
            check_values(line, v);
        } catch (const ParticleError&) {
        }
        at = end + 1;
    }
    return 0;
}

// A particle file read in parts, a thread each: where the parts begin, the
// lines of one part, and the first bad line in file order named as the
// single stream would name it; and the statistics of a file read so.
#include <sys/stat.h>

#include <algorithm>
#include <exception>
#include <system_error>
#include <thread>

#include "core/particles.hpp"

namespace viewer {

namespace {

constexpr std::uint64_t kPartBytes = 1 << 18;  // less is not worth a thread
constexpr int kMaxParts = 8;                   // threads, and their buffers, at most
constexpr std::size_t kBatch = 512;            // particles handed over at a time

bool blank(std::string_view line) {
    return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

// Part k has failed: the parts after it need not go on.
void failed_at(std::atomic<int>& first, int k) {
    for (int b = first.load(); k < b && !first.compare_exchange_weak(b, k);) {
    }
}

}  // namespace

// How one part ended.
struct ParticleReader::PartEnd {
    long lines = 0;     // read, blank ones and a cut one too
    std::string bad;    // the first line that is no particle
    long bad_line = 0;  // its number within the part, from 1; 0 for none
    bool cut_short = false;
    std::exception_ptr failed;  // a read error, or what `take` threw
};

int ParticleReader::threads() const {
    if (threads_ > 0) return threads_;
    struct stat st {};
    if (::stat(name().c_str(), &st) != 0 || st.st_size <= 0) return 1;
    const auto cores = static_cast<std::uint64_t>(std::max(1u, std::thread::hardware_concurrency()));
    const std::uint64_t parts = static_cast<std::uint64_t>(st.st_size) / kPartBytes;
    return static_cast<int>(std::clamp<std::uint64_t>(parts, 1, std::min<std::uint64_t>(cores, kMaxParts)));
}

void ParticleReader::read_part(int k, std::uint64_t begin, std::uint64_t end, const PartSink& take,
                               PartEnd& out, std::atomic<int>& first_bad) const {
    try {
        std::vector<Particle> batch;
        batch.reserve(kBatch);
        if (k == 0) batch.push_back(ref_);
        // A reader of its own on the part's bytes, so that the parts are read side by side.
        TableFile f;
        if (!f.open(name(), begin, end))
            throw ParticleError(name() + ": cannot be opened as a particle file");
        std::array<double, 10> v{};
        std::string_view line;
        auto stop = [&](std::string_view bad) {
            out.bad.assign(bad);
            out.bad_line = out.lines;
            failed_at(first_bad, k);
        };
        while (f.next_line(line)) {
            const bool ended = f.line_ended();
            ++out.lines;
            if (blank(line)) continue;
            try {
                parse_particle_line(line, v, name(), out.lines);
            } catch (const ParticleError&) {
                // as next(): only a last line without its end is one still being written
                if (ended)
                    stop(line);
                else
                    out.cut_short = true;
                break;
            }
            try {
                batch.push_back(from(v, false, out.lines));
            } catch (const ParticleError&) {
                stop(line);
                break;
            }
            if (batch.size() == kBatch) {
                if (first_bad.load(std::memory_order_relaxed) < k) return;  // an earlier part has failed
                take(k, batch);
                batch.clear();
            }
        }
        if (out.bad_line == 0 && !batch.empty()) take(k, batch);
    } catch (...) {
        out.failed = std::current_exception();
        failed_at(first_bad, k);
    }
}

void ParticleReader::read_in_parts(int parts, const PartSink& take) {
    parts = std::clamp(parts, 1, kMaxParts);
    struct stat st {};
    if (::stat(name().c_str(), &st) != 0)
        throw ParticleError(name() + ": cannot be opened as a particle file");
    const auto size = static_cast<std::uint64_t>(std::max<off_t>(st.st_size, 0));
    // Part 0 begins past the reference particle, which it hands out first;
    // every other part at the first line that begins in its share.
    std::vector<std::uint64_t> at(static_cast<std::size_t>(parts) + 1, size);
    at[0] = std::min(line_after(name(), 0, ref_line_), size);
    for (int k = 1; k < parts; ++k) {
        const std::uint64_t share =
            at[0] + (size - at[0]) / static_cast<std::uint64_t>(parts) * static_cast<std::uint64_t>(k);
        at[static_cast<std::size_t>(k)] =
            std::max(at[static_cast<std::size_t>(k) - 1],
                     share > at[0] ? std::min(line_after(name(), share - 1), size) : at[0]);
    }
    std::vector<PartEnd> ends(static_cast<std::size_t>(parts));
    std::atomic<int> first_bad{parts};
    auto run = [&](int k) {
        const auto i = static_cast<std::size_t>(k);
        read_part(k, at[i], at[i + 1], take, ends[i], first_bad);
    };
    {
        std::vector<std::jthread> threads;
        threads.reserve(static_cast<std::size_t>(parts));
        std::vector<int> left;  // parts no thread could be started for
        for (int k = 1; k < parts; ++k) {
            try {
                threads.emplace_back(run, k);
            } catch (const std::system_error&) {
                left.push_back(k);
            }
        }
        run(0);
        for (int k : left) run(k);
    }  // joined
    long before = ref_line_;
    for (const PartEnd& e : ends) {
        if (e.failed) std::rethrow_exception(e.failed);
        if (e.bad_line > 0) {
            // The same line again, now with its number in the file: it
            // throws what the single stream throws.
            const long line_no = before + e.bad_line;
            std::array<double, 10> v{};
            parse_particle_line(e.bad, v, name(), line_no);
            (void)from(v, false, line_no);
            throw ParticleError(name() + ", line " + std::to_string(line_no) + ": not a particle");
        }
        if (e.cut_short) {
            cut_short_ = true;
            cut_line_ = before + e.lines;
        }
        before += e.lines;
    }
}

ParticleSummary summarise_particles(const std::string& path) {
    ParticleReader f(path);
    std::vector<BunchMoments> m(static_cast<std::size_t>(f.threads()), BunchMoments(f.reference()));
    f.read_in_parts(static_cast<int>(m.size()), [&](int k, ParticleBatch b) {
        for (const Particle& p : b) m[static_cast<std::size_t>(k)].add(p);
    });
    for (std::size_t k = 1; k < m.size(); ++k) m[0].merge(m[k]);
    ParticleSummary out{path, m[0].stats(), f.cut_short(), f.cut_short() ? f.cut_line() : 0};
    if (out.stats.counts.active == 0) throw ParticleError(path + ": no active particle");
    return out;
}

}  // namespace viewer

// Studies: the walk over a folder tree, the figures of each run from its
// beam tables, the cache that reads a table only when it changed, and the
// Pareto front.
#include "core/study.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <ostream>
#include <set>
#include <stdexcept>
#include <thread>
#include <tuple>

#include "core/run_catalogue.hpp"

namespace viewer {

namespace {

namespace fs = std::filesystem;

// The beam tables of a study and the rms field whose minimum is a figure.
struct BeamTable {
    Kind kind;
    const char* tag;  // of the minimum's figures
    int rms;
};
constexpr BeamTable kTables[] = {
    {Kind::Xemit, "X", xemit::X_RMS}, {Kind::Yemit, "Y", yemit::Y_RMS}, {Kind::Zemit, "Z", zemit::Z_RMS}};
constexpr int kFieldsPerTable = 7;
constexpr int kMaxDepth = 8;

// Figures: Z_MEAN and CLOCK of the last record (of the first table there),
// the other fields of each table, then the minima of the rms sizes.
std::vector<FigureSpec> make_figures() {
    std::vector<FigureSpec> f = {{"Z_MEAN", "m"}, {"CLOCK", "ns"}};
    for (const BeamTable& t : kTables)
        for (const Field& fld : run_kind(t.kind).fields.subspan(2)) f.push_back({fld.name, fld.unit});
    for (const BeamTable& t : kTables) {
        f.push_back({std::string(t.tag) + "_RMS_MIN", "mm"});
        f.push_back({std::string(t.tag) + "_RMS_MIN_Z", "m"});
    }
    return f;
}

bool stat_of(const std::string& p, std::uintmax_t& size, std::int64_t& ns) {
    struct stat st {};
    if (::stat(p.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return false;
    size = static_cast<std::uintmax_t>(st.st_size);
    ns = static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1'000'000'000 + st.st_mtim.tv_nsec;
    return true;
}

TableFigures read_table(const std::string& path, Kind kind, int rms) {
    TableFigures f;
    TableFile file;
    if (!file.open(path)) return f;
    RunRecord r(run_kind(kind));
    try {
        while (r.read(file)) {
            const float z = r.real(0), v = r.real(rms);
            if (f.records == 0 || v < f.min_rms) {
                f.min_rms = v;
                f.min_rms_z = z;
            }
            ++f.records;
        }
    } catch (const RecordError&) {
        // a damaged record ends what the study takes of the table
    }
    if (f.records > 0)
        for (int k = 0; k < kFieldsPerTable; ++k) f.last.push_back(r.real(k));
    return f;
}

// "project.Xemit.001" → project, kind index, run; false for any other name.
bool beam_table_name(const std::string& name, std::string& project, int& table, int& run) {
    if (name.size() < 5 || name[name.size() - 4] != '.') return false;
    const std::string digits = name.substr(name.size() - 3);
    if (digits.find_first_not_of("0123456789") != std::string::npos) return false;
    const std::string stem = name.substr(0, name.size() - 4);
    for (int k = 0; k < 3; ++k) {
        const std::string suffix = run_kind(kTables[k].kind).suffix;
        if (stem.size() > suffix.size() && stem.ends_with(suffix)) {
            project = stem.substr(0, stem.size() - suffix.size());
            table = k;
            run = std::stoi(digits);
            return true;
        }
    }
    return false;
}

void fill(StudyRun& r, StudyCache& cache) {
    const std::size_t n = study_figures().size();
    r.values.assign(n, std::nullopt);
    bool any = false, recent = false;
    std::vector<float> ends;
    for (int k = 0; k < 3; ++k) {
        const RunKind& kind = run_kind(kTables[k].kind);
        char digits[8];
        std::snprintf(digits, sizeof digits, ".%03d", r.run);
        const std::string path = r.dir() + "/" + run_file_name(kind, r.project, digits);
        std::uintmax_t size;
        std::int64_t ns;
        if (!stat_of(path, size, ns)) continue;
        const TableFigures t = cache.figures(path, k);
        recent = recent || t.recent;
        r.records = std::max(r.records, t.records);
        if (t.last.empty()) continue;
        any = true;
        ends.push_back(t.last[0]);
        if (!r.values[0]) {
            r.values[0] = t.last[0];
            r.values[1] = t.last[1];
        }
        for (int f = 2; f < kFieldsPerTable; ++f)
            r.values[static_cast<std::size_t>(2 + k * 5 + f - 2)] = t.last[static_cast<std::size_t>(f)];
        r.values[static_cast<std::size_t>(17 + 2 * k)] = t.min_rms;
        r.values[static_cast<std::size_t>(18 + 2 * k)] = t.min_rms_z;
    }
    if (!any)
        r.state = RunState::empty;
    else if (recent)
        r.state = RunState::growing;
    else if (std::any_of(ends.begin(), ends.end(), [&](float z) { return z != ends.front(); }))
        r.state = RunState::partial;
    else
        r.state = RunState::complete;
}

// A folder met in the walk, taken unless it leads out of the root by a link or was walked already.
bool admitted(const fs::path& p, const fs::path& top, std::set<std::string>& seen) {
    std::error_code ec;
    if (!fs::is_directory(p, ec)) return false;
    const fs::path real = fs::canonical(p, ec);
    if (ec) return false;
    // a link leading out of the root, or back into a folder seen, is not followed
    const auto inside = real.lexically_relative(top);
    if (fs::is_symlink(p, ec) && (inside.empty() || *inside.begin() == "..")) return false;
    return seen.insert(real.string()).second;
}

}  // namespace

const std::vector<FigureSpec>& study_figures() {
    static const std::vector<FigureSpec> f = make_figures();  // a constant table, built once
    return f;
}

int figure_index(std::string_view name) {
    const auto& f = study_figures();
    for (std::size_t k = 0; k < f.size(); ++k)
        if (f[k].name == name) return static_cast<int>(k);
    return -1;
}

const std::vector<std::string>& default_figures() {
    static const std::vector<std::string> d = {"NX_EMIT", "NY_EMIT", "X_RMS", "Y_RMS", "Z_RMS", "E_MEAN"};
    return d;
}

const char* state_name(RunState s) {
    switch (s) {
        case RunState::complete:
            return "complete";
        case RunState::growing:
            return "growing";
        case RunState::empty:
            return "empty";
        case RunState::partial:
            return "partial";
    }
    return "";
}

std::string StudyRun::dir() const {
    return folder == "." ? root : root + "/" + folder;
}

std::string StudyRun::name() const {
    char digits[8];
    std::snprintf(digits, sizeof digits, "%03d", run);
    return (folder == "." ? "" : folder + "/") + project + "," + digits;
}

TableFigures StudyCache::figures(const std::string& path, int kind_index) {
    std::uintmax_t size = 0;
    std::int64_t ns = 0;
    if (!stat_of(path, size, ns)) return {};
    {
        std::lock_guard lock(m_);
        if (auto it = entries_.find(path); it != entries_.end() && it->second.size == size &&
                                           it->second.modified_ns == ns && !it->second.f.recent)
            return it->second.f;
    }
    const BeamTable& t = kTables[kind_index];
    TableFigures f = read_table(path, t.kind, t.rms);
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    f.recent = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count() - ns < 60'000'000'000LL;
    std::lock_guard lock(m_);
    entries_[path] = {size, ns, f};
    ++reads_;
    return f;
}

std::size_t StudyCache::size() const {
    std::lock_guard lock(m_);
    return entries_.size();
}

std::size_t StudyCache::reads() const {
    std::lock_guard lock(m_);
    return reads_;
}

std::vector<StudyRun> runs_of_folder(const std::string& root, const std::string& folder, StudyCache& cache) {
    std::map<std::pair<std::string, int>, StudyRun> found;
    const std::string dir = folder == "." ? root : root + "/" + folder;
    std::error_code ec;
    for (fs::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        std::string project;
        int table = 0, run = 0;
        if (!beam_table_name(it->path().filename().string(), project, table, run)) continue;
        StudyRun& r = found[{project, run}];
        r.root = root;
        r.folder = folder;
        r.project = project;
        r.run = run;
    }
    std::vector<StudyRun> out;
    for (auto& [key, r] : found) {
        fill(r, cache);
        out.push_back(std::move(r));
    }
    return out;
}

std::vector<std::string> study_folders(const std::string& root, const std::string& from,
                                       std::set<std::string>& seen, std::ostream& err) {
    std::error_code ec;
    if (!fs::is_directory(root, ec)) throw std::runtime_error(root + " is no folder");
    const fs::path top = fs::canonical(root, ec);
    int depth = 0;
    if (from == ".") {
        seen.insert(top.string());
    } else {
        for (const auto& part : fs::path(from).lexically_normal()) depth += !part.empty() && part != ".";
        if (depth > kMaxDepth || !admitted(fs::path(root) / from, top, seen)) return {};
    }
    std::vector<std::string> folders;
    // depth first, in name order, so the table comes out the same each time
    std::vector<std::pair<fs::path, int>> todo{{from == "." ? fs::path(root) : fs::path(root) / from, depth}};
    while (!todo.empty()) {
        auto [dir, level] = todo.back();
        todo.pop_back();
        const std::string rel = dir.lexically_relative(root).string();
        fs::directory_iterator it(dir, ec);
        if (ec) {
            err << "viewer: " << dir.string() << ": " << ec.message() << ", left out\n";
            continue;
        }
        folders.push_back(rel.empty() ? "." : rel);
        if (level >= kMaxDepth) continue;
        std::vector<fs::path> subs;
        for (fs::directory_iterator end; !ec && it != end; it.increment(ec))
            if (admitted(it->path(), top, seen)) subs.push_back(it->path());
        std::sort(subs.rbegin(), subs.rend());
        for (const fs::path& p : subs) todo.push_back({p, level + 1});
    }
    return folders;
}

Study run_study(const std::vector<std::string>& roots, StudyCache& cache, std::ostream& err, int threads) {
    struct Folder {
        std::string root, folder;
    };
    std::vector<Folder> folders;
    for (const std::string& root : roots) {
        std::set<std::string> seen;
        for (std::string& f : study_folders(root, ".", seen, err)) folders.push_back({root, std::move(f)});
    }
    // Runs folder by folder on every core; each folder's runs stay together.
    std::vector<std::vector<StudyRun>> per(folders.size());
    std::atomic<std::size_t> next{0};
    auto work = [&] {
        for (std::size_t k; (k = next++) < folders.size();)
            per[k] = runs_of_folder(folders[k].root, folders[k].folder, cache);
    };
    const unsigned n =
        threads > 0 ? static_cast<unsigned>(threads) : std::max(1u, std::thread::hardware_concurrency());
    std::vector<std::thread> pool;
    for (unsigned t = 1; t < n; ++t) pool.emplace_back(work);
    work();
    for (std::thread& t : pool) t.join();
    Study s;
    for (auto& v : per)
        for (StudyRun& r : v) s.runs.push_back(std::move(r));
    std::stable_sort(s.runs.begin(), s.runs.end(), [](const StudyRun& a, const StudyRun& b) {
        return std::tie(a.root, a.folder, a.project, a.run) < std::tie(b.root, b.folder, b.project, b.run);
    });
    return s;
}

std::vector<bool> pareto_front(const std::vector<std::vector<std::optional<double>>>& rows,
                               const std::vector<bool>& larger) {
    const std::size_t n = rows.size(), m = larger.size();
    std::vector<bool> complete(n), on(n, false);
    for (std::size_t i = 0; i < n; ++i)
        complete[i] =
            std::all_of(rows[i].begin(), rows[i].end(), [](const auto& v) { return v.has_value(); });
    auto better_or_equal = [&](std::size_t a, std::size_t b, std::size_t k) {  // a at least as good as b
        const double x = *rows[a][k], y = *rows[b][k];
        return larger[k] ? x >= y : x <= y;
    };
    for (std::size_t i = 0; i < n; ++i) {
        if (!complete[i]) continue;
        bool dominated = false;
        for (std::size_t j = 0; j < n && !dominated; ++j) {
            if (j == i || !complete[j]) continue;
            bool all = true, strictly = false;
            for (std::size_t k = 0; k < m && all; ++k) {
                all = better_or_equal(j, i, k);
                strictly = strictly || !better_or_equal(i, j, k);
            }
            dominated = all && strictly;
        }
        on[i] = !dominated;
    }
    return on;
}

std::vector<bool> pareto_front(const Study& s, const std::vector<std::string>& figures) {
    std::vector<int> at;
    std::vector<bool> larger;
    for (const std::string& f : figures) {
        const bool up = f.starts_with("-");
        at.push_back(figure_index(up ? std::string_view(f).substr(1) : std::string_view(f)));
        if (at.back() < 0) throw std::runtime_error("unknown figure " + f);
        larger.push_back(up);
    }
    std::vector<std::vector<std::optional<double>>> rows;
    for (const StudyRun& r : s.runs) {
        rows.emplace_back();
        for (int k : at) rows.back().push_back(r.values[static_cast<std::size_t>(k)]);
    }
    return pareto_front(rows, larger);
}

std::vector<std::string> shortest_names(const std::vector<StudyRun>& runs) {
    // the folders of each run, from the last up
    std::vector<std::vector<std::string>> parts;
    for (const StudyRun& r : runs) {
        std::vector<std::string> p;
        const fs::path full = fs::path(r.root) / r.folder;
        for (const auto& e : full.lexically_normal()) p.push_back(e.string());
        std::reverse(p.begin(), p.end());
        std::erase_if(p, [](const std::string& e) { return e.empty() || e == "."; });
        parts.push_back(std::move(p));
    }
    std::vector<std::string> names(runs.size());
    std::vector<std::size_t> depth(runs.size(), 0);
    for (bool again = true; again;) {
        for (std::size_t i = 0; i < runs.size(); ++i) {
            std::string n;
            for (std::size_t d = depth[i]; d-- > 0;) n += (d < parts[i].size() ? parts[i][d] : "") + "/";
            char digits[8];
            std::snprintf(digits, sizeof digits, "%d", runs[i].run);
            names[i] = n + runs[i].project + "," + digits;
        }
        again = false;
        for (std::size_t i = 0; i < runs.size(); ++i) {
            bool twin = false;
            for (std::size_t j = 0; j < runs.size() && !twin; ++j) twin = i != j && names[i] == names[j];
            if (twin && depth[i] < parts[i].size()) {
                ++depth[i];  // one folder more, then all are compared again
                again = true;
            }
        }
    }
    return names;
}

}  // namespace viewer

// The run load: which of the twenty-two kinds exist, their units and counts.
#include "app/run_load.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <ostream>

#include "core/fortran_format.hpp"
#include "core/run_catalogue.hpp"

namespace viewer {
namespace {

[[noreturn]] void stop_with(Session& s, const std::string& text) {
    s.con.out << "\n          " << text << "\n          Program stops\n";
    s.con.out.flush();
    exit_prog();
}

bool exists(Session& s, const std::string& name) {
    std::error_code ec;
    bool e = std::filesystem::exists(s.path(name), ec);
    if (ec) stop_with(s, "Error while inquire file: " + std::string(trim_right(pad(name, 30))));
    return e;
}

void open_unit(Session& s, int unit, const std::string& name) {
    if (!s.unit(unit).open(s.path(name)))
        stop_with(s, "Error while opening file: " + std::string(trim_right(pad(name, 30))));
}

// Text records: non-blank lines. Nullopt when the file looks binary: an "H"
// in the first item of a line, for a text table starts with numbers.
std::optional<int> count_text(TableFile& f) {
    int count = 0;
    std::string_view line;
    while (f.next_line(line)) {
        std::size_t i = 0;
        while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
        if (i == line.size()) continue;
        std::size_t j = i;
        while (j < line.size() && j - i < 4 && line[j] != ' ' && line[j] != ',' && line[j] != '/' &&
               line[j] != '\t')
            ++j;
        std::string_view dummy = line.substr(i, j - i);
        if (dummy.find('H') != std::string_view::npos) return std::nullopt;
        ++count;
    }
    return count;
}

// Binary records of eight 64-bit reals and two 32-bit integers, each framed
// by its length; nullopt on a record that cannot be read.
std::optional<int> count_binary(const std::string& path) {
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    constexpr std::uint32_t kRecord = 8 * 8 + 2 * 4;
    int count = 0;
    std::optional<int> result;
    for (;;) {
        std::uint32_t len = 0, tail = 0;
        ssize_t got = ::read(fd, &len, sizeof len);
        if (got == 0) {
            result = count;
            break;
        }
        if (got != sizeof len || len < kRecord) break;
        if (::lseek(fd, len, SEEK_CUR) < 0) break;
        if (::read(fd, &tail, sizeof tail) != sizeof tail || tail != len) break;
        ++count;
    }
    ::close(fd);
    return result;
}

}  // namespace

void get_size(Session& s, const std::string& name, int& count) {
    std::error_code ec;
    const std::string path = s.path(name);
    bool there = std::filesystem::exists(path, ec);
    if (ec) {
        s.con.out << "\n          File " << pad(name, 30) << "doesn't exist\n          Program stops\n";
        exit_prog();
    }
    TableFile f;
    if (!there || !f.open(path)) {
        s.con.out << "          File " << pad(name, 30) << " not found\n          Program stops\n";
        exit_prog();
    }
    if (auto n = count_text(f)) {
        count = *n;
        return;
    }
    f.close();
    auto n = count_binary(path);
    if (!n) {
        s.con.out << "          Error while reading file: " << std::string(trim_right(pad(name, 20)))
                  << "\n          Program stops\n";
        exit_prog();
    }
    count = *n;
}

void close_all(Session& s) {
    for (auto& u : s.units) u.close();
}

bool load_run(Session& s) {
    s.NO_FOUND = true;
    s.fexist = Fexist{};
    const std::string project(up_to_blank(s.chara.PROJECT));
    auto name_of = [&](Kind k) { return run_file_name(run_kind(k), project, s.chara.RUN); };

    for (const RunKind& k : run_catalogue()) {
        const std::string name = name_of(k.kind);
        bool& flag = s.fexist.*k.exists;
        if (k.kind == Kind::Cr_emit) continue;  // decided together with .Sub_emit
        if (k.kind == Kind::Sub_emit) {
            const std::string cr_name = name_of(Kind::Cr_emit);
            s.fexist.Sub_emit_EXISTS = exists(s, name);
            s.fexist.Cr_emit_EXISTS = exists(s, cr_name);
            if (s.fexist.Sub_emit_EXISTS) {
                s.fexist.Cr_emit_EXISTS = false;
                open_unit(s, k.unit, name);
                s.NO_FOUND = false;
            } else if (s.fexist.Cr_emit_EXISTS) {
                open_unit(s, k.unit, cr_name);
                s.NO_FOUND = false;
            }
            continue;
        }
        flag = exists(s, name);
        if (!flag) continue;
        if (k.count) get_size(s, name, s.*k.count);
        open_unit(s, k.unit, name);  // .C99emit takes unit 23 over from .Cemit
        if (k.data == DataRole::alone) s.NO_FOUND = false;
        if (k.data == DataRole::pair && s.fexist.Xemit_EXISTS && s.fexist.Yemit_EXISTS) s.NO_FOUND = false;
        if (k.kind == Kind::Sigma) s.window.N_PAGES = 5;
    }
    return !s.NO_FOUND;
}

Fexist tables_present(const std::string& dir, std::string_view project, std::string_view run) {
    Fexist f;
    for (const RunKind& k : run_catalogue()) {
        std::error_code ec;
        const std::filesystem::path p =
            std::filesystem::path(dir.empty() ? "." : dir) / run_file_name(k, project, run);
        f.*k.exists = std::filesystem::exists(p, ec);
    }
    if (f.Sub_emit_EXISTS) f.Cr_emit_EXISTS = false;  // one of the two holds unit 19: the sub-ensemble
    return f;
}

std::vector<int> runs_in_directory(const Session& s, std::string_view project) {
    return runs_in_directory(s.dir, project);
}

std::optional<TableName> table_name(std::string_view name) {
    if (name.size() < 5 || name[name.size() - 4] != '.') return std::nullopt;
    const std::string_view digits = name.substr(name.size() - 3);
    if (digits.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
    const std::string_view stem = name.substr(0, name.size() - 4);
    const RunKind* k = kind_of_stem(stem);
    if (!k) return std::nullopt;
    return TableName{std::string(stem.substr(0, stem.size() - std::strlen(k->suffix))), k,
                     (digits[0] - '0') * 100 + (digits[1] - '0') * 10 + (digits[2] - '0')};
}

std::vector<int> runs_in_directory(const std::string& dir, std::string_view project) {
    std::vector<int> runs;
    std::error_code ec;
    for (std::filesystem::directory_iterator it(dir.empty() ? "." : dir, ec), end; !ec && it != end;
         it.increment(ec))
        if (const auto t = table_name(it->path().filename().string()); t && t->project == project)
            runs.push_back(t->run);
    std::sort(runs.begin(), runs.end());
    runs.erase(std::unique(runs.begin(), runs.end()), runs.end());
    return runs;
}

}  // namespace viewer

// The run load: which of the twenty-two kinds exist, their units and counts.
#include "control/run_load.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <ostream>

#include "control/fortran_format.hpp"

namespace viewer {
namespace {

enum class Data { no, yes, pair };

struct KindRow {
    const char* suffix;
    bool Fexist::*flag;
    int unit;
    int Session::*count;  // null where the kind is not measured
    Data data;
};

// The kinds in the order they are probed.
const KindRow kKinds[] = {
    {".Xemit", &Fexist::Xemit_EXISTS, 10, nullptr, Data::pair},
    {".Yemit", &Fexist::Yemit_EXISTS, 11, nullptr, Data::pair},
    {".Xemit2", &Fexist::Xemit2_EXISTS, 24, nullptr, Data::no},
    {".Yemit2", &Fexist::Yemit2_EXISTS, 25, nullptr, Data::no},
    {".Zemit2", &Fexist::Zemit2_EXISTS, 35, nullptr, Data::no},
    {".Zemit", &Fexist::Zemit_EXISTS, 12, nullptr, Data::yes},
    {".ref", &Fexist::ref_EXISTS, 13, &Session::R_PKT, Data::yes},
    {".tcheck", &Fexist::tcheck_EXISTS, 14, &Session::T_PKT, Data::yes},
    {".track", &Fexist::track_EXISTS, 15, nullptr, Data::yes},
    {".Scan", &Fexist::Scan_EXISTS, 16, &Session::S_PKT, Data::yes},
    {".lab", &Fexist::lab_EXISTS, 21, nullptr, Data::no},
    {".LandF", &Fexist::LandF_EXISTS, 17, nullptr, Data::yes},
    {".Cr_emit", &Fexist::Cr_emit_EXISTS, 19, nullptr, Data::yes},
    {".Sub_emit", &Fexist::Sub_emit_EXISTS, 19, nullptr, Data::yes},
    {".PScan", &Fexist::PScan_EXISTS, 20, nullptr, Data::yes},
    {".TRemit", &Fexist::TRemit_EXISTS, 22, nullptr, Data::yes},
    {".Cemit", &Fexist::Cemit_EXISTS, 23, nullptr, Data::yes},
    {".C99emit", &Fexist::C99emit_EXISTS, 23, nullptr, Data::yes},
    {".Cathode", &Fexist::Cathode_EXISTS, 26, &Session::C_PKT, Data::yes},
    {".Error", &Fexist::Error_EXISTS, 27, &Session::E_PKT, Data::yes},
    {".lab-E", &Fexist::lab_E_EXISTS, 28, nullptr, Data::no},
    {".Sigma", &Fexist::Sigma_EXISTS, 29, nullptr, Data::no},
};

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
    const std::string run = s.chara.RUN.substr(0, 4);
    auto name_of = [&](const KindRow& k) { return project + k.suffix + run; };

    for (const KindRow& k : kKinds) {
        const std::string name = name_of(k);
        bool& flag = s.fexist.*k.flag;
        if (k.flag == &Fexist::Cr_emit_EXISTS) continue;  // decided together with .Sub_emit
        if (k.flag == &Fexist::Sub_emit_EXISTS) {
            const KindRow& cr = kKinds[12];
            const std::string cr_name = name_of(cr);
            s.fexist.Sub_emit_EXISTS = exists(s, name);
            s.fexist.Cr_emit_EXISTS = exists(s, cr_name);
            if (s.fexist.Sub_emit_EXISTS) {
                s.fexist.Cr_emit_EXISTS = false;
                open_unit(s, 19, name);
                s.NO_FOUND = false;
            } else if (s.fexist.Cr_emit_EXISTS) {
                open_unit(s, 19, cr_name);
                s.NO_FOUND = false;
            }
            continue;
        }
        flag = exists(s, name);
        if (!flag) continue;
        if (k.count) get_size(s, name, s.*k.count);
        open_unit(s, k.unit, name);  // .C99emit takes unit 23 over from .Cemit
        if (k.data == Data::yes) s.NO_FOUND = false;
        if (k.data == Data::pair && s.fexist.Xemit_EXISTS && s.fexist.Yemit_EXISTS) s.NO_FOUND = false;
        if (k.flag == &Fexist::Sigma_EXISTS) s.window.N_PAGES = 5;
    }
    return !s.NO_FOUND;
}

}  // namespace viewer

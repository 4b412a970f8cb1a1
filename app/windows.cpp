// The plot and menu windows, `win_config.dat`, panels and the page foot.
#include "app/windows.hpp"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <istream>
#include <sstream>

#include "core/fortran_format.hpp"

namespace viewer {
namespace {

constexpr const char* kConfigName = "win_config.dat";

struct Colour {
    int ci;
    float r, g, b;
};

constexpr Colour kPlotColours[] = {{0, 1, 1, 1},
                                   {1, 0, 0, 0},
                                   {2, 1, 0, 0},
                                   {3, 0, 0, 1},
                                   {4, 0, 1, 0},
                                   {10, 0.4f, 0.4f, 0.4f},
                                   {15, 0.5f, 0.25f, 0.25f}};
constexpr Colour kMenuColours[] = {
    {0, 0.4f, 0.4f, 0.4f}, {1, 1, 1, 1}, {2, 1, 0, 0}, {3, 0, 0, 0}, {4, 0, 1, 0}};

void set_colours(Graphics& pg, std::initializer_list<Colour> table) {
    for (const auto& c : table) pg.pgscr(c.ci, c.r, c.g, c.b);
}

std::string upper(std::string_view s) {
    std::string out(s);
    for (auto& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

// Tokens of a namelist group: names, '=', values, separators dropped.
class NamelistLexer {
public:
    explicit NamelistLexer(std::string text) : t_(std::move(text)) {}
    // Skips blanks, commas, line ends and comments.
    void skip() {
        while (p_ < t_.size()) {
            char c = t_[p_];
            if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == ',') {
                ++p_;
            } else if (c == '!') {
                while (p_ < t_.size() && t_[p_] != '\n') ++p_;
            } else {
                break;
            }
        }
    }
    void skip_blanks() {
        while (p_ < t_.size() && (t_[p_] == ' ' || t_[p_] == '\t' || t_[p_] == '\r' || t_[p_] == '\n')) ++p_;
    }
    bool at_end() const { return p_ >= t_.size(); }
    char peek() const { return p_ < t_.size() ? t_[p_] : '\0'; }
    void advance() { ++p_; }
    std::string word() {
        std::size_t b = p_;
        while (p_ < t_.size() && !std::strchr(" \t\r\n,=/!", t_[p_])) ++p_;
        return t_.substr(b, p_ - b);
    }
    // Finds the line that opens group `name`; false at end of text.
    bool find_group(const std::string& name) {
        while (p_ < t_.size()) {
            skip();
            if (at_end()) return false;
            char c = peek();
            if (c == '&' || c == '$') {
                advance();
                if (upper(word()) == name) return true;
            }
            while (p_ < t_.size() && t_[p_] != '\n') ++p_;
        }
        return false;
    }

private:
    std::string t_;
    std::size_t p_ = 0;
};

bool parse_logical(const std::string& v, bool& out) {
    std::size_t i = 0;
    if (i < v.size() && v[i] == '.') ++i;
    if (i >= v.size()) return false;
    char c = static_cast<char>(std::toupper(static_cast<unsigned char>(v[i])));
    if (c == 'T')
        out = true;
    else if (c == 'F')
        out = false;
    else
        return false;
    return true;
}

std::string real_text(float v) {
    std::string s = fmt_float_exact(v);
    if (s.find_first_of(".eEn") == std::string::npos) s += ".0";
    return s;
}

}  // namespace

bool read_win_config(std::istream& in, WinConfig& cfg) {
    std::stringstream ss;
    ss << in.rdbuf();
    NamelistLexer lx(ss.str());
    if (!lx.find_group("WIN_CONFIG")) return true;  // only the end of the file: defaults stand
    // Keys take their values as they are read, so that what precedes a
    // broken key is kept, as a namelist read does.
    WinConfig& next = cfg;
    for (;;) {
        lx.skip();
        if (lx.at_end()) return false;  // group never closed
        if (lx.peek() == '/') break;
        if (lx.peek() == '&' || lx.peek() == '$') {
            lx.advance();
            if (upper(lx.word()) == "END") break;
            return false;
        }
        std::string key = upper(lx.word());
        lx.skip();
        if (key.empty() || lx.peek() != '=') return false;
        lx.advance();
        lx.skip_blanks();
        if (lx.peek() == ',' || lx.peek() == '/') continue;  // a null value keeps the key as it is
        lx.skip();
        std::string val = lx.word();
        if (val.empty()) return false;
        bool ok = true;
        auto as_int = [&](int& dst) {
            auto v = parse_int_token(val);
            if (!v)
                ok = false;
            else
                dst = static_cast<int>(*v);
        };
        auto as_real = [&](float& dst) {
            auto v = parse_real_token(val);
            if (!v)
                ok = false;
            else
                dst = static_cast<float>(*v);
        };
        if (key == "FIXED")
            ok = parse_logical(val, next.FIXED);
        else if (key == "LINE_WIDTH")
            as_int(next.LINE_WIDTH);
        else if (key == "CHARACTER_HEIGHT")
            as_real(next.CHARACTER_HEIGHT);
        else if (key == "COLOR_MODE")
            as_int(next.COLOR_MODE);
        else if (key == "CONTRA")
            as_real(next.CONTRA);
        else if (key == "BRIGHT")
            as_real(next.BRIGHT);
        else if (key == "PLOT_MODE")
            as_int(next.PLOT_MODE);
        else if (key == "WIN101_SCALE")
            as_real(next.WIN101_SCALE);
        else if (key == "WIN102_SCALE")
            as_real(next.WIN102_SCALE);
        else
            return false;  // an unknown key is a read error
        if (!ok) return false;
    }
    return true;
}

std::string write_win_config(const WinConfig& c) {
    std::string s = "&WIN_CONFIG\n";
    s += " FIXED = " + std::string(c.FIXED ? "T" : "F") + ",\n";
    s += " LINE_WIDTH = " + std::to_string(c.LINE_WIDTH) + ",\n";
    s += " CHARACTER_HEIGHT = " + real_text(c.CHARACTER_HEIGHT) + ",\n";
    s += " COLOR_MODE = " + std::to_string(c.COLOR_MODE) + ",\n";
    s += " CONTRA = " + real_text(c.CONTRA) + ",\n";
    s += " BRIGHT = " + real_text(c.BRIGHT) + ",\n";
    s += " PLOT_MODE = " + std::to_string(c.PLOT_MODE) + ",\n";
    s += " WIN101_SCALE = " + real_text(c.WIN101_SCALE) + ",\n";
    s += " WIN102_SCALE = " + real_text(c.WIN102_SCALE) + ",\n";
    s += " /\n";
    return s;
}

void set_win_config(Session& s) {
    s.win_config = WinConfig{};
    std::error_code ec;
    const std::string name = s.path(kConfigName);
    if (!std::filesystem::exists(name, ec)) return;
    std::ifstream in(name);
    if (!in || !read_win_config(in, s.win_config)) {
        s.win_config = WinConfig{};
        s.con.fail("Error reading win_config.dat");
    }
}

void end_prog(Session& s) {
    const std::string name = s.path(kConfigName);
    std::error_code ec;
    const bool lexist = std::filesystem::exists(name, ec);
    if (lexist) {
        std::ifstream in(name);
        if (!in || !read_win_config(in, s.win_config)) s.win_config.FIXED = false;
    }
    if (!s.win_config.FIXED) {
        // A new file renamed over the old one: never a half-written configuration.
        const std::string tmp = name + ".new";
        bool ok = false;
        {
            std::ofstream out(tmp, std::ios::trunc);
            if (out) {
                out << write_win_config(s.win_config);
                out.flush();
                ok = static_cast<bool>(out);
            }
        }
        if (ok) ok = std::rename(tmp.c_str(), name.c_str()) == 0;
        if (!ok) {
            const int err = errno;
            std::remove(tmp.c_str());
            s.con.out << "\n     Cannot write win_config.dat: " << std::strerror(err) << "\n";
        }
    } else if (!lexist) {
        std::ofstream touch(name, std::ios::app);  // the locked group has nowhere to go: leave an empty file
    }
    s.pg.pgend();
}

void open_window(Session& s) {
    s.window.PLOT_DEVICE = s.pg.pgopen("102/XWINDOW");
    if (s.window.PLOT_DEVICE <= 0) exit_prog();
    s.window.MENU_DEVICE = s.pg.pgopen("101/XWINDOW");
    if (s.window.MENU_DEVICE <= 0) exit_prog();
    set_win_config(s);
    const WinConfig& c = s.win_config;

    s.pg.pgslct(s.window.PLOT_DEVICE);
    s.pg.pgpap(8.0f * c.WIN102_SCALE, 0.707f);
    set_colours(s.pg, {kPlotColours[0], kPlotColours[1], kPlotColours[2], kPlotColours[3], kPlotColours[4],
                       kPlotColours[5], kPlotColours[6]});
    s.pg.pgscf(2);
    s.pg.pgsch(c.CHARACTER_HEIGHT);
    s.pg.pgslw(c.LINE_WIDTH);
    s.pg.pgupdt();
    s.chara.PAGE_TITLE = "PGPLOT";
    title(s);
    s.pg.pgask(false);

    s.pg.pgslct(s.window.MENU_DEVICE);
    s.pg.pgpap(2.5f * c.WIN101_SCALE, 2.7f);
    s.pg.pgsvp(0.0f, 1.0f, 0.0f, 1.0f);
    s.pg.pgswin(0.0f, 0.37f, 0.0f, 1.0f);
    set_colours(s.pg, {kMenuColours[0], kMenuColours[1], kMenuColours[2], kMenuColours[3], kMenuColours[4]});
    s.pg.pgscf(2);
    s.pg.pgupdt();
    s.pg.pgask(false);
}

void set_hardcopy_look(Session& s) {
    s.pg.pgpap(0.0f, 0.707f);
    set_colours(s.pg, {{0, 1, 1, 1},
                       {1, 0, 0, 0},
                       {2, 1, 0, 0},
                       {3, 0, 0, 1},
                       {4, 0, 0.8f, 0.2f},
                       {15, 0.5f, 0.25f, 0.25f}});
    s.pg.pgscf(2);
    s.pg.pgsch(s.win_config.CHARACTER_HEIGHT);
    s.pg.pgslw(s.win_config.LINE_WIDTH);
}

void change_title(Session& s) {
    const int last = s.window.LAST_SELECTION;
    if (last == 0) return;  // no plot of the page drawn yet: no record to write to
    std::ostream& out = s.con.out;
    out << "\n     \\g  = greek letters\n     \\fi = italic\n     \\d  = subscript & end superscribt\n"
           "     \\u  = superscript & end subscript\n\n";
    LabelRecord& rec = s.labels.rec.at(static_cast<std::size_t>(last <= 29 ? last : last + 10));
    auto ask = [&](const char* prompt, std::string& dst) {
        s.con.prompt(prompt);
        std::string line = s.con.read_line();
        dst = std::string(trim_right(line.substr(0, std::min<std::size_t>(40, line.size()))));
    };
    ask("     Title: ", rec.PLOT_TITLE);
    ask("     Label of the abscissa: ", rec.ABSCISSA_LABEL);
    ask("     Label of the ordinate: ", rec.ORDINATE_LABEL);
    if (last <= 29)
        s.fexist.lab_EXISTS = false;
    else
        s.fexist.lab_E_EXISTS = false;
}

}  // namespace viewer

// Start-up: the date of the session and the project and run it is for.
#include "app/startup.hpp"

#include <cstdio>
#include <ostream>

#include "core/fortran_format.hpp"

namespace viewer {

std::string run_digits(int run_number) {
    char buf[8];
    std::snprintf(buf, sizeof buf, "%03d", run_number);
    return buf;
}

void set_date(Session& s, const std::tm& now) {
    char date[32];
    std::snprintf(date, sizeof date, "    %02d.%02d  %02d:%02d", now.tm_mday, now.tm_mon + 1, now.tm_hour,
                  now.tm_min);
    s.DATE = date;
}

void start_prog(Session& s, int argc, const char* const* argv, const std::tm& now) {
    set_date(s, now);
    if (argc > 1 && argv[1] != nullptr) {
        s.FNAME = std::string(argv[1]).substr(0, 80);
        s.LIARG = true;
        return;
    }
    s.chara.PROJECT = "rfgun";
    s.chara.RUN = ".001";
    s.RUN_NUMBER = 1;
    s.LIARG = false;
    s.con.out << "\n     program was called with no arguments, \n"
              << "     try to work on project: " << s.chara.PROJECT.substr(0, 50) << "\n"
              << "     run number: " << s.chara.RUN.substr(0, 7) << "\n";
}

void parse_arguments(Session& s) {
    std::string f = s.FNAME.substr(0, 80);
    // A typed line may start with blanks; they are no part of the name.
    f.erase(0, f.find_first_not_of(' ') == std::string::npos ? f.size() : f.find_first_not_of(' '));
    const auto comma = f.find(',');
    auto project_before = [&](std::size_t p) {  // p: 0-based position of the delimiter
        std::size_t len = (p > 0 && f[p - 1] == '.') ? p - 1 : p;
        return f.substr(0, len);
    };
    if (comma != std::string::npos) {
        s.chara.PROJECT = project_before(comma);
        std::string digits = f.substr(comma + 1, 3);
        std::string tok(up_to_blank(digits.substr(digits.find_first_not_of(' ') == std::string::npos
                                                      ? digits.size()
                                                      : digits.find_first_not_of(' '))));
        if (auto c = tok.find_first_of(",/"); c != std::string::npos) tok.resize(c);
        auto v = parse_int_token(tok);
        if (!v || *v < 0 || *v > 999) {
            // The run must write as three digits for file names to be formed.
            s.con.out << "\n     Run number not understood: \"" << std::string(trim_right(digits))
                      << "\", run 001 is used\n";
            s.RUN_NUMBER = 1;
        } else {
            s.RUN_NUMBER = static_cast<int>(*v);
        }
    } else {
        const auto blank = f.find(' ');
        s.chara.PROJECT = project_before(blank == std::string::npos ? f.size() : blank);  // ends at the blank
        s.RUN_NUMBER = 1;
    }
    s.chara.RUN = "." + run_digits(s.RUN_NUMBER);
}

void print_identity(Session& s) {
    s.con.out << "\n     Project name is: " << trim_right(s.chara.PROJECT.substr(0, 50)) << "\n"
              << "     Run number is:   " << s.chara.RUN.substr(1, 3) << "\n";
}

void build_page_title(Session& s) {
    s.chara.PAGE_TITLE = std::string(up_to_blank(s.chara.PROJECT)) + " " + s.chara.RUN.substr(1, 3) + "  " +
                         s.DATE.substr(4, 12);
}

}  // namespace viewer

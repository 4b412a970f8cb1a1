// Console prompts and free-form answers.
#include "core/console.hpp"

#include <charconv>
#include <istream>
#include <ostream>

namespace viewer {

void exit_prog() {
    throw ProgramStop{0};
}

void Console::prompt(std::string_view text) {
    out << text;
    out.flush();
}

std::string Console::read_line() {
    std::string line;
    if (!std::getline(in, line)) throw EndOfInput{};
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

namespace {

// First free-form item of a line, or nullopt when the line holds none.
std::optional<std::string> first_item(std::string_view line) {
    std::size_t i = 0;
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
    if (i == line.size()) return std::nullopt;
    char c = line[i];
    if (c == '\'' || c == '"') {
        std::string item;
        for (std::size_t j = i + 1; j < line.size(); ++j) {
            if (line[j] == c) {
                if (j + 1 < line.size() && line[j + 1] == c) {
                    item += c;
                    ++j;
                    continue;
                }
                return item;
            }
            item += line[j];
        }
        return item;
    }
    if (c == ',' || c == '/') return std::string{};
    std::size_t j = i;
    while (j < line.size() && line[j] != ' ' && line[j] != '\t' && line[j] != ',' && line[j] != '/') ++j;
    return std::string(line.substr(i, j - i));
}

}  // namespace

std::string Console::read_item() {
    for (;;) {
        auto item = first_item(read_line());
        if (item) return *item;
    }
}

std::optional<long long> parse_int_token(std::string_view tok) {
    if (!tok.empty() && tok.front() == '+') tok.remove_prefix(1);
    long long v = 0;
    auto r = std::from_chars(tok.data(), tok.data() + tok.size(), v);
    if (r.ec != std::errc{} || r.ptr != tok.data() + tok.size() || tok.empty()) return std::nullopt;
    return v;
}

std::optional<double> parse_real_token(std::string_view tok) {
    if (!tok.empty() && tok.front() == '+') tok.remove_prefix(1);
    if (tok.empty()) return std::nullopt;
    std::string t(tok);
    for (auto& c : t)
        if (c == 'd' || c == 'D' || c == 'q' || c == 'Q') c = 'e';
    double v = 0;
    auto r = std::from_chars(t.data(), t.data() + t.size(), v);
    if (r.ec != std::errc{} || r.ptr != t.data() + t.size()) return std::nullopt;
    return v;
}

int Console::ask_int(std::string_view prompt_text) {
    for (;;) {
        prompt(prompt_text);
        std::string item = read_item();
        if (auto v = parse_int_token(item); v && *v >= INT32_MIN && *v <= INT32_MAX)
            return static_cast<int>(*v);
        out << "     Not a whole number: " << item << "\n";
    }
}

double Console::ask_real(std::string_view prompt_text) {
    for (;;) {
        prompt(prompt_text);
        std::string item = read_item();
        if (auto v = parse_real_token(item)) return *v;
        out << "     Not a number: " << item << "\n";
    }
}

void Console::fail(std::string_view line1, std::string_view line2) {
    out << "\n          " << line1 << "\n";
    if (!line2.empty()) out << "          " << line2 << "\n";
    out << "          Program stops\n\n";
    out.flush();
    exit_prog();
}

}  // namespace viewer

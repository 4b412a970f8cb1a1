// Console in and out through injectable streams, and the two ways the
// viewer stops: a failure through `exit_prog`, and the end of standard input
// at a prompt. Both unwind to `run_viewer` as exceptions, so that a test can
// drive whole sessions in one process.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace viewer {

// Thrown by `exit_prog`: the program stops with this status.
struct ProgramStop {
    int status = 0;
};

// Thrown when standard input ends while a prompt waits for an answer.
struct EndOfInput {};

[[noreturn]] void exit_prog();

class Console {
public:
    Console(std::istream& input, std::ostream& output) : in(input), out(output) {}
    std::istream& in;
    std::ostream& out;

    // Writes `text` and leaves the cursor on the line.
    void prompt(std::string_view text);
    // One whole line; throws EndOfInput at the end of input.
    std::string read_line();
    // One free-form text item: blank lines are passed over; a blank, comma
    // or slash ends the item unless it is quoted. An empty item is "".
    std::string read_item();
    // Prompts and reads one number; a token that is not a number gets a
    // message and the prompt again. Blank lines are passed over.
    int ask_int(std::string_view prompt_text);
    double ask_real(std::string_view prompt_text);

    // A failure: blank line, each text ten blanks in, "Program stops",
    // blank line; then `exit_prog`.
    [[noreturn]] void fail(std::string_view line1, std::string_view line2 = {});
};

// Free-form number parsing shared by the console and the readers.
std::optional<long long> parse_int_token(std::string_view tok);
std::optional<double> parse_real_token(std::string_view tok);

}  // namespace viewer

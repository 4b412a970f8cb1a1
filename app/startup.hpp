// Start-up and run identity: the start state, the date of the session, and
// the input arguments `name`, `name.`, `name,nnn`, `name.,nnn`.
#pragma once

#include <ctime>
#include <string>

#include "core/session.hpp"

namespace viewer {

// DATE of the page foot from `now`: "    DD.MM  HH:MM".
void set_date(Session& s, const std::tm& now);

// Fills DATE from `now`; takes the first argument into FNAME, or sets the
// default run "rfgun" ".001" and prints the notice.
void start_prog(Session& s, int argc, const char* const* argv, const std::tm& now);

// Parses FNAME into PROJECT, RUN and RUN_NUMBER.
void parse_arguments(Session& s);

// Prints the lines "Project name is: " and "Run number is:   ".
void print_identity(Session& s);

// "<project> <run digits>  <DD.MM  HH:MM>"
void build_page_title(Session& s);

// The three digits of a run number, 1..999.
std::string run_digits(int run_number);

}  // namespace viewer

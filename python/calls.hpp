// What the notebook module asks of the viewer, free of Python: a pass of
// the export with its files read back, a run's tables packed as records,
// its particle files and their particles. The module binds these and no
// more, so every answer is the command line's own.
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/table_export.hpp"
#include "core/graphics.hpp"

namespace viewer::python {

// A request the viewer refuses: the message the command line prints after
// "viewer: ".
struct Refusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// One pass of the export, as the command line after the program's name.
struct Command {
    std::string dir = ".";
    std::vector<std::string> args;
    std::string picture;   // ".png", ".ps", ...: drawn and read back; "" none
    std::string save;      // a path: the picture is written there and not read back
    bool numbers = false;  // read back the points (--csv) and the statistics (--stats)
};

struct Outcome {
    std::string text;              // the console block
    std::string picture;           // the bytes of the picture
    std::vector<std::string> csv;  // one text a plot or view, in order
    std::string json;              // the statistics
    std::string notes;             // what the pass said on standard error, when it still succeeded
};

// The graphics library keeps one state for the whole process: every pass
// goes through the one object the module makes, one at a time.
class Library {
public:
    Library();
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    Outcome run(const Command& c);  // throws Refusal

private:
    std::mutex draw_;
    std::unique_ptr<Graphics> graphics_;
    std::string scratch_;  // a private directory for the files of a pass
};

// A table read into packed records, one field a column.
struct PackedTable {
    std::vector<TableColumn> columns;
    std::vector<std::size_t> offsets;
    std::size_t itemsize = 0;
    std::size_t rows = 0;
    std::vector<char> bytes;
};
std::size_t column_size(const TableColumn& c);

// The table kinds the run has, in the catalogue's order.
std::vector<std::string> table_kinds(const std::string& dir, const std::string& project, int run);
// Throws Refusal: an unknown kind, a missing file, a record that cannot be read.
PackedTable read_table(const std::string& dir, const std::string& project, int run, const std::string& kind);

// The run's particle files, as --list names them.
struct ParticleFileInfo {
    std::string name, path;
    int position = -1;  // NNNN; -1 for a start distribution
    double z = 0;       // m, of the reference particle
    long particles = 0, active = 0;
};
std::vector<ParticleFileInfo> list_particles(const std::string& dir, const std::string& project, int run);

// The active particles of a file in the views' eleven coordinates and
// units, one row a particle, and their macro charges. Throws Refusal.
struct ParticleArray {
    std::vector<std::string> names, units;  // the eleven coordinates, then "q"
    std::size_t rows = 0;
    std::vector<double> values;  // row-major, names.size() a row
};
ParticleArray read_particles(const std::string& path);

}  // namespace viewer::python

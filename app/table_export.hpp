// A whole table of a run as its reader reads it: the columns of its kind,
// every record in turn, and the table as CSV (`--table KIND`). The notebook
// module reads tables through the same walk, so both give the same values.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "app/export_files.hpp"
#include "core/run_catalogue.hpp"

namespace viewer {

// One column of a table: a field of the catalogue, the truth field of a
// fixed record, or the line of a text kind.
struct TableColumn {
    std::string name, unit;
    enum Type { real32, real64, integer, truth, text } type = real32;
};
std::vector<TableColumn> table_columns(const RunKind& k);

// Calls `record(r)` for every record of the table at `path`. Throws
// ExportFailure when the file cannot be opened, RecordError (naming file,
// line and column) when a record cannot be read.
template <class F>
void each_record(const std::string& path, const RunKind& k, F&& record) {
    TableFile f;
    if (!f.open(path)) throw ExportFailure("cannot read " + path);
    RunRecord r(k);
    while (r.read(f)) record(r);
}

// The value of column `c` (of table_columns) of a record, as CSV writes it:
// 32-bit reals with 9 significant digits, so that each reads back as it was.
std::string csv_value(const RunRecord& r, const std::vector<TableColumn>& columns, std::size_t c);

// The table as CSV: "NAME [unit]" headers, then one row a record.
void write_table_csv(std::ostream& out, const std::string& path, const RunKind& k);

}  // namespace viewer

#include "app/table_export.hpp"

#include <charconv>
#include <ostream>

namespace viewer {

std::vector<TableColumn> table_columns(const RunKind& k) {
    std::vector<TableColumn> c;
    if (k.form == RecordForm::a80) return {{"TEXT", "", TableColumn::text}};
    for (const Field& f : k.fields) {
        const auto type = f.type == 'i'   ? TableColumn::integer
                          : f.type == 'd' ? TableColumn::real64
                                          : TableColumn::real32;
        c.push_back({f.name, f.unit, type});
    }
    if (k.logical) c.push_back({"EMISSION", "", TableColumn::truth});
    return c;
}

std::string csv_value(const RunRecord& r, const std::vector<TableColumn>& columns, std::size_t c) {
    char buf[40];
    const int field = static_cast<int>(c);
    std::to_chars_result done{buf, {}};
    switch (columns[c].type) {
        case TableColumn::real32:
            done = std::to_chars(buf, buf + sizeof buf, r.real(field), std::chars_format::general, 9);
            break;
        case TableColumn::real64:
            done = std::to_chars(buf, buf + sizeof buf, r.real64(field));
            break;
        case TableColumn::integer:
            done = std::to_chars(buf, buf + sizeof buf, r.integer(field));
            break;
        case TableColumn::truth:
            return r.logical() ? "1" : "0";
        case TableColumn::text: {
            // quoted, as CSV quotes a field with commas or quotes
            std::string t = "\"";
            for (char ch : r.text()) t += ch == '"' ? std::string("\"\"") : std::string(1, ch);
            return t + "\"";
        }
    }
    return std::string(buf, done.ptr);
}

void write_table_csv(std::ostream& out, const std::string& path, const RunKind& k) {
    const std::vector<TableColumn> columns = table_columns(k);
    for (std::size_t c = 0; c < columns.size(); ++c) {
        const std::string h = columns[c].name + (columns[c].unit.empty() ? "" : " [" + columns[c].unit + "]");
        out << (c ? "," : "") << (h.find(',') == std::string::npos ? h : "\"" + h + "\"");  // SIG(1,2)
    }
    out << "\n";
    each_record(path, k, [&](const RunRecord& r) {
        for (std::size_t c = 0; c < columns.size(); ++c) out << (c ? "," : "") << csv_value(r, columns, c);
        out << "\n";
    });
}

}  // namespace viewer

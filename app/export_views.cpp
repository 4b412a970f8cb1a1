// The study, particle-file and table requests of the export.
#include <cerrno>
#include <cstring>
#include <fstream>

#include "app/export_pass.hpp"
#include "app/particle_export.hpp"
#include "app/study_export.hpp"
#include "app/table_export.hpp"

namespace viewer::export_pass {

// A study: the table, its files, and the scatter page where asked.
int Export::study() {
    StudyCache cache;
    const StudyTable t = make_study(r_, cache, err_);
    print_study(s_.con.out, t, r_);
    prepare_files();
    s_.reports = nullptr;
    if (drawing()) {
        if (r_.format == OutFormat::png) open_device(s_.path(r_.out));
        cap_.pgslct(s_.window.FILE_DEVICE);
        s_.chara.PAGE_TITLE =
            "study of " + std::to_string(t.study.runs.size()) + " runs  " + s_.DATE.substr(4, 12);
        draw_scatter(s_, scatter_points(t, r_), scatter_labels(r_));
    }
    if (!r_.csv.empty()) {
        std::ofstream file(s_.path(r_.csv), std::ios::binary | std::ios::trunc);
        if (r_.scatter_x.empty())
            write_study_csv(file, t);
        else
            write_scatter_csv(file, t, r_);
        file.close();
        if (!file) throw ExportFailure("cannot write " + r_.csv + ": " + std::strerror(errno));
    }
    if (!r_.stats.empty()) write_file(s_.path(r_.stats), study_json(t, r_));
    finish_files();
    return status_;
}

// A particle file: its statistics, then each view a page.
int Export::particles() {
    ParticleJob job(s_, r_, err_);
    prepare_files();
    std::vector<ViewData> drawn;
    int index = 0;
    for (const ParticleView& v : job.views()) {
        ++index;
        if (drawing() && r_.format == OutFormat::png) open_device(numbered(s_.path(r_.out), index));
        if (drawing()) cap_.pgslct(s_.window.FILE_DEVICE);
        drawn.push_back(job.draw(v));
        if (drawing() && r_.format == OutFormat::png) close_device();
        if (!r_.csv.empty()) {
            const std::string name = numbered(s_.path(r_.csv), ++csv_files_);
            std::ofstream file(name, std::ios::binary | std::ios::trunc);
            write_view_csv(file, drawn.back());
            file.close();
            if (!file) throw ExportFailure("cannot write " + name + ": " + std::strerror(errno));
        }
    }
    s_.reports = nullptr;
    const std::string stats = r_.stats;
    if (!stats.empty()) write_file(s_.path(stats), job.json(drawn));
    finish_files();
    return status_;
}

// A table of the run as read: CSV to the --csv file, or to the console.
int Export::table() {
    const RunKind& k = *kind_named(r_.table);
    const std::string name = run_file_name(k, project(), s_.chara.RUN);
    const std::string path = s_.path(name);
    if (!fs::is_regular_file(path)) throw ExportFailure("no table " + name + " in " + where());
    if (r_.csv.empty()) {
        write_table_csv(s_.con.out, path, k);
        return 0;
    }
    const std::string out = s_.path(r_.csv);
    check_writable(out);
    std::ofstream file(out, std::ios::binary | std::ios::trunc);
    try {
        write_table_csv(file, path, k);  // streamed: a probe-track table has millions of records
    } catch (...) {
        file.close();
        std::error_code ec;
        fs::remove(out, ec);  // no half table left behind
        throw;
    }
    file.close();
    if (!file) throw ExportFailure("cannot write " + r_.csv + ": " + std::strerror(errno));
    return 0;
}

}  // namespace viewer::export_pass

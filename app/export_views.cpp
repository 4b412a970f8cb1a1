// The study and particle-file requests of the export.
#include <cerrno>
#include <cstring>
#include <fstream>

#include "app/export_pass.hpp"
#include "app/particle_export.hpp"
#include "app/study_export.hpp"

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

}  // namespace viewer::export_pass

// The projects and runs of a directory.
#include "app/projects.hpp"

#include <filesystem>
#include <ostream>

#include "app/run_load.hpp"
#include "app/startup.hpp"

namespace viewer {

std::vector<ProjectRuns> projects_in(const std::string& dir) {
    std::map<std::string, ProjectRuns> found;
    std::error_code ec;
    for (std::filesystem::directory_iterator it(dir.empty() ? "." : dir, ec), end; !ec && it != end;
         it.increment(ec))
        if (const auto t = table_name(it->path().filename().string())) {
            ProjectRuns& p = found[t->project];
            p.project = t->project;
            p.runs[t->run].insert(t->kind->kind);
        }
    std::vector<ProjectRuns> out;
    for (auto& [name, p] : found) out.push_back(std::move(p));
    return out;
}

void print_projects(std::ostream& out, const std::vector<ProjectRuns>& projects) {
    constexpr std::size_t kWidth = 80, kIndent = 7;  // "  001  " before the kinds
    for (const ProjectRuns& p : projects) {
        out << (p.project.empty() ? "(no name)" : p.project) << "  " << p.runs.size()
            << (p.runs.size() == 1 ? " run\n" : " runs\n");
        for (const auto& [run, kinds] : p.runs) {
            std::string line = "  " + run_digits(run) + "  ";
            for (Kind k : kinds) {
                const std::string suffix = run_kind(k).suffix;
                if (line.size() > kIndent && line.size() + 1 + suffix.size() > kWidth) {
                    out << line << "\n";
                    line = std::string(kIndent, ' ');
                }
                line += (line.size() > kIndent ? " " : "") + suffix;
            }
            out << line << "\n";
        }
    }
}

int list_projects(const std::string& dir, std::ostream& out, std::ostream& err) {
    const std::vector<ProjectRuns> found = projects_in(dir);
    if (found.empty()) {
        namespace fs = std::filesystem;
        err << "viewer: no run tables in "
            << fs::absolute(dir.empty() ? "." : dir).lexically_normal().string() << "\n";
        return 1;
    }
    print_projects(out, found);
    return 0;
}

}  // namespace viewer

// The headless front end beside the main loop, on the same page rows.
#include "app/export.hpp"

#include "app/export_pass.hpp"

namespace viewer {

using export_pass::Export;

int run_export(Session& s, Capture& capture, const ExportRequest& r, const std::tm& now, std::ostream& err) {
    if (r.help) {
        s.con.out << export_usage();
        return 0;
    }
    if (r.version) {
        s.con.out << version_line() << "\n";
        return 0;
    }
    if (r.projects) return list_projects(s.dir, s.con.out, err);
    try {
        return Export(s, capture, r, err).run(now);
    } catch (const UsageError& e) {
        err << "viewer: " << e.what() << "\n";
        return 2;
    } catch (const ExportFailure& e) {
        err << "viewer: " << e.what() << "\n";
        return 1;
    } catch (const RecordError& e) {
        err << "viewer: cannot read " << e.message() << "\n";
        return 1;
    } catch (const ProgramStop&) {
        s.con.out.flush();
        err << "viewer: stopped; the reason is on standard output\n";
        return 1;
    } catch (const EndOfInput&) {
        err << "viewer: a plot asked a question, which this mode cannot answer\n";
        return 1;
    } catch (const std::exception& e) {
        err << "viewer: the export failed: " << e.what() << "\n";
        return 1;
    }
}

}  // namespace viewer

// Serving a run until told to stop.
#include "web/serve.hpp"

#include <pthread.h>
#include <signal.h>

#include <ostream>
#include <sstream>
#include <thread>

#include "app/export_files.hpp"
#include "app/startup.hpp"
#include "core/fortran_format.hpp"
#include "core/study.hpp"
#include "plot/capture.hpp"
#include "web/server.hpp"

namespace viewer::web {

bool loopback(const std::string& host) {
    return host == "localhost" || host == "::1" || host.starts_with("127.");
}

int run_serve(const ExportRequest& r, const std::tm& now, std::ostream& out, std::ostream& err) {
    // The project and run as the interactive viewer reads its argument.
    Capture none;
    std::istringstream in;
    std::ostringstream said;
    NoPointer no_pointer;
    Session s(none, no_pointer, in, said, ".");
    if (r.has_arg) {
        s.FNAME = r.arg.substr(0, 80);
        parse_arguments(s);
    } else {
        s.chara.PROJECT = "rfgun";
        s.RUN_NUMBER = 1;
    }
    Served served{".", std::string(up_to_blank(s.chara.PROJECT)), s.RUN_NUMBER, now};
    // Runs of more than one project, or in folders below: the page opens on the study.
    {
        StudyCache cache;
        std::ostringstream unread;
        const Study st = run_study({"."}, cache, unread);
        for (const StudyRun& run : st.runs)
            served.study = served.study || run.folder != "." || run.project != st.runs[0].project;
    }

    // The signals wait for this thread alone: the server's threads never see them.
    sigset_t stop_signals;
    sigemptyset(&stop_signals);
    sigaddset(&stop_signals, SIGINT);
    sigaddset(&stop_signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stop_signals, nullptr);

    const std::string token = new_token();
    Server server(served, token, [] { return make_pgplot_graphics(); });
    if (!server.bind(r.host, r.port)) {
        err << "viewer: cannot serve on " << r.host << ":" << r.port
            << ": the port is in use, or the host is not an address of this machine\n";
        return 1;
    }
    if (!loopback(r.host))
        err << "viewer: warning: serving on " << r.host
            << ": anyone who can reach this address and has the URL can read the run\n";
    out << "viewer: serving "
        << (served.study ? "the study of this folder" : served.project + " run " + run_digits(served.run))
        << " at http://" << r.host << ":" << server.port() << "/?token=" << token << std::endl;
    std::thread listening([&] { server.run(); });
    int signal = 0;
    sigwait(&stop_signals, &signal);
    server.stop();
    listening.join();
    return 0;
}

}  // namespace viewer::web

// The viewer executable: the real PGPLOT, the real pointer, the console;
// with options, the headless export or the browser view instead of the
// windows. It sits above every layer, since it picks the front end.
#include <ctime>
#include <iostream>
#include <sstream>

#include "app/command_line.hpp"
#include "app/export.hpp"
#include "app/export_files.hpp"
#include "app/main_loop.hpp"
#include "web/serve.hpp"

int main(int argc, char** argv) {
    const std::tm now = viewer::clock_now();
    auto graphics = viewer::make_pgplot_graphics();

    if (viewer::wants_export(argc, argv)) {
        viewer::ExportRequest request;
        try {
            request = viewer::parse_export(argc, argv);
        } catch (const viewer::UsageError& e) {
            std::cerr << "viewer: " << e.what() << "\n";
            return 2;
        }
        viewer::OwnStderr quiet;  // the library's notes stay off the terminal
        if (request.serve) return viewer::web::run_serve(request, now, std::cout, quiet.err());
        viewer::NoPointer pointer;
        std::istringstream no_input;  // nothing is ever asked
        viewer::Capture capture(graphics.get());
        viewer::Session session(capture, pointer, no_input, std::cout);
        return viewer::run_export(session, capture, request, now, quiet.err());
    }

    auto pointer = viewer::make_pgplot_pointer();
    viewer::Session session(*graphics, *pointer, std::cin, std::cout);
    return viewer::run_viewer(session, argc, argv, now);
}

// The viewer executable: the real PGPLOT, the real pointer, the console.
#include <ctime>
#include <iostream>

#include "app/main_loop.hpp"

int main(int argc, char** argv) {
    auto graphics = viewer::make_pgplot_graphics();
    auto pointer = viewer::make_pgplot_pointer();
    viewer::Session session(*graphics, *pointer, std::cin, std::cout);
    std::time_t t = std::time(nullptr);
    std::tm now{};
    localtime_r(&t, &now);
    return viewer::run_viewer(session, argc, argv, now);
}

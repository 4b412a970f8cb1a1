// The aperture file reader, and the overlay drawn from what it read.
#include "fuzz/fuzz_support.hpp"
#include "plot/aperture.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace viewer;
    const std::string path = fuzz::memory_file(data, size);
    fuzz::FuzzSession fs;
    try {
        load_geom_file(fs.s, path);
    } catch (const ProgramStop&) {
        return 0;  // "Error reading aperture file": the viewer's own stop
    }
    if (fs.s.geometry.GEOM_N > GEOM_MAX) std::abort();
    overlay_mirrored(fs.s, 0.0f, 1.0f, 0.0f, 1.0f);
    return 0;
}

// The reference-curve reader: any file named at the prompt becomes a curve
// for the fit hook, or is refused with a message.
#include "fitting/reference_curves.hpp"
#include "fuzz/fuzz_support.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace viewer;
    // Quoted, for a slash ends a free-form name.
    fuzz::FuzzSession fs("'" + fuzz::memory_file(data, size) + "'\n");
    try {
        get_ref(fs.s, 1, 1);
    } catch (const ProgramStop&) {
    }
    const FitVariables& fv = fs.s.fit_variables;
    if (fv.N_FIT > 0 && (fv.X_FIT.size() < static_cast<std::size_t>(fv.N_FIT) ||
                         fv.Y1_FIT.size() < static_cast<std::size_t>(fv.N_FIT)))
        std::abort();
    return 0;
}

// The namelist reader of win_config.dat, and the text it writes back: what
// it accepts must read back to the same values.
#include <sstream>

#include "app/windows.hpp"
#include "fuzz/fuzz_support.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace viewer;
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    WinConfig cfg;
    if (!read_win_config(in, cfg)) return 0;
    std::istringstream back(write_win_config(cfg));
    WinConfig again;
    if (!read_win_config(back, again)) std::abort();
    if (write_win_config(again) != write_win_config(cfg)) std::abort();
    return 0;
}

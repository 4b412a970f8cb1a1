// The fixed-column reader: E12.4 fields, the L3 truth field and A80 lines,
// over any bytes. A field that is no number throws RecordError, which is
// the reader's answer, not a fault.
#include "core/run_files.hpp"
#include "fuzz/fuzz_support.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace viewer;
    const std::string path = fuzz::memory_file(data, size);
    static TableFile f;  // its buffer serves every input
    if (!f.open(path)) return 0;
    float r[13];
    bool l = false;
    std::string text;
    for (int pass = 0; pass < 3; ++pass) {
        try {
            const std::size_t n = 1 + (size + static_cast<std::size_t>(pass)) % 13;
            while (pass == 2 ? read_a80(f, text)
                             : read_fixed(f, std::span<float>(r, n), pass == 1 ? &l : nullptr)) {
            }
        } catch (const RecordError& e) {
            if (e.message().empty()) std::abort();
        }
        f.rewind();
    }
    return 0;
}

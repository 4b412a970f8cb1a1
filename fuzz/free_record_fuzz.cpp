// The free-record reader with integer, 32-bit and 64-bit fields over any
// bytes, records running over lines, slashes and all.
#include "core/run_files.hpp"
#include "fuzz/fuzz_support.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace viewer;
    const std::string path = fuzz::memory_file(data, size);
    static TableFile f;  // its buffer serves every input
    if (!f.open(path)) return 0;
    int i1 = 0, i2 = 0;
    float x[6]{};
    double d[3]{};
    try {
        while (read_free(f, {&i1, &i2, &x[0], &x[1], &x[2], &x[3], &x[4], &x[5]})) {
        }
    } catch (const RecordError&) {
    }
    f.rewind();
    try {
        while (read_free(f, {&d[0], &x[0], &d[1], &d[2]})) {
        }
    } catch (const RecordError&) {
    }
    return 0;
}
